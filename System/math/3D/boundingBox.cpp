#include "System/math/3D/boundingBox.h"

#include "System/math/lanes.h"

#include <algorithm>
#include <cfloat>

namespace Qel {

namespace {

struct Extents {
    D3DXVECTOR3 min{FLT_MAX, FLT_MAX, FLT_MAX};
    D3DXVECTOR3 max{-FLT_MAX, -FLT_MAX, -FLT_MAX};

    void add(D3DXVECTOR3 const *points, unsigned count)
    {
        for (unsigned i = 0; i < count; ++i) {
            D3DXVECTOR3 const &p = points[i];
            min = {std::min(min.x, p.x), std::min(min.y, p.y), std::min(min.z, p.z)};
            max = {std::max(max.x, p.x), std::max(max.y, p.y), std::max(max.z, p.z)};
        }
    }
};

} // namespace

cBoundingBox::cBoundingBox(bool zero)
{
    if (zero) {
        std::fill(std::begin(planes), std::end(planes), D3DXPLANE(0, 0, 0, 0));
        std::fill(std::begin(corners), std::end(corners), D3DXVECTOR3(0, 0, 0));
    }
}

cBoundingBox::cBoundingBox(D3DXVECTOR3 const &a, D3DXVECTOR3 const &b)
{
    setExtents(std::min(a.x, b.x), std::max(a.x, b.x), std::min(a.y, b.y), std::max(a.y, b.y),
               std::min(a.z, b.z), std::max(a.z, b.z));
}

void cBoundingBox::setExtents(float minX, float maxX, float minY, float maxY, float minZ, float maxZ)
{
    planes[0] = {0, 0, 1, -minZ};
    planes[1] = {1, 0, 0, -minX};
    planes[2] = {-1, 0, 0, maxX};
    planes[3] = {0, 1, 0, -minY};
    planes[4] = {0, 0, -1, maxZ};
    planes[5] = {0, -1, 0, maxY};
    corners[0] = {maxX, maxY, maxZ};
    corners[1] = {maxX, maxY, minZ};
    corners[2] = {minX, maxY, minZ};
    corners[3] = {minX, maxY, maxZ};
    corners[4] = {maxX, minY, maxZ};
    corners[5] = {maxX, minY, minZ};
    corners[6] = {minX, minY, minZ};
    corners[7] = {minX, minY, maxZ};
}

void cBoundingBox::setExtents(D3DXVECTOR3 const &min, D3DXVECTOR3 const &max)
{
    setExtents(min.x, max.x, min.y, max.y, min.z, max.z);
}

void cBoundingBox::getExtents(D3DXVECTOR3 &min, D3DXVECTOR3 &max) const
{
    min = corners[6];
    max = corners[0];
}

void cBoundingBox::getExtents(float &minX, float &maxX, float &minY, float &maxY, float &minZ, float &maxZ)
{
    computeAxisAligned(corners, 8);
    minX = corners[6].x;
    minY = corners[6].y;
    minZ = corners[6].z;
    maxX = corners[0].x;
    maxY = corners[0].y;
    maxZ = corners[0].z;
}

D3DXVECTOR3 const &cBoundingBox::getCorner(unsigned short index) const
{
    QEL_ASSERT(index < 8);
    return corners[index];
}

D3DXPLANE const &cBoundingBox::getPlane(unsigned short index) const
{
    QEL_ASSERT(index < 6);
    return planes[index];
}

void cBoundingBox::computeAxisAligned(D3DXVECTOR3 const *points, unsigned int count)
{
    Extents extents;
    extents.add(points, count);
    setExtents(extents.min, extents.max);
}

void cBoundingBox::computeAxisAligned(std::vector<D3DXVECTOR3> const &points)
{
    if (!points.empty()) {
        computeAxisAligned(points.data(), static_cast<unsigned int>(points.size()));
    }
}

cBoundingBox &cBoundingBox::operator+=(cBoundingBox const &other)
{
    Extents extents;
    extents.add(corners, 8);
    extents.add(other.corners, 8);
    setExtents(extents.min, extents.max);
    return *this;
}

void cBoundingBox::transform(D3DXMATRIX const &m)
{
    for (D3DXVECTOR3 &corner : corners) {
        D3DXVECTOR4 p;
        transformedPoint(lanesOf(corner, 1), m).store(p);
        corner = {p.x, p.y, p.z};
    }
    transformPlanes(m);
}

void cBoundingBox::transformAndProject(D3DXMATRIX const &m)
{
    for (D3DXVECTOR3 &corner : corners) {
        D3DXVECTOR4 p;
        transformedPoint(lanesOf(corner, 1), m).store(p);
        float const reciprocal = 1.0f / p.w;
        corner = {p.x * reciprocal, p.y * reciprocal, p.z * reciprocal};
    }
    transformPlanes(m);
}

void cBoundingBox::transformPlanes(D3DXMATRIX const &m)
{
    D3DXMATRIX planeMatrix;
    if (D3DXMatrixInverse(&planeMatrix, nullptr, &m) == nullptr) {
        cBoundingBox around(false);
        around.computeAxisAligned(corners, 8);
        std::copy(std::begin(around.planes), std::end(around.planes), planes);
        return;
    }
    D3DXMatrixTranspose(&planeMatrix, &planeMatrix);
    for (D3DXPLANE &plane : planes) {
        D3DXPlaneNormalize(&plane, D3DXPlaneTransform(&plane, &plane, &planeMatrix));
    }
}

bool cBoundingBox::isInUnitySpace() const
{
    for (int axis = 0; axis < 3; ++axis) {
        auto const below = [axis](D3DXVECTOR3 const &p) { return p[axis] < 1; };
        auto const above = [axis](D3DXVECTOR3 const &p) { return p[axis] > -1; };
        if (std::none_of(std::begin(corners), std::end(corners), below) ||
            std::none_of(std::begin(corners), std::end(corners), above)) {
            return false;
        }
    }
    return true;
}

} // namespace Qel
