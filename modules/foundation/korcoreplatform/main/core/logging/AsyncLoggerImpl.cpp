#include "korcoreplatform/main/core/logging/AsyncLoggerImpl_p.h"

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/AsyncLoggerItem_p.h"
#include "korcoreplatform/main/core/logging/Event_p.h"
#include "korcoreplatform/main/core/logging/QtMessageBridge.h"
#include "korcoreplatform/main/core/logging/RecordMemory_p.h"
#include "korsys/main/system/TSystemCore.h"

#include <algorithm>
#include <utility>

#include <pthread.h>
#include <signal.h>

namespace TLog {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr milliseconds kIdleFlush(1000);
constexpr milliseconds kIdleLook(100);

// While records come, the writer looks after them again and again after short naps, so that the
// threads that log need not wake it.
constexpr microseconds kNap(100);
constexpr int kNaps = 10;

/// How many records are handled between two looks at clocks and counters.
constexpr std::uint64_t kRecordsPerLook = 64;

/// Whatever signals the process gets are for the host's threads. Those that a fault of the thread
/// itself raises stay as they are: a blocked one would end the process past the host's handler.
class SignalsBlocked
{
public:
    SignalsBlocked()
    {
        sigset_t fromOthers;
        ::sigfillset(&fromOthers);
        for (int const own : {SIGBUS, SIGFPE, SIGILL, SIGSEGV, SIGSYS, SIGTRAP}) {
            ::sigdelset(&fromOthers, own);
        }
        ::pthread_sigmask(SIG_BLOCK, &fromOthers, &m_before);
    }
    SignalsBlocked(SignalsBlocked const&) = delete;
    SignalsBlocked& operator=(SignalsBlocked const&) = delete;
    ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

private:
    sigset_t m_before;
};

/// Adds to a counter that only the writer stores.
void Add(std::atomic<std::uint64_t>& counter, std::uint64_t n) noexcept
{
    counter.store(counter.load(std::memory_order_relaxed) + n, std::memory_order_relaxed);
}

template <class T>
void Erase(std::vector<std::shared_ptr<T>>& all, std::shared_ptr<T> const& one)
{
    all.erase(std::remove(all.begin(), all.end(), one), all.end());
}

} // namespace

AsyncLogger::Impl::Impl() : m_processId(TSystemCore::ProcessID())
{
    SignalsBlocked const forTheWriter; // a thread inherits the mask of the one that starts it
    m_writer = std::thread(&Impl::Consumer, this);
}

AsyncLogger::Impl::~Impl()
{
    if (m_writer.joinable()) {
        m_writer.join();
    }
    while (!m_queue.IsEmpty()) {
        if (LogQueueLink* link = m_queue.Pop()) {
            Delete(*static_cast<LogItem*>(link));
        }
    }
}

bool AsyncLogger::Impl::IsWriterThread() const noexcept
{
    return std::this_thread::get_id() == m_writer.get_id();
}

void AsyncLogger::Impl::Push(std::unique_ptr<Item> item) noexcept
{
    m_queue.Push(*item.release());
    Wake();
}

void AsyncLogger::Impl::PushRecord(AccessLevel accessLevel, Severity severity, Event&& event)
{
    LogItem* item = EventAccess::TakeUnshared(event);
    if (item == nullptr) {
        item = new Item(std::move(event));
    }
    item->severity = severity;
    item->accessLevel = accessLevel;
    m_queue.PushCounted(*item);
    Wake();
}

void AsyncLogger::Impl::PushRecord(AccessLevel accessLevel, Severity severity, Event const& event)
{
    PushRecord(accessLevel, severity, Event(event));
}

void AsyncLogger::Impl::Wake() noexcept
{
    // The writer says that it sleeps before it looks at the queue for the last time, so either it
    // saw the item or this sees the writer. One of the producers wakes it.
    if (m_isAsleep.load(std::memory_order_seq_cst) &&
        m_isAsleep.exchange(false, std::memory_order_seq_cst)) {
        m_itemAvailable.Signal();
    }
}

bool AsyncLogger::Impl::Shutdown(int milliseconds)
{
    if (!IsAlive()) {
        return false;
    }
    Push(std::make_unique<Item>(LogItemKind::Stop));
    if (IsWriterThread()) {
        m_writer.detach();
        m_isOrphan = true;
        return false;
    }
    return m_done.Wait(milliseconds);
}

