#include "System/math/3D/boundingBoxAA.h"

#include "System/math/lanes.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Qel {

namespace {

// Bit 0, 1, 2 of an entry: the corner has the maximum of x, y, z.
constexpr unsigned cornerBits[8] = {0, 2, 3, 1, 7, 6, 4, 5};

D3DXVECTOR3 cornerFromBits(cBoundingBoxAA const &box, unsigned bits)
{
    return {(bits & 1) != 0 ? box.max.x : box.min.x, (bits & 2) != 0 ? box.max.y : box.min.y,
            (bits & 4) != 0 ? box.max.z : box.min.z};
}

void storeXyz(Lanes from, D3DXVECTOR4 &to)
{
    float const w = to.w;
    from.store(to);
    to.w = w;
}

} // namespace

void cBoundingBoxAA::setExtents(D3DXVECTOR3 const &newMin, D3DXVECTOR3 const &newMax)
{
    setMinMax(newMin.x, newMax.x, newMin.y, newMax.y, newMin.z, newMax.z);
}

void cBoundingBoxAA::setMinMax(D3DXVECTOR4 const &newMin, D3DXVECTOR4 const &newMax)
{
    D3DXVECTOR4 const keptMax = newMax; // may be this box's own min
    min = newMin;
    max = keptMax;
    correctMinMax();
}

void cBoundingBoxAA::setMinMax(float minX, float maxX, float minY, float maxY, float minZ, float maxZ)
{
    min3() = {minX, minY, minZ};
    max3() = {maxX, maxY, maxZ};
    correctMinMax();
}

void cBoundingBoxAA::correctMinMax()
{
    for (int axis = 0; axis < 3; ++axis) {
        if (min[axis] > max[axis]) {
            std::swap(min[axis], max[axis]);
        }
    }
}

void cBoundingBoxAA::addPoint(D3DXVECTOR3 const &p)
{
    D3DXVECTOR3 const point = p; // may be this box's own corner
    for (int axis = 0; axis < 3; ++axis) {
        min[axis] = std::min(min[axis], point[axis]);
        max[axis] = std::max(max[axis], point[axis]);
    }
}

void cBoundingBoxAA::addPoint_sse(D3DXVECTOR4 const &p)
{
    // The bound comes second, so that a NaN in the point leaves it.
    Lanes const point = Lanes::load(p);
    storeXyz(Lanes::min(point, Lanes::load(min)), min);
    storeXyz(Lanes::max(point, Lanes::load(max)), max);
}

cBoundingBoxAA &cBoundingBoxAA::operator+=(cBoundingBoxAA const &other)
{
    D3DXVECTOR4 const otherMax = other.max;
    addPoint_sse(other.min);
    addPoint_sse(otherMax);
    return *this;
}

float cBoundingBoxAA::getVolume() const
{
    D3DXVECTOR3 const size = size3();
    return size.x * size.y * size.z;
}

D3DXVECTOR3 cBoundingBoxAA::getCorner3(unsigned int index) const
{
    return index < 8 ? cornerFromBits(*this, cornerBits[index]) : D3DXVECTOR3(0, 0, 0);
}

D3DXVECTOR4 cBoundingBoxAA::getCorner4(unsigned int index) const
{
    float const w = index == 0 ? min.w : index == 4 ? max.w : 1.0f;
    return {getCorner3(index), w};
}

void cBoundingBoxAA::extractEdges(D3DXVECTOR3 *out) const
{
    cBoundingBoxAA const box = *this; // a store to out could change the box as far as the compiler can tell
    for (unsigned i = 0; i < 8; ++i) {
        out[i] = cornerFromBits(box, cornerBits[i]);
    }
}

void cBoundingBoxAA::extractEdges(D3DXVECTOR4 *out) const
{
    cBoundingBoxAA const box = *this;
    for (unsigned i = 0; i < 8; ++i) {
        out[i] = {cornerFromBits(box, cornerBits[i]), 1.0f};
    }
}

void cBoundingBoxAA::extractEdges_sse(D3DXVECTOR4 *out) const
{
    Lanes const base = Lanes::load(min);
    Lanes const size = (Lanes::load(max) - base).abs();
    Lanes const zero = Lanes::all(0);
    Lanes const order(0, 1, 2, 3);
    auto const along = [&](float axis) {
        return ((order <= Lanes::all(axis)) & (Lanes::all(axis) <= order)).choose(size, zero);
    };
    Lanes const x = along(0);
    Lanes const y = along(1);
    Lanes const z = along(2);
    for (unsigned i = 0; i < 8; ++i) {
        Lanes corner = base;
        corner = (i & 1) != 0 ? corner + x : corner;
        corner = (i & 2) != 0 ? corner + y : corner;
        corner = (i & 4) != 0 ? corner + z : corner;
        corner.store(out[i]);
    }
}

cRectangle cBoundingBoxAA::getBaseRect() const
{
    return {min.x, min.y, max.x - min.x, max.y - min.y};
}

D3DXPLANE cBoundingBoxAA::getPlane(unsigned int index) const
{
    switch (index) {
    case 0:
        return {0, -1, 0, min.y};
    case 1:
        return {0, 1, 0, -max.y};
    case 2:
        return {-1, 0, 0, min.x};
    case 3:
        return {1, 0, 0, -max.x};
    case 4:
        return {0, 0, -1, min.z};
    case 5:
        return {0, 0, 1, -max.z};
    default:
        return {0, 0, 0, 0};
    }
}

PlaneSide cBoundingBoxAA::getPlaneSide(D3DXPLANE const &plane) const
{
    unsigned const farthest = (plane.a >= 0 ? 1u : 0u) | (plane.b >= 0 ? 2u : 0u) | (plane.c >= 0 ? 4u : 0u);
    D3DXVECTOR3 const nearPoint = cornerFromBits(*this, ~farthest);
    if (D3DXPlaneDotCoord(&plane, &nearPoint) > 0) {
        return PLANE_POSITIVE;
    }
    D3DXVECTOR3 const farPoint = cornerFromBits(*this, farthest);
    return D3DXPlaneDotCoord(&plane, &farPoint) < 0 ? PLANE_NEGATIVE : PLANE_BOTH;
}

void cBoundingBoxAA::transform(D3DXMATRIX const &m)
{
    storeXyz(transformedPoint(Lanes::load(min), m), min);
    storeXyz(transformedPoint(Lanes::load(max), m), max);
}

void cBoundingBoxAA::transformAndProject(D3DXMATRIX const &m)
{
    for (D3DXVECTOR4 *corner : {&min, &max}) {
        D3DXVECTOR4 p;
        transformedPoint(Lanes::load(*corner), m).store(p);
        float const reciprocal = 1.0f / p.w;
        *corner = {p.x * reciprocal, p.y * reciprocal, p.z * reciprocal, corner->w};
    }
}

} // namespace Qel
