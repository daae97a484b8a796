/// The interface of the loggers and the one logger of the process.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/logging/LogDetail.h"
#include "korcoreplatform/main/core/logging/Severity.h"

#include <atomic>
#include <memory>
#include <typeinfo>

class LogConfig;
class TPath;

namespace TLog {

class Channel;
class Event;
class Filter;

/// Decides which records are wanted and takes them. The process has one logger in a slot, which
/// `LogMessage` talks to; until the host sets one it is a `NullLogger`.
///
/// Thread safety: every virtual operation may be called from any thread unless a subclass says
/// otherwise. The slot is read without a lock: it is set while no other thread logs.
class KORCOREPLATFORM_EXPORT Logger
{
public:
    /// `minimal` is the least severe that is accepted without a category's own threshold.
    /// `configPath` names a JSON file with thresholds for categories; an empty path means none.
    /// Throws: `KorvelException` with id AutoGen_0x1A36D05F when a value in the file is no text;
    /// every other problem with the file is kept for `LogStartupProblems`.
    Logger(Severity minimal, TPath const& configPath);
    Logger(Logger const&) = delete;
    Logger& operator=(Logger const&) = delete;
    virtual ~Logger();

    virtual void AddFilter(std::shared_ptr<Filter> filter) = 0;
    virtual void RemoveFilter(std::shared_ptr<Filter> filter) = 0;
    virtual void AddChannel(std::shared_ptr<Channel> channel) = 0;
    virtual void RemoveChannel(std::shared_ptr<Channel> channel) = 0;

    virtual void Log(Severity severity, Event const& event) = 0;
    virtual void Log(Severity severity, Event&& event) = 0;
    virtual void Log(AccessLevel accessLevel, Severity severity, Event const& event) = 0;
    virtual void Log(AccessLevel accessLevel, Severity severity, Event&& event) = 0;
    virtual void Log(LogDetail::LogDetailEnums detail, Severity severity, Event const& event) = 0;
    virtual void Log(LogDetail::LogDetailEnums detail, Severity severity, Event&& event) = 0;
    virtual void Log(AccessLevel accessLevel, LogDetail::LogDetailEnums detail, Severity severity,
                     Event const& event) = 0;
    virtual void Log(AccessLevel accessLevel, LogDetail::LogDetailEnums detail, Severity severity,
                     Event&& event) = 0;

    virtual void Flush() = 0;

    /// Whether `severity` is at least the minimal accepted one.
    virtual bool AcceptsSeverity(Severity severity) const;

    /// Whether the category has a threshold of its own.
    virtual bool IsDetailSet(LogDetail::LogDetailEnums detail) const;

    /// While severities per category are switched on (`OptLogSeverity`) and the category has a
    /// threshold, whether `severity` reaches that; `AcceptsSeverity` otherwise.
    /// Throws: `std::bad_function_call` while that option is an empty callable.
    virtual bool DetailAcceptsSeverity(LogDetail::LogDetailEnums detail, Severity severity) const;

    /// The category's threshold, `Severity::Off` when it has none.
    virtual Severity GetDetailSeverity(LogDetail::LogDetailEnums detail) const;

    virtual void SetMinimalAcceptedSeverity(Severity severity);
    virtual Severity GetMinimalAcceptedSeverity() const;

    virtual void SetDetail(LogDetail::LogDetailEnums detail, Severity severity);
    virtual void ClearDetails();

    /// Logs the problems met while the configuration was read, at Warn, through the process's
    /// logger: to be called when that has its channels.
    virtual void LogStartupProblems();

    /// The slot, whose logger is never null. Only `Set` may change it: what log calls remember of
    /// the logger does not notice another assignment.
    static std::unique_ptr<Logger>* Get() noexcept;

    /// Puts `logger` into the slot, a new `NullLogger` for null, and then destroys the former one.
    static void Set(std::unique_ptr<Logger> logger);

protected:
    /// To be called by the constructor of a class whose `AcceptsSeverity` answers by the minimal
    /// severity alone, with `typeid` of that class: log calls below that severity then do not even
    /// ask. It does not hold for classes derived from that one.
    void DecideByMinimalSeverity(std::type_info const& exactClass) noexcept;

    /// To be called by the constructor of a class whose `Log` writes first what other threads write
    /// as well: the cache line at `memory` is then fetched while a record is made.
    void SetContendedMemory(void const* memory) noexcept { m_contended = memory; }

private:
    friend class LoggerUse;

    std::uint8_t LowestAccepted() const noexcept;
    void PublishLowestAccepted() const noexcept;

    std::atomic<Severity> m_minimal; ///< Read and written relaxed: it orders nothing else.
    std::type_info const* m_decidingClass = nullptr;
    std::unique_ptr<LogConfig> m_config; ///< Never null.
    void const* m_contended = nullptr;   ///< May be null.
};

/// Wants nothing and does nothing.
class KORCOREPLATFORM_EXPORT NullLogger : public Logger
{
public:
    NullLogger();
    ~NullLogger() override;

    void AddFilter(std::shared_ptr<Filter> filter) override;
    void RemoveFilter(std::shared_ptr<Filter> filter) override;
    void AddChannel(std::shared_ptr<Channel> channel) override;
    void RemoveChannel(std::shared_ptr<Channel> channel) override;

    void Log(Severity severity, Event const& event) override;
    void Log(Severity severity, Event&& event) override;
    void Log(AccessLevel accessLevel, Severity severity, Event const& event) override;
    void Log(AccessLevel accessLevel, Severity severity, Event&& event) override;
    void Log(LogDetail::LogDetailEnums detail, Severity severity, Event const& event) override;
    void Log(LogDetail::LogDetailEnums detail, Severity severity, Event&& event) override;
    void Log(AccessLevel accessLevel, LogDetail::LogDetailEnums detail, Severity severity,
             Event const& event) override;
    void Log(AccessLevel accessLevel, LogDetail::LogDetailEnums detail, Severity severity,
             Event&& event) override;

    void Flush() override;

    bool AcceptsSeverity(Severity severity) const override;
    bool IsDetailSet(LogDetail::LogDetailEnums detail) const override;
    bool DetailAcceptsSeverity(LogDetail::LogDetailEnums detail, Severity severity) const override;
    void SetMinimalAcceptedSeverity(Severity severity) override;
    void SetDetail(LogDetail::LogDetailEnums detail, Severity severity) override;
    void ClearDetails() override;
    void LogStartupProblems() override;
};

} // namespace TLog
