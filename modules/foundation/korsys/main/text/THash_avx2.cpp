#include "korsys/main/text/THash_p.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

std::uint64_t HashKernels::Avx2(void const* data, unsigned long length, std::uint64_t seed) noexcept
{
    return XXH3_64bits_withSeed(data, length, seed);
}
