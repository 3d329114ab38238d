#include "System/Sound/kernels/pcmKernels.h"

#include "Support/OS/processorKernels.h"

namespace Qel {

constinit PcmKernels const *pcmKernels = &pcmKernelsPlain;

namespace {

#if defined(__x86_64__)
PcmKernels const *const sets[] = {&pcmKernelsPlain, &pcmKernelsSse42, &pcmKernelsAvx2, &pcmKernelsAvx512};
#else
PcmKernels const *const sets[] = {&pcmKernelsPlain};
#endif

[[gnu::init_priority(101)]] os::ProcessorKernels const choice([](os::eProcessorLevel level) {
    pcmKernels = sets[level];
});

} // namespace

} // namespace Qel
