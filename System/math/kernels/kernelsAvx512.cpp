#define QEL_VECTOR_BYTES 64

#include "System/math/kernels/crc32Avx512Kernel.h"
#include "System/math/kernels/fftKernel.h"
#include "System/math/kernels/kernels.h"
#include "System/math/kernels/noiseKernel.h"
#include "System/math/kernels/twisterKernel.h"

namespace Qel {

constinit Kernels const kernelsAvx512 = {
    .crc32 = crc32Avx512,
    .hashName = hashNameAvx512,
    .hashMappedName = hashMappedNameAvx512,
    .mapShortName = mapShortNameAvx512,
    .fftDouble = fftBoth<double>,
    .fftFloat = fftBoth<float>,
    .noisePlane = noisePlane,
    .noiseSpace = noiseSpace,
    .noiseRowPlane = noiseRowPlane,
    .noiseRowSpace = noiseRowSpace,
    .stepTwister = stepTwister,
    .temperTwister = temperTwister,
    .temperTwister01 = temperTwister01,
};

} // namespace Qel
