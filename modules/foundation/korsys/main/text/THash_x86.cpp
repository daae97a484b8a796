#include "korsys/main/text/THash_p.h"

// What the header of the hash includes comes first, so that only the hash itself is compiled with
// these instructions. Whoever calls it asks first whether the processor has them.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <immintrin.h>
#include <limits.h>

#ifdef __clang__
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif
#define XXH_INLINE_ALL
#define XXH_VECTOR 2 // AVX2
#include <xxhash.h>

namespace HashKernels {
namespace {

std::uint64_t Wide(void const* data, unsigned long length, std::uint64_t seed) noexcept
{
    return XXH3_64bits_withSeed(data, length, seed);
}

} // namespace
} // namespace HashKernels
#ifdef __clang__
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

namespace HashKernels {

std::uint64_t Best(void const* data, unsigned long length, std::uint64_t seed) noexcept
{
    bool const hasAvx2 = __builtin_cpu_supports("avx2") != 0;
    return hasAvx2 ? Wide(data, length, seed) : Plain(data, length, seed);
}

} // namespace HashKernels
