#include "System/math/kernelLevel.h"

#include "System/math/kernels/kernels.h"

namespace Qel {

constinit Kernels const *kernels = &kernelsPlain;

namespace {

constinit eKernelLevel levelInUse = KERNEL_PLAIN;
constinit eKernelLevel levelMax = KERNEL_PLAIN;

#if defined(__x86_64__)

Kernels const *const sets[] = {&kernelsPlain, &kernelsSse42, &kernelsAvx2, &kernelsAvx512};

eKernelLevel detect()
{
    __builtin_cpu_init();
    if (!__builtin_cpu_supports("sse4.2") || !__builtin_cpu_supports("pclmul")) {
        return KERNEL_PLAIN;
    }
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("bmi") ||
        !__builtin_cpu_supports("bmi2")) {
        return KERNEL_SSE42;
    }
    bool const wide = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                      __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
                      __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("vpclmulqdq");
    return wide ? KERNEL_AVX512 : KERNEL_AVX2;
}

#else

Kernels const *const sets[] = {&kernelsPlain};

eKernelLevel detect()
{
    return KERNEL_PLAIN;
}

#endif

// As early as a library may: what other static objects draw or hash before it comes out the same, only
// slower.
[[gnu::constructor(101)]] void choose()
{
    levelMax = detect();
    setKernelLevel(levelMax);
}

} // namespace

eKernelLevel kernelLevel()
{
    return levelInUse;
}

eKernelLevel kernelLevelMax()
{
    return levelMax;
}

bool setKernelLevel(eKernelLevel level)
{
    if (level > levelMax) {
        return false;
    }
    levelInUse = level;
    kernels = sets[level];
    return true;
}

} // namespace Qel
