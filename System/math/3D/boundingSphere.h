#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"

namespace Qel {

/// A sphere.
class QEL_API cBoundingSphere {
public:
    D3DXVECTOR3 center;
    float radius;

    cBoundingSphere() {} // leaves the fields as they are
    cBoundingSphere(D3DXVECTOR3 const &newCenter, float newRadius) : center(newCenter), radius(newRadius) {}

    D3DXVECTOR3 const &getCenter() const { return center; }
    float getRadius() const { return radius; }

    /// Takes the centre through @p m as a point, with no division by w. The radius stays.
    void transform(D3DXMATRIX const &m);
};

} // namespace Qel
