/// An event that threads wait for.

#pragma once

#include "korsys/main/KorSysExport.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

/// An event is signalled or not, and stays so until it is told otherwise (manual reset). Signalling
/// costs one atomic operation while nobody waits.
///
/// A consumer that sleeps on an event resets it first and looks at its queue after that, before it
/// waits; a producer fills the queue before it signals. Then none of them misses the other:
///
///     event.Reset();
///     if (queue.IsEmpty()) { event.Wait(1000); }      // consumer
///
///     queue.Push(item); event.Signal();               // producer
///
/// Thread safety: safe from any thread. It may be destroyed as soon as every `Wait` and every call
/// of `Reset` has returned and no `Signal` is still to begin.
class KORSYS_EXPORT TEvent
{
public:
    TEvent() noexcept = default; ///< Not signalled.
    TEvent(TEvent const&) = delete;
    TEvent& operator=(TEvent const&) = delete;

    /// Releases every thread that waits now, even if the event is reset at once, and all that wait
    /// later until the event is reset.
    void Signal();

    void Reset() noexcept;

    /// Waits until the event is signalled, at most `milliseconds`; a negative number waits for
    /// ever, 0 only asks. Returns whether it was signalled. The time is that of a monotonic clock.
    bool Wait(int milliseconds = -1);

private:
    bool IsSignalled() const noexcept;
    void SignalToWaiters();

    /// Bit 0: signalled. Bits 1 to 31: how many threads wait. Bits 32 to 63: how often it
    /// was signalled; a waiter that sees the number change was released.
    std::atomic<std::uint64_t> m_state{0};
    std::mutex m_mutex; ///< Held by waiters unless asleep, and while they are woken.
    std::condition_variable m_released;
};
