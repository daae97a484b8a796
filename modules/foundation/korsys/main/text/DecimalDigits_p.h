/// Decimal digits eight at a time: all eight are found and stored without a branch.

#pragma once

#include <cstdint>
#include <cstring>

namespace NumberText {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "digits are packed lowest byte first");

/// Eight digits with values 0 to 9, one in each byte; the first digit is in the lowest byte.
using EightDigits = std::uint64_t;

/// Requires: `value` below 10^8.
constexpr EightDigits SplitDigits(std::uint32_t value)
{
    // Each step halves the groups: quotient q and remainder r of a group g become q + (r << width),
    // which is (g << width) - q * ((divisor << width) - 1). The quotients of all groups are found
    // at once, by reciprocals that are exact for the range of a group.
    std::uint64_t const upper = value / 10000;
    std::uint64_t const fours = (std::uint64_t(value) << 32) - upper * ((10000ull << 32) - 1);
    std::uint64_t const hundreds = (fours * 10486 >> 20) & 0x0000007F0000007Fu;
    std::uint64_t const pairs = (fours << 16) - hundreds * ((100u << 16) - 1);
    std::uint64_t const tens = (pairs * 103 >> 10) & 0x000F000F000F000Fu;
    return (pairs << 8) - tens * ((10u << 8) - 1);
}

/// Stores eight units, each a byte of `bytes` plus u'0'.
inline void StoreDigits(char16_t* out, EightDigits bytes)
{
    // Vector types of the compiler, so that every machine widens the bytes in its own way.
    using Bytes [[gnu::vector_size(16)]] = unsigned char;
    using Halves [[gnu::vector_size(16)]] = std::uint64_t;
    using Units [[gnu::vector_size(16)]] = std::uint16_t;
    Bytes const narrow = reinterpret_cast<Bytes>(Halves{bytes, 0});
    Units const wide = reinterpret_cast<Units>(__builtin_shufflevector(
        narrow, Bytes{}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
    Units const units = wide + std::uint16_t(u'0');
    std::memcpy(out, &units, sizeof(units));
}

/// Writes a value below 10^8 without leading zeros; eight units at `out` are overwritten.
inline int WriteShortDecimal(char16_t* out, std::uint32_t value)
{
    EightDigits const digits = SplitDigits(value);
    // The marker makes the last digit count when it is zero.
    int const leadingZeros = __builtin_ctzll(digits | std::uint64_t(1) << 56) / 8;
    StoreDigits(out, digits >> 8 * leadingZeros);
    return 8 - leadingZeros;
}

/// Room for any decimal number of 32 bits. Units of `out` up to this count may be overwritten,
/// those behind the returned length with scratch values.
constexpr int kMaxDecimal32Units = 11;

/// Writes the number and returns its length.
/// Requires: room for kMaxDecimal32Units at `out`.
inline int WriteDecimal(char16_t* out, std::uint32_t value)
{
    constexpr std::uint32_t kTenToThe8th = 100000000;
    if (value < kTenToThe8th) {
        return WriteShortDecimal(out, value);
    }
    std::uint32_t const head = value / kTenToThe8th; // 1 to 42
    int const headLength = 1 + (head >= 10);
    out[0] = static_cast<char16_t>(u'0' + head / 10);
    out[headLength - 1] = static_cast<char16_t>(u'0' + head % 10);
    StoreDigits(out + headLength, SplitDigits(value % kTenToThe8th));
    return headLength + 8;
}

inline int WriteDecimal(char16_t* out, std::int32_t value)
{
    auto const bits = static_cast<std::uint32_t>(value);
    int const signLength = value < 0;
    out[0] = u'-';
    return signLength + WriteDecimal(out + signLength, value < 0 ? 0 - bits : bits);
}

} // namespace NumberText
