#include "korcoreplatform/main/core/logging/LogMessage.h"

#include "korcoreplatform/main/core/logging/Event.h"
#include "korcoreplatform/main/core/logging/Event_p.h"
#include "korcoreplatform/main/core/logging/Logger.h"
#include "korcoreplatform/main/core/logging/LoggerUse_p.h"
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

TLog::Event LogMessageDetail::Message::TakeAsEvent(TError::ErrorInfo* error) const
{
    if (m_kind == Units) {
        auto const* const units = static_cast<char16_t const*>(m_source);
        return TLog::EventAccess::OfMessage(units, TString::length(units), error);
    }
    if (m_kind == Text) {
        TStringCore const& text = *static_cast<TStringCore const*>(m_source);
        if (TLog::EventAccess::IsShort(text.length())) { // else its block is shared
            return TLog::EventAccess::OfMessage(text.constData(), text.length(), error);
        }
    }
    return TLog::EventAccess::OfMessage(Take(), error);
}

void LogMessageDetail::Log(LogDetail::LogDetailEnums category, TLog::Severity severity,
                           Message message, Pairs const* pairs, TError::ErrorInfo* error)
{
    TLog::LoggerUse const logger;
    if (!Accepts(*logger, category, severity)) {
        return;
    }
    logger.PrepareToLog();
    TLog::Event event = pairs == nullptr
                            ? message.TakeAsEvent(error)
                            : TLog::EventAccess::OfPairs(message.Take(), *pairs, error);
    if (category == LogDetail::Count) {
        logger->Log(severity, std::move(event));
    } else {
        logger->Log(category, severity, std::move(event));
    }
}

bool LoggerAcceptsSeverity(TLog::Severity severity, LogDetail::LogDetailEnums category)
{
    TLog::LoggerUse const logger;
    return Accepts(*logger, category, severity);
}
