/// A mutex that the thread holding it may lock again.

#pragma once

#include <mutex>

/// Holds until it has been unlocked as often as it was locked. Works with the standard guards.
///
/// Thread safety: safe from any thread; only the thread that holds it unlocks it.
class TRecursiveMutex
{
public:
    TRecursiveMutex() = default;
    TRecursiveMutex(TRecursiveMutex const&) = delete;
    TRecursiveMutex& operator=(TRecursiveMutex const&) = delete;

    void Lock() { m_mutex.lock(); }
    void Unlock() { m_mutex.unlock(); }
    bool TryLock() { return m_mutex.try_lock(); } ///< False when another thread holds it.

    // The names that std::lock_guard and its kin call.
    void lock() { Lock(); }
    void unlock() { Unlock(); }
    bool try_lock() { return TryLock(); }

private:
    std::recursive_mutex m_mutex;
};
