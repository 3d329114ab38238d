#define QEL_VECTOR_BYTES 32

#include "System/Sound/kernels/pcmKernel.h"
#include "System/Sound/kernels/pcmKernels.h"

namespace Qel {

constinit PcmKernels const pcmKernelsAvx2 = {.plane = plane, .stereo = stereo, .six = six};

} // namespace Qel
