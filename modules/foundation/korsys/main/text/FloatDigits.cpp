#include "korsys/main/text/FloatDigits_p.h"

#include "korsys/main/text/DecimalDigits_p.h"
#include "korsys/main/text/NumberText_p.h"
#include "korsys/main/text/PowersOfTen_p.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace NumberText {
namespace {

constexpr int kMantissaBits = 52;
constexpr int kMinExponent = -1074; ///< Of the lowest mantissa bit.

/// A positive double as mantissa * 2^exponent.
struct BinaryParts
{
    std::uint64_t mantissa;
    int exponent;
};

std::uint64_t BitsOf(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    return bits;
}

BinaryParts Split(double value)
{
    std::uint64_t const bits = BitsOf(value);
    std::uint64_t const fraction = bits & ((std::uint64_t(1) << kMantissaBits) - 1);
    int const biased = static_cast<int>(bits >> kMantissaBits);
    if (biased == 0) {
        return {fraction, kMinExponent};
    }
    return {fraction | std::uint64_t(1) << kMantissaBits, kMinExponent + biased - 1};
}

// The exact way: the number in fixed point, digits taken off nine at a time.

class FixedPoint
{
public:
    explicit FixedPoint(BinaryParts parts)
    {
        int const position = parts.exponent + kFractionBits;
        UInt128 const bits = UInt128(parts.mantissa) << position % 32;
        for (int i = 0; i < 3; ++i) {
            m_words[position / 32 + i] = static_cast<std::uint32_t>(bits >> 32 * i);
        }
        m_low = std::min(position / 32, kFractionWords);
        m_high = std::max(position / 32 + 3, kFractionWords);
    }

    bool HasInteger()
    {
        while (m_high > kFractionWords && m_words[m_high - 1] == 0) {
            --m_high;
        }
        return m_high > kFractionWords;
    }

    /// Takes the lowest nine digits off the integer part.
    std::uint32_t TakeFromInteger()
    {
        std::uint64_t rest = 0;
        for (int i = m_high; i-- > kFractionWords;) {
            rest = rest << 32 | m_words[i];
            m_words[i] = static_cast<std::uint32_t>(rest / kTenToThe9th);
            rest %= kTenToThe9th;
        }
        return static_cast<std::uint32_t>(rest);
    }

    bool HasFraction()
    {
        while (m_low < kFractionWords && m_words[m_low] == 0) {
            ++m_low;
        }
        return m_low < kFractionWords;
    }

