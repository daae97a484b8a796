/// The context record that every exception of the product carries.

#pragma once

#include "korsys/main/KorSysExport.h"
#include "korsys/main/error/GrpcStatus.h"
#include "korsys/main/error/KorvelError.h"
#include "korsys/main/text/TStringCore.h"

#include <memory>
#include <string>
#include <vector>

namespace TError {

/// Who is at fault, as far as the failing place can tell.
enum class ErrorSource : int
{
    Unspecified = 0,
    User = 1,
    System = 2, ///< The operating system failed: a read, a flush.
    Service = 3,
    Internal = 4
};

/// What is known about a failure besides its message. Copies are cheap and share the call stack.
///
/// Thread safety: one object may be read from several threads; a write needs it alone.
class KORSYS_EXPORT ErrorInfo
{
public:
    /// Captures the call stack of the caller while `TStackWalker::IsActive()`.
    /// Throws: `std::bad_alloc`.
    ErrorInfo(KorvelError const& error, ErrorSource source, grpc::StatusCode statusCode);

    KorvelError const& GetError() const noexcept { return m_error; }
    ErrorSource GetErrorSource() const noexcept { return m_source; }
    grpc::StatusCode GetStatusCode() const noexcept { return m_statusCode; }

    /// One UTF-8 text a frame, innermost first; empty when none was captured.
    std::vector<std::string> const& GetCallstack() const noexcept;

    /// Puts the id string into `errorId`, the name of the source into `source` and the status
    /// code's decimal number into `statusCode`. A source without a name is its decimal number.
    void GetMembersAsStrings(TStringCore& errorId, TStringCore& source,
                             TStringCore& statusCode) const;

private:
    KorvelError m_error;
    ErrorSource m_source;
    grpc::StatusCode m_statusCode;
    std::shared_ptr<std::vector<std::string> const> m_callstack; ///< Null: none was captured.
};

/// The canonical name of a status code ("NOT_FOUND"), the decimal number of any other value.
KORSYS_EXPORT TStringCore GetStatusCodeAsString(grpc::StatusCode statusCode);

} // namespace TError