bool AsyncLogger::Impl::FlushAndWait(int milliseconds)
{
    if (!IsAlive() || IsWriterThread()) {
        return false;
    }
    auto item = std::make_unique<Item>(LogItemKind::Flush);
    auto const waiter = item->waiter = std::make_shared<Waiter>();
    Push(std::move(item));
    return waiter->flushed.Wait(milliseconds) && waiter->isComplete;
}

void AsyncLogger::Impl::SetMaximumUnflushedAge(std::chrono::milliseconds age)
{
    m_maxAgeMs.store(age.count(), std::memory_order_relaxed);
    m_itemAvailable.Signal(); // it may be waiting for longer than that
}

AsyncLogger::Counters AsyncLogger::Impl::GetCounters() const noexcept
{
    auto const read = [](std::atomic<std::uint64_t> const& counter) {
        return counter.load(std::memory_order_relaxed);
    };
    Counters counters;
    std::uint64_t const taken = read(m_taken);
    counters.filtered = read(m_filtered);
    counters.lost = read(m_lost) + read(m_withoutChannel);
    counters.written = taken - std::min(taken, counters.filtered + counters.lost);
    counters.bytes = read(m_bytes);
    counters.queueHighWater = read(m_highWater);
    counters.accepted = m_queue.CountedItems();
    counters.queueLength = counters.accepted - std::min(counters.accepted, taken);
    return counters;
}

void AsyncLogger::Impl::Consumer()
{
    QtMessageBridge::ExcludeThisThread(); // what channels make Qt say must not become records
    Sink();
    m_done.Signal();
    if (m_isOrphan) {
        delete this;
    }
}

void AsyncLogger::Impl::Sink()
{
    for (;;) {
        LogItem* const item = Pop();
        if (item == nullptr) {
            FlushChannels();
            RecordMemory::Trim(); // the burst is over
        } else if (!Handle(*item)) {
            break;
        }
    }
    FlushChannels();
}

LogItem* AsyncLogger::Impl::Pop()
{
    for (;;) {
        if (LogQueueLink* link = m_queue.Pop()) {
            return static_cast<LogItem*>(link);
        }
        if (!m_queue.IsEmpty()) {
            std::this_thread::yield(); // a thread is in the middle of its push
            continue;
        }
        PublishLosses();
        if (FlushIsDue()) {
            return nullptr;
        }
        if (!Doze() && !WaitForItem() && m_isUnflushed) {
            return nullptr;
        }
        NoteQueueLength();
    }
}

bool AsyncLogger::Impl::Doze()
{
    for (int i = 0; i != kNaps; ++i) {
        std::this_thread::sleep_for(kNap);
        if (!m_queue.IsEmpty()) {
            return true;
        }
    }
    return false;
}

/// Returns false when nothing came for as long as it is to be waited.
bool AsyncLogger::Impl::WaitForItem()
{
    // First of all: a signal that is given from here on ends the wait.
    m_itemAvailable.Reset();
    milliseconds wait = m_isUnflushed ? kIdleFlush : kIdleLook;
    milliseconds const maxAge(m_maxAgeMs.load(std::memory_order_relaxed));
    if (m_isUnflushed && maxAge.count() > 0) {
        auto const age = SteadyClock::now() - m_unflushedSince;
        wait = std::clamp(std::chrono::ceil<milliseconds>(maxAge - age), milliseconds(0), wait);
    }
    m_isAsleep.store(true, std::memory_order_seq_cst);
    bool const isSignalled =
        !m_queue.IsEmpty() || m_itemAvailable.Wait(static_cast<int>(wait.count()));
    m_isAsleep.store(false, std::memory_order_relaxed);
    return isSignalled;
}

bool AsyncLogger::Impl::Handle(LogItem& item)
{
    if (item.kind == LogItemKind::Log) {
        Event const event = EventAccess::Adopt(static_cast<EventAccess::Record*>(&item));
        Write(item.accessLevel, item.severity, event);
        return true;
    }
    std::unique_ptr<Item> const other(static_cast<Item*>(&item));
    return HandleOther(*other);
}

