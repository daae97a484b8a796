/// Hashes of long memory, in one version for each kind of processor.

#pragma once

#include "korsys/main/KorSysExport.h"

#include <cstdint>

/// All give XXH3's 64 bits of the bytes.
namespace HashKernels {

using Hash = std::uint64_t(void const* data, unsigned long length, std::uint64_t seed) noexcept;

constexpr unsigned long kShortBytes = 240; ///< Up to here XXH3 has other loops, without vectors.

KORSYS_EXPORT Hash Plain; ///< With what every processor has.
Hash Avx2;                ///< Only where `Best` may call it.
KORSYS_EXPORT Hash Best;  ///< With what this processor has; for more than `kShortBytes`.

} // namespace HashKernels
