#include "korsys/main/text/TextConversionKernels_p.h"

namespace TextConversion {

Kernels const& BestKernels()
{
    return kScalarKernels;
}

std::vector<Kernels const*> UsableKernels()
{
    return {&kScalarKernels};
}

} // namespace TextConversion
