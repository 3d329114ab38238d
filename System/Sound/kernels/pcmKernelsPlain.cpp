#define QEL_VECTOR_BYTES 16

#include "System/Sound/kernels/pcmKernel.h"
#include "System/Sound/kernels/pcmKernels.h"

namespace Qel {

constinit PcmKernels const pcmKernelsPlain = {.plane = plane, .stereo = stereo, .six = six};

} // namespace Qel
