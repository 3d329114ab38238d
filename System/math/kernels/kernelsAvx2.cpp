#define QEL_VECTOR_BYTES 32

#include "System/math/kernels/crc32ClmulKernel.h"
#include "System/math/kernels/fftKernel.h"
#include "System/math/kernels/kernels.h"
#include "System/math/kernels/noiseKernel.h"
#include "System/math/kernels/twisterKernel.h"

namespace Qel {

constinit Kernels const kernelsAvx2 = {
    .crc32 = crc32Clmul,
    .hashName = hashNameBy<crc32Clmul>,
    .hashMappedName = hashMappedNameBy<crc32Clmul>,
    .mapShortName = mapShortNameBy<crc32Clmul>,
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
