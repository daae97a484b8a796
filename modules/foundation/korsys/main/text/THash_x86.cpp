#include "korsys/main/text/THash_p.h"

std::uint64_t HashKernels::Best(void const* data, unsigned long length, std::uint64_t seed) noexcept
{
    bool const hasAvx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
                         __builtin_cpu_supports("bmi2");
    return hasAvx2 ? Avx2(data, length, seed) : Plain(data, length, seed);
}
