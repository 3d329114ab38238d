#include "System/math/3D/boundingBox.h"
#include "System/math/3D/obb.h"
#include "System/math/math.h"

namespace Qel {

namespace {

// Which of the corners are inside, as sIntersection tells it.
template <class Box>
bool anyCornerInside(Box const &box, D3DXVECTOR3 const *corners, sIntersection *hit)
{
    unsigned inside = 0;
    for (unsigned i = 0; i < 8; ++i) {
        inside |= cMath::intersects(box, corners[i]) ? 1u << i : 0u;
    }
    if (hit != nullptr) {
        hit->t = 0;
        hit->corners = static_cast<std::uint8_t>(inside);
    }
    return inside != 0;
}

} // namespace

bool cMath::intersects(D3DXPLANE const &plane, cBoundingBoxAA const &box)
{
    D3DXVECTOR3 corners[8];
    box.extractEdges(corners);
    bool const first = D3DXPlaneDotCoord(&plane, &corners[0]) >= 0;
    for (int i = 1; i < 8; ++i) {
        if ((D3DXPlaneDotCoord(&plane, &corners[i]) >= 0) != first) {
            return true;
        }
    }
    return false;
}

bool cMath::intersects(D3DXPLANE const &plane, D3DXVECTOR3 const &a, D3DXVECTOR3 const &b, D3DXVECTOR3 *out)
{
    D3DXVECTOR3 scratch;
    return D3DXPlaneIntersectLine(out != nullptr ? out : &scratch, &plane, &a, &b) != nullptr;
}

bool cMath::intersects(cBoundingBox const &a, cBoundingBox const &b, sIntersection *hit)
{
    return anyCornerInside(a, b.corners, hit);
}

bool cMath::intersects(cBoundingBoxAA const &a, cBoundingBox const &b, sIntersection *hit)
{
    return anyCornerInside(a, b.corners, hit);
}

bool cMath::intersects(cBoundingBox const &a, cBoundingBoxAA const &b, sIntersection *hit)
{
    D3DXVECTOR3 corners[8];
    b.extractEdges(corners);
    return anyCornerInside(a, corners, hit);
}

bool cMath::intersects(cBoundingBox const &box, D3DXVECTOR3 const &point)
{
    for (D3DXPLANE const &plane : box.planes) {
        if (D3DXPlaneDotCoord(&plane, &point) < 0) {
            return false;
        }
    }
    return true;
}

void cMath::convert(cBoundingBoxAA &out, cOBB const &box)
{
    box.toAABB(out.min, out.max);
}

void cMath::convert_sse(cBoundingBoxAA &out, cOBB const &box)
{
    box.toAABB_sse(out.min, out.max);
}

void cMath::convert(cOBB &out, cBoundingBox const &box)
{
    D3DXVECTOR3 const *const corner = box.corners;
    out.xaxis = {(corner[0] - corner[3]) * 0.5f, 0.0f};
    out.yaxis = {(corner[0] - corner[4]) * 0.5f, 0.0f};
    out.zaxis = {(corner[0] - corner[1]) * 0.5f, 0.0f};
    out.origin = {corner[6] + (corner[0] - corner[6]) * 0.5f, 1.0f};
}

} // namespace Qel
