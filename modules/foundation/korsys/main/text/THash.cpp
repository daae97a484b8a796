#include "korsys/main/text/THash.h"

#include "korsys/main/text/THash_p.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace {

std::uint64_t Hash(void const* data, unsigned long length, std::uint64_t seed) noexcept
{
    return length <= HashKernels::kShortBytes ? XXH3_64bits_withSeed(data, length, seed)
                                              : HashKernels::Best(data, length, seed);
}

} // namespace

std::uint64_t HashKernels::Plain(void const* data, unsigned long length,
                                 std::uint64_t seed) noexcept
{
    return XXH3_64bits_withSeed(data, length, seed);
}

unsigned long THash(void const* data, unsigned long length) noexcept
{
    return Hash(data, length, 0);
}

std::uint32_t THash32(void const* data, unsigned long length, std::uint32_t seed) noexcept
{
    return static_cast<std::uint32_t>(Hash(data, length, seed));
}
