#include "System/math/3D/Frustum.h"

#include "System/System/exception.h"

#include <bit>

namespace Qel {

void Frustum::setFromMatrix(D3DXMATRIX const &viewProjection)
{
    // A point is inside when -w <= x <= w, -w <= y <= w and 0 <= z <= w, each a product with a column.
    D3DXMATRIX columns;
    D3DXMatrixTranspose(&columns, &viewProjection);
    D3DXVECTOR4 const x(columns.m[0]);
    D3DXVECTOR4 const y(columns.m[1]);
    D3DXVECTOR4 const z(columns.m[2]);
    D3DXVECTOR4 const w(columns.m[3]);
    planes.clear();
    for (D3DXVECTOR4 const &side : {w + x, w - x, w + y, w - y, z, w - z}) {
        D3DXPLANE plane(side.x, side.y, side.z, side.w);
        planes.push_back(*D3DXPlaneNormalize(&plane, &plane));
    }
    setActiveCount(6);
}

unsigned Frustum::getActiveCount() const
{
    return static_cast<unsigned>(std::popcount(activeMask));
}

void Frustum::setActiveCount(unsigned count)
{
    activeMask = count < 32 ? (1u << count) - 1 : ~0u;
}

bool Frustum::isActive(unsigned index) const
{
    getPlane(index);
    return index < getActiveCount();
}

D3DXPLANE const &Frustum::getPlane(unsigned index) const
{
    if (index >= planes.size()) {
        throw Exception(0, "Invalid Plane", "Frustum::isActive", "system\\math\\3D/Frustum", 83);
    }
    return planes[index];
}

bool Frustum::contains(D3DXVECTOR3 const &point) const
{
    for (unsigned i = 0, count = getActiveCount(); i < count; ++i) {
        if (D3DXPlaneDotCoord(&getPlane(i), &point) < 0) {
            return false;
        }
    }
    return true;
}

bool Frustum::intersects(cBoundingSphere const &sphere) const
{
    for (unsigned i = 0, count = getActiveCount(); i < count; ++i) {
        if (D3DXPlaneDotCoord(&getPlane(i), &sphere.center) < -sphere.radius) {
            return false;
        }
    }
    return true;
}

bool Frustum::intersects(cBoundingBoxAA const &box) const
{
    for (unsigned i = 0, count = getActiveCount(); i < count; ++i) {
        D3DXPLANE const &plane = getPlane(i);
        D3DXVECTOR3 const farthest(plane.a >= 0 ? box.max.x : box.min.x, plane.b >= 0 ? box.max.y : box.min.y,
                                   plane.c >= 0 ? box.max.z : box.min.z);
        if (D3DXPlaneDotCoord(&plane, &farthest) < 0) {
            return false;
        }
    }
    return true;
}

PlaneSide Frustum::getSide(cBoundingBoxAA const &box) const
{
    PlaneSide result = PLANE_POSITIVE;
    for (unsigned i = 0, count = getActiveCount(); i < count; ++i) {
        PlaneSide const side = box.getPlaneSide(getPlane(i));
        if (side == PLANE_NEGATIVE) {
            return PLANE_NEGATIVE;
        }
        if (side == PLANE_BOTH) {
            result = PLANE_BOTH;
        }
    }
    return result;
}

} // namespace Qel
