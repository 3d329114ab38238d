#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// How wide the instructions of the numeric kernels are: random blocks, checksums, transforms, noise.
///
/// The library takes the widest level that the processor has when it is loaded. Every level gives the same
/// bits, so nothing but speed depends on it.
enum eKernelLevel : std::uint32_t {
    KERNEL_PLAIN,  ///< what every processor of the architecture has
    KERNEL_SSE42,  ///< SSE4.2 with carry-less multiplication
    KERNEL_AVX2,   ///< AVX2 and BMI2
    KERNEL_AVX512, ///< AVX-512 F, BW, DQ, VL and VBMI, with wide carry-less multiplication
};

/// The level in use.
QEL_API eKernelLevel kernelLevel();

/// The widest level that this processor has.
QEL_API eKernelLevel kernelLevelMax();

/// Changes the level for the whole process, for measurements and for comparing levels.
///
/// Call it while no other thread is inside the library.
/// @return false if the processor does not have @p level; nothing is changed then
QEL_API bool setKernelLevel(eKernelLevel level);

} // namespace Qel
