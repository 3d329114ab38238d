#pragma once

namespace Qel {

/// The conversions of samples of -1 .. 1 to 16 bits for one processor level; see
/// iSoundVorbis::transform_float_I16(). One table for each level, in a source of its own, which includes
/// nothing but intrinsics and headers of this folder.
struct PcmKernels {
    /// One plane into every sample of @p out at @p stride.
    void (*plane)(float const *in, short *out, unsigned int count, unsigned int stride);
    /// Two planes, side by side.
    void (*stereo)(float const *left, float const *right, short *out, unsigned int count);
    /// Six planes, side by side; one that is null is silent.
    void (*six)(float const *const *planes, short *out, unsigned int count);
};

extern PcmKernels const pcmKernelsPlain;
extern PcmKernels const pcmKernelsSse42;
extern PcmKernels const pcmKernelsAvx2;
extern PcmKernels const pcmKernelsAvx512;

/// The set in use. Never null: the plain set before the library's constructors have run.
extern PcmKernels const *pcmKernels;

} // namespace Qel
