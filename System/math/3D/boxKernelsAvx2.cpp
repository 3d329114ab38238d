#include "System/math/3D/boxKernels.h"

#include <immintrin.h>

namespace Qel {

namespace {

struct V {
    static constexpr std::size_t width = 8;

    struct Mask {
        __m256 m;

        Mask operator&(Mask b) const { return {_mm256_and_ps(m, b.m)}; }
        Mask operator|(Mask b) const { return {_mm256_or_ps(m, b.m)}; }
        unsigned bits() const { return static_cast<unsigned>(_mm256_movemask_ps(m)); }
        V choose(V a, V b) const { return {_mm256_blendv_ps(b.v, a.v, m)}; }
    };

    __m256 v;

    static V all(float f) { return {_mm256_set1_ps(f)}; }
    static V quads(float const *four)
    {
        return {_mm256_broadcast_ps(reinterpret_cast<__m128 const *>(four))};
    }
    static V min(V a, V b) { return {_mm256_min_ps(a.v, b.v)}; }
    static V max(V a, V b) { return {_mm256_max_ps(a.v, b.v)}; }
    void store(float *f) const { _mm256_storeu_ps(f, v); }
    V abs() const { return {_mm256_and_ps(v, _mm256_castsi256_ps(_mm256_set1_epi32(0x7FFFFFFF)))}; }
    V operator+(V b) const { return {_mm256_add_ps(v, b.v)}; }
    V operator-(V b) const { return {_mm256_sub_ps(v, b.v)}; }
    V operator*(V b) const { return {_mm256_mul_ps(v, b.v)}; }
    V operator/(V b) const { return {_mm256_div_ps(v, b.v)}; }
    Mask operator<(V b) const { return {_mm256_cmp_ps(v, b.v, _CMP_LT_OQ)}; }
    Mask operator<=(V b) const { return {_mm256_cmp_ps(v, b.v, _CMP_LE_OQ)}; }
};

struct Quads {
    V low[4];
    V high[4];

    // Boxes i and i + 4 share a row, so that the shuffles within halves leave the boxes in order.
    explicit Quads(float const *boxes)
    {
        for (int r = 0; r < 4; ++r) {
            low[r] = row(boxes + r * 8);
            high[r] = row(boxes + r * 8 + 4);
        }
    }

    static V row(float const *from)
    {
        return {
            _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(from)), _mm_loadu_ps(from + 4 * 8), 1)};
    }

    static unsigned boxOfLane(unsigned lane) { return lane; }
    static std::uint32_t ordered(std::uint32_t lanes) { return lanes; }
    static V ordered(V lanes) { return lanes; }
};

void transpose(V const *row, V *to)
{
    __m256d const xyAb = _mm256_castps_pd(_mm256_unpacklo_ps(row[0].v, row[1].v));
    __m256d const xyCd = _mm256_castps_pd(_mm256_unpacklo_ps(row[2].v, row[3].v));
    __m256d const zwAb = _mm256_castps_pd(_mm256_unpackhi_ps(row[0].v, row[1].v));
    __m256d const zwCd = _mm256_castps_pd(_mm256_unpackhi_ps(row[2].v, row[3].v));
    to[0] = {_mm256_castpd_ps(_mm256_unpacklo_pd(xyAb, xyCd))};
    to[1] = {_mm256_castpd_ps(_mm256_unpackhi_pd(xyAb, xyCd))};
    to[2] = {_mm256_castpd_ps(_mm256_unpacklo_pd(zwAb, zwCd))};
}

#include "System/math/3D/boxKernels.inl.h"

} // namespace

BoxKernels const boxKernelsAvx2 = kernels;

} // namespace Qel
