/// A lock that many readers or one writer can hold.

#pragma once

#include <shared_mutex>

/// Works with the standard guards: `std::shared_lock` reads, `std::lock_guard` and
/// `std::unique_lock` write.
///
/// Thread safety: safe from any thread. A thread that holds the lock in either way must not take it
/// again, and unlocks it as it locked it.
class TReadWriteLock
{
public:
    TReadWriteLock() = default;
    TReadWriteLock(TReadWriteLock const&) = delete;
    TReadWriteLock& operator=(TReadWriteLock const&) = delete;

    void LockForRead() { m_mutex.lock_shared(); }
    void UnlockForRead() { m_mutex.unlock_shared(); }
    bool TryLockForRead() { return m_mutex.try_lock_shared(); }
    void LockForWrite() { m_mutex.lock(); }
    void UnlockForWrite() { m_mutex.unlock(); }
    bool TryLockForWrite() { return m_mutex.try_lock(); }

    // The names that the standard guards call.
    void lock_shared() { LockForRead(); }
    void unlock_shared() { UnlockForRead(); }
    bool try_lock_shared() { return TryLockForRead(); }
    void lock() { LockForWrite(); }
    void unlock() { UnlockForWrite(); }
    bool try_lock() { return TryLockForWrite(); }

private:
    std::shared_mutex m_mutex;
};
