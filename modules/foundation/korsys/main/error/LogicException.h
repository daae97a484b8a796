/// Failed internal assertions.

#pragma once

#include "korsys/main/KorSysExport.h"
#include "korsys/main/error/KorvelError.h"
#include "korsys/main/error/KorvelException.h"
#include "korsys/main/error/TError.h"
#include "korsys/main/text/TStringCore.h"

/// An assertion of the library about itself did not hold. Thrown by `ThrowLogicException`.
class KORSYS_EXPORT LogicException : public KorvelException
{
public:
    LogicException(TStringCore const& message, TError::ErrorInfo const& errorInfo);
    LogicException(LogicException const&) noexcept = default;
    LogicException& operator=(LogicException const&) noexcept = default;
    ~LogicException() override;

    LogicException* Clone() const override;
    [[noreturn]] void Throw() const override;
};

/// Reports a failed assertion with the message `Internal error in file "%1" at line %2: %3`.
///
/// `file` is a source path below the tree without extension, in Latin-1; `text` is the asserted
/// expression or a sentence, in UTF-8. A null text counts as empty.
/// Throws: `LogicException` with the given error, always.
[[noreturn]] KORSYS_EXPORT void ThrowLogicException(char const* file, int line, char const* text,
                                                    KorvelError const& error);
