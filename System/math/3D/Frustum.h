#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"
#include "System/math/3D/boundingBoxAA.h"
#include "System/math/3D/boundingSphere.h"

#include <cstdint>
#include <vector>

namespace Qel {

/// What a camera sees: the space in front of some planes, whose normals point inward.
///
/// The mask tells by the count of its bits how many of the first planes are in use; which bits are set makes
/// no difference. All tests look at those planes alone. A frustum without planes holds all of space.
///
/// @code
/// Frustum frustum;
/// frustum.setFromMatrix(view * projection);
/// if (frustum.getSide(box) != PLANE_NEGATIVE) {
///     draw(box);
/// }
/// @endcode
class QEL_API Frustum {
public:
    std::vector<D3DXPLANE> planes;
    std::uint32_t activeMask = 0;

    /// Takes the six planes of a view and projection matrix: left, right, bottom, top, near, far, all in use,
    /// with unit normals. Depth runs from 0 to 1. A far plane at infinity leaves nothing out.
    void setFromMatrix(D3DXMATRIX const &viewProjection);

    unsigned getActiveCount() const;     ///< how many of the first planes are in use
    void setActiveCount(unsigned count); ///< 0 to 32; sets that many of the lowest bits
    bool isActive(unsigned index) const; ///< @throws Exception 0, "Invalid Plane", beyond the last plane
    D3DXPLANE const &
    getPlane(unsigned index) const; ///< @throws Exception 0, "Invalid Plane", beyond the last plane

    /// @name Tests against the planes in use
    /// All throw Exception 0, "Invalid Plane", if there are fewer planes than are in use.
    /// @{
    bool contains(D3DXVECTOR3 const &point) const;        ///< with the planes
    bool intersects(cBoundingSphere const &sphere) const; ///< false if a plane has it wholly behind
    bool intersects(cBoundingBoxAA const &box) const;     ///< false if a plane has it wholly behind
    /// PLANE_NEGATIVE if a plane has the box wholly behind, PLANE_POSITIVE if it lies in front of all,
    /// PLANE_BOTH otherwise. A large box beside an edge can come out as PLANE_BOTH though nothing of it is
    /// seen.
    PlaneSide getSide(cBoundingBoxAA const &box) const;
    /// @}
};

} // namespace Qel
