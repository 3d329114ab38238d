#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"
#include "System/math/rectangle.h"

namespace Qel {

/// On which side of a plane a volume lies.
enum PlaneSide : int {
    PLANE_NEGATIVE = 0, ///< wholly behind it, strictly
    PLANE_POSITIVE = 1, ///< wholly in front of it, strictly
    PLANE_BOTH = 3,     ///< across it, or touching it
};

/// An axis-aligned box, from `min` to `max`.
///
/// Both corners have four floats, so that a test works on a whole row at a time; their w is normally 1. The
/// operations keep min at or below max on each axis, unless they say otherwise.
///
/// Two orders of the corners are in use. With + for the maximum and - for the minimum, x y z:
///
/// | Index | getCorner, extractEdges | extractEdges_sse |
/// |-------|-------------------------|------------------|
/// | 0     | - - -                   | - - -            |
/// | 1     | - + -                   | + - -            |
/// | 2     | + + -                   | - + -            |
/// | 3     | + - -                   | + + -            |
/// | 4     | + + +                   | - - +            |
/// | 5     | - + +                   | + - +            |
/// | 6     | - - +                   | - + +            |
/// | 7     | + - +                   | + + +            |
///
/// A default box is the point (0, 0, 0) and not an empty set: what grows from it always contains that point.
class QEL_API cBoundingBoxAA {
public:
    alignas(16) D3DXVECTOR4 min;
    D3DXVECTOR4 max;

    cBoundingBoxAA() : min(0, 0, 0, 1), max(0, 0, 0, 1) {}
    /// From two opposite corners, in any order on each axis.
    cBoundingBoxAA(D3DXVECTOR3 const &a, D3DXVECTOR3 const &b) : min(a, 1), max(b, 1) { correctMinMax(); }

    D3DXVECTOR3 &min3() { return reinterpret_cast<D3DXVECTOR3 &>(min); }
    D3DXVECTOR3 const &min3() const { return reinterpret_cast<D3DXVECTOR3 const &>(min); }
    D3DXVECTOR4 &min4() { return min; }
    D3DXVECTOR4 const &min4() const { return min; }
    D3DXVECTOR3 &max3() { return reinterpret_cast<D3DXVECTOR3 &>(max); }
    D3DXVECTOR3 const &max3() const { return reinterpret_cast<D3DXVECTOR3 const &>(max); }
    D3DXVECTOR4 &max4() { return max; }
    D3DXVECTOR4 const &max4() const { return max; }
    D3DXVECTOR3 const &getMinimum() const { return min3(); }
    D3DXVECTOR3 const &getMaximum() const { return max3(); }

    /// @name Setting the extents
    /// Each then swaps the two values of an axis on which min exceeds max. The forms without w leave w.
    /// @{
    void setExtents(D3DXVECTOR3 const &newMin, D3DXVECTOR3 const &newMax);
    void setMinMax(D3DXVECTOR3 const &newMin, D3DXVECTOR3 const &newMax) { setExtents(newMin, newMax); }
    void setMinMax(D3DXVECTOR4 const &newMin, D3DXVECTOR4 const &newMax);
    void setMinMax(float minX, float maxX, float minY, float maxY, float minZ, float maxZ);
    void correctMinMax(); ///< the swap alone
    /// @}

    /// @name Growing, on x, y and z
    /// @{
    void addPoint(D3DXVECTOR3 const &p);
    void addPoint(D3DXVECTOR4 const &p) { addPoint(reinterpret_cast<D3DXVECTOR3 const &>(p)); }
    void addPoint_sse(D3DXVECTOR4 const &p);
    cBoundingBoxAA &operator+=(cBoundingBoxAA const &other); ///< takes in both corners of @p other
    /// @}

    D3DXVECTOR3 center3() const { return (max3() + min3()) * 0.5f; }
    D3DXVECTOR3 getCenter() const { return center3(); }
    D3DXVECTOR3 getCenter3() const { return center3(); }
    D3DXVECTOR4 center4() const { return (max + min) * 0.5f; }
    D3DXVECTOR3 size3() const { return max3() - min3(); }
    D3DXVECTOR3 getSize() const { return size3(); }
    D3DXVECTOR3 getSize3() const { return size3(); }
    D3DXVECTOR4 size4() const { return max - min; } ///< its w is normally 0
    float getVolume() const;

    D3DXVECTOR3 getCorner(unsigned int index) const { return getCorner3(index); }
    D3DXVECTOR3 getCorner3(unsigned int index) const; ///< (0, 0, 0) for an index of 8 or more
    /// With w 1, but corner 0 has the w of min and corner 4 that of max. (0, 0, 0, 1) for an index of 8 or
    /// more.
    D3DXVECTOR4 getCorner4(unsigned int index) const;
    void extractEdges(D3DXVECTOR3 *out) const; ///< the eight corners
    void extractEdges(D3DXVECTOR4 *out) const; ///< the eight corners, w 1
    /// The eight corners in an order of their own, each min plus |size| on the axes with a +, w that of min.
    void extractEdges_sse(D3DXVECTOR4 *out) const;

    cRectangle getBaseRect() const; ///< the box seen along z

    /// A face, with its normal out of the box.
    /// @param index  0 min y, 1 max y, 2 min x, 3 max x, 4 min z, 5 max z; the zero plane above that
    D3DXPLANE getPlane(unsigned int index) const;
    PlaneSide getPlaneSide(D3DXPLANE const &plane) const;

    /// Takes min and max through @p m as two points, with no division by w; w stays. They are not sorted
    /// again (see correctMinMax()), and after a rotation the box need not contain what the old one did.
    void transform(D3DXMATRIX const &m);
    void transformAndProject(D3DXMATRIX const &m); ///< the same, and each point divided by its own w
};

} // namespace Qel
