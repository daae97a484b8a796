/// The front door of logging: one call writes one record.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/logging/LogDetail.h"
#include "korcoreplatform/main/core/logging/Severity.h"
#include "korcoreplatform/main/string/TString.h"

#include <atomic>
#include <cstdint>
#include <unordered_map>

class TFormatString;

namespace TError {
class ErrorInfo;
}

namespace TLog {
class Event;
}

/// What the inlined part of a log call is made of; hosts do not use it.
namespace LogMessageDetail {

using Pairs = std::unordered_map<TString, TString>;

/// The lowest severity that the process-wide logger may accept without a category, or
/// `kAcceptsNothing`. The slot of the loggers keeps it; it only spares calls whose answer it tells.
extern KORCOREPLATFORM_EXPORT std::atomic<std::uint8_t> g_lowestAccepted;

/// No record is accepted, whatever its category.
constexpr std::uint8_t kAcceptsNothing = 0xFF;

/// Whether the logger has to be asked. A category's own threshold may let through what the
/// logger's would not.
inline bool MayAccept(LogDetail::LogDetailEnums category, TLog::Severity severity) noexcept
{
    std::uint8_t const lowest = g_lowestAccepted.load(std::memory_order_relaxed);
    return static_cast<std::uint8_t>(severity) >= lowest ||
           (category != LogDetail::Count && lowest != kAcceptsNothing);
}

/// A message in the form in which the caller has it: nothing is converted before it is known that
/// the record is wanted. It refers to its argument.
class Message
{
public:
    enum Kind : std::uint8_t
    {
        Units,     ///< `char16_t const*` up to its terminating zero; null counts as empty.
        Text,      ///< `TStringCore const*`
        MovedText, ///< `TStringCore*`
        Format     ///< `TFormatString const*`
    };

    Message(char16_t const* units) noexcept : m_source(units), m_kind(Units) {}
    Message(TStringCore const& text) noexcept : m_source(&text), m_kind(Text) {}
    Message(TStringCore&& text) noexcept : m_source(&text), m_kind(MovedText) {}
    Message(TString const& text) noexcept : Message(static_cast<TStringCore const&>(text)) {}
    Message(TString&& text) noexcept : Message(static_cast<TStringCore&&>(text)) {}
    Message(TFormatString const& format) noexcept : m_source(&format), m_kind(Format) {}

    /// The message as a text of its own; a moved text is taken.
    /// Throws: `TFormatString::Exception` for a template that cannot be rendered.
    TString Take() const;

    /// The record with the message as its value. `error` may be null.
    TLog::Event TakeAsEvent(TError::ErrorInfo* error) const;

private:
    void const* m_source;
    Kind m_kind;
};

/// Asks the process-wide logger, and logs when it accepts. `category` may be `Count`, `pairs` and
/// `error` null; `error` is moved from.
KORCOREPLATFORM_EXPORT void Log(LogDetail::LogDetailEnums category, TLog::Severity severity,
                                Message message, Pairs const* pairs, TError::ErrorInfo* error);

} // namespace LogMessageDetail

/// Whether the process-wide logger wants records of this severity and category.
/// Throws: `std::bad_function_call` for a real category while the option that decides about
/// categories is an empty callable.
/// Thread safety: may be called from any thread, but not while the logger is being replaced.
KORCOREPLATFORM_EXPORT bool LoggerAcceptsSeverity(TLog::Severity severity,
                                                  LogDetail::LogDetailEnums category);

