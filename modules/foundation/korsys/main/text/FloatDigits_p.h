/// The decimal digits of a double, rounded exactly.

#pragma once

#include <cstdint>

namespace NumberText {

/// The number 0.d1d2d3... * 10^point. Digits behind the last one are zeros; zero has no digits.
struct FloatDigits
{
    /// Every double has all its digits within this count: 35 groups of nine before the point, 120
    /// behind it, and what a store of eight at a time leaves behind.
    static constexpr int kMaxDigits = (35 + 120) * 9 + 8;

    int count;
    int point;
    char16_t units[kMaxDigits]; ///< u'0' to u'9'; the first digit is not zero.
};

/// Rounds to `wanted` significant digits; ties go up.
/// Requires: `value` is positive and finite, `wanted` is at least 1.
void RoundToSignificant(double value, std::int64_t wanted, FloatDigits& digits);

/// Rounds to `wanted` digits after the point; ties go up.
/// Requires: `value` is positive and finite, `wanted` is not negative.
void RoundToFraction(double value, std::int64_t wanted, FloatDigits& digits);

} // namespace NumberText
