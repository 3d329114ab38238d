#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"

namespace Qel {

/// A ray: all points origin + direction * t. The direction need not be a unit vector, and nothing makes it
/// one; t counts in lengths of it.
class QEL_API cRay {
public:
    D3DXVECTOR3 origin;
    D3DXVECTOR3 direction;

    cRay() : origin(0, 0, 0), direction(0, 0, 1) {}
    cRay(D3DXVECTOR3 const &newOrigin, D3DXVECTOR3 const &newDirection)
        : origin(newOrigin), direction(newDirection)
    {
    }

    void setOrigin(D3DXVECTOR3 const &newOrigin) { origin = newOrigin; }
    D3DXVECTOR3 const &getOrigin() const { return origin; }
    void setDirection(D3DXVECTOR3 const &newDirection) { direction = newDirection; }
    D3DXVECTOR3 const &getDirection() const { return direction; }

    D3DXVECTOR3 getPoint(float t) const { return origin + direction * t; }
    D3DXVECTOR3 operator*(float t) const { return getPoint(t); }
};

} // namespace Qel
