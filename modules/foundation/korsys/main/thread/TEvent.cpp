#include "korsys/main/thread/TEvent.h"

#include <chrono>

namespace {

constexpr std::uint64_t kSignalled = 1;
constexpr std::uint64_t kOneWaiter = 2;
constexpr std::uint64_t kWaiters = 0xFFFFFFFE;
constexpr int kGenerationShift = 32;
constexpr std::uint64_t kOneGeneration = std::uint64_t(1) << kGenerationShift;

/// The state behind a signal.
constexpr std::uint64_t Signalled(std::uint64_t state)
{
    return (state + kOneGeneration) | kSignalled;
}

/// Orders a store before it and a load behind it, which acquire and release do not. (The thread
/// sanitizer does not take std::atomic_thread_fence.)
void FullBarrier() noexcept
{
    __sync_synchronize();
}

} // namespace

bool TEvent::IsSignalled() const noexcept
{
    return (m_state.load(std::memory_order_acquire) & kSignalled) != 0;
}

void TEvent::Signal()
{
    if (IsSignalled()) {
        // Producers that find the event signalled do not write to it, so they do not fight for its
        // cache line. But a reset may be under way: what the caller has published must be visible
        // to the thread that resets before the event is looked at for good. Pairs with Reset.
        FullBarrier();
        if (IsSignalled()) {
            return;
        }
    }
    std::uint64_t state = m_state.load(std::memory_order_relaxed);
    while ((state & kWaiters) == 0) {
        // The last access of this call: whoever sees the signal may destroy the event.
        if (m_state.compare_exchange_weak(state, Signalled(state), std::memory_order_acq_rel,
                                          std::memory_order_relaxed)) {
            return;
        }
    }
    SignalToWaiters();
}

void TEvent::SignalToWaiters()
{
    // The lock is kept until all is done: a waiter cannot return, and so nobody can destroy the
    // event, before it is given up.
    std::lock_guard<std::mutex> const guard(m_mutex);
    std::uint64_t state = m_state.load(std::memory_order_relaxed);
    while (!m_state.compare_exchange_weak(state, Signalled(state), std::memory_order_acq_rel,
                                          std::memory_order_relaxed)) {}
    m_released.notify_all();
}

void TEvent::Reset() noexcept
{
    m_state.fetch_and(~kSignalled, std::memory_order_acq_rel);
    FullBarrier(); // what the caller looks at next is not older than the reset
}

bool TEvent::Wait(int milliseconds)
{
    if (IsSignalled()) {
        return true;
    }
    if (milliseconds == 0) {
        return false;
    }
    std::unique_lock<std::mutex> lock(m_mutex);
    std::uint64_t const before = m_state.fetch_add(kOneWaiter, std::memory_order_acq_rel);
    auto const isReleased = [this, before] {
        std::uint64_t const now = m_state.load(std::memory_order_acquire);
        return (now & kSignalled) != 0 || (now >> kGenerationShift) != (before >> kGenerationShift);
    };
    bool released = true;
    if (milliseconds < 0) {
        m_released.wait(lock, isReleased);
    } else {
        released = m_released.wait_for(lock, std::chrono::milliseconds(milliseconds), isReleased);
    }
    m_state.fetch_sub(kOneWaiter, std::memory_order_relaxed);
    return released;
}
