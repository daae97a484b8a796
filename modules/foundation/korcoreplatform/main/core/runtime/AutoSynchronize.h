/// Scoped locks that can check the order in which a thread takes them.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korsys/main/thread/TRecursiveMutex.h"

#include <atomic>

class TString;

/// Holds a mutex from its construction to its destruction.
///
///     AutoSynchronize const lock(m_mutex, kCachePriority, __FILE__, __func__, __LINE__);
///
/// Every lock has a priority, and a thread must not take one of a higher priority than any that it
/// holds, nor another mutex of the same priority. When leveling is enforced, a thread that does is
/// reported in the log, with all that it holds, and crashes: orders that can end in a deadlock
/// come to light without one. Nothing is checked by default, and nothing is paid.
///
/// Locks are objects of a scope: a thread releases them in the reverse order, itself.
///
/// Ownership: the mutex and the two texts belong to the caller and outlive the lock.
/// Thread safety: a lock belongs to the thread that made it.
class KORCOREPLATFORM_EXPORT AutoSynchronize
{
public:
    /// Waits for the mutex. `file` (UTF-8), `function` (Latin-1) and `line` name the place in the
    /// reports.
    /// Throws: as `CheckLockAcquisition`, and then the mutex is not locked.
    AutoSynchronize(TRecursiveMutex& mutex, int priority, char const* file, char const* function,
                    int line)
        : m_mutex(mutex), m_priority(priority), m_file(file), m_function(function), m_line(line)
    {
        if (IsEnforced()) {
            CheckAndPush();
        }
        m_mutex.Lock();
    }
    ~AutoSynchronize()
    {
        m_mutex.Unlock();
        if (IsEnforced()) {
            Pop();
        }
    }
    AutoSynchronize(AutoSynchronize const&) = delete;
    AutoSynchronize& operator=(AutoSynchronize const&) = delete;

    /// Switches the checks of the whole process on or off.
    /// Requires: no lock is held.
    static void SetEnforceLockLeveling(bool isEnforced) noexcept;

    /// Compares this lock with those that the thread held when it was made. A wrong order is logged
    /// at Warn and handed to `ICrashNow`, unless enforcement has been switched off meanwhile. When
    /// that returns, the thread's next 60 seconds pass without any report or crash.
    /// Throws: what the crash hook and the logger throw.
    void CheckLockAcquisition() const;

    /// Checks that no lock was made after this one and is still held; otherwise says so in the log,
    /// at Debug, and forgets what the thread holds. The destructor does not call it.
    /// Throws: what the logger throws.
    void CheckLockRelease() const;

    /// Writes this lock into the log, at Debug; with the acquisition go those held below it.
    /// Throws: what the logger throws.
    void LogLockAcquisition() const;
    void LogLockRelease() const;

private:
    static bool IsEnforced() noexcept { return s_isEnforced.load(std::memory_order_relaxed); }
    void CheckAndPush();
    void Pop() const noexcept;
    bool IsOutOfOrder() const noexcept;
    void Report() const;
    TString Describe(char16_t const* lead) const;

    static std::atomic<bool> s_isEnforced;

    TRecursiveMutex& m_mutex;
    int m_priority;
    /// The lock below on the stack of the thread; null when nothing was held or nothing is checked.
    AutoSynchronize const* m_previous = nullptr;
    char const* m_file;
    char const* m_function;
    int m_line;
};
