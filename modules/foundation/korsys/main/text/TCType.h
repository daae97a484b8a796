/// Which UTF-16 units are white space and which are letters.

#pragma once

#include "korsys/main/KorSysExport.h"

/// Classes of single units, the same whatever the locale. A surrogate belongs to none: characters
/// beyond U+FFFF are not looked at.
///
/// Thread safety: every function may be called from any thread.
namespace TCType {

/// What `isSpace` answers for a unit from U+0080 on.
KORSYS_EXPORT bool isWideSpace(char16_t unit) noexcept;

/// Unicode white space: U+0009 to U+000D, U+0020, U+0085, U+00A0 and the spaces and separators
/// above, the no-break ones included; not U+200B and not the byte order mark.
inline bool isSpace(char16_t unit) noexcept
{
    return unit < 0x80 ? unit == u' ' || (unit >= u'\t' && unit <= u'\r') : isWideSpace(unit);
}

/// A letter of any script (general category L).
KORSYS_EXPORT bool isAlpha(char16_t unit) noexcept;

} // namespace TCType
