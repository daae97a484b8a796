#include "korsys/main/error/StringException.h"

StringException::StringException(TStringCore const& message, TError::ErrorInfo const& errorInfo)
    : KorvelException(message, errorInfo)
{}

StringException::~StringException() = default;

StringException* StringException::Clone() const
{
    return new StringException(*this);
}

void StringException::Throw() const
{
    throw StringException(*this);
}
