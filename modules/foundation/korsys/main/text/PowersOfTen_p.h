/// Products with powers of ten, precise enough that rounding them is nearly always certain.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace NumberText {

__extension__ typedef unsigned __int128 UInt128;

constexpr int kMinPower = -342; ///< The smallest value of 19 digits that is not below all doubles.
constexpr int kMaxPower = 324;  ///< Makes the smallest normal double an integer of 17 digits.

/// Powers from here on that are stored without loss.
constexpr int kMaxExactPower = 55;

/// The upper 128 bits of 10^k, cut off, highest bit set.
struct PowerOfTen
{
    std::uint64_t high;
    std::uint64_t low;
};

/// The powers from kMinPower to kMaxPower.
using PowerTable = std::array<PowerOfTen, kMaxPower - kMinPower + 1>;
extern PowerTable const kPowersOfTen;

constexpr std::size_t PowerIndex(int k)
{
    return static_cast<std::size_t>(k - kMinPower);
}

/// The exponent of the highest bit of 10^k.
constexpr int BinaryExponentOfPower(int k)
{
    return k * 217706 >> 16;
}

/// A product P of a factor and 10^k as (high * 2^64 + low) * 2^exponent. The product is cut off: it
/// is P, or less than two units of `low` below it. When `exact` is set it is less than one unit
/// below and `rest` is zero only if nothing was cut off.
struct ScaledNumber
{
    std::uint64_t high;
    std::uint64_t low;
    std::uint64_t rest;
    int exponent;
    bool exact;
};

/// Multiplies by 10^k.
/// Requires: the highest bit of `factor` is set, k is in the range of the table.
inline ScaledNumber ScaleByPowerOfTen(std::uint64_t factor, int k)
{
    PowerOfTen const& power = kPowersOfTen[PowerIndex(k)];
    UInt128 const lower = UInt128(factor) * power.low;
    UInt128 const upper = UInt128(factor) * power.high + static_cast<std::uint64_t>(lower >> 64);
    return {static_cast<std::uint64_t>(upper >> 64), static_cast<std::uint64_t>(upper),
            static_cast<std::uint64_t>(lower), BinaryExponentOfPower(k) - 127 + 64,
            static_cast<unsigned>(k) <= kMaxExactPower};
}

} // namespace NumberText
