/// What the core text type throws.

#pragma once

#include "korsys/main/KorSysExport.h"
#include "korsys/main/error/KorvelException.h"
#include "korsys/main/error/TError.h"
#include "korsys/main/text/TStringCore.h"

/// Misuse of the core text type: an index outside a text, a length that is not valid.
class KORSYS_EXPORT StringException : public KorvelException
{
public:
    StringException(TStringCore const& message, TError::ErrorInfo const& errorInfo);
    StringException(StringException const&) noexcept = default;
    StringException& operator=(StringException const&) noexcept = default;
    ~StringException() override;

    StringException* Clone() const override;
    [[noreturn]] void Throw() const override;
};
