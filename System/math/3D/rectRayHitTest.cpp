#include "System/math/3D/rectRayHitTest.h"

#include "System/math/3D/boundingBox.h"

namespace Qel {

void cRectRayHitTest::setRay(cRectRay const &ray)
{
    D3DXVECTOR3 const at = ray.origin + ray.direction;
    D3DXMatrixLookAtRH(&view, &ray.origin, &at, &ray.upNrm);
    posLimit = {ray.sizeLeft, ray.sizeUp, ray.rayLen, 0};
    negLimit = -posLimit;
}

bool cRectRayHitTest::intersects(D3DXVECTOR3 const *points, unsigned int count) const
{
    unsigned mask = 0;
    for (unsigned int i = 0; i < count; ++i) {
        D3DXVECTOR3 p;
        D3DXVec3TransformCoord(&p, &points[i], &view);
        mask |= (posLimit.x > p.x ? 1u : 0u) | (p.x > negLimit.x ? 2u : 0u) | (posLimit.y > p.y ? 4u : 0u) |
                (p.y > negLimit.y ? 8u : 0u) | (p.z > negLimit.z ? 16u : 0u);
    }
    return mask == 31;
}

bool cRectRayHitTest::intersects(cBoundingBox const &box) const
{
    return intersects(box.corners, 8);
}

bool cRectRayHitTest::intersects(cBoundingBoxAA const &box) const
{
    D3DXVECTOR3 corners[8];
    box.extractEdges(corners);
    return intersects8_sse(corners);
}

bool cRectRayHitTest::intersects(cOBB const &box) const
{
    D3DXVECTOR3 corners[8];
    box.extractEdges(corners);
    return intersects8_sse(corners);
}

bool cRectRayHitTest::intersects8_sse(D3DXVECTOR3 const *points) const
{
    Lanes low = transformedPoint(lanesOf(points[0], 1), view);
    Lanes high = low;
    for (int i = 1; i < 8; ++i) {
        Lanes const seen = transformedPoint(lanesOf(points[i], 1), view);
        low = Lanes::min(low, seen);
        high = Lanes::max(high, seen);
    }
    return overlaps(low, high);
}

} // namespace Qel
