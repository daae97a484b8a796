/// Log calls that are under way, so that a logger is not destroyed below them.

#pragma once

#include "korcoreplatform/main/core/logging/CacheLines_p.h"
#include "korcoreplatform/main/core/logging/Logger.h"

#include <atomic>

namespace TLog {

/// Holds the logger of the process for the length of a log call: `Logger::Set` and the end of the
/// process wait for it before they destroy the logger. Calls may be nested. It costs two stores
/// into memory of the thread's own.
///
/// Thread safety: one thread, at any time of it.
class LoggerUse
{
public:
    LoggerUse() noexcept;
    LoggerUse(LoggerUse const&) = delete;
    LoggerUse& operator=(LoggerUse const&) = delete;
    ~LoggerUse();

    /// To be called when a record is going to be made: has the processor fetch what `Log` is going
    /// to write and another thread wrote last.
    void PrepareToLog() const noexcept { CacheLines::PrefetchForWriting(m_logger->m_contended, 1); }

    Logger* operator->() const noexcept { return m_logger; }
    Logger& operator*() const noexcept { return *m_logger; }

private:
    std::atomic<int>& m_uses; ///< Of this thread.
    Logger* m_logger;
};

namespace LoggerUses {

/// Makes `logger` the one that is used from now on.
void SetLogger(Logger& logger) noexcept;

/// Waits until no other thread uses a logger that was set before, one second at most: a logger that
/// keeps a log call for longer is destroyed below it.
void WaitForOthers() noexcept;

/// In a child made by `fork`: the other threads and their log calls are not there.
void ForgetOthers() noexcept;

} // namespace LoggerUses
} // namespace TLog
