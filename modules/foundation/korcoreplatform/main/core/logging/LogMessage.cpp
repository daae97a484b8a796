#include "korcoreplatform/main/core/logging/LogMessage.h"

#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Event_p.h"
#include "korcoreplatform/main/core/logging/Logger.h"
#include "korcoreplatform/main/string/TFormatString.h"

#include <utility>

// Set before any code runs, so that a record of a static constructor finds it.
std::atomic<std::uint8_t> LogMessageDetail::g_lowestAccepted{kAcceptsNothing};

namespace {

bool Accepts(TLog::Logger const& logger, LogDetail::LogDetailEnums category,
             TLog::Severity severity)
{
    return category == LogDetail::Count ? logger.AcceptsSeverity(severity)
                                        : logger.DetailAcceptsSeverity(category, severity);
}

} // namespace

TString LogMessageDetail::Message::Take() const
{
    switch (m_kind) {
    case Units:
        return TString(static_cast<char16_t const*>(m_source));
    case Text:
        return TString(*static_cast<TStringCore const*>(m_source));
    case MovedText:
        return TString(std::move(*static_cast<TStringCore*>(const_cast<void*>(m_source))));
    case Format:
        break;
    }
    return static_cast<TFormatString const*>(m_source)->result();
}

void LogMessageDetail::Log(LogDetail::LogDetailEnums category, TLog::Severity severity,
                           Message message, Pairs const* pairs, TError::ErrorInfo* error)
{
    TLog::Logger& logger = **TLog::Logger::Get();
    if (!Accepts(logger, category, severity)) {
        return;
    }
    TLog::Event event = pairs == nullptr
                            ? TLog::EventAccess::OfMessage(message.Take(), error)
                            : TLog::EventAccess::OfPairs(message.Take(), *pairs, error);
    if (category == LogDetail::Count) {
        logger.Log(severity, std::move(event));
    } else {
        logger.Log(category, severity, std::move(event));
    }
}

bool LoggerAcceptsSeverity(TLog::Severity severity, LogDetail::LogDetailEnums category)
{
    return Accepts(**TLog::Logger::Get(), category, severity);
}
