/// The order of texts in lists that are shown to people.

#pragma once

#include "korsys/main/KorSysExport.h"

/// Compares by the rules of the user's locale; case counts. Without such rules on the system,
/// code units are compared.
///
/// Thread safety: every function may be called from any thread.
class KORSYS_EXPORT TCollator
{
public:
    TCollator() = delete;

    /// Returns -1, 0 or +1 as `a` sorts before, with or after `b`. The texts are not copied; the
    /// lengths count code units and are not negative.
    static int Compare(char16_t const* a, int aLength, char16_t const* b, int bLength) noexcept;
};
