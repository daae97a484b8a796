/// Exceptions as log records.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/logging/Severity.h"
#include "korcoreplatform/main/core/logging/Value.h"

#include <exception>

class KorvelException;

namespace TError {
class ErrorInfo;
}

namespace TLog {

/// Writes a record with the key "excp" to the process-wide logger, if that accepts the severity:
/// an object of the given values and, in place of values with these names, "excp-type" with the
/// class of the exception, "excp-msg" with its message and "msg" with `msg`.
///
///     catch (KorvelException const& e) {
///         TLog::LogException(TLog::NonErrorSeverity(TLog::Severity::Warn), u"file skipped", e,
///                            {{u"path", TLog::Literal::String(path)}});
///     }
///
/// The forms for `AnySeverity` also take the record of an error, usually a copy of
/// `e.GetErrorInfo()`, which becomes the record's error value; without it the line names no error
/// id. What is moved in stays as it is when the severity is refused. A null `msg` counts as empty.
///
/// Throws: `std::runtime_error` "Type name demangling failed"; what the host's activity factory
/// throws.
/// Thread safety: may be called from any thread.
KORCOREPLATFORM_EXPORT void LogException(NonErrorSeverity severity, char16_t const* msg,
                                         KorvelException const& e, Object::Map const& values);
KORCOREPLATFORM_EXPORT void LogException(NonErrorSeverity severity, char16_t const* msg,
                                         KorvelException const& e, Object::Map&& values);
KORCOREPLATFORM_EXPORT void LogException(NonErrorSeverity severity, char16_t const* msg,
                                         std::exception const& e, Object::Map const& values);
KORCOREPLATFORM_EXPORT void LogException(NonErrorSeverity severity, char16_t const* msg,
                                         std::exception const& e, Object::Map&& values);

KORCOREPLATFORM_EXPORT void LogException(AnySeverity severity, char16_t const* msg,
                                         KorvelException const& e, TError::ErrorInfo&& error,
                                         Object::Map const& values);
KORCOREPLATFORM_EXPORT void LogException(AnySeverity severity, char16_t const* msg,
                                         KorvelException const& e, TError::ErrorInfo&& error,
                                         Object::Map&& values);
KORCOREPLATFORM_EXPORT void LogException(AnySeverity severity, char16_t const* msg,
                                         std::exception const& e, TError::ErrorInfo&& error,
                                         Object::Map const& values);
KORCOREPLATFORM_EXPORT void LogException(AnySeverity severity, char16_t const* msg,
                                         std::exception const& e, TError::ErrorInfo&& error,
                                         Object::Map&& values);

/// The same for the exception that is being handled. One that is no `std::exception` has the type
/// "Unknown-exception-type" and the message "Unknown exception caught by catch(...)".
/// Requires: an exception is being handled.
/// Throws: `LogicException` with id LogicAssert_0x8C06D7DE otherwise, whatever the severity; what
/// `LogException` throws.
KORCOREPLATFORM_EXPORT void LogCurrentException(NonErrorSeverity severity, char16_t const* msg,
                                                Object::Map const& values);
KORCOREPLATFORM_EXPORT void LogCurrentException(AnySeverity severity, char16_t const* msg,
                                                TError::ErrorInfo&& error,
                                                Object::Map const& values);

} // namespace TLog
