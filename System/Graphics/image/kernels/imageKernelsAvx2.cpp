#define QEL_VECTOR_BYTES 32

#include "System/Graphics/image/kernels/convertKernel.h"
#include "System/Graphics/image/kernels/editKernel.h"
#include "System/Graphics/image/kernels/pixelLanes.h"

namespace Qel {

constinit ImageKernels const imageKernelsAvx2 = {
    .convert = convertPixels,
    .mirror = mirrorRow,
    .gray = grayPixels,
    .filter = filterBytes,
    .slopes = slopesOf,
    .rootBase = rootBase,
    .rootSse = rootSse,
    .normals = normalsOf,
};

} // namespace Qel