    /// Takes the highest nine digits off the fraction.
    std::uint32_t TakeFromFraction()
    {
        std::uint64_t carry = 0;
        for (int i = m_low; i < kFractionWords; ++i) {
            carry += std::uint64_t(m_words[i]) * kTenToThe9th;
            m_words[i] = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
        return static_cast<std::uint32_t>(carry);
    }

private:
    static constexpr std::uint32_t kTenToThe9th = 1000000000;
    static constexpr int kFractionWords = 34;
    static constexpr int kFractionBits = 32 * kFractionWords;
    static constexpr int kWords = kFractionWords + 34;

    std::uint32_t m_words[kWords] = {}; ///< Lowest first.
    int m_low;                          ///< All words below are zero.
    int m_high;                         ///< All words from here on are zero.
};

/// Appends nine digits; zeros before the first digit of the number only move the point.
void AppendNine(FloatDigits& digits, std::uint32_t nine)
{
    char16_t* const out = digits.units + digits.count;
    if (digits.count == 0) {
        digits.count = nine != 0 ? WriteDecimal(out, nine) : 0;
        digits.point += digits.count - 9;
        return;
    }
    *out = static_cast<char16_t>(u'0' + nine / 100000000);
    StoreDigits(out + 1, SplitDigits(nine % 100000000));
    digits.count += 9;
}

void AppendInteger(FloatDigits& digits, FixedPoint& number)
{
    std::uint32_t groups[35];
    int groupCount = 0;
    while (number.HasInteger()) {
        groups[groupCount++] = number.TakeFromInteger();
    }
    digits.point = 9 * groupCount;
    for (int i = groupCount; i-- > 0;) {
        AppendNine(digits, groups[i]);
    }
}

/// Cuts after `wanted` digits. All digits of the number, or one more than wanted, are there.
void RoundAt(FloatDigits& digits, std::int64_t wanted)
{
    if (wanted >= digits.count) {
        return;
    }
    bool const up = wanted >= 0 && digits.units[wanted] >= u'5';
    digits.count = static_cast<int>(std::max<std::int64_t>(wanted, 0));
    if (!up) {
        return;
    }
    while (digits.count > 0 && digits.units[digits.count - 1] == u'9') {
        --digits.count;
    }
    if (digits.count == 0) { // only nines, or nothing: the carry becomes the first digit
        digits.units[digits.count++] = u'0';
        ++digits.point;
    }
    ++digits.units[digits.count - 1];
}

enum class Place
{
    Significant,
    Fraction
};

void RoundExactly(double value, Place place, std::int64_t wanted, FloatDigits& digits)
{
    FixedPoint number(Split(value));
    digits.count = 0;
    AppendInteger(digits, number);
    auto const wantedCount = [&] {
        return place == Place::Significant ? wanted : wanted + digits.point;
    };
    while (digits.count <= wantedCount() && number.HasFraction()) {
        AppendNine(digits, number.TakeFromFraction());
    }
    RoundAt(digits, wantedCount());
}

// The short way: one product with a power of ten holds all wanted digits and enough of the rest to
// round them.

/// The integer nearest to a product. When it is not `sure`, the cut-off product leaves open on
/// which side of the tie the exact one lies.
struct RoundedProduct
{
    std::uint64_t integer;
    bool sure;
};

constexpr int kMinShift = 65; ///< Leaves integers of 63 bits.

/// Requires: the product is below 2^63, so that its exponent is at most -kMinShift.
RoundedProduct Round(ScaledNumber const& product)
{
    int const shift = -product.exponent - 64;
    if (shift > 64) {
        return {0, true};
    }
    std::uint64_t const half = std::uint64_t(1) << (shift - 1);
    std::uint64_t const rest = product.high & (half | (half - 1));
    bool const sure = product.exact || rest != half - 1 || product.low != ~std::uint64_t(0);
    std::uint64_t const integer = shift == 64 ? 0 : product.high >> shift;
    return {integer + (rest >= half), sure};
}

ScaledNumber Scale(BinaryParts parts, int k)
{
    int const shift = __builtin_clzll(parts.mantissa);
    ScaledNumber product = ScaleByPowerOfTen(parts.mantissa << shift, k);
    product.exponent += parts.exponent - shift;
    return product;
}

constexpr int kMaxShortDigits = 17;

std::uint64_t PowerOfTenInteger(int k)
{
    // The powers up to 10^27 are stored whole, below their highest bit.
    return kPowersOfTen[PowerIndex(k)].high >> (63 - BinaryExponentOfPower(k));
}

/// The decimal exponent of a normal double, or one less. Read as an integer, the upper half of a
/// double is its binary logarithm with the mantissa taken for the fraction's logarithm; that is too
/// low by 0.086 at most, and never near a power of ten exact enough for the cut-off factor to
/// matter.
int EstimateExponent(double value)
{
    constexpr std::int64_t kOne = std::int64_t(1) << 20;
    constexpr std::int64_t kLog10Of2 = 1292913986; // * 2^32, cut off
    std::int64_t const log2 = static_cast<std::int64_t>(BitsOf(value) >> 32) - 1023 * kOne;
    return static_cast<int>(log2 * kLog10Of2 >> 52);
}

void SetInteger(FloatDigits& digits, std::uint64_t integer, int k)
{
    digits.count = integer != 0 ? WriteUnsigned(digits.units, integer) : 0;
    digits.point = digits.count - k;
}

bool RoundShortToSignificant(double value, int wanted, FloatDigits& digits)
{
    BinaryParts const parts = Split(value);
    int k = wanted - 1 - EstimateExponent(value);
    RoundedProduct rounded = Round(Scale(parts, k));
    if (rounded.integer >= PowerOfTenInteger(wanted)) {
        rounded = Round(Scale(parts, --k));
    }
    SetInteger(digits, rounded.integer, k);
    return rounded.sure;
}

bool RoundShortToFraction(double value, int wanted, FloatDigits& digits)
{
    ScaledNumber const product = Scale(Split(value), wanted);
    if (product.exponent > -kMinShift) {
        return false;
    }
    RoundedProduct const rounded = Round(product);
    SetInteger(digits, rounded.integer, wanted);
    return rounded.sure;
}

} // namespace

void RoundToSignificant(double value, std::int64_t wanted, FloatDigits& digits)
{
    bool const isShort = wanted <= kMaxShortDigits && value >= std::numeric_limits<double>::min();
    if (!isShort || !RoundShortToSignificant(value, static_cast<int>(wanted), digits)) {
        RoundExactly(value, Place::Significant, wanted, digits);
    }
}

void RoundToFraction(double value, std::int64_t wanted, FloatDigits& digits)
{
    bool const isShort = wanted <= kMaxPower;
    if (!isShort || !RoundShortToFraction(value, static_cast<int>(wanted), digits)) {
        RoundExactly(value, Place::Fraction, wanted, digits);
    }
}

} // namespace NumberText
