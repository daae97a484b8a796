/// The JSON texts of scalars, in pure ASCII.

#pragma once

#include "korcoreplatform/main/string/TString.h"

#include <cstddef>
#include <string_view>

namespace TLog {

class LineBuffer;

/// Each function appends one text.
/// Throws: `std::bad_alloc`; the buffer then holds anything behind what it held.
/// Thread safety: any thread; a buffer is for one at a time.
namespace JsonText {

/// Quoted. The text ends at its first zero unit. What is not printable ASCII becomes a short escape
/// or four hexadecimal digits a unit, so that a pair of surrogates takes two escapes.
void AppendString(LineBuffer& out, char16_t const* units, std::size_t n);

inline void AppendString(LineBuffer& out, TString const& text)
{
    AppendString(out, text.constData(), static_cast<std::size_t>(text.length()));
}

/// Quoted. Of plain bytes, see `IsPlainUnit`, as they are.
void AppendPlain(LineBuffer& out, std::string_view bytes);

void AppendInt(LineBuffer& out, long long value);
void AppendDouble(LineBuffer& out, double value); ///< Six significant digits; null if not finite.

/// Two decimals and an exponent, whatever the locale; "0" for zero and null if not finite.
void AppendScientific(LineBuffer& out, double value);

inline constexpr std::string_view kNull = "null";
inline constexpr std::string_view TextOf(bool value)
{
    return value ? "true" : "false";
}

} // namespace JsonText
} // namespace TLog
