#include "korsys/main/text/NumberText_p.h"

#include "korsys/main/text/FloatDigits_p.h"
#include "korsys/main/text/TStringErrors_p.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace NumberText {
namespace {

constexpr std::int64_t kMaxLength = std::int64_t(0x7FFFFFFF) - 63;

/// Writes the digits from index `from` on; outside of the known digits they are zeros.
char16_t* WriteDigits(char16_t* out, FloatDigits const& digits, std::int64_t from,
                      std::int64_t count)
{
    std::int64_t const zerosBefore = std::clamp<std::int64_t>(-from, 0, count);
    from += zerosBefore;
    std::int64_t const known =
        std::clamp<std::int64_t>(digits.count - from, 0, count - zerosBefore);
    out = std::fill_n(out, zerosBefore, u'0');
    out = std::copy_n(digits.units + from, known, out);
    return std::fill_n(out, count - zerosBefore - known, u'0');
}

/// Writes sign, integer digits and fraction. `point` is the index of the first fraction digit.
char16_t* WriteNumber(char16_t* out, bool negative, FloatDigits const& digits, int point,
                      std::int64_t fraction)
{
    if (negative) {
        *out++ = u'-';
    }
    if (point > 0) {
        out = WriteDigits(out, digits, 0, point);
    } else {
        *out++ = u'0';
    }
    if (fraction > 0) {
        *out++ = u'.';
        out = WriteDigits(out, digits, point, fraction);
    }
    return out;
}

char16_t* WriteExponent(char16_t* out, char16_t letter, int exponent)
{
    auto const unitOf = [](int digit) { return static_cast<char16_t>(u'0' + digit); };
    int const magnitude = std::abs(exponent);
    *out++ = letter;
    *out++ = exponent < 0 ? u'-' : u'+';
    if (magnitude >= 100) {
        *out++ = unitOf(magnitude / 100);
    }
    *out++ = unitOf(magnitude / 10 % 10);
    *out++ = unitOf(magnitude % 10);
    return out;
}

void DropTrailingZeros(FloatDigits& digits)
{
    while (digits.count > 0 && digits.units[digits.count - 1] == u'0') {
        --digits.count;
    }
}

/// Rounds as the format wants; `precision` is the one asked for.
void Round(double magnitude, char form, std::int64_t precision, FloatDigits& digits)
{
    digits.count = 0;
    if (magnitude != 0) {
        if (form == 'e' || form == 'g') {
            RoundToSignificant(magnitude, precision + (form == 'e'), digits);
        } else {
            RoundToFraction(magnitude, precision, digits);
        }
    }
    if (digits.count == 0) {
        digits.point = 1; // zero is written like a number of one digit
    }
}

} // namespace

FloatText::FloatText(double value, char format, int precision, bool trim)
{
    bool const capital = format >= 'A' && format <= 'Z';
    char const form = static_cast<char>(format | 0x20);
    if (!std::isfinite(value)) {
        WriteNotFinite(value, capital);
        return;
    }
    if (precision < 0) {
        precision = 6;
    }
    if (form == 'g') {
        precision = std::max(precision, 1);
        trim = true;
    }
    FloatDigits digits;
    Round(std::abs(value), form, precision, digits);
    if (trim) {
        DropTrailingZeros(digits);
    }
    int const exponent = digits.point - 1;
    if (form == 'e' || (form == 'g' && (exponent < -4 || exponent >= precision))) {
        WriteScientific(value < 0, digits, trim ? digits.count - 1 : precision, capital);
    } else {
        WritePlain(value < 0, digits, trim ? digits.count - digits.point : precision);
    }
}

void FloatText::WritePlain(bool negative, FloatDigits const& digits, std::int64_t fraction)
{
    std::int64_t const fractionLength = fraction > 0 ? 1 + fraction : 0;
    char16_t* out = Reserve(negative + std::max(digits.point, 1) + fractionLength);
    WriteNumber(out, negative, digits, digits.point, fraction);
}

void FloatText::WriteScientific(bool negative, FloatDigits const& digits, std::int64_t fraction,
                                bool capital)
{
    int const exponent = digits.point - 1;
    int const exponentLength = std::abs(exponent) < 100 ? 4 : 5;
    std::int64_t const fractionLength = fraction > 0 ? 1 + fraction : 0;
    char16_t* const out = Reserve(negative + 1 + fractionLength + exponentLength);
    WriteExponent(WriteNumber(out, negative, digits, 1, fraction), capital ? u'E' : u'e', exponent);
}

void FloatText::WriteNotFinite(double value, bool capital)
{
    bool const isNumber = !std::isnan(value);
    bool const negative = isNumber && value < 0;
    char16_t* out = Reserve(negative + 3);
    if (negative) {
        *out++ = u'-';
    }
    char16_t const* const name =
        isNumber ? (capital ? u"INF" : u"inf") : (capital ? u"NAN" : u"nan");
    std::copy_n(name, 3, out);
}

char16_t* FloatText::Reserve(std::int64_t length)
{
    if (length > kMaxLength) {
        TStringErrors::ThrowTooLong(length);
    }
    m_length = static_cast<int>(length);
    if (length > kPlaceUnits) {
        m_block.reset(new char16_t[static_cast<std::size_t>(length)]);
        m_data = m_block.get();
    }
    return m_data;
}

} // namespace NumberText
