#pragma once

#include "Support/OS/processorLevel.h"

namespace os {

/// Chooses one family of kernels by the processor level: when it is made, and at every change of the level.
/// For static objects of the library, which take priority 101: what other static objects compute before that
/// comes out the same by the plain kernels, only slower.
class ProcessorKernels {
public:
    /// @param choose  makes the kernels of a level the ones in use
    explicit ProcessorKernels(void (*choose)(eProcessorLevel level));

    ProcessorKernels(ProcessorKernels const &) = delete;
    ProcessorKernels &operator=(ProcessorKernels const &) = delete;

private:
    friend bool setProcessorLevel(eProcessorLevel level);

    void (*m_choose)(eProcessorLevel level);
    ProcessorKernels const *m_next;
};

} // namespace os
