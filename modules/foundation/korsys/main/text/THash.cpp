#include "korsys/main/text/THash.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

unsigned long THash(void const* data, unsigned long length) noexcept
{
    return XXH3_64bits(data, length);
}

std::uint32_t THash32(void const* data, unsigned long length, std::uint32_t seed) noexcept
{
    return static_cast<std::uint32_t>(XXH3_64bits_withSeed(data, length, seed));
}
