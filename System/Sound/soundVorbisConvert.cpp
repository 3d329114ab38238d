#include "System/Sound/kernels/pcmKernels.h"
#include "System/Sound/soundVorbis.h"

namespace Qel {

void iSoundVorbis::transform_float_I16(float const *in, short *out, unsigned int count, unsigned int stride)
{
    pcmKernels->plane(in, out, count, stride);
}

void iSoundVorbis::transformStereo(float const *left, float const *right, short *out, unsigned int count)
{
    pcmKernels->stereo(left, right, out, count);
}

void iSoundVorbis::transformSix(float const *const *planes, short *out, unsigned int count)
{
    pcmKernels->six(planes, out, count);
}

} // namespace Qel
