#include "korsys/main/error/TError.h"

#include "korsys/main/system/TStackWalker.h"

namespace {

char16_t const* const kStatusNames[] = {
    u"OK",
    u"CANCELLED",
    u"UNKNOWN",
    u"INVALID_ARGUMENT",
    u"DEADLINE_EXCEEDED",
    u"NOT_FOUND",
    u"ALREADY_EXISTS",
    u"PERMISSION_DENIED",
    u"RESOURCE_EXHAUSTED",
    u"FAILED_PRECONDITION",
    u"ABORTED",
    u"OUT_OF_RANGE",
    u"UNIMPLEMENTED",
    u"INTERNAL",
    u"UNAVAILABLE",
    u"DATA_LOSS",
    u"UNAUTHENTICATED",
};

char16_t const* const kSourceNames[] = {
    u"Unspecified", u"User", u"System", u"Service", u"Internal",
};

/// The name at `value`, or its decimal number when the table has none.
template <int Count>
TStringCore NameOrNumber(char16_t const* const (&names)[Count], int value)
{
    return value >= 0 && value < Count ? TStringCore(names[value]) : TStringCore::number(value);
}

} // namespace

namespace TError {

ErrorInfo::ErrorInfo(KorvelError const& error, ErrorSource source, grpc::StatusCode statusCode)
    : m_error(error), m_source(source), m_statusCode(statusCode)
{
    if (TStackWalker::IsActive()) {
        StackWalkerConfig config;
        config.framesToSkip = 1; // this constructor
        TStackWalker walker(config);
        if (walker.GenerateCallstack()) {
            m_callstack = std::make_shared<std::vector<std::string> const>(walker.GetCollected());
        }
    }
}

std::vector<std::string> const& ErrorInfo::GetCallstack() const noexcept
{
    static auto const& s_none = *new std::vector<std::string> const; // outlives static destructors
    return m_callstack ? *m_callstack : s_none;
}

void ErrorInfo::GetMembersAsStrings(TStringCore& errorId, TStringCore& source,
                                    TStringCore& statusCode) const
{
    errorId = m_error.GetName();
    source = NameOrNumber(kSourceNames, static_cast<int>(m_source));
    statusCode = TStringCore::number(static_cast<int>(m_statusCode));
}

TStringCore GetStatusCodeAsString(grpc::StatusCode statusCode)
{
    return NameOrNumber(kStatusNames, static_cast<int>(statusCode));
}

} // namespace TError
