#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"

namespace Qel {

/// A beam of square cross-section along a ray, without a far end. It reaches @ref size to each side along
/// @ref up and across it.
class QEL_API cBoxRay {
public:
    D3DXVECTOR3 origin;
    D3DXVECTOR3 direction; ///< of any length but 0
    D3DXVECTOR3 up;        ///< of any length but 0, not along the direction
    float size;            ///< half the width

    cBoxRay() : origin(0, 0, 0), direction(0, 0, 0), up(0, 0, 0), size(0) {}
    cBoxRay(D3DXVECTOR3 const &newOrigin, D3DXVECTOR3 const &newDirection, D3DXVECTOR3 const &newUp,
            float const &newSize)
        : origin(newOrigin), direction(newDirection), up(newUp), size(newSize)
    {
    }

    void setOrigin(D3DXVECTOR3 const &newOrigin) { origin = newOrigin; }
    D3DXVECTOR3 const &getOrigin() const { return origin; }
    void setDirection(D3DXVECTOR3 const &newDirection) { direction = newDirection; }
    D3DXVECTOR3 const &getDirection() const { return direction; }
    void setUp(D3DXVECTOR3 const &newUp) { up = newUp; }
    D3DXVECTOR3 const &getUp() const { return up; }
    void setSize(float newSize) { size = newSize; }
    float getSize() const { return size; }

    void translate(D3DXVECTOR3 const &by) { origin += by; }
};

} // namespace Qel
