/// Hashes of bytes, the same on every platform.

#pragma once

#include "korsys/main/KorSysExport.h"

#include <cstdint>

/// The XXH3 64-bit hash of `length` bytes, seed 0. `data` may be null when `length` is 0.
/// Thread safety: any thread, as all functions here.
KORSYS_EXPORT unsigned long THash(void const* data, unsigned long length) noexcept;

/// The low 32 bits of the XXH3 64-bit hash with `seed`.
KORSYS_EXPORT std::uint32_t THash32(void const* data, unsigned long length,
                                    std::uint32_t seed) noexcept;

/// A hash of two hashes in their order: to combine several, begin with 0 and fold them in.
inline unsigned long THashCombine(unsigned long a, unsigned long b) noexcept
{
    return a ^ (b + 0x9E3779B97F4A7C15ul + (a << 12) + (a >> 4));
}
