#include "System/math/3D/polygonObject.h"

#include "System/math/lanes.h"

#include <algorithm>

namespace Qel {

PolygonObject::PolygonObject(cBoundingBoxAA const &box)
{
    // Indices into getCorner(): min y, max y, min x, max x, min z, max z, as the planes of the box run.
    constexpr unsigned faces[6][4] = {{0, 3, 7, 6}, {1, 5, 4, 2}, {0, 6, 5, 1},
                                      {3, 2, 4, 7}, {0, 1, 2, 3}, {6, 7, 4, 5}};
    for (auto const &face : faces) {
        Polygon &polygon = polygons.emplace_back();
        for (unsigned corner : face) {
            polygon.push_back(box.getCorner(corner));
        }
    }
}

bool PolygonObject::isEmpty() const
{
    return std::all_of(polygons.begin(), polygons.end(), [](Polygon const &p) { return p.empty(); });
}

bool PolygonObject::getBounds(cBoundingBoxAA &out) const
{
    bool any = false;
    for (Polygon const &polygon : polygons) {
        for (D3DXVECTOR3 const &p : polygon) {
            if (any) {
                out.addPoint(p);
            } else {
                out = cBoundingBoxAA(p, p);
                any = true;
            }
        }
    }
    return any;
}

void PolygonObject::transform(D3DXMATRIX const &m)
{
    for (Polygon &polygon : polygons) {
        for (D3DXVECTOR3 &p : polygon) {
            D3DXVECTOR4 moved;
            transformedPoint(lanesOf(p, 1), m).store(moved);
            p = {moved.x, moved.y, moved.z};
        }
    }
}

void PolygonObject::transformAndProject(D3DXMATRIX const &m)
{
    for (Polygon &polygon : polygons) {
        for (D3DXVECTOR3 &p : polygon) {
            D3DXVec3TransformCoord(&p, &p, &m);
        }
    }
}

} // namespace Qel
