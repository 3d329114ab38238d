#include "System/math/math.h"

#include <algorithm>
#include <cfloat>

namespace Qel {

namespace {

// One bit for the quadrant around p that the other point lies in, edges to the lower left.
unsigned quadrantOf(D3DXVECTOR2 const &p, D3DXVECTOR2 const &other)
{
    if (p.y >= other.y) {
        return p.x >= other.x ? 1 : 2;
    }
    return p.x >= other.x ? 4 : 8;
}

// The points that have nothing in at least one quadrant, in their order. One that is dealt with becomes (0,
// 0) in the working list, and nothing is compared with that any more; kept points are compared from the
// result.
std::vector<D3DXVECTOR2> outlineOf(std::vector<D3DXVECTOR2> points)
{
    std::vector<D3DXVECTOR2> kept;
    for (D3DXVECTOR2 &p : points) {
        unsigned mask = 0;
        for (auto q = kept.begin(); q != kept.end() && mask != 15; ++q) {
            mask |= quadrantOf(p, *q);
        }
        for (auto r = points.begin(); r != points.end() && mask != 15; ++r) {
            if (&*r != &p && *r != D3DXVECTOR2(0, 0)) {
                mask |= quadrantOf(p, *r);
            }
        }
        if (mask != 15) {
            kept.push_back(p);
        }
        p = {0, 0};
    }
    return kept;
}

struct Span {
    float min = 0;
    float max = 0;

    void add(float at)
    {
        min = std::min(min, at);
        max = std::max(max, at);
    }
};

} // namespace

float cMath::minAreaRect(std::vector<D3DXVECTOR2> const &points, D3DXVECTOR2 &center, D3DXVECTOR2 *const axes)
{
    std::vector<D3DXVECTOR2> const kept = outlineOf(points);
    float best = FLT_MAX;
    for (std::size_t i = 0; i < kept.size(); ++i) {
        D3DXVECTOR2 const &previous = i == 0 ? kept.back() : kept[i - 1];
        D3DXVECTOR2 const edge = kept[i] - previous;
        float const length = std::sqrt(D3DXVec2Dot(&edge, &edge));
        if (length == 0) {
            continue;
        }
        D3DXVECTOR2 const u = edge / length;
        D3DXVECTOR2 const v(-u.y, u.x);
        Span along, across;
        for (D3DXVECTOR2 const &point : kept) {
            D3DXVECTOR2 const d = point - previous;
            along.add(D3DXVec2Dot(&d, &u));
            across.add(D3DXVec2Dot(&d, &v));
        }
        float const area = (along.max - along.min) * (across.max - across.min);
        if (best > area) {
            best = area;
            center = previous + 0.5f * ((along.min + along.max) * u + (across.min + across.max) * v);
            axes[0] = 0.5f * (along.min - along.max) * u;
            axes[1] = 0.5f * (across.min - across.max) * v;
        }
    }
    return best;
}

void cMath::rotate2D(D3DXVECTOR3 &v, float angle)
{
    float const radians = deg2rad(angleNormalize180(angle));
    float const s = std::sin(radians);
    float const c = std::cos(radians);
    v = {c * v.x - s * v.y, c * v.y + s * v.x, v.z};
}

} // namespace Qel
