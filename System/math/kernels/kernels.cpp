#include "System/math/kernels/kernels.h"

#include "Support/OS/processorKernels.h"

namespace Qel {

constinit Kernels const *kernels = &kernelsPlain;

namespace {

#if defined(__x86_64__)
Kernels const *const sets[] = {&kernelsPlain, &kernelsSse42, &kernelsAvx2, &kernelsAvx512};
#else
Kernels const *const sets[] = {&kernelsPlain};
#endif

[[gnu::init_priority(101)]] os::ProcessorKernels const choice([](os::eProcessorLevel level) {
    kernels = sets[level];
});

} // namespace

} // namespace Qel
