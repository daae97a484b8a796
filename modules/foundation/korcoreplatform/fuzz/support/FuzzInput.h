/// What the fuzzers share: the end of a run whose property does not hold, and bytes as texts.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

inline void Require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

/// The bytes as Latin-1, where most mutations of a good text stay close to it.
inline std::u16string Latin1(std::uint8_t const* data, std::size_t size)
{
    return std::u16string(data, data + size);
}

/// The bytes as UTF-16, low bytes first; half a unit at the end is left out.
inline std::u16string Units(std::uint8_t const* data, std::size_t size)
{
    std::u16string units;
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        units += static_cast<char16_t>(data[i] | data[i + 1] << 8);
    }
    return units;
}
