/// The versions of the inner loops for x86-64 processors.

#pragma once

#include "korsys/main/text/TextConversionKernels_p.h"

namespace TextConversion {

/// Needs what every x86-64 processor has.
extern Kernels const kSse2Kernels;

/// Needs AVX2 and POPCNT.
extern Kernels const kAvx2Kernels;

} // namespace TextConversion
