#include "korsys/main/text/THash_p.h"

namespace HashKernels {

std::uint64_t Best(void const* data, unsigned long length, std::uint64_t seed) noexcept
{
    return Plain(data, length, seed);
}

} // namespace HashKernels
