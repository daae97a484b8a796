/// The two halves of a code point beyond U+FFFF.

#pragma once

#include <utility>

namespace SurrogatePairs {

constexpr bool IsSurrogate(char16_t unit)
{
    return (unit & 0xF800) == 0xD800;
}

constexpr bool IsHigh(char16_t unit)
{
    return (unit & 0xFC00) == 0xD800;
}

constexpr bool IsLow(char16_t unit)
{
    return (unit & 0xFC00) == 0xDC00;
}

constexpr char32_t CodePoint(char16_t high, char16_t low)
{
    return 0x10000 + ((static_cast<char32_t>(high) & 0x3FF) << 10) + (low & 0x3FF);
}

/// Whether the unit at `index` is the second one of a pair.
constexpr bool IsInside(char16_t const* text, int index)
{
    return IsLow(text[index]) && index > 0 && IsHigh(text[index - 1]);
}

/// Puts the halves of pairs back in order after the units of a text have been reversed.
inline void Restore(char16_t* text, int length)
{
    for (int at = 1; at < length; ++at) {
        if (IsLow(text[at - 1]) && IsHigh(text[at])) {
            std::swap(text[at - 1], text[at]);
            ++at;
        }
    }
}

} // namespace SurrogatePairs
