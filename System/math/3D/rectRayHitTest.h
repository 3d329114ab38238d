#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"
#include "System/math/3D/boundingBoxAA.h"
#include "System/math/3D/obb.h"
#include "System/math/3D/rectRay.h"
#include "System/math/lanes.h"

namespace Qel {

class cBoundingBox;

/// A rectangular beam, prepared for tests against many volumes.
///
/// The points' extent in the beam's view is compared with the beam as ranges: it must overlap the
/// cross-section on both axes, and some point must lie nearer than the beam's length. All comparisons are
/// strict, and no single point has to be inside. Nothing is asked about points behind the origin.
///
/// The forms with eight points or without any answer for the box's extent from sums that are rounded in
/// another order than those of the list form, so boxes within rounding of the limits can come out
/// differently.
class QEL_API cRectRayHitTest {
public:
    alignas(16) D3DXMATRIX view; ///< right-handed: the ray runs along negative z, up is y, and x runs across
    D3DXVECTOR4 negLimit;        ///< the negative of @ref posLimit
    D3DXVECTOR4 posLimit;        ///< sizeLeft, sizeUp, rayLen, 0

    cRectRayHitTest() {} // leaves the fields as they are
    explicit cRectRayHitTest(cRectRay const &ray) { setRay(ray); }

    void setRay(cRectRay const &ray);

    bool intersects(D3DXVECTOR3 const *points, unsigned int count) const; ///< false for a count of 0
    bool intersects(cBoundingBox const &box) const;                       ///< its eight corners
    bool intersects(cBoundingBoxAA const &box) const;      ///< its eight corners, by intersects8_sse
    bool intersects(cOBB const &box) const;                ///< its eight corners, by intersects8_sse
    bool intersects8_sse(D3DXVECTOR3 const *points) const; ///< exactly eight points

    /// By the middle and the half-size of the box in the beam's view.
    bool intersects_sse(cBoundingBoxAA const &box) const;
    bool intersects_sse(cOBB const &box) const;

private:
    bool overlaps(Lanes low, Lanes high) const;
};

inline bool cRectRayHitTest::overlaps(Lanes low, Lanes high) const
{
    // The beam is open toward the viewer, so z has no upper limit.
    auto const sides = Lanes::all(0).notLess(Lanes(-1, -1, 1, 1)) & low.notLess(Lanes::loadAligned(posLimit));
    auto const misses = Lanes::loadAligned(negLimit).notLess(high) | sides;
    return (misses.bits() & 7) == 0;
}

inline bool cRectRayHitTest::intersects_sse(cBoundingBoxAA const &box) const
{
    Lanes const x = Lanes::loadAligned(view.m[0]);
    Lanes const y = Lanes::loadAligned(view.m[1]);
    Lanes const z = Lanes::loadAligned(view.m[2]);
    Lanes const low = Lanes::loadAligned(box.min);
    Lanes const half = (Lanes::loadAligned(box.max) - low) * Lanes::all(0.5f);
    Lanes const center = transformedPoint(low + half, view);
    Lanes const size = half.abs(); // |a b| is |a| |b| to the bit
    Lanes const reach = size.splat<0>() * x.abs() + size.splat<1>() * y.abs() + size.splat<2>() * z.abs();
    return overlaps(center - reach, center + reach);
}

inline bool cRectRayHitTest::intersects_sse(cOBB const &box) const
{
    D3DXMATRIX seen;
    D3DXMatrixMultiply(&seen, &reinterpret_cast<D3DXMATRIX const &>(box), &view);
    Lanes const center = Lanes::load(seen.m[3]);
    Lanes const reach =
        Lanes::load(seen.m[0]).abs() + Lanes::load(seen.m[1]).abs() + Lanes::load(seen.m[2]).abs();
    return overlaps(center - reach, center + reach);
}

} // namespace Qel
