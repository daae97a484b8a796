#include "korsys/main/text/TextConversionKernels_p.h"
#include "korsys/main/text/TextConversion_p.h"

namespace TextConversion {

Kernels const& BestKernels()
{
    return kScalarKernels;
}

std::vector<Kernels const*> UsableKernels()
{
    return {&kScalarKernels};
}

std::size_t Length(char16_t const* zeroTerminated)
{
    return kScalarKernels.length(zeroTerminated);
}

} // namespace TextConversion
