// Readers and measurers of numbers: what they accept must be what they measure and must be written
// back as the same number. The first byte chooses the base, the second how the rest becomes units.

#include "korsys/main/text/NumberText_p.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

using namespace NumberText;

void Require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

/// A block of exactly the text's size, so that the address sanitizer sees a read outside.
std::vector<char16_t> UnitsOf(std::uint8_t const* data, std::size_t size, bool wide)
{
    if (!wide) {
        return std::vector<char16_t>(data, data + size);
    }
    std::vector<char16_t> units;
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        units.push_back(static_cast<char16_t>(data[i] | data[i + 1] << 8));
    }
    return units;
}

void CheckIntegers(char16_t const* text, int length, int base)
{
    char16_t units[kMaxIntegerUnits];
    Parsed<std::uint64_t> const magnitude = ToUInt64(text, length, base);
    if (magnitude.ok) {
        int const writeBase = base == 0 ? 10 : base;
        int const written = WriteUnsigned(units, magnitude.value, writeBase);
        // In bases 63 and 64 the first digit may be the one that reads as a sign.
        if (units[0] != u'-') {
            Parsed<std::uint64_t> const back = ToUInt64(units, written, writeBase);
            Require(back.ok && back.value == magnitude.value);
        }
    }
    Parsed<std::int64_t> const number = ToInt64(text, length, base);
    if (number.ok) {
        Parsed<std::int64_t> const back = ToInt64(units, WriteSigned(units, number.value), 10);
        Require(back.ok && back.value == number.value);
        Require(number.value == 0 || magnitude.ok == (number.value > 0));
        Require(!magnitude.ok || magnitude.value == std::uint64_t(number.value));
    }
    Parsed<std::int32_t> const narrow = ToInt32(text, length, base);
    Require(narrow.ok == (number.ok && number.value == std::int32_t(number.value)));
    Require(narrow.value == (narrow.ok ? number.value : 0));
}

void CheckFloats(char16_t const* text, int length)
{
    Parsed<double> const number = ToDouble(text, length);
    if (number.ok && !std::isnan(number.value)) {
        FloatText const written(number.value, 'e', 16); // tells every double from its neighbours
        Parsed<double> const back = ToDouble(written.Data(), written.Length());
        Require(back.ok && back.value == number.value);
    }
    Parsed<float> const narrow = ToFloat(text, length);
    Require(!narrow.ok || number.ok);
    Require(number.ok || number.value == 0 || std::isinf(number.value));
}

void CheckMeasures(char16_t const* text, int length, int base)
{
    int const integerLength = LeftIntegerLength(text, length, base);
    Require(integerLength >= 0 && integerLength <= length);
    if (integerLength > 0 && integerLength <= 12) { // no 12 digits of base 32 or less are too many
        Require(base > 32 || ToInt64(text, integerLength, base).ok);
    }
    if (ToInt64(text, length, base).ok && integerLength > 0) {
        Require(ToInt64(text, integerLength, base).value == ToInt64(text, length, base).value);
    }
    int const floatLength = LeftDoubleLength(text, length);
    Require(floatLength >= 0 && floatLength <= length);
    if (floatLength > 0) {
        // Only the range can make it fail; an infinity or a zero says so.
        Parsed<double> const number = ToDouble(text, floatLength);
        Require(number.ok || std::isinf(number.value) || number.value == 0);
        Require(number.ok || floatLength > 4); // "1e309" is the shortest outside
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size < 2) {
        return 0;
    }
    int const base = data[0] % 68; // 0, the bases and some that are none
    std::vector<char16_t> const units = UnitsOf(data + 2, size - 2, data[1] % 2 == 1);
    int const length = static_cast<int>(units.size());
    CheckIntegers(units.data(), length, base);
    CheckFloats(units.data(), length);
    CheckMeasures(units.data(), length, base);
    return 0;
}
