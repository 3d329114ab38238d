#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"

#include <vector>

namespace Qel {

/// A box that is bounded by six planes, and keeps its eight corners beside them.
///
/// It starts axis-aligned and stays a general box through transform(). The planes' normals point into the
/// box: a point is inside when each plane has a value of at least 0 there.
///
/// | Plane | Face  |   | Corner | x y z |   | Corner | x y z |
/// |-------|-------|---|--------|-------|---|--------|-------|
/// | 0     | min z |   | 0      | + + + |   | 4      | + - + |
/// | 1     | min x |   | 1      | + + - |   | 5      | + - - |
/// | 2     | max x |   | 2      | - + - |   | 6      | - - - |
/// | 3     | min y |   | 3      | - + + |   | 7      | - - + |
/// | 4     | max z |
/// | 5     | max y |
class QEL_API cBoundingBox {
public:
    D3DXPLANE planes[6];
    D3DXVECTOR3 corners[8];

    cBoundingBox() : cBoundingBox(true) {} ///< all 48 floats are 0
    /// @param zero  true: all 48 floats are 0; false: they are left as they are
    explicit cBoundingBox(bool zero);
    /// From two opposite corners, in any order on each axis.
    cBoundingBox(D3DXVECTOR3 const &a, D3DXVECTOR3 const &b);

    /// Makes it axis-aligned. The arguments are not sorted.
    void setExtents(float minX, float maxX, float minY, float maxY, float minZ, float maxZ);
    void setExtents(D3DXVECTOR3 const &min, D3DXVECTOR3 const &max);
    /// Corners 6 and 0, as they stand.
    void getExtents(D3DXVECTOR3 &min, D3DXVECTOR3 &max) const;
    /// First turns this box into the axis-aligned box round its own corners, then gives the extents.
    void getExtents(float &minX, float &maxX, float &minY, float &maxY, float &minZ, float &maxZ);

    D3DXVECTOR3 const &getCorner(unsigned short index) const; ///< @p index 0 to 7, checked in debug builds
    D3DXPLANE const &getPlane(unsigned short index) const;    ///< @p index 0 to 5, checked in debug builds
    D3DXVECTOR3 getCenter() const { return (corners[6] + corners[0]) * 0.5f; }
    D3DXVECTOR3 getSize() const { return corners[0] - corners[6]; }

    /// Becomes the axis-aligned box round the points. With a count of 0 it is turned inside out, from the
    /// largest float to its negative; those corners are points like any other to what it is added to.
    /// @param points  @p count points; may be null if that is 0
    void computeAxisAligned(D3DXVECTOR3 const *points, unsigned int count);
    void computeAxisAligned(std::vector<D3DXVECTOR3> const &points); ///< an empty list changes nothing
    cBoundingBox &operator+=(cBoundingBox const &other); ///< the axis-aligned box round both boxes' corners

    /// Takes the corners through @p m as points, with no division by w, and the planes along with them.
    /// With a matrix that has no inverse the corners move too, and the planes become those of the
    /// axis-aligned box round them.
    void transform(D3DXMATRIX const &m);
    void transformAndProject(D3DXMATRIX const &m); ///< the same, and each corner divided by its own w

    /// False if all corners lie outside the same side of the cube from -1 to 1, or on it. A box can give true
    /// without a corner in the cube.
    bool isInUnitySpace() const;

private:
    void transformPlanes(D3DXMATRIX const &m);
};

} // namespace Qel
