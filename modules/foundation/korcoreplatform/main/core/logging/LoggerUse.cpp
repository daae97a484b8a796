#include "korcoreplatform/main/core/logging/LoggerUse_p.h"

#include "korcoreplatform/main/core/logging/ThreadsBarrier_p.h"

#include <chrono>
#include <new>
#include <thread>

#include <pthread.h>

namespace TLog {
namespace {

constexpr std::chrono::microseconds kLook(50);
constexpr std::chrono::seconds kLongestWait(1);

/// Says of one thread how many log calls it is in. Never freed, taken over by a later thread.
struct alignas(CacheLines::kBytes) Mark
{
    std::atomic<int> uses{0};
    std::atomic<bool> isTaken{false};
    Mark* next = nullptr;
};

std::atomic<Logger*> s_logger{nullptr};

/// Whether log calls leave the barrier to `WaitForOthers`. Until it is known, they have their own.
std::atomic<bool> s_hasThreadsBarrier{false};

[[maybe_unused]] bool const s_isArranged = [] {
    s_hasThreadsBarrier.store(ThreadsBarrier::Arrange(), std::memory_order_seq_cst);
    return true;
}();

// Most processes need no more marks than these, so that a refused record costs no allocation.
constexpr int kFirstMarks = 64;
Mark s_firstMarks[kFirstMarks];
std::atomic<Mark*> s_moreMarks{nullptr};

/// Of threads that are past their exit, and of those that could not get a mark.
Mark s_shared;
[[gnu::tls_model("initial-exec")]] thread_local int t_sharedUses = 0; ///< This thread's of those.

/// Calls `visit` with the marks of threads until it returns true.
template <class Visit>
void VisitMarks(Visit const& visit) noexcept
{
    for (Mark& mark : s_firstMarks) {
        if (visit(mark)) {
            return;
        }
    }
    Mark* mark = s_moreMarks.load(std::memory_order_seq_cst);
    while (mark != nullptr && !visit(*mark)) {
        mark = mark->next;
    }
}

// Without a destructor, so that it may be used until the thread is gone.
[[gnu::tls_model("initial-exec")]] thread_local Mark* t_mark = nullptr;

extern "C" void GiveBackMark(void* mark)
{
    t_mark = &s_shared;
    static_cast<Mark*>(mark)->isTaken.store(false, std::memory_order_release);
}

struct Key
{
    Key() : isThere(::pthread_key_create(&key, &GiveBackMark) == 0) {}

    pthread_key_t key = 0;
    bool isThere;
};

Key const& TheKey() noexcept
{
    static Key const s_key;
    return s_key;
}

[[maybe_unused]] auto const& s_atLoad = TheKey(); // no child of `fork` finds it half made

/// Has the mark given back when the thread ends: after its thread-local objects, and without an
/// allocation to arrange that. Where the system cannot, the mark stays taken.
void ArrangeToGiveBack(Mark& mark) noexcept
{
    if (TheKey().isThere) {
        ::pthread_setspecific(TheKey().key, &mark);
    }
}

Mark* TakeFree() noexcept
{
    Mark* found = nullptr;
    VisitMarks([&found](Mark& mark) {
        bool isTaken = false;
        if (mark.isTaken.compare_exchange_strong(isTaken, true, std::memory_order_acquire,
                                                 std::memory_order_relaxed)) {
            found = &mark;
        }
        return found != nullptr;
    });
    return found;
}

Mark* TakeNew() noexcept
{
    auto* const mark = new (std::nothrow) Mark;
    if (mark != nullptr) {
        mark->isTaken.store(true, std::memory_order_relaxed);
        mark->next = s_moreMarks.load(std::memory_order_relaxed);
        while (!s_moreMarks.compare_exchange_weak(mark->next, mark, std::memory_order_seq_cst,
                                                  std::memory_order_relaxed)) {}
    }
    return mark;
}

Mark& OwnMark() noexcept
{
    if (t_mark == nullptr) {
        Mark* const free = TakeFree();
        Mark* const mark = free != nullptr ? free : TakeNew();
        t_mark = mark != nullptr ? mark : &s_shared;
        if (mark != nullptr) {
            ArrangeToGiveBack(*mark);
        }
    }
    return *t_mark;
}

} // namespace

// Either this thread sees the new logger, or the one that sets it sees the mark: both write first
// and read then. The barrier in between is issued for both by the one that sets the logger, or else
// it is that of sequentially consistent operations.
LoggerUse::LoggerUse() noexcept : m_uses(OwnMark().uses)
{
    if (&m_uses == &s_shared.uses) {
        ++t_sharedUses;
        m_uses.fetch_add(1, std::memory_order_seq_cst);
    } else if (s_hasThreadsBarrier.load(std::memory_order_seq_cst)) {
        m_uses.store(m_uses.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
        std::atomic_signal_fence(std::memory_order_seq_cst); // for the compiler
    } else {
        m_uses.fetch_add(1, std::memory_order_seq_cst);
    }
    m_logger = s_logger.load(std::memory_order_seq_cst);
    if (m_logger == nullptr) { // this is a static constructor that runs before those of the library
        m_logger = Logger::Get()->get();
    }
}

LoggerUse::~LoggerUse()
{
    if (&m_uses == &s_shared.uses) {
        m_uses.fetch_sub(1, std::memory_order_release);
        --t_sharedUses;
    } else {
        m_uses.store(m_uses.load(std::memory_order_relaxed) - 1, std::memory_order_release);
    }
}

void LoggerUses::SetLogger(Logger& logger) noexcept
{
    s_logger.store(&logger, std::memory_order_seq_cst);
}

void LoggerUses::WaitForOthers() noexcept
{
    // When this is not known yet, log calls that know it come later and see the new logger.
    if (s_hasThreadsBarrier.load(std::memory_order_seq_cst)) {
        ThreadsBarrier::Issue();
    }
    auto const deadline = std::chrono::steady_clock::now() + kLongestWait;
    auto const isInUse = [](Mark const& mark, int ownUses) {
        return mark.uses.load(std::memory_order_seq_cst) != ownUses;
    };
    auto const wait = [&](Mark const& mark, int ownUses) {
        while (isInUse(mark, ownUses) && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(kLook);
        }
    };
    VisitMarks([&](Mark const& mark) {
        if (&mark != t_mark) {
            wait(mark, 0);
        }
        return false;
    });
    wait(s_shared, t_sharedUses);
}

void LoggerUses::ForgetOthers() noexcept
{
    auto const forget = [](Mark& mark) {
        if (&mark != t_mark) {
            mark.uses.store(0, std::memory_order_relaxed);
        }
        return false;
    };
    VisitMarks(forget);
    s_shared.uses.store(t_sharedUses, std::memory_order_relaxed);
}

} // namespace TLog
