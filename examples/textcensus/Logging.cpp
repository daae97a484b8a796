#include "Logging.h"

#include "Options.h"
#include "Output.h"

#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/main/core/logging/LogMessage.h"
#include "korcoreplatform/main/core/logging/Logger.h"
#include "korcoreplatform/main/core/runtime/CorePlatformOptions.h"
#include "korcoreplatform/main/string/TString.h"

#include <QString>

#include <memory>
#include <mutex>
#include <string>
#include <typeinfo>

namespace TextCensus {
namespace {

using TLog::AccessLevel;
using TLog::Channel;
using TLog::Event;
using TLog::Filter;
using TLog::Severity;

/// Writes each record at once to standard error. Knows no filters and channels.
///
/// Thread safety: safe from any thread.
class StderrLogger final : public TLog::Logger
{
public:
    StderrLogger(Severity minimal, TPath const& configPath) : Logger(minimal, configPath)
    {
        DecideByMinimalSeverity(typeid(StderrLogger));
    }

    void AddFilter(std::shared_ptr<Filter>) override {}
    void RemoveFilter(std::shared_ptr<Filter>) override {}
    void AddChannel(std::shared_ptr<Channel>) override {}
    void RemoveChannel(std::shared_ptr<Channel>) override {}

    void Log(Severity severity, Event const& event) override
    {
        Write(AccessLevel::Standard, severity, event);
    }
    void Log(Severity severity, Event&& event) override
    {
        Write(AccessLevel::Standard, severity, event);
    }
    void Log(AccessLevel accessLevel, Severity severity, Event const& event) override
    {
        Write(accessLevel, severity, event);
    }
    void Log(AccessLevel accessLevel, Severity severity, Event&& event) override
    {
        Write(accessLevel, severity, event);
    }
    void Log(LogDetail::LogDetailEnums, Severity severity, Event const& event) override
    {
        Write(AccessLevel::Standard, severity, event);
    }
    void Log(LogDetail::LogDetailEnums, Severity severity, Event&& event) override
    {
        Write(AccessLevel::Standard, severity, event);
    }
    void Log(AccessLevel accessLevel, LogDetail::LogDetailEnums, Severity severity,
             Event const& event) override
    {
        Write(accessLevel, severity, event);
    }
    void Log(AccessLevel accessLevel, LogDetail::LogDetailEnums, Severity severity,
             Event&& event) override
    {
        Write(accessLevel, severity, event);
    }

    void Flush() override {}

private:
    void Write(AccessLevel accessLevel, Severity severity, Event const& event)
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_line.clear();
        m_formatter.AppendLine(m_line, accessLevel, severity, event);
        WriteToStandardError(m_line);
    }

    std::mutex m_mutex;
    TLog::Formatter m_formatter; ///< Guarded by `m_mutex`, as is the line.
    std::string m_line;
};

void LogQtMessage(QtMsgType, QMessageLogContext const&, QString const& message)
{
    LogMessage(TLog::NonErrorSeverity(Severity::Warn), TString(message));
}

} // namespace

void StartLogging(Options const& options)
{
    qInstallMessageHandler(LogQtMessage);
    if (options.IsLogging()) {
        Severity const minimal = options.verbose ? Severity::Debug : Severity::Warn;
        TLog::Logger::Set(std::make_unique<StderrLogger>(minimal, options.logConfig));
        CorePlatformOptions::SetIsSeverityPerLogDetailOn([] { return true; });
        (*TLog::Logger::Get())->LogStartupProblems();
    }
}

} // namespace TextCensus
