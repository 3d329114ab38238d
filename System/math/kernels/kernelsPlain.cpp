#include "System/math/kernels/kernels.h"
#include "System/math/kernels/twisterKernel.h"

namespace Qel {

constinit Kernels const kernelsPlain = {
    .stepTwister = stepTwister,
    .temperTwister = temperTwister,
    .temperTwister01 = temperTwister01,
};

} // namespace Qel
