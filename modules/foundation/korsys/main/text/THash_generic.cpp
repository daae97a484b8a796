#include "korsys/main/text/THash_p.h"

std::uint64_t HashKernels::Best(void const* data, unsigned long length, std::uint64_t seed) noexcept
{
    return Plain(data, length, seed);
}
