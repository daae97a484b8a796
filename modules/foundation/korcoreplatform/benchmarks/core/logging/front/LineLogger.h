/// A logger for benchmarks of what a record costs its caller and its writer together.

#pragma once

#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Formatter.h"
#include "korcoreplatform/main/core/logging/Logger.h"

#include <string>

/// Takes every record and writes its line at once.
class LineLogger : public TLog::NullLogger
{
public:
    using NullLogger::Log;

    bool AcceptsSeverity(TLog::Severity) const override { return true; }

    void Log(TLog::Severity severity, TLog::Event&& event) override
    {
        m_bytes.clear();
        m_formatter.AppendLine(m_bytes, TLog::AccessLevel::Standard, severity, event);
    }

private:
    TLog::Formatter m_formatter;
    std::string m_bytes;
};
