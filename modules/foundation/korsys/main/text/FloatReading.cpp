#include "korsys/main/text/NumberText_p.h"

#include "korsys/main/text/NumberScan_p.h"
#include "korsys/main/text/PowersOfTen_p.h"

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <system_error>
#include <type_traits>

// The one place that asks the standard library for its floating-point reader.
#if defined(__cpp_lib_to_chars)
#define KORSYS_HAS_FLOAT_FROM_CHARS 1
#else
#define KORSYS_HAS_FLOAT_FROM_CHARS 0
#include <clocale>
#include <cstdlib>
#if __has_include(<xlocale.h>)
#include <xlocale.h>
#endif
#endif

namespace NumberText {
namespace {

// The grammar

constexpr int kMaxMantissaDigits = 19; ///< Always fit into 64 bits.

/// A decimal number as mantissa * 10^exponent.
struct Decimal
{
    std::uint64_t mantissa; ///< Means nothing with more than kMaxMantissaDigits.
    std::int64_t exponent;
    int digitCount; ///< Without leading zeros.
    bool negative;
    bool found; ///< False when the text does not start with a number.
};

/// Collects digits into the mantissa.
inline char16_t const* ReadDigits(char16_t const* at, char16_t const* end, std::uint64_t& mantissa)
{
    for (; at != end && IsDecimalDigit(*at); ++at) {
        mantissa = mantissa * 10 + static_cast<unsigned>(*at - u'0');
    }
    return at;
}

/// As above, for what is often long.
inline char16_t const* ReadFraction(char16_t const* at, char16_t const* end,
                                    std::uint64_t& mantissa)
{
    for (; end - at >= 8; at += 8) {
        FourDigits const first = LoadFour(at);
        FourDigits const second = LoadFour(at + 4);
        if ((NonDigitsOf(first) | NonDigitsOf(second)) != 0) {
            break;
        }
        mantissa = mantissa * 100000000 + (ValueOf(first) * 10000 + ValueOf(second));
    }
    return ReadDigits(at, end, mantissa);
}

/// Reads "e", sign and digits when they are complete and returns `at` unchanged when not.
[[gnu::always_inline]] inline char16_t const* ReadExponent(char16_t const* at, char16_t const* end,
                                                           std::int64_t& exponent)
{
    constexpr std::int64_t kEnough = 100000000000; // past any length of the digits before it
    char16_t const* digits = at + 1;
    bool const negative = digits != end && *digits == u'-';
    if (negative || (digits != end && *digits == u'+')) {
        ++digits;
    }
    if (digits == end || !IsDecimalDigit(*digits)) {
        return at;
    }
    std::int64_t value = 0;
    for (at = digits; at != end && IsDecimalDigit(*at); ++at) {
        value = value < kEnough ? value * 10 + (*at - u'0') : value;
    }
    exponent += negative ? -value : value;
    return at;
}

/// The count of the digits in the range behind its leading zeros; a point does not count.
int CountSignificant(char16_t const* at, char16_t const* end)
{
    while (at != end && (*at == u'0' || *at == u'.')) {
        ++at;
    }
    return static_cast<int>(end - at - std::count(at, end, u'.'));
}

/// Reads the longest number that starts the text; the answer is its end.
[[gnu::always_inline]] inline char16_t const* ReadDecimal(char16_t const* at, char16_t const* end,
                                                          Decimal& decimal)
{
    decimal = Decimal();
    decimal.negative = at != end && *at == u'-';
    if (decimal.negative || (at != end && *at == u'+')) {
        ++at;
    }
    char16_t const* const digits = at;
    at = ReadDigits(at, end, decimal.mantissa);
    decimal.digitCount = static_cast<int>(at - digits);
    if (at != end && *at == u'.') {
        char16_t const* const fraction = at + 1;
        char16_t const* const fractionEnd = ReadFraction(fraction, end, decimal.mantissa);
        decimal.exponent = fraction - fractionEnd;
        decimal.digitCount += static_cast<int>(fractionEnd - fraction);
        at = fractionEnd;
    }
    decimal.found = decimal.digitCount > 0;
    if (decimal.digitCount > kMaxMantissaDigits) {
        decimal.digitCount = CountSignificant(digits, at);
    }
    if (decimal.found && at != end && (*at | 0x20) == u'e') {
        at = ReadExponent(at, end, decimal.exponent);
    }
    return at;
}

// The short way: one product with a power of ten decides nearly every rounding.

template <class Float>
struct BinaryFormat
{
    using Bits = std::conditional_t<sizeof(Float) == 8, std::uint64_t, std::uint32_t>;
    using Limits = std::numeric_limits<Float>;
    static_assert(Limits::is_iec559 && sizeof(Float) == sizeof(Bits));

