/// The versions of the inner loops for x86-64 processors.

#pragma once

#include "korsys/main/text/TextConversionKernels_p.h"

namespace TextConversion {

/// Needs what every x86-64 processor has.
extern Kernels const kSse2Kernels;

/// Needs AVX2 and POPCNT.
extern Kernels const kAvx2Kernels;

/// See `Length`; no loop for newer processors is faster.
std::size_t LengthSse2(char16_t const* zeroTerminated);

} // namespace TextConversion
