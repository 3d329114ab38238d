#include "System/math/3D/boxKernels.h"

#include <immintrin.h>

namespace Qel {

namespace {

struct V {
    static constexpr std::size_t width = 16;

    struct Mask {
        __mmask16 m;

        Mask operator&(Mask b) const { return {static_cast<__mmask16>(m & b.m)}; }
        Mask operator|(Mask b) const { return {static_cast<__mmask16>(m | b.m)}; }
        unsigned bits() const { return m; }
        V choose(V a, V b) const { return {_mm512_mask_blend_ps(m, b.v, a.v)}; }
    };

    __m512 v;

    static V all(float f) { return {_mm512_set1_ps(f)}; }
    static V quads(float const *four) { return {_mm512_broadcast_f32x4(_mm_loadu_ps(four))}; }
    static V min(V a, V b) { return {_mm512_min_ps(a.v, b.v)}; }
    static V max(V a, V b) { return {_mm512_max_ps(a.v, b.v)}; }
    void store(float *f) const { _mm512_storeu_ps(f, v); }
    V abs() const { return {_mm512_abs_ps(v)}; }
    V operator+(V b) const { return {_mm512_add_ps(v, b.v)}; }
    V operator-(V b) const { return {_mm512_sub_ps(v, b.v)}; }
    V operator*(V b) const { return {_mm512_mul_ps(v, b.v)}; }
    V operator/(V b) const { return {_mm512_div_ps(v, b.v)}; }
    Mask operator<(V b) const { return {_mm512_cmp_ps_mask(v, b.v, _CMP_LT_OQ)}; }
    Mask operator<=(V b) const { return {_mm512_cmp_ps_mask(v, b.v, _CMP_LE_OQ)}; }
};

struct Quads {
    V low[4];
    V high[4];

    explicit Quads(float const *boxes)
    {
        // A register holds two boxes; their corners go into rows of four boxes each.
        for (int r = 0; r < 4; ++r) {
            __m512 const first = _mm512_loadu_ps(boxes + r * 4 * 8);
            __m512 const second = _mm512_loadu_ps(boxes + r * 4 * 8 + 16);
            low[r] = {_mm512_shuffle_f32x4(first, second, _MM_SHUFFLE(2, 0, 2, 0))};
            high[r] = {_mm512_shuffle_f32x4(first, second, _MM_SHUFFLE(3, 1, 3, 1))};
        }
    }

    // The rows are transposed within quarters, so lane 4 q + r holds box 4 r + q.
    static unsigned boxOfLane(unsigned lane) { return lane % 4 * 4 + lane / 4; }

    // Transposes the 4 by 4 bits of each half word: first within pairs, then the pairs.
    static std::uint32_t ordered(std::uint32_t lanes)
    {
        std::uint32_t swaps = (lanes ^ lanes >> 3) & 0x0A0A0A0Au;
        lanes ^= swaps ^ swaps << 3;
        swaps = (lanes ^ lanes >> 6) & 0x00CC00CCu;
        return lanes ^ swaps ^ swaps << 6;
    }

    static V ordered(V lanes)
    {
        __m512i const from = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
        return {_mm512_permutexvar_ps(from, lanes.v)};
    }
};

void transpose(V const *row, V *to)
{
    __m512d const xyAb = _mm512_castps_pd(_mm512_unpacklo_ps(row[0].v, row[1].v));
    __m512d const xyCd = _mm512_castps_pd(_mm512_unpacklo_ps(row[2].v, row[3].v));
    __m512d const zwAb = _mm512_castps_pd(_mm512_unpackhi_ps(row[0].v, row[1].v));
    __m512d const zwCd = _mm512_castps_pd(_mm512_unpackhi_ps(row[2].v, row[3].v));
    to[0] = {_mm512_castpd_ps(_mm512_unpacklo_pd(xyAb, xyCd))};
    to[1] = {_mm512_castpd_ps(_mm512_unpackhi_pd(xyAb, xyCd))};
    to[2] = {_mm512_castpd_ps(_mm512_unpacklo_pd(zwAb, zwCd))};
}

#include "System/math/3D/boxKernels.inl.h"

} // namespace

BoxKernels const boxKernelsAvx512 = kernels;

} // namespace Qel
