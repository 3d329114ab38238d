#define QEL_VECTOR_BYTES 16

#include "System/math/kernels/crc32PlainKernel.h"
#include "System/math/kernels/fftKernel.h"
#include "System/math/kernels/kernels.h"
#include "System/math/kernels/noiseKernel.h"
#include "System/math/kernels/twisterKernel.h"

namespace Qel {

constinit Kernels const kernelsPlain = {
    .crc32 = crc32Plain,
    .hashName = hashNameBy<crc32Plain>,
    .hashMappedName = hashMappedNameBy<crc32Plain>,
    .mapShortName = mapShortNameBy<crc32Plain>,
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
