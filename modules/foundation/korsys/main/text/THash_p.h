/// Hashes of long memory, in one version for each kind of processor.

#pragma once

#include <cstdint>

/// Both give XXH3's 64 bits of the bytes.
namespace HashKernels {

/// With what every processor has.
std::uint64_t Plain(void const* data, unsigned long length, std::uint64_t seed) noexcept;

/// With what this one has. Up to `kShortBytes` that brings nothing.
std::uint64_t Best(void const* data, unsigned long length, std::uint64_t seed) noexcept;

constexpr unsigned long kShortBytes = 240; ///< Up to here XXH3 has other loops, without vectors.

} // namespace HashKernels
