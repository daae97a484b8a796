// Readers and measurers of numbers: what they accept must be what they measure and must be written
// back as the same number. The first byte chooses the base, the second how the rest becomes units.

#include "korcoreplatform/fuzz/support/FuzzInput.h"
#include "korsys/main/text/NumberText_p.h"
#include "korsys/tests/support/TextPeers.h"

#include <cmath>

namespace {

using namespace NumberText;

void CheckIntegers(char16_t const* text, int length, int base)
{
    char16_t units[kMaxIntegerUnits];
    Parsed<std::uint64_t> const magnitude = ToUInt64(text, length, base);
    int const writeBase = base == 0 ? 10 : base;
    int const written = magnitude.ok ? WriteUnsigned(units, magnitude.value, writeBase) : 0;
    if (written > 0 && units[0] != u'-') { // in bases 63 and 64 it may read as a sign
        Parsed<std::uint64_t> const back = ToUInt64(units, written, writeBase);
        Require(back.ok && back.value == magnitude.value);
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

    int const measured = LeftIntegerLength(text, length, base);
    Require(measured >= 0 && measured <= length);
    Parsed<std::int64_t> const left = ToInt64(text, measured, base);
    // No 12 digits of base 32 or less are too many.
    Require(measured == 0 || measured > 12 || base > 32 || left.ok);
    Require(measured == 0 || !number.ok || left.value == number.value);
}

void CheckFloats(char16_t const* text, int length)
{
    Parsed<double> const number = ToDouble(text, length);
    if (number.ok && !std::isnan(number.value)) {
        FloatText const written(number.value, 'e', 16); // tells every double from its neighbours
        Parsed<double> const back = ToDouble(written.Data(), written.Length());
        Require(back.ok && back.value == number.value);
    }
    Require(number.ok || !ToFloat(text, length).ok);
    Require(number.ok || number.value == 0 || std::isinf(number.value));

    int const measured = LeftDoubleLength(text, length);
    Require(measured >= 0 && measured <= length);
    Parsed<double> const left = ToDouble(text, measured);
    // Only the range can make it fail: "1e309" is the shortest outside.
    Require(measured == 0 || left.ok ||
            (measured > 4 && (std::isinf(left.value) || left.value == 0)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    if (size < 2) {
        return 0;
    }
    int const base = data[0] % 68; // 0, the bases and some that are none
    std::u16string const units = (data[1] % 2 == 1 ? Units : Latin1)(data + 2, size - 2);
    Exact const text(units);
    CheckIntegers(text, Size(units), base);
    CheckFloats(text, Size(units));
    return 0;
}
