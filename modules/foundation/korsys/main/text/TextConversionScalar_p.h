/// Conversion one character at a time: for the ends of texts, for ill-formed text, and for
/// processors without a faster way.

#pragma once

#include <cstddef>

namespace TextConversion {

constexpr char32_t kReplacement = 0xFFFD;

inline bool IsSurrogate(char32_t c)
{
    return (c & 0xFFFFF800) == 0xD800;
}

inline bool IsHighSurrogate(char16_t unit)
{
    return (unit & 0xFC00) == 0xD800;
}

inline bool IsLowSurrogate(char16_t unit)
{
    return (unit & 0xFC00) == 0xDC00;
}

/// What the `Take` functions return for an ill-formed part.
constexpr char32_t kIllFormed = 0xFFFFFFFF;

/// Moves `from` behind a longer character than ASCII, or behind an ill-formed part, and returns
/// which. Requires: `from` is not `end`, and not at an ASCII character.
char32_t TakeLongerUtf8(char const*& from, char const* end);

/// Moves `from` behind a character, or an ill-formed part, and returns which. Requires: `from` is
/// not `end`.
inline char32_t TakeUtf8(char const*& from, char const* end)
{
    auto const first = static_cast<unsigned char>(*from);
    if (first >= 0x80) {
        return TakeLongerUtf8(from, end);
    }
    ++from;
    return first;
}

inline char32_t TakeUtf16(char16_t const*& from, char16_t const* end)
{
    char16_t const unit = *from++;
    if (!IsSurrogate(unit)) {
        return unit;
    }
    if (IsLowSurrogate(unit) || from == end || !IsLowSurrogate(*from)) {
        return kIllFormed;
    }
    char32_t const low = *from++;
    return 0x10000 + ((static_cast<char32_t>(unit & 0x3FF) << 10) | (low & 0x3FF));
}

/// The code point that stands for what was taken.
inline char32_t Repaired(char32_t taken)
{
    return taken == kIllFormed ? kReplacement : taken;
}

inline char TrailingByte(char32_t codePoint, unsigned shift)
{
    return static_cast<char>(0x80 | ((codePoint >> shift) & 0x3F));
}

/// Writes a code point that is no surrogate; returns the end of what was written.
inline char16_t* PutUtf16(char32_t codePoint, char16_t* to)
{
    if (codePoint < 0x10000) {
        *to++ = static_cast<char16_t>(codePoint);
        return to;
    }
    *to++ = static_cast<char16_t>(0xD7C0 + (codePoint >> 10));
    *to++ = static_cast<char16_t>(0xDC00 | (codePoint & 0x3FF));
    return to;
}

inline char* PutUtf8(char32_t codePoint, char* to)
{
    if (codePoint < 0x80) {
        *to++ = static_cast<char>(codePoint);
        return to;
    }
    if (codePoint < 0x800) {
        *to++ = static_cast<char>(0xC0 | (codePoint >> 6));
    } else if (codePoint < 0x10000) {
        *to++ = static_cast<char>(0xE0 | (codePoint >> 12));
        *to++ = TrailingByte(codePoint, 6);
    } else {
        *to++ = static_cast<char>(0xF0 | (codePoint >> 18));
        *to++ = TrailingByte(codePoint, 12);
        *to++ = TrailingByte(codePoint, 6);
    }
    *to++ = TrailingByte(codePoint, 0);
    return to;
}

} // namespace TextConversion
