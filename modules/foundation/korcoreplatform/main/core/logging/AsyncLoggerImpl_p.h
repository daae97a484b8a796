/// The queue and the writer thread of an `AsyncLogger`.

#pragma once

#include "korcoreplatform/main/core/logging/AsyncLogger.h"
#include "korcoreplatform/main/core/logging/CacheLines_p.h"
#include "korcoreplatform/main/core/logging/Channel.h"
#include "korcoreplatform/main/core/logging/LogItem_p.h"
#include "korcoreplatform/main/core/logging/LogQueue_p.h"
#include "korsys/main/system/TSystemCore.h"
#include "korsys/main/thread/TEvent.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

namespace TLog {

/// "Any thread" and "writer" say which side calls a function.
class KORCOREPLATFORM_EXPORT AsyncLogger::Impl
{
public:
    struct Item;

    Impl(); ///< Starts the writer.
    Impl(Impl const&) = delete;
    Impl& operator=(Impl const&) = delete;

    /// Joins the writer, unless it is the one. Requires: it was told to stop. Items behind that are
    /// thrown away.
    ~Impl();

    /// Any thread: whether this is the process that has the writer, and not a child of it.
    bool IsAlive() const noexcept { return m_processId == TSystemCore::ProcessID(); }

    bool IsWriterThread() const noexcept; ///< Is it the writer that asks?

    void Push(std::unique_ptr<Item> item) noexcept; ///< Any thread.

    /// Any thread. A record that nobody shares is its own item; else the item shares it.
    void PushRecord(AccessLevel accessLevel, Severity severity, Event&& event);
    void PushRecord(AccessLevel accessLevel, Severity severity, Event const& event);

    void const* Contended() const noexcept { return m_queue.Contended(); }

    /// Any thread: tells the writer to stop when it has handled what is there, and waits for that.
    /// Returns whether it happened in so many milliseconds. The writer itself does not wait: it
    /// deletes this object when it has stopped.
    bool Shutdown(int milliseconds);

    bool FlushAndWait(int milliseconds);                        ///< Any thread.
    void SetMaximumUnflushedAge(std::chrono::milliseconds age); ///< Any thread.
    Counters GetCounters() const noexcept;                      ///< Any thread.

private:
    using SteadyClock = std::chrono::steady_clock;
    struct Waiter;

    void Wake() noexcept; ///< Any thread, after a push.

    // The rest is the writer's.

    void Consumer();
    void Sink();
    LogItem* Pop(); ///< Null when it is time to flush.
    bool Doze();
    bool WaitForItem();
    bool Handle(LogItem& item); ///< Returns false for the item that stops the writer.
    bool HandleOther(Item& item);
    void RemoveChannel(std::shared_ptr<Channel> const& channel);
    static void Delete(LogItem& item);
    void Write(AccessLevel accessLevel, Severity severity, Event const& event);
    bool IsDropped(Severity severity, Event const& event);
    void FlushChannels();
    bool FlushIsDue() const;
    void PublishLosses() noexcept;
    void NoteQueueLength() noexcept;

    LogQueue m_queue;

    // What every log call reads. The lines around it are not written by each record.

    alignas(CacheLines::kBytes) std::uint32_t const m_processId;
    std::atomic<bool> m_isAsleep{false}; ///< The writer waits, or is about to, for m_itemAvailable.
    std::atomic<std::int64_t> m_maxAgeMs{0};
    TEvent m_itemAvailable;
    TEvent m_done;

    // What the writer keeps for itself

    alignas(CacheLines::kBytes) std::vector<std::shared_ptr<Channel>> m_channels;
    std::vector<std::shared_ptr<Filter>> m_filters;
    bool m_isUnflushed = false; ///< A record was appended to the channels since the last flush.
    SteadyClock::time_point m_unflushedSince; ///< While m_isUnflushed.
    std::uint64_t m_lostAtLastWait = 0;
    ChannelCounters m_removed; ///< Of channels that are gone: the most lost, the sum of bytes.

    // What the writer tells: stored by it alone, relaxed

    std::atomic<std::uint64_t> m_taken{0};
    std::atomic<std::uint64_t> m_filtered{0};
    std::atomic<std::uint64_t> m_withoutChannel{0};
    std::atomic<std::uint64_t> m_lost{0};
    std::atomic<std::uint64_t> m_bytes{0};
    std::atomic<std::uint64_t> m_highWater{0};

    bool m_isOrphan = false; ///< The writer's: nobody else deletes this object.
    std::thread m_writer;    ///< Last: it uses all the others.
};

} // namespace TLog
