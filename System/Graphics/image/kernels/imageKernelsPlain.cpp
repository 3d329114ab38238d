#define QEL_VECTOR_BYTES 16

#include "System/Graphics/image/kernels/convertKernel.h"
#include "System/Graphics/image/kernels/editKernel.h"
#include "System/Graphics/image/kernels/pixelLanes.h"

namespace Qel {

constinit ImageKernels const imageKernelsPlain = {
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
