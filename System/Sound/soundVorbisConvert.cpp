#include "System/Sound/soundVorbis.h"

#include <emmintrin.h>

namespace Qel {

namespace {

constexpr unsigned int lanes = 8;

short toI16(float sample)
{
    if (sample >= 1.0f) {
        return 32767;
    }
    if (sample <= -1.0f) {
        return -32768;
    }
    return sample == sample ? static_cast<short>(sample * 32767) : short{0};
}

__m128i fourToI32(float const *in)
{
    __m128 const sample = _mm_loadu_ps(in);
    __m128 const isLow = _mm_cmple_ps(sample, _mm_set1_ps(-1.0f));
    __m128 scaled = _mm_min_ps(_mm_mul_ps(sample, _mm_set1_ps(32767.0f)), _mm_set1_ps(32767.0f));
    scaled = _mm_or_ps(_mm_and_ps(isLow, _mm_set1_ps(-32768.0f)), _mm_andnot_ps(isLow, scaled));
    return _mm_cvttps_epi32(_mm_and_ps(scaled, _mm_cmpord_ps(sample, sample))); // no number is silence
}

__m128i eightToI16(float const *in)
{
    return _mm_packs_epi32(fourToI32(in), fourToI32(in + lanes / 2));
}

} // namespace

void iSoundVorbis::transform_float_I16(float const *in, short *out, unsigned int count, unsigned int stride)
{
    unsigned int i = 0;
    for (; i + lanes <= count; i += lanes) {
        __m128i const samples = eightToI16(in + i);
        if (stride == 1) {
            _mm_storeu_si128(reinterpret_cast<__m128i *>(out + i), samples);
            continue;
        }
        alignas(16) short lane[lanes];
        _mm_store_si128(reinterpret_cast<__m128i *>(lane), samples);
        for (unsigned int k = 0; k < lanes; ++k) {
            out[std::size_t{i + k} * stride] = lane[k];
        }
    }
    for (; i < count; ++i) {
        out[std::size_t{i} * stride] = toI16(in[i]);
    }
}

// As transform_float_I16() for each of the two, in one go.
void iSoundVorbis::transformStereo(float const *left, float const *right, short *out, unsigned int count)
{
    unsigned int i = 0;
    for (; i + lanes <= count; i += lanes) {
        __m128i const l = eightToI16(left + i);
        __m128i const r = eightToI16(right + i);
        auto *const to = reinterpret_cast<__m128i *>(out + std::size_t{2} * i);
        _mm_storeu_si128(to, _mm_unpacklo_epi16(l, r));
        _mm_storeu_si128(to + 1, _mm_unpackhi_epi16(l, r));
    }
    for (; i < count; ++i) {
        out[std::size_t{2} * i] = toI16(left[i]);
        out[std::size_t{2} * i + 1] = toI16(right[i]);
    }
}

} // namespace Qel
