#include "korsys/main/error/LogicException.h"

#include "korsys/main/text/TFormatStringCore.h"

LogicException::LogicException(TStringCore const& message, TError::ErrorInfo const& errorInfo)
    : KorvelException(message, errorInfo)
{}

LogicException::~LogicException() = default;

LogicException* LogicException::Clone() const
{
    return new LogicException(*this);
}

void LogicException::Throw() const
{
    throw LogicException(*this);
}

void ThrowLogicException(char const* file, int line, char const* text, KorvelError const& error)
{
    TFormatStringCore message(u"Internal error in file \"%1\" at line %2: %3");
    message.arg(
        {TStringCore::fromLatin1(file), TStringCore::number(line), TStringCore::fromUtf8(text)});
    throw LogicException(message.result(),
                         TError::ErrorInfo(error, TError::ErrorSource::Internal, grpc::UNKNOWN));
}
