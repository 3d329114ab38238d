#include "System/math/3D/Frustum.h"
#include "System/math/3D/polygonObject.h"
#include "System/math/math.h"

#include <algorithm>
#include <utility>

namespace Qel {

namespace {

using Polygon = PolygonObject::Polygon;
using EdgeList = std::vector<Polygon>; // an entry holds the points where one face meets the plane

bool isSamePoint(D3DXVECTOR3 const &a, D3DXVECTOR3 const &b)
{
    constexpr float tolerance = 0.001f;
    return std::fabs(a.x - b.x) < tolerance && std::fabs(a.y - b.y) < tolerance &&
           std::fabs(a.z - b.z) < tolerance;
}

bool isEdge(Polygon const &entry)
{
    return entry.size() == 2;
}

void clipPolygon(D3DXPLANE const &plane, Polygon const &from, Polygon &to, Polygon &edge)
{
    if (from.size() < 3) {
        return;
    }
    auto const removed = [&plane](D3DXVECTOR3 const &p) { return D3DXPlaneDotCoord(&plane, &p) > 0; };
    D3DXVECTOR3 const *a = &from.front();
    bool removedA = removed(*a);
    for (std::size_t i = 0; i < from.size(); ++i) {
        D3DXVECTOR3 const *const b = &from[(i + 1) % from.size()];
        bool const removedB = removed(*b);
        D3DXVECTOR3 cut;
        if (removedA != removedB && D3DXPlaneIntersectLine(&cut, &plane, a, b) != nullptr) {
            to.push_back(cut);
            edge.push_back(cut);
        }
        if (!removedB) {
            to.push_back(*b);
        }
        a = b;
        removedA = removedB;
    }
}

// Chains the edges into one polygon, and turns it so that it faces along the plane's normal.
void close(D3DXPLANE const &plane, EdgeList &edges, Polygon &polygon)
{
    auto const lastEdge = std::find_if(edges.rbegin(), edges.rend(), isEdge);
    edges.erase(lastEdge.base(), edges.end());
    if (edges.size() < 3) {
        return;
    }
    polygon = std::move(edges.back());
    edges.pop_back();
    while (!edges.empty()) {
        D3DXVECTOR3 const end = polygon.back();
        auto const next = std::find_if(edges.rbegin(), edges.rend(), [&end](Polygon const &entry) {
            return isEdge(entry) && (isSamePoint(entry[0], end) || isSamePoint(entry[1], end));
        });
        if (next != edges.rend()) {
            polygon.push_back(isSamePoint((*next)[0], end) ? (*next)[1] : (*next)[0]);
            std::swap(*next, edges.back());
        }
        edges.pop_back();
    }
    polygon.pop_back();
    if (polygon.size() > 2) {
        constexpr float tolerance = 0.1f;
        D3DXPLANE faced;
        D3DXPlaneFromPoints(&faced, &polygon[0], &polygon[1], &polygon[2]);
        bool const alike = std::fabs(faced.a - plane.a) < tolerance &&
                           std::fabs(faced.b - plane.b) < tolerance &&
                           std::fabs(faced.c - plane.c) < tolerance;
        if (!alike) {
            std::reverse(polygon.begin(), polygon.end());
        }
    }
}

void clipBody(D3DXPLANE const &plane, PolygonObject &body)
{
    if (body.polygons.empty()) {
        return;
    }
    std::vector<Polygon> const before = std::exchange(body.polygons, {});
    body.polygons.reserve(before.size() + 1);
    EdgeList edges;
    edges.reserve(before.size());
    for (Polygon const &polygon : before) {
        clipPolygon(plane, polygon, body.polygons.emplace_back(), edges.emplace_back());
        if (body.polygons.back().empty()) {
            body.polygons.pop_back();
            edges.pop_back();
        }
    }
    if (!edges.empty()) {
        close(plane, edges, body.polygons.emplace_back());
    }
}

} // namespace

void cMath::clip(Frustum const &frustum, PolygonObject &body)
{
    for (unsigned i = 0, count = frustum.getActiveCount(); i < count; ++i) {
        clipBody(-frustum.getPlane(i), body);
    }
}

void cMath::clip(cBoundingBoxAA const &box, PolygonObject &body)
{
    for (unsigned i = 0; i < 6; ++i) {
        clipBody(box.getPlane(i), body);
    }
}

} // namespace Qel
