#include "korsys/main/text/NumberText_p.h"

#include "korsys/main/text/NumberScan_p.h"

#include <algorithm>
#include <string>

namespace NumberText {
namespace {

constexpr char kDigits[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ-_";
constexpr int kNoDigit = 64; ///< Above the digits of every base.
constexpr std::uint32_t kTenToThe8th = 100000000;

int WriteDecimal64(char16_t* out, std::uint64_t value)
{
    if (value < kTenToThe8th) {
        return WriteShortDecimal(out, static_cast<std::uint32_t>(value));
    }
    int const headLength = WriteDecimal64(out, value / kTenToThe8th);
    StoreDigits(out + headLength, SplitDigits(static_cast<std::uint32_t>(value % kTenToThe8th)));
    return headLength + 8;
}

int WritePowerOfTwoBase(char16_t* out, std::uint64_t value, int base)
{
    int const bitsPerDigit = __builtin_ctz(static_cast<unsigned>(base));
    int const bits = 64 - __builtin_clzll(value | 1);
    int const length = (bits + bitsPerDigit - 1) / bitsPerDigit;
    for (int i = length; i-- > 0; value >>= bitsPerDigit) {
        out[i] = static_cast<char16_t>(kDigits[value & static_cast<unsigned>(base - 1)]);
    }
    return length;
}

int WriteOtherBase(char16_t* out, std::uint64_t value, int base)
{
    auto const divisor = static_cast<unsigned>(base);
    char16_t reversed[kMaxIntegerUnits];
    int length = 0;
    do {
        reversed[length++] = static_cast<char16_t>(kDigits[value % divisor]);
        value /= divisor;
    } while (value != 0);
    std::reverse_copy(reversed, reversed + length, out);
    return length;
}

/// The value of a digit in any base up to 36; kNoDigit for other units.
int DigitInEitherCase(char16_t unit)
{
    if (unit >= u'0' && unit <= u'9') {
        return unit - u'0';
    }
    auto const letter = static_cast<char16_t>(unit | 0x20);
    return letter >= u'a' && letter <= u'z' ? letter - u'a' + 10 : kNoDigit;
}

int DigitOfAlphabet(char16_t unit)
{
    if (unit >= u'A' && unit <= u'Z') {
        return unit - u'A' + 36;
    }
    if (unit == u'-' || unit == u'_') {
        return unit == u'-' ? 62 : 63;
    }
    return DigitInEitherCase(unit);
}

int DigitOf(char16_t unit, int base)
{
    return base <= 36 ? DigitInEitherCase(unit) : DigitOfAlphabet(unit);
}

bool IsDigitAt(char16_t const* at, char16_t const* end, int base)
{
    return at != end && DigitOf(*at, base) < base;
}

/// The outer form of an integer: where its digits start and what they mean.
struct IntegerStart
{
    char16_t const* digits; ///< Null when no digit follows.
    int base;
    bool negative;
};

/// Steps over sign and prefix. A prefix counts only with a digit behind it; otherwise its zero is
/// the number.
IntegerStart FindDigits(char16_t const* at, char16_t const* end, int base)
{
    bool const negative = at != end && *at == u'-';
    if (negative || (at != end && *at == u'+')) {
        ++at;
    }
    if (base == 0 || base == 16) {
        bool const startsWithZero = at != end && *at == u'0';
        if (startsWithZero && end - at > 2 && (at[1] | 0x20) == u'x' &&
            IsDigitAt(at + 2, end, 16)) {
            return {at + 2, 16, negative};
        }
        if (base == 0) {
            base = startsWithZero ? 8 : 10;
        }
    }
    return {IsDigitAt(at, end, base) ? at : nullptr, base, negative};
}

/// Collects digits; the answer is the first unit that is none. `fits` is false past 64 bits.
char16_t const* ReadDigits(char16_t const* at, char16_t const* end, int base, std::uint64_t& value,
                           bool& fits)
{
    value = 0;
    fits = true;
    for (; at != end; ++at) {
        int const digit = DigitOf(*at, base);
        if (digit >= base) {
            break;
        }
        std::uint64_t const factor = static_cast<unsigned>(base);
        fits = !__builtin_mul_overflow(value, factor, &value) && fits;
        fits = !__builtin_add_overflow(value, static_cast<unsigned>(digit), &value) && fits;
    }
    return at;
}

struct Magnitude
{
    std::uint64_t value;
    bool negative;
    bool ok;
};

/// Reads a text that is only digits, a minus before them or not: nearly every number.
inline bool ReadCommonInteger(char16_t const* text, int length, Magnitude& result)
{
    if (length < 1) {
        return false;
    }
    result.negative = *text == u'-';
    int const count = length - result.negative;
    result.ok = static_cast<unsigned>(count - 1) < kMaxShortCount &&
                ReadShortDecimal(text + result.negative, count, result.value);
    return result.ok;
}

/// Reads the whole text as one integer of at most 64 bits.
Magnitude ReadMagnitude(char16_t const* text, int length, int base)
{
    Magnitude common;
    if (base == 10 && ReadCommonInteger(text, length, common)) {
        return common;
    }
    if (base != 0 && !IsBase(base)) {
        return {0, false, false};
    }
    char16_t const* const end = text + length;
    IntegerStart const start = FindDigits(SkipSpace(text, end), end, base);
    if (start.digits == nullptr) {
        return {0, false, false};
    }
    Magnitude result{0, start.negative, false};
    char16_t const* const stop = ReadDigits(start.digits, end, start.base, result.value, result.ok);
    result.ok = result.ok && SkipSpace(stop, end) == end;
    return result;
}

} // namespace

int WriteUnsigned(char16_t* out, std::uint64_t value, int base)
{
    if (base == 10) {
        return WriteDecimal64(out, value);
    }
    bool const isPowerOfTwo = (base & (base - 1)) == 0;
    return isPowerOfTwo ? WritePowerOfTwoBase(out, value, base) : WriteOtherBase(out, value, base);
}

int WriteSigned(char16_t* out, std::int64_t value, int base)
{
    auto const bits = static_cast<std::uint64_t>(value);
    if (value >= 0 || base != 10) {
        return WriteUnsigned(out, bits, base);
    }
    *out = u'-';
    return 1 + WriteDecimal64(out + 1, 0 - bits);
}

int WritePointer(char16_t* out, void const* address, bool prefix, bool padded)
{
    char16_t digits[kMaxIntegerUnits];
    int const length = WriteUnsigned(digits, reinterpret_cast<std::uintptr_t>(address), 16);
    char16_t* at = out;
    if (prefix) {
        at = std::copy_n(u"0x", 2, at);
    }
    if (padded) {
        at = std::fill_n(at, 16 - length, u'0');
    }
    return static_cast<int>(std::copy_n(digits, length, at) - out);
}

std::int64_t FieldLength(int length, int fieldWidth)
{
    std::int64_t const width = fieldWidth;
    return std::max<std::int64_t>(length, width < 0 ? -width : width);
}

void WriteField(char16_t* out, char16_t const* number, int length, int base, int fieldWidth,
                char16_t fill)
{
    std::int64_t const fillLength = FieldLength(length, fieldWidth) - length;
    if (fieldWidth < 0) {
        std::fill_n(std::copy_n(number, length, out), fillLength, fill);
        return;
    }
    if (base == 10 && fill == u'0' && *number == u'-') {
        *out++ = u'-';
        ++number;
        --length;
    }
    std::copy_n(number, length, std::fill_n(out, fillLength, fill));
}

Parsed<std::int64_t> ToInt64(char16_t const* text, int length, int base)
{
    Magnitude const magnitude = ReadMagnitude(text, length, base);
    std::uint64_t const limit = (std::uint64_t(1) << 63) - !magnitude.negative;
    if (!magnitude.ok || magnitude.value > limit) {
        return {0, false};
    }
    std::uint64_t const bits = magnitude.negative ? 0 - magnitude.value : magnitude.value;
    return {static_cast<std::int64_t>(bits), true};
}

Parsed<std::uint64_t> ToUInt64(char16_t const* text, int length, int base)
{
    Magnitude const magnitude = ReadMagnitude(text, length, base);
    bool const ok = magnitude.ok && !magnitude.negative;
    return {ok ? magnitude.value : 0, ok};
}

Parsed<std::int32_t> ToInt32(char16_t const* text, int length, int base)
{
    Magnitude common;
    if (base == 10 && ReadCommonInteger(text, length, common)) {
        auto const magnitude = static_cast<std::int64_t>(common.value);
        std::int64_t const value = common.negative ? -magnitude : magnitude;
        bool const fits = value == static_cast<std::int32_t>(value);
        return {fits ? static_cast<std::int32_t>(value) : 0, fits};
    }
    return ToInteger<std::int32_t>(text, length, base);
}

int LeftIntegerLength(char16_t const* text, int length, int base)
{
    if (base != 0 && !IsBase(base)) {
        return 0;
    }
    if (length < 0) {
        length = static_cast<int>(std::char_traits<char16_t>::length(text));
    }
    char16_t const* const end = text + length;
    IntegerStart const start = FindDigits(text, end, base);
    if (start.digits == nullptr) {
        return 0;
    }
    std::uint64_t value = 0;
    bool fits = false;
    return static_cast<int>(ReadDigits(start.digits, end, start.base, value, fits) - text);
}

} // namespace NumberText
