#pragma once

#include "Support/export.h"

#include <cstdint>

namespace os {

/// How wide the instructions are that the library's kernels use: matrices and points, box batches, random
/// blocks, checksums, transforms, noise.
///
/// The library takes the widest level that the processor has when it is loaded. Every level gives the same
/// bits, so nothing but speed depends on it.
enum eProcessorLevel : std::uint32_t {
    PROCESSOR_PLAIN,  ///< what every processor of the architecture has; 128 bits
    PROCESSOR_SSE42,  ///< SSE4.2 with carry-less multiplication; 128 bits
    PROCESSOR_AVX2,   ///< AVX2, BMI and BMI2; 256 bits
    PROCESSOR_AVX512, ///< AVX-512 F, BW, DQ, VL and VBMI, with wide carry-less multiplication; 512 bits
};

QEL_API eProcessorLevel processorLevel();    ///< the level in use
QEL_API eProcessorLevel processorLevelMax(); ///< the widest level that this processor has

/// Changes the level for the whole process, for measurements and for comparing levels.
///
/// Call it while no other thread is inside the library.
/// @return false if the processor does not have @p level; nothing is changed then
QEL_API bool setProcessorLevel(eProcessorLevel level);

} // namespace os
