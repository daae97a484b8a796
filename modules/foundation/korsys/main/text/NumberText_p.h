/// Number-to-text and text-to-number kernels on bare UTF-16 units; no locale takes part.

#pragma once

#include "korsys/main/KorSysExport.h"
#include "korsys/main/text/DecimalDigits_p.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <type_traits>

/// The digits are `0-9a-zA-Z-_`: bases up to 36 use lower-case letters when writing and take
/// either case when reading; bases 37 to 64 tell the cases apart.
///
/// Writers put units at `out` and return how many count; no terminating zero is written. Readers
/// take a range of `length` units, which may be null when it is empty.
///
/// Thread safety: every function may be called from any thread.
namespace NumberText {

constexpr bool IsBase(int base)
{
    return base >= 2 && base <= 64;
}

// Writing integers: `WriteDecimal` of DecimalDigits_p.h is the short way for 32 bits in base 10.

/// Room for any integer in any base. All these units may be overwritten, those behind the returned
/// length with scratch values.
constexpr int kMaxIntegerUnits = 64;

/// Writes `value` in `base`.
/// Requires: `IsBase(base)`, room for kMaxIntegerUnits at `out`.
KORSYS_EXPORT int WriteUnsigned(char16_t* out, std::uint64_t value, int base = 10);

/// As above; a negative number is written with a minus in base 10 and as its 64-bit two's
/// complement in every other base.
KORSYS_EXPORT int WriteSigned(char16_t* out, std::int64_t value, int base = 10);

/// The lower-case hexadecimal address: `prefix` puts "0x" before it, `padded` makes it 16 digits.
/// Requires: room for kMaxIntegerUnits at `out`.
KORSYS_EXPORT int WritePointer(char16_t* out, void const* address, bool prefix, bool padded);

/// How many units `WriteField` writes for a number of `length` units.
KORSYS_EXPORT std::int64_t FieldLength(int length, int fieldWidth);

/// Writes the number into a field of |fieldWidth| units or as many as it needs: a positive width
/// pads on the left, a negative one on the right. When base 10 is padded with u'0' on the left,
/// the zeros go between the sign and the digits.
/// Requires: room for `FieldLength(length, fieldWidth)` at `out`, which is not in `number`.
KORSYS_EXPORT void WriteField(char16_t* out, char16_t const* number, int length, int base,
                              int fieldWidth, char16_t fill);

// Writing floating point

struct FloatDigits;

/// The text of a double, exact in every digit: as 'e' or 'f' with `precision` digits after the
/// point or as 'g' with `precision` significant digits and no trailing zeros. Capital letters
/// make "E" and "INF"; 'F' and unknown formats act as 'f'. A negative precision is 6, 0 with 'g'
/// is 1. Ties round away from zero. The exponent has two digits at least. -0.0 has no sign, a
/// negative number that rounds to zero keeps it.
///
/// With `trim`, zeros that end the fraction go, and the point when nothing follows it.
///
///     FloatText const text(0.125, 'e', 1);   // 1.3e-01
///
/// Throws: `std::bad_alloc`, and what a text longer than the text core holds throws.
class KORSYS_EXPORT FloatText
{
public:
    FloatText(double value, char format, int precision, bool trim = false);
    FloatText(FloatText const&) = delete;
    FloatText& operator=(FloatText const&) = delete;

    /// Good as long as the object; the first kReadableUnits units may always be copied, those
    /// behind the length are scratch values.
    char16_t const* Data() const { return m_data; }
    int Length() const { return m_length; }

    static constexpr int kReadableUnits = 16;

private:
    static constexpr int kPlaceUnits = 48;

    void WritePlain(bool negative, FloatDigits const& digits, std::int64_t fraction);
    void WriteScientific(bool negative, FloatDigits const& digits, std::int64_t fraction,
                         bool capital);
    void WriteNotFinite(double value, bool capital);
    char16_t* Reserve(std::int64_t length);

    char16_t* m_data = m_place; ///< m_place or m_block.
    int m_length = 0;
    char16_t m_place[kPlaceUnits]; ///< Not cleared: most of it is never used.
    std::unique_ptr<char16_t[]> m_block;
};

// Reading

/// What a reader found. Without success the value is 0, or an infinity for a floating-point number
/// that is too large.
template <class Number>
struct Parsed
{
    Number value;
    bool ok;
};

/// Reads an integer: white space, at most one sign directly before the digits, digits, white space.
/// Base 0 finds the base from the text: "0x" is 16, another leading "0" is 8, else 10; base 16
/// takes the "0x" too. A minus fails for the unsigned type. In bases 63 and 64 a leading "-" is
/// the sign. Other bases than 0 and 2 to 64 fail.
KORSYS_EXPORT Parsed<std::int64_t> ToInt64(char16_t const* text, int length, int base = 10);
KORSYS_EXPORT Parsed<std::uint64_t> ToUInt64(char16_t const* text, int length, int base = 10);
KORSYS_EXPORT Parsed<std::int32_t> ToInt32(char16_t const* text, int length, int base = 10);

/// As above for any integer type; a number outside its range fails.
template <class Integer>
Parsed<Integer> ToInteger(char16_t const* text, int length, int base = 10)
{
    using Limits = std::numeric_limits<Integer>;
    if constexpr (std::is_signed_v<Integer>) {
        Parsed<std::int64_t> const wide = ToInt64(text, length, base);
        bool const fits = wide.value >= Limits::min() && wide.value <= Limits::max();
        return {fits ? static_cast<Integer>(wide.value) : Integer(0), wide.ok && fits};
    } else {
        Parsed<std::uint64_t> const wide = ToUInt64(text, length, base);
        bool const fits = wide.value <= Limits::max();
        return {fits ? static_cast<Integer>(wide.value) : Integer(0), wide.ok && fits};
    }
}

/// Reads a decimal number, correctly rounded to the nearest value: white space, a sign, digits with
/// at most one point, an exponent, white space; or "nan", "inf", "+inf", "-inf" in any case.
/// A number that is not zero but rounds to zero fails.
KORSYS_EXPORT Parsed<double> ToDouble(char16_t const* text, int length);
KORSYS_EXPORT Parsed<float> ToFloat(char16_t const* text, int length);

/// The units of the longest start of the text that is an integer as above, without white space;
/// its size does not matter. 0 when there is none. A `length` of -1 goes up to the first zero.
///
///     "0x" in base 16   // 1: the zero
///     "12 "             // 2
KORSYS_EXPORT int LeftIntegerLength(char16_t const* text, int length, int base = 10);

/// As above for floating-point numbers; "inf" and "nan" are none.
///
///     "1e"    // 1: an exponent counts only with its digits
///     "1.x"   // 2
KORSYS_EXPORT int LeftDoubleLength(char16_t const* text, int length);

} // namespace NumberText
