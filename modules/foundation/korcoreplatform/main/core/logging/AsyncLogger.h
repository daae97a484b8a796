/// The logger whose records are written by a thread of its own.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/logging/Filter.h"
#include "korcoreplatform/main/core/logging/Logger.h"

#include <chrono>
#include <cstdint>
#include <memory>

namespace TLog {

enum class LogItemKind : std::uint8_t;

/// Threads that log append their records to a queue and go on; one writer thread takes them in
/// order through the filters to every channel. Changes of filters and channels take their turn
/// among the records.
///
///     auto logger = std::make_unique<TLog::AsyncLogger>(TLog::Severity::Info, TPath());
///     logger->AddChannel(channel);
///     TLog::Logger::Set(std::move(logger));
///
/// Buffered lines reach their files about one second after the last record; see also `Flush`,
/// `FlushAndWait`, `SetMaximumUnflushedAge`. The queue has no limit: where channels are slower than
/// the records come, memory grows. An exception of a filter or channel ends the process.
///
/// In a child process made by `fork` the logger is dead: records are dropped, nothing is flushed,
/// the destructor neither waits nor writes. The child sets a logger of its own.
///
/// Thread safety: every operation may be called from any thread.
// It has a cache line to itself. Every log call reads that, and what would lie beside it in memory,
// a channel perhaps, may be written for every record.
class KORCOREPLATFORM_EXPORT __attribute__((aligned(64))) AsyncLogger : public Logger
{
public:
    class Impl;

    /// What became of the records. Each number is exact while nobody logs and the queue is empty;
    /// then accepted = written + filtered + lost.
    struct Counters
    {
        std::uint64_t accepted = 0; ///< Taken from the threads that log.
        std::uint64_t filtered = 0; ///< Dropped by a filter.
        std::uint64_t written = 0;  ///< Handed to the channels and not known to be lost.
        std::uint64_t lost = 0;     ///< A write failed or came short, or there was no channel. With
                                    ///< several channels, those of the one that lost most.
        std::uint64_t bytes = 0;    ///< Written by all channels that count them.
        std::uint64_t queueLength = 0;
        std::uint64_t queueHighWater = 0; ///< The longest queue that the writer met.
    };

    /// Starts the writer. Arguments and throws: see `Logger`; `std::system_error` when the system
    /// gives no thread.
    AsyncLogger(Severity minimal, TPath const& logConfigPath);

    /// Writes what was logged before and stops the writer. A writer that does not finish in 30 s is
    /// abandoned with its channels, so that one stuck in the file system does not hold the process.
    /// A channel may destroy its logger: the writer then goes on alone, and whoever ends the
    /// process does not wait for what is still to be written.
    ~AsyncLogger() override;

    void AddFilter(std::shared_ptr<Filter> filter) override;
    void RemoveFilter(std::shared_ptr<Filter> filter) override; ///< Every time it was added.
    void AddChannel(std::shared_ptr<Channel> channel) override;
    void RemoveChannel(std::shared_ptr<Channel> channel) override; ///< Every time it was added.

    void Log(Severity severity, Event const& event) override;
    void Log(Severity severity, Event&& event) override;
    void Log(AccessLevel accessLevel, Severity severity, Event const& event) override;
    void Log(AccessLevel accessLevel, Severity severity, Event&& event) override;

    // While severities per category are switched off, these do what `Log(severity, event)` does:
    // the access level does not count then.

    void Log(LogDetail::LogDetailEnums detail, Severity severity, Event const& event) override;
    void Log(LogDetail::LogDetailEnums detail, Severity severity, Event&& event) override;
    void Log(AccessLevel accessLevel, LogDetail::LogDetailEnums detail, Severity severity,
             Event const& event) override;
    void Log(AccessLevel accessLevel, LogDetail::LogDetailEnums detail, Severity severity,
             Event&& event) override;

    void Flush() override; ///< Takes its turn behind the records; does not wait.

    /// Waits until what was logged before is handed to the system, at most `milliseconds`; a
    /// negative number waits for ever. Returns whether that was done without losing a record since
    /// the call before. On the writer thread it returns false at once.
    bool FlushAndWait(int milliseconds);

    /// Flushes a line that has been waiting for so long even though others follow it all the time;
    /// zero, as at the start, leaves that to the one second of silence.
    void SetMaximumUnflushedAge(std::chrono::milliseconds age);

    Counters GetCounters() const;

private:
    template <class Change, class Member>
    void PushChange(LogItemKind kind, Member what, std::shared_ptr<Change>&& change);
    template <class AnyEvent>
    void LogAccepted(AccessLevel accessLevel, Severity severity, AnyEvent&& event);
    template <class AnyEvent>
    void LogDetailed(AccessLevel accessLevel, LogDetail::LogDetailEnums detail, Severity severity,
                     AnyEvent&& event);

    std::unique_ptr<Impl> m_impl; ///< Never null.
};

} // namespace TLog
