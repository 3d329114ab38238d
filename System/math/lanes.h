#pragma once

#include "Support/D3DX/d3dx9math.h"

#include <cmath>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Four floats side by side, for the operations that work on a whole row at a time. Lane i of a result
// depends on the lanes i of the arguments alone. Both forms give the same bits.

namespace Qel {

/// Four floats, on any processor.
class PlainLanes {
public:
    PlainLanes() {} // leaves the lanes as they are
    PlainLanes(float x, float y, float z, float w) : m_lane{x, y, z, w} {}

    static PlainLanes all(float f) { return {f, f, f, f}; }
    static PlainLanes load(float const *f) { return {f[0], f[1], f[2], f[3]}; } ///< on any boundary
    static PlainLanes loadAligned(float const *f) { return load(f); }           ///< on a 16-byte boundary
    void store(float *f) const { std::memcpy(f, m_lane, sizeof m_lane); }       ///< on any boundary

    PlainLanes operator+(PlainLanes b) const
    {
        return each(b, [](float x, float y) { return x + y; });
    }
    PlainLanes operator-(PlainLanes b) const
    {
        return each(b, [](float x, float y) { return x - y; });
    }
    PlainLanes operator*(PlainLanes b) const
    {
        return each(b, [](float x, float y) { return x * y; });
    }
    PlainLanes operator/(PlainLanes b) const
    {
        return each(b, [](float x, float y) { return x / y; });
    }

    /// The smaller of each lane; @p b where one of the two is NaN.
    static PlainLanes min(PlainLanes a, PlainLanes b)
    {
        return a.each(b, [](float x, float y) { return x < y ? x : y; });
    }
    /// The larger of each lane; @p b where one of the two is NaN.
    static PlainLanes max(PlainLanes a, PlainLanes b)
    {
        return a.each(b, [](float x, float y) { return x > y ? x : y; });
    }
    PlainLanes abs() const
    {
        return each(*this, [](float x, float) { return std::fabs(x); });
    }
    template <int lane>
    PlainLanes splat() const
    {
        return all(m_lane[lane]);
    }

    float sumXyz() const { return m_lane[0] + m_lane[1] + m_lane[2]; } ///< (x + y) + z
    /// The lanes 0, 1 and 2 of four rows, each in a vector of its own.
    static void transposeXyz(PlainLanes a, PlainLanes b, PlainLanes c, PlainLanes d, PlainLanes &x,
                             PlainLanes &y, PlainLanes &z)
    {
        x = {a.m_lane[0], b.m_lane[0], c.m_lane[0], d.m_lane[0]};
        y = {a.m_lane[1], b.m_lane[1], c.m_lane[1], d.m_lane[1]};
        z = {a.m_lane[2], b.m_lane[2], c.m_lane[2], d.m_lane[2]};
    }

    /// One bit for each lane, lane 0 lowest.
    class Mask {
    public:
        explicit Mask(int bits) : m_bits(bits) {}
        Mask operator&(Mask b) const { return Mask(m_bits & b.m_bits); }
        Mask operator|(Mask b) const { return Mask(m_bits | b.m_bits); }
        int bits() const { return m_bits; }
        /// @p a where the bit is set, @p b elsewhere
        PlainLanes choose(PlainLanes a, PlainLanes b) const
        {
            PlainLanes r;
            for (int i = 0; i < 4; ++i) {
                r.m_lane[i] = (m_bits >> i & 1) != 0 ? a.m_lane[i] : b.m_lane[i];
            }
            return r;
        }

    private:
        int m_bits;
    };

    Mask operator<(PlainLanes b) const
    {
        return test(b, [](float x, float y) { return x < y; });
    }
    Mask operator<=(PlainLanes b) const
    {
        return test(b, [](float x, float y) { return x <= y; });
    }
    /// Not less, which includes NaN. Misses are cheaper to collect than hits.
    Mask notLess(PlainLanes b) const
    {
        return test(b, [](float x, float y) { return !(x < y); });
    }
    Mask notLessEqual(PlainLanes b) const
    {
        return test(b, [](float x, float y) { return !(x <= y); });
    }

private:
    template <class F>
    PlainLanes each(PlainLanes b, F f) const
    {
        return {f(m_lane[0], b.m_lane[0]), f(m_lane[1], b.m_lane[1]), f(m_lane[2], b.m_lane[2]),
                f(m_lane[3], b.m_lane[3])};
    }
    template <class F>
    Mask test(PlainLanes b, F f) const
    {
        int bits = 0;
        for (int i = 0; i < 4; ++i) {
            bits |= f(m_lane[i], b.m_lane[i]) ? 1 << i : 0;
        }
        return Mask(bits);
    }

