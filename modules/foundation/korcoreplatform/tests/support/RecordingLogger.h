/// A logger that keeps what it is given, for tests of what is logged.

#pragma once

#include "korcoreplatform/main/core/files/TPath.h"
#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Logger.h"
#include "korcoreplatform/main/core/logging/Severity.h"
#include "korcoreplatform/main/core/logging/Value.h"
#include "korcoreplatform/tests/support/KorTest.h"

#include <mutex>

struct LogRecord
{
    TLog::Severity severity;
    TLog::Event event;
    std::optional<LogDetail::LogDetailEnums> detail; ///< Nothing: logged without a category.

    /// "Error: the message [TPathException_AutoGen_0x...]" in UTF-8, the id where the record has an
    /// error; for a record with pairs its key is the message.
    std::string Line() const
    {
        TString line = TLog::SeverityToString(severity) + u": ";
        auto const text = std::dynamic_pointer_cast<TLog::Literal>(event.GetValue());
        line += text != nullptr ? text->GetString() : event.GetKey();
        if (auto const error = std::dynamic_pointer_cast<TLog::Object>(event.GetError())) {
            auto const& id = error->GetValues().at(u"excp-error-code");
            line += u" [" + dynamic_cast<TLog::Literal const&>(*id).GetString() + u"]";
        }
        return line.toStdString();
    }
};

/// Takes what `LogMessage` moves into it; ignores what comes in other ways.
class RecordingLogger : public TLog::Logger
{
public:
    explicit RecordingLogger(TLog::Severity minimal) : Logger(minimal, TPath()) {}

    void AddFilter(std::shared_ptr<TLog::Filter>) override {}
    void RemoveFilter(std::shared_ptr<TLog::Filter>) override {}
    void AddChannel(std::shared_ptr<TLog::Channel>) override {}
    void RemoveChannel(std::shared_ptr<TLog::Channel>) override {}

    void Log(TLog::Severity severity, TLog::Event&& event) override
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        records.push_back({severity, std::move(event), std::nullopt});
    }
    void Log(LogDetail::LogDetailEnums detail, TLog::Severity severity,
             TLog::Event&& event) override
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        records.push_back({severity, std::move(event), detail});
    }
    void Log(TLog::Severity, TLog::Event const&) override {}
    void Log(TLog::AccessLevel, TLog::Severity, TLog::Event const&) override {}
    void Log(TLog::AccessLevel, TLog::Severity, TLog::Event&&) override {}
    void Log(LogDetail::LogDetailEnums, TLog::Severity, TLog::Event const&) override {}
    void Log(TLog::AccessLevel, LogDetail::LogDetailEnums, TLog::Severity,
             TLog::Event const&) override
    {}
    void Log(TLog::AccessLevel, LogDetail::LogDetailEnums, TLog::Severity, TLog::Event&&) override
    {}
    void Flush() override {}

    std::vector<LogRecord> records; ///< To be read when nobody logs.

private:
    std::mutex m_mutex;
};

/// Has a new logger in the slot while it lives.
template <class Logger = RecordingLogger>
class LoggerInSlot
{
public:
    explicit LoggerInSlot(TLog::Severity minimal)
    {
        auto logger = std::make_unique<Logger>(minimal);
        m_logger = logger.get();
        TLog::Logger::Set(std::move(logger));
    }
    LoggerInSlot(LoggerInSlot const&) = delete;
    LoggerInSlot& operator=(LoggerInSlot const&) = delete;
    ~LoggerInSlot() { TLog::Logger::Set(nullptr); }

    Logger* operator->() const { return m_logger; }
    Logger& operator*() const { return *m_logger; }

private:
    Logger* m_logger;
};

/// Takes in every record of the process while it lives.
struct LogRecording : LoggerInSlot<>
{
    explicit LogRecording(TLog::Severity minimal = TLog::Severity::Trace) : LoggerInSlot(minimal) {}

    std::vector<LogRecord> const& Records() const { return (*this)->records; }

    std::vector<std::string> Lines() const
    {
        std::vector<std::string> lines;
        for (LogRecord const& record : Records()) {
            lines.push_back(record.Line());
        }
        return lines;
    }
};
