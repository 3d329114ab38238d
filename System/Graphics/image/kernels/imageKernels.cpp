#include "System/Graphics/image/kernels/imageKernels.h"

#include "Support/OS/processorKernels.h"

namespace Qel {

constinit ImageKernels const *imageKernels = &imageKernelsPlain;

namespace {

#if defined(__x86_64__)
ImageKernels const *const sets[] = {&imageKernelsPlain, &imageKernelsSse42, &imageKernelsAvx2,
                                    &imageKernelsAvx512};
#else
ImageKernels const *const sets[] = {&imageKernelsPlain};
#endif

[[gnu::init_priority(101)]] os::ProcessorKernels const choice([](os::eProcessorLevel level) {
    imageKernels = sets[level];
});

} // namespace

} // namespace Qel
