/// What the integer and the floating-point reader share: digits four at a time, and white space.

#pragma once

#include "korsys/main/text/DecimalDigits_p.h"
#include "korsys/main/text/TCType.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace NumberText {

inline bool IsDecimalDigit(char16_t unit)
{
    return unit >= u'0' && unit <= u'9';
}

inline char16_t const* SkipSpace(char16_t const* at, char16_t const* end)
{
    // Nearly every number starts and ends without space: visible ASCII needs no table.
    while (at != end && (*at <= u' ' || *at > u'~') && TCType::isSpace(*at)) {
        ++at;
    }
    return at;
}

/// Four units, the first in the lowest 16 bits, each less u'0' when all of them are digits.
using FourDigits = std::uint64_t;

constexpr FourDigits kFourZeros = 0x0030003000300030u;

/// Loads four units and drops the first `dropped` of them; what follows the rest is no digit.
inline FourDigits LoadFour(char16_t const* at, std::ptrdiff_t dropped = 0)
{
    FourDigits units = 0;
    std::memcpy(&units, at, sizeof(units));
    // Two steps, because all four may go.
    return units >> 8 * dropped >> 8 * dropped ^ kFourZeros;
}

/// Zero when all four are digits. Answers may be joined with `|`.
constexpr std::uint64_t NonDigitsOf(FourDigits digits)
{
    // The sum reaches the highest bit of a place from 10 on.
    return ((digits + 0x7FF67FF67FF67FF6u) | digits) & 0x8000800080008000u;
}

/// Requires: four digits.
constexpr std::uint32_t ValueOf(FourDigits digits)
{
    // The highest place of the product is d0 * 1000 + d1 * 100 + d2 * 10 + d3.
    return static_cast<std::uint32_t>(digits * (1000ull << 48 | 100ull << 32 | 10u << 16 | 1u) >>
                                      48);
}

constexpr int kMaxShortCount = 12;

/// Reads a text of `count` digits without looking for its end; false when one unit is no digit.
/// Requires: `count` is 1 to kMaxShortCount.
inline bool ReadShortDecimal(char16_t const* at, int count, std::uint64_t& value)
{
    if (count < 4) {
        FourDigits const digits = std::uint64_t(at[count - 1]) << 48 |
                                  std::uint64_t(count > 1 ? at[count - 2] : u'0') << 32 |
                                  std::uint64_t(count > 2 ? at[0] : u'0') << 16 | u'0';
        value = ValueOf(digits ^ kFourZeros);
        return NonDigitsOf(digits ^ kFourZeros) == 0;
    }
    FourDigits const first = LoadFour(at);
    std::uint64_t nonDigits = NonDigitsOf(first);
    value = ValueOf(first);
    if (count > 8) {
        FourDigits const second = LoadFour(at + 4);
        nonDigits |= NonDigitsOf(second);
        value = value * 10000 + ValueOf(second);
        at += 4;
        count -= 4;
    }
    // Up to four are left; the last four units hold them, and some that are read already.
    static constexpr std::uint64_t kNewDigits[] = {0, 0xFFFFull << 48, 0xFFFFFFFFull << 32,
                                                   0xFFFFFFFFFFFFull << 16, ~0ull};
    static constexpr std::uint64_t kFactors[] = {1, 10, 100, 1000, 10000};
    FourDigits const last = LoadFour(at + count - 4);
    value = value * kFactors[count - 4] + ValueOf(last & kNewDigits[count - 4]);
    return (nonDigits | NonDigitsOf(last)) == 0;
}

} // namespace NumberText