bool AsyncLogger::Impl::HandleOther(Item& item)
{
    switch (item.kind) {
    case LogItemKind::AddFilter:
        m_filters.push_back(std::move(item.filter));
        return true;
    case LogItemKind::RemoveFilter:
        Erase(m_filters, item.filter);
        return true;
    case LogItemKind::AddChannel:
        if (std::find(m_channels.begin(), m_channels.end(), item.channel) == m_channels.end()) {
            // What it wrote before does not count (again); the difference may wrap.
            m_removed.bytesWritten -= item.channel->GetCounters().bytesWritten;
        }
        m_channels.push_back(std::move(item.channel));
        return true;
    case LogItemKind::RemoveChannel:
        RemoveChannel(item.channel);
        return true;
    case LogItemKind::LogShared:
        Write(item.accessLevel, item.severity, *item.event);
        return true;
    case LogItemKind::Flush:
        FlushChannels();
        if (item.waiter != nullptr) {
            std::uint64_t const lost = m_lost.load(std::memory_order_relaxed) +
                                       m_withoutChannel.load(std::memory_order_relaxed);
            item.waiter->isComplete = lost == std::exchange(m_lostAtLastWait, lost);
            item.waiter->flushed.Signal();
        }
        return true;
    default:
        return false;
    }
}

void AsyncLogger::Impl::Delete(LogItem& item)
{
    if (item.kind == LogItemKind::Log) {
        EventAccess::Adopt(static_cast<EventAccess::Record*>(&item));
    } else {
        delete static_cast<Item*>(&item);
    }
}

void AsyncLogger::Impl::RemoveChannel(std::shared_ptr<Channel> const& channel)
{
    if (channel == nullptr ||
        std::find(m_channels.begin(), m_channels.end(), channel) == m_channels.end()) {
        return;
    }
    Erase(m_channels, channel);
    ChannelCounters const counters = channel->GetCounters();
    m_removed.lostRecords = std::max(m_removed.lostRecords, counters.lostRecords);
    m_removed.bytesWritten += counters.bytesWritten;
}

void AsyncLogger::Impl::Write(AccessLevel accessLevel, Severity severity, Event const& event)
{
    Add(m_taken, 1);
    if (m_taken.load(std::memory_order_relaxed) % kRecordsPerLook == 0) {
        NoteQueueLength();
        if (FlushIsDue()) {
            FlushChannels();
        }
    }
    if (IsDropped(severity, event)) {
        Add(m_filtered, 1);
        return;
    }
    if (m_channels.empty()) {
        Add(m_withoutChannel, 1);
        return;
    }
    for (std::shared_ptr<Channel> const& channel : m_channels) {
        channel->Append(accessLevel, severity, event);
    }
    if (!m_isUnflushed) {
        m_isUnflushed = true;
        m_unflushedSince = SteadyClock::now();
    }
}

bool AsyncLogger::Impl::IsDropped(Severity severity, Event const& event)
{
    for (std::shared_ptr<Filter> const& filter : m_filters) {
        int const answer = filter->Decide(severity, event);
        if (answer != Filter::Next) {
            return answer == Filter::Drop;
        }
    }
    return false;
}

void AsyncLogger::Impl::FlushChannels()
{
    for (std::shared_ptr<Channel> const& channel : m_channels) {
        channel->Flush();
    }
    m_isUnflushed = false;
    PublishLosses();
}

bool AsyncLogger::Impl::FlushIsDue() const
{
    milliseconds const maxAge(m_maxAgeMs.load(std::memory_order_relaxed));
    return m_isUnflushed && maxAge.count() > 0 && SteadyClock::now() - m_unflushedSince >= maxAge;
}

void AsyncLogger::Impl::PublishLosses() noexcept
{
    ChannelCounters all = m_removed;
    for (auto channel = m_channels.begin(); channel != m_channels.end(); ++channel) {
        if (std::find(m_channels.begin(), channel, *channel) != channel) {
            continue; // added twice
        }
        ChannelCounters const counters = (*channel)->GetCounters();
        all.lostRecords = std::max(all.lostRecords, counters.lostRecords);
        all.bytesWritten += counters.bytesWritten;
    }
    m_lost.store(all.lostRecords, std::memory_order_relaxed);
    m_bytes.store(all.bytesWritten, std::memory_order_relaxed);
}

void AsyncLogger::Impl::NoteQueueLength() noexcept
{
    std::uint64_t const length = m_queue.CountedItems() - m_taken.load(std::memory_order_relaxed);
    if (length > m_highWater.load(std::memory_order_relaxed)) {
        m_highWater.store(length, std::memory_order_relaxed);
    }
}

} // namespace TLog