    float m_lane[4];
};

#if defined(__SSE2__)

/// Four floats in one 128-bit register.
class SseLanes {
public:
    SseLanes() {} // leaves the lanes as they are
    SseLanes(float x, float y, float z, float w) : m_lanes(_mm_set_ps(w, z, y, x)) {}
    explicit SseLanes(__m128 lanes) : m_lanes(lanes) {}

    static SseLanes all(float f) { return SseLanes(_mm_set1_ps(f)); }
    static SseLanes load(float const *f) { return SseLanes(_mm_loadu_ps(f)); }
    static SseLanes loadAligned(float const *f) { return SseLanes(_mm_load_ps(f)); }
    void store(float *f) const { _mm_storeu_ps(f, m_lanes); }

    SseLanes operator+(SseLanes b) const { return SseLanes(_mm_add_ps(m_lanes, b.m_lanes)); }
    SseLanes operator-(SseLanes b) const { return SseLanes(_mm_sub_ps(m_lanes, b.m_lanes)); }
    SseLanes operator*(SseLanes b) const { return SseLanes(_mm_mul_ps(m_lanes, b.m_lanes)); }
    SseLanes operator/(SseLanes b) const { return SseLanes(_mm_div_ps(m_lanes, b.m_lanes)); }

    static SseLanes min(SseLanes a, SseLanes b) { return SseLanes(_mm_min_ps(a.m_lanes, b.m_lanes)); }
    static SseLanes max(SseLanes a, SseLanes b) { return SseLanes(_mm_max_ps(a.m_lanes, b.m_lanes)); }
    SseLanes abs() const
    {
        return SseLanes(_mm_and_ps(m_lanes, _mm_castsi128_ps(_mm_set1_epi32(0x7FFFFFFF))));
    }
    template <int lane>
    SseLanes splat() const
    {
        // The integer form keeps its source, which spares a copy.
        return SseLanes(_mm_castsi128_ps(_mm_shuffle_epi32(_mm_castps_si128(m_lanes), lane * 0x55)));
    }

    float sumXyz() const
    {
        return _mm_cvtss_f32(_mm_add_ss(_mm_add_ss(m_lanes, splat<1>().m_lanes), splat<2>().m_lanes));
    }
    static void transposeXyz(SseLanes a, SseLanes b, SseLanes c, SseLanes d, SseLanes &x, SseLanes &y,
                             SseLanes &z)
    {
        __m128 const xyAb = _mm_unpacklo_ps(a.m_lanes, b.m_lanes);
        __m128 const xyCd = _mm_unpacklo_ps(c.m_lanes, d.m_lanes);
        __m128 const zwAb = _mm_unpackhi_ps(a.m_lanes, b.m_lanes);
        __m128 const zwCd = _mm_unpackhi_ps(c.m_lanes, d.m_lanes);
        x = SseLanes(_mm_movelh_ps(xyAb, xyCd));
        y = SseLanes(_mm_movehl_ps(xyCd, xyAb));
        z = SseLanes(_mm_movelh_ps(zwAb, zwCd));
    }

    class Mask {
    public:
        explicit Mask(__m128 mask) : m_mask(mask) {}
        Mask operator&(Mask b) const { return Mask(_mm_and_ps(m_mask, b.m_mask)); }
        Mask operator|(Mask b) const { return Mask(_mm_or_ps(m_mask, b.m_mask)); }
        int bits() const { return _mm_movemask_ps(m_mask); }
        SseLanes choose(SseLanes a, SseLanes b) const
        {
            return SseLanes(_mm_or_ps(_mm_and_ps(m_mask, a.m_lanes), _mm_andnot_ps(m_mask, b.m_lanes)));
        }

    private:
        __m128 m_mask;
    };

    Mask operator<(SseLanes b) const { return Mask(_mm_cmplt_ps(m_lanes, b.m_lanes)); }
    Mask operator<=(SseLanes b) const { return Mask(_mm_cmple_ps(m_lanes, b.m_lanes)); }
    Mask notLess(SseLanes b) const { return Mask(_mm_cmpnlt_ps(m_lanes, b.m_lanes)); }
    Mask notLessEqual(SseLanes b) const { return Mask(_mm_cmpnle_ps(m_lanes, b.m_lanes)); }

private:
    __m128 m_lanes;
};

using Lanes = SseLanes;

#else

using Lanes = PlainLanes;

#endif

inline Lanes lanesOf(D3DXVECTOR3 const &v, float w)
{
    return {v.x, v.y, v.z, w};
}

/// (x, y, z, 1) times @p m, where @p p holds x, y and z: the sums run from row 1 down.
inline Lanes transformedPoint(Lanes p, D3DXMATRIX const &m)
{
    return p.splat<0>() * Lanes::load(m.m[0]) + p.splat<1>() * Lanes::load(m.m[1]) +
           p.splat<2>() * Lanes::load(m.m[2]) + Lanes::load(m.m[3]);
}

} // namespace Qel
