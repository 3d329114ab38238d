#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"

namespace Qel {

/// An upright cylinder: it stands on @ref baseLocation and rises along +z by `height`.
class QEL_API cBoundingCylinder {
public:
    D3DXVECTOR3 baseLocation; ///< middle of the base
    float height;
    float radius;

    cBoundingCylinder() {} // leaves the fields as they are
    cBoundingCylinder(D3DXVECTOR3 const &newBase, float newHeight, float newRadius)
        : baseLocation(newBase), height(newHeight), radius(newRadius)
    {
    }

    D3DXVECTOR3 const &getBaseLocation() const { return baseLocation; }
    void setBaseLocation(D3DXVECTOR3 const &newBase) { baseLocation = newBase; }
    float getHeight() const { return height; }
    void setHeight(float newHeight) { height = newHeight; }
    float getRadius() const { return radius; }
    void setRadius(float newRadius) { radius = newRadius; }

    /// Takes the base location through @p m as a point, with no division by w. Height and radius stay.
    void transform(D3DXMATRIX const &m);
};

} // namespace Qel