    static constexpr int kMantissaBits = Limits::digits; ///< With the one that is not stored.
    static constexpr int kMinExponent =
        Limits::min_exponent - kMantissaBits; ///< Of the lowest bit.
    static constexpr std::uint64_t kInfinity =
        std::uint64_t(Limits::max_exponent - Limits::min_exponent + 2) << (kMantissaBits - 1);

    static Float FromBits(std::uint64_t bits)
    {
        Bits const narrow = static_cast<Bits>(bits < kInfinity ? bits : kInfinity);
        Float value = 0;
        std::memcpy(&value, &narrow, sizeof(value));
        return value;
    }
};

/// Whether a product lies so near to half a unit that what was cut off may decide.
/// Requires: `dropped` is what `high` has below the unit, `half` is half a unit.
inline bool IsNearHalf(ScaledNumber const& product, std::uint64_t dropped, std::uint64_t half)
{
    return product.low + 1 <= 1 && dropped == half - (product.low != 0);
}

/// Numbers with few digits: mantissa and power of ten are both exact, so their quotient is rounded
/// once. Short texts are the common ones, and this is half the work of a product with its rounding.
inline bool Divide(std::uint64_t mantissa, std::int64_t exponent, double& value)
{
    static_assert(FLT_EVAL_METHOD == 0, "a quotient is rounded to double at once");
    static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                         1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    bool const isExact = mantissa >> 53 == 0 && exponent <= 0 && exponent >= -22;
    if (isExact) {
        value = static_cast<double>(static_cast<std::int64_t>(mantissa)) / kPowers[-exponent];
    }
    return isExact;
}

inline bool Divide(std::uint64_t, std::int64_t, float&)
{
    return false;
}

/// The nearest value to mantissa * 10^exponent; false when the cut-off product cannot tell.
/// Requires: `mantissa` is not zero.
template <class Float>
bool RoundShort(std::uint64_t mantissa, std::int64_t exponent, Float& value)
{
    using Format = BinaryFormat<Float>;
    if (exponent < kMinPower || exponent > std::numeric_limits<double>::max_exponent10) {
        value = exponent < 0 ? 0 : Format::Limits::infinity();
        return true;
    }
    int const leadingZeros = __builtin_clzll(mantissa);
    ScaledNumber product = ScaleByPowerOfTen(mantissa << leadingZeros, static_cast<int>(exponent));
    product.exponent -= leadingZeros;
    int const topExponent = product.exponent + 127 - __builtin_clzll(product.high);
    int const unit = std::max(topExponent + 1 - Format::kMantissaBits, Format::kMinExponent);
    int const shift = unit - product.exponent - 64;
    if (shift > 64) {
        value = 0;
        return true;
    }
    std::uint64_t const half = std::uint64_t(1) << (shift - 1);
    std::uint64_t const dropped = product.high & (half | (half - 1));
    std::uint64_t const integer = product.high >> (shift - 1) >> 1;
    bool up = dropped >= half;
    if (IsNearHalf(product, dropped, half)) {
        if (!product.exact) {
            return false;
        }
        bool const isTie = up && product.rest == 0;
        up = up && (!isTie || (integer & 1) != 0);
    }
    // A normal number's highest bit, and a carry out of the mantissa, add one to the exponent.
    std::uint64_t const stored = static_cast<std::uint64_t>(unit - Format::kMinExponent);
    value = Format::FromBits((stored << (Format::kMantissaBits - 1)) + integer + up);
    return true;
}

// The long way, through the standard library.

#if KORSYS_HAS_FLOAT_FROM_CHARS

template <class Float>
Float ReadByLibrary(std::string const& text, Float outOfRange)
{
    Float value = 0;
    auto const result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() ? value : outOfRange;
}

#else

double ReadNumber(char const* text, locale_t locale, double)
{
    return ::strtod_l(text, nullptr, locale);
}

float ReadNumber(char const* text, locale_t locale, float)
{
    return ::strtof_l(text, nullptr, locale);
}

template <class Float>
Float ReadByLibrary(std::string const& text, Float outOfRange)
{
    static locale_t const s_plain = ::newlocale(LC_ALL_MASK, "C", nullptr);
    return ReadNumber(text.c_str(), s_plain, outOfRange);
}

#endif

/// `at` to `end` is the number without its sign.
template <class Float>
Float RoundLong(char16_t const* at, char16_t const* end, Decimal const& decimal)
{
    constexpr int kFarOutside = 400; // decimal places
    std::int64_t const magnitude = decimal.digitCount + decimal.exponent;
    Float const outOfRange = magnitude > 0 ? std::numeric_limits<Float>::infinity() : Float(0);
    if (std::abs(magnitude) > kFarOutside) {
        return outOfRange;
    }
    std::string const narrow(at, end); // ASCII all through
    return ReadByLibrary<Float>(narrow, outOfRange);
}

/// The number that a text from `at` to `end` was read as.
template <class Float>
Parsed<Float> Round(char16_t const* at, char16_t const* end, Decimal const& decimal)
{
    bool const hasMantissa = decimal.digitCount <= kMaxMantissaDigits;
    Float value = 0;
    if (hasMantissa && decimal.mantissa == 0) {
        return {decimal.negative ? -value : value, true};
    }
    if (hasMantissa && Divide(decimal.mantissa, decimal.exponent, value)) {
        return {decimal.negative ? -value : value, true};
    }
    if (!hasMantissa || !RoundShort(decimal.mantissa, decimal.exponent, value)) {
        bool const hasSign = *at == u'-' || *at == u'+';
        value = RoundLong<Float>(at + hasSign, end, decimal);
    }
    bool const ok = value != 0 && std::isfinite(value);
    return {decimal.negative && value != 0 ? -value : value, ok};
}

/// Reads "nan" and the infinities, which the grammar of numbers does not hold.
template <class Float>
Parsed<Float> ReadName(char16_t const* at, char16_t const* end)
{
    using Limits = std::numeric_limits<Float>;
    auto const startsWith = [&](char16_t const* name) {
        return end - at >= 3 && std::equal(name, name + 3, at, [](char16_t wanted, char16_t unit) {
                   return wanted == (unit | 0x20) && unit < 0x80;
               });
    };
    bool const negative = at != end && *at == u'-';
    bool const hasSign = negative || (at != end && *at == u'+');
    bool const isNan = !hasSign && startsWith(u"nan");
    at += hasSign;
    if ((!isNan && !startsWith(u"inf")) || SkipSpace(at + 3, end) != end) {
        return {0, false};
    }
    return {isNan      ? Limits::quiet_NaN()
            : negative ? -Limits::infinity()
                       : Limits::infinity(),
            true};
}

template <class Float>
Parsed<Float> Read(char16_t const* text, int length)
{
    char16_t const* const end = text + length;
    char16_t const* const start = SkipSpace(text, end);
    Decimal decimal;
    char16_t const* const stop = ReadDecimal(start, end, decimal);
    if (!decimal.found) {
        return ReadName<Float>(start, end);
    }
    if (SkipSpace(stop, end) != end) {
        return {0, false};
    }
    return Round<Float>(start, stop, decimal);
}

} // namespace

Parsed<double> ToDouble(char16_t const* text, int length)
{
    return Read<double>(text, length);
}

Parsed<float> ToFloat(char16_t const* text, int length)
{
    return Read<float>(text, length);
}

int LeftDoubleLength(char16_t const* text, int length)
{
    if (length < 0) {
        length = static_cast<int>(std::char_traits<char16_t>::length(text));
    }
    Decimal decimal;
    char16_t const* const stop = ReadDecimal(text, text + length, decimal);
    return decimal.found ? static_cast<int>(stop - text) : 0;
}

} // namespace NumberText