/// `LogMessage` writes one record to the process-wide logger if that wants it:
///
///     LogMessage(u"loaded");                                              // at Debug
///     LogMessage(TLog::NonErrorSeverity(TLog::Severity::Warn), TFormatString(u"%1?").args(name));
///     LogMessage(LogDetail::Network, TLog::NonErrorSeverity(TLog::Severity::Info), u"connected",
///                {{u"host", host}, {u"port", port}});
///     LogMessage(TLog::AnySeverity(TLog::Severity::Error), u"not saved", std::move(errorInfo));
///
/// The arguments are an optional category; the severity, a `NonErrorSeverity` or, for a record with
/// an error, an `AnySeverity` with the error's record as last argument; the message as
/// `char16_t const*`, `TString`, `TStringCore` or `TFormatString`; optional pairs of texts. A
/// record without pairs has the key "msg" and the message as its value; with pairs, the message is
/// the key and the value an object of the pairs, which are copied even when they are moved in. The
/// category `Count` means none.
///
/// A record that is refused costs a comparison: its message is not looked at.
///
/// Throws: `TFormatString::Exception` when the template of an accepted record cannot be rendered;
/// `std::bad_function_call` as `LoggerAcceptsSeverity`; what the host's activity factory throws;
/// `boost::bad_any_cast` when the session has something else where its logging context should be.
/// Thread safety: may be called from any thread, but not while the logger is being replaced.
// NOLINTBEGIN(performance-unnecessary-value-param): severities are passed by value for good.
#define KOR_LOG_MESSAGE_OVERLOADS(MessageType)                                                     \
    inline void LogMessage(MessageType message)                                                    \
    {                                                                                              \
        KOR_LOG_MESSAGE_CALL(MessageType, LogDetail::Count, TLog::Severity::Debug, nullptr,        \
                             nullptr);                                                             \
    }                                                                                              \
    inline void LogMessage(TLog::NonErrorSeverity severity, MessageType message)                   \
    {                                                                                              \
        KOR_LOG_MESSAGE_CALL(MessageType, LogDetail::Count, severity.Get(), nullptr, nullptr);     \
    }                                                                                              \
    inline void LogMessage(TLog::AnySeverity severity, MessageType message,                        \
                           TError::ErrorInfo&& error)                                              \
    {                                                                                              \
        KOR_LOG_MESSAGE_CALL(MessageType, LogDetail::Count, severity.Get(), nullptr, &error);      \
    }                                                                                              \
    inline void LogMessage(LogDetail::LogDetailEnums category, TLog::NonErrorSeverity severity,    \
                           MessageType message)                                                    \
    {                                                                                              \
        KOR_LOG_MESSAGE_CALL(MessageType, category, severity.Get(), nullptr, nullptr);             \
    }                                                                                              \
    inline void LogMessage(LogDetail::LogDetailEnums category, TLog::AnySeverity severity,         \
                           MessageType message, TError::ErrorInfo&& error)                         \
    {                                                                                              \
        KOR_LOG_MESSAGE_CALL(MessageType, category, severity.Get(), nullptr, &error);              \
    }                                                                                              \
    KOR_LOG_MESSAGE_PAIR_OVERLOADS(MessageType, LogMessageDetail::Pairs const&)                    \
    KOR_LOG_MESSAGE_PAIR_OVERLOADS(MessageType, LogMessageDetail::Pairs&&)

#define KOR_LOG_MESSAGE_PAIR_OVERLOADS(MessageType, PairsType)                                     \
    inline void LogMessage(TLog::NonErrorSeverity severity, MessageType message, PairsType pairs)  \
    {                                                                                              \
        KOR_LOG_MESSAGE_CALL(MessageType, LogDetail::Count, severity.Get(), &pairs, nullptr);      \
    }                                                                                              \
    inline void LogMessage(TLog::AnySeverity severity, MessageType message, PairsType pairs,       \
                           TError::ErrorInfo&& error)                                              \
    {                                                                                              \
        KOR_LOG_MESSAGE_CALL(MessageType, LogDetail::Count, severity.Get(), &pairs, &error);       \
    }                                                                                              \
    inline void LogMessage(LogDetail::LogDetailEnums category, TLog::NonErrorSeverity severity,    \
                           MessageType message, PairsType pairs)                                   \
    {                                                                                              \
        KOR_LOG_MESSAGE_CALL(MessageType, category, severity.Get(), &pairs, nullptr);              \
    }                                                                                              \
    inline void LogMessage(LogDetail::LogDetailEnums category, TLog::AnySeverity severity,         \
                           MessageType message, PairsType pairs, TError::ErrorInfo&& error)        \
    {                                                                                              \
        KOR_LOG_MESSAGE_CALL(MessageType, category, severity.Get(), &pairs, &error);               \
    }

#define KOR_LOG_MESSAGE_CALL(MessageType, category, severity, pairs, error)                        \
    if (LogMessageDetail::MayAccept(category, severity)) {                                         \
        LogMessageDetail::Log(category, severity, static_cast<MessageType>(message), pairs,        \
                              error);                                                              \
    }

KOR_LOG_MESSAGE_OVERLOADS(char16_t const*)
KOR_LOG_MESSAGE_OVERLOADS(TString const&)
KOR_LOG_MESSAGE_OVERLOADS(TString&&)
KOR_LOG_MESSAGE_OVERLOADS(TStringCore const&)
KOR_LOG_MESSAGE_OVERLOADS(TStringCore&&)
KOR_LOG_MESSAGE_OVERLOADS(TFormatString const&)

// NOLINTEND(performance-unnecessary-value-param)

/// A severity is given as `TLog::NonErrorSeverity`, or as `TLog::AnySeverity` with an error's
/// record.
template <class... Arguments>
void LogMessage(TLog::Severity severity, Arguments&&... arguments) = delete;
template <class... Arguments>
void LogMessage(LogDetail::LogDetailEnums category, TLog::Severity severity,
                Arguments&&... arguments) = delete;

#undef KOR_LOG_MESSAGE_CALL
#undef KOR_LOG_MESSAGE_PAIR_OVERLOADS
#undef KOR_LOG_MESSAGE_OVERLOADS
