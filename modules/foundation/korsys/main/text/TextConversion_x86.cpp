#include "korsys/main/text/TextConversionX86_p.h"
#include "korsys/main/text/TextConversion_p.h"

namespace TextConversion {
namespace {

bool HasAvx2()
{
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt");
}

} // namespace

Kernels const& BestKernels()
{
    return HasAvx2() ? kAvx2Kernels : kSse2Kernels;
}

std::vector<Kernels const*> UsableKernels()
{
    std::vector<Kernels const*> usable = {&kScalarKernels, &kSse2Kernels};
    if (HasAvx2()) {
        usable.push_back(&kAvx2Kernels);
    }
    return usable;
}

// Here, where the choice is seen: texts may be so short that a call for it would be felt.
std::size_t Length(char16_t const* zeroTerminated)
{
    return BestKernels().length(zeroTerminated);
}

} // namespace TextConversion
