/// One-time initialisation.

#pragma once

#include <atomic>
#include <mutex>
#include <utility>

/// Runs a function once, however many threads ask for it at the same time. An object with static
/// storage needs no initialisation at run time, so it serves from the first instruction on.
///
///     static InitOnce s_once;
///     s_once.Run([] { s_table = BuildTable(); });
///
/// Thread safety: safe from any thread.
class InitOnce
{
public:
    constexpr InitOnce() noexcept = default;
    InitOnce(InitOnce const&) = delete;
    InitOnce& operator=(InitOnce const&) = delete;

    /// Calls `initialize` unless an earlier call has done so, and returns when it is done; what it
    /// wrote is then visible to the caller. When it throws, the exception goes to this caller, and
    /// the next call tries again.
    /// Requires: `initialize` does not run this object.
    template <class Function>
    void Run(Function&& initialize)
    {
        if (IsDone()) {
            return;
        }
        std::lock_guard<std::mutex> const guard(m_mutex);
        if (!m_done.load(std::memory_order_relaxed)) {
            std::forward<Function>(initialize)();
            m_done.store(true, std::memory_order_release); // pairs with IsDone
        }
    }

    bool IsDone() const noexcept { return m_done.load(std::memory_order_acquire); }

private:
    std::mutex m_mutex; ///< Held while initialising.
    std::atomic<bool> m_done{false};
};
