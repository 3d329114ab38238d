#pragma once

#include "System/math/lanes.h"
#include "System/math/math.h"

// The tests against an axis-aligned box that run once for each of many boxes. Included by math.h; not for
// direct use. The lane w of a box takes no part.

namespace Qel {

inline bool cMath::intersects(cBoundingBoxAA const &a, cBoundingBoxAA const &b)
{
    Lanes const half = Lanes::all(0.5f);
    Lanes const minA = Lanes::load(a.min);
    Lanes const maxA = Lanes::load(a.max);
    Lanes const minB = Lanes::load(b.min);
    Lanes const maxB = Lanes::load(b.max);
    Lanes const apart = ((maxB + minB) * half - (maxA + minA) * half).abs();
    Lanes const reach = (maxA - minA) * half + (maxB - minB) * half;
    return ((apart - reach < Lanes::all(0)).bits() & 7) == 7;
}

inline bool cMath::intersects(cBoundingBoxAA const &box, D3DXVECTOR3 const &point)
{
    Lanes const p = lanesOf(point, 0);
    return (((Lanes::load(box.min) <= p) & (p <= Lanes::load(box.max))).bits() & 7) == 7;
}

inline bool cMath::intersects(cBoundingSphere const &sphere, cBoundingBoxAA const &box)
{
    Lanes const center = lanesOf(sphere.center, 0);
    Lanes outside = Lanes::max(Lanes::load(box.min) - center, center - Lanes::load(box.max));
    outside = Lanes::max(outside, Lanes::all(0));
    outside = outside * outside;
    Lanes const distance = outside + outside.splat<1>() + outside.splat<2>();
    return ((distance <= Lanes::all(sphere.radius * sphere.radius)).bits() & 1) != 0;
}

inline bool cMath::intersects(cRay const &ray, cBoundingBoxAA const &box, sIntersection *hit)
{
    Lanes const zero = Lanes::all(0);
    Lanes const origin = lanesOf(ray.origin, 0);
    Lanes const direction = lanesOf(ray.direction, 1);
    Lanes const low = Lanes::load(box.min);
    Lanes const high = Lanes::load(box.max);
    auto const below = origin < low;
    auto const above = high < origin;
    auto const facing = (below & (zero < direction)) | (above & (direction < zero));
    Lanes const t = (below.choose(low, high) - origin) / direction;

    // Lane i of each mask: the face on axis i is seen from the front, and its hit point lies on the box.
    auto const onBox = [&](Lanes at) {
        Lanes const p = origin + direction * at;
        return ((low <= p) & (p <= high)).bits();
    };
    int const x = (onBox(t.splat<0>()) & 6) == 6 ? 1 : 0;
    int const y = (onBox(t.splat<1>()) & 5) == 5 ? 2 : 0;
    int const z = (onBox(t.splat<2>()) & 3) == 3 ? 4 : 0;
    int const hits = (facing & (zero < t)).bits() & (x | y | z);
    bool const inside = (((low < origin) & (origin < high)).bits() & 7) == 7;
    if (hit != nullptr) {
        float at[4];
        t.store(at);
        float best = 0;
        for (int axis = 0, found = 0; axis < 3; ++axis) {
            if ((hits >> axis & 1) != 0 && (found == 0 || at[axis] < best)) {
                best = at[axis];
                found = 1;
            }
        }
        hit->t = best;
    }
    return inside || hits != 0;
}

} // namespace Qel
