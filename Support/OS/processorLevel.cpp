#include "Support/OS/processorLevel.h"

#include "Support/OS/processorKernels.h"

namespace os {

namespace {

eProcessorLevel detect()
{
#if defined(__x86_64__)
    __builtin_cpu_init();
    if (!__builtin_cpu_supports("sse4.2") || !__builtin_cpu_supports("pclmul")) {
        return PROCESSOR_PLAIN;
    }
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("bmi") ||
        !__builtin_cpu_supports("bmi2")) {
        return PROCESSOR_SSE42;
    }
    bool const wide = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                      __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
                      __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("vpclmulqdq");
    return wide ? PROCESSOR_AVX512 : PROCESSOR_AVX2;
#else
    return PROCESSOR_PLAIN;
#endif
}

struct Level {
    eProcessorLevel max = detect();
    eProcessorLevel inUse = max;
    ProcessorKernels const *families = nullptr;
};

// Made by whoever asks first: families of other sources may be.
Level &level()
{
    static Level level;
    return level;
}

} // namespace

ProcessorKernels::ProcessorKernels(void (*choose)(eProcessorLevel))
    : m_choose(choose), m_next(level().families)
{
    level().families = this;
    choose(level().inUse);
}

eProcessorLevel processorLevel()
{
    return level().inUse;
}

eProcessorLevel processorLevelMax()
{
    return level().max;
}

bool setProcessorLevel(eProcessorLevel wanted)
{
    if (wanted > level().max) {
        return false;
    }
    level().inUse = wanted;
    for (ProcessorKernels const *family = level().families; family != nullptr; family = family->m_next) {
        family->m_choose(wanted);
    }
    return true;
}

} // namespace os
