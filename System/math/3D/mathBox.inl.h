#pragma once

#include "System/math/lanes.h"
#include "System/math/math.h"

// The tests against an axis-aligned box that run once for each of many boxes. Included by math.h; not for
// direct use. The lane w of a box takes no part.

namespace Qel {

inline bool cMath::intersects(cBoundingBoxAA const &a, cBoundingBoxAA const &b)
{
    Lanes const half = Lanes::all(0.5f);
    Lanes const minA = Lanes::loadAligned(a.min);
    Lanes const maxA = Lanes::loadAligned(a.max);
    Lanes const minB = Lanes::loadAligned(b.min);
    Lanes const maxB = Lanes::loadAligned(b.max);
    Lanes const apart = ((maxB + minB) * half - (maxA + minA) * half).abs();
    Lanes const reach = (maxA - minA) * half + (maxB - minB) * half;
    return (apart.notLess(reach).bits() & 7) == 0;
}

inline bool cMath::intersects(cBoundingBoxAA const &box, D3DXVECTOR3 const &point)
{
    Lanes const p = lanesOf(point, 0);
    auto const outside =
        Lanes::loadAligned(box.min).notLessEqual(p) | p.notLessEqual(Lanes::loadAligned(box.max));
    return (outside.bits() & 7) == 0;
}

inline bool cMath::intersects(cBoundingSphere const &sphere, cBoundingBoxAA const &box)
{
    // To the nearest point of the box; 0 on an axis on which the centre lies between the two faces.
    Lanes const center = lanesOf(sphere.center, 0);
    Lanes const nearest =
        Lanes::min(Lanes::loadAligned(box.max), Lanes::max(Lanes::loadAligned(box.min), center));
    Lanes const outside = nearest - center;
    return sphere.radius * sphere.radius >= (outside * outside).sumXyz();
}

inline bool cMath::intersects(cRay const &ray, cBoundingBoxAA const &box, sIntersection *hit)
{
    // Without branches and lane operations, so that the compiler can run a loop over boxes several at a time.
    D3DXVECTOR3 const &o = ray.origin;
    D3DXVECTOR3 const &d = ray.direction;
    D3DXVECTOR4 const &low = box.min;
    D3DXVECTOR4 const &high = box.max;
    auto const isWithin = [](float at, float from, float to) -> int { return (from <= at) & (at <= to); };

    // Per axis the one face that the ray can enter by. It does so from outside where t is above 0.
    float const x = ((d.x < 0 ? high.x : low.x) - o.x) / d.x;
    float const y = ((d.y < 0 ? high.y : low.y) - o.y) / d.y;
    float const z = ((d.z < 0 ? high.z : low.z) - o.z) / d.z;
    int const hitsX = (x > 0) & (d.x != 0) & isWithin(o.y + d.y * x, low.y, high.y) &
                      isWithin(o.z + d.z * x, low.z, high.z);
    int const hitsY = (y > 0) & (d.y != 0) & isWithin(o.x + d.x * y, low.x, high.x) &
                      isWithin(o.z + d.z * y, low.z, high.z);
    int const hitsZ = (z > 0) & (d.z != 0) & isWithin(o.x + d.x * z, low.x, high.x) &
                      isWithin(o.y + d.y * z, low.y, high.y);
    int const inside =
        (low.x < o.x) & (o.x < high.x) & (low.y < o.y) & (o.y < high.y) & (low.z < o.z) & (o.z < high.z);
    if (hit != nullptr) {
        float best = hitsX != 0 ? x : 0;
        best = hitsY != 0 && (hitsX == 0 || y < best) ? y : best;
        best = hitsZ != 0 && ((hitsX | hitsY) == 0 || z < best) ? z : best;
        hit->t = best;
    }
    return (inside | hitsX | hitsY | hitsZ) != 0;
}

} // namespace Qel
