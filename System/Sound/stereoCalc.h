#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"

namespace Qel {

/// Where the two voices of a 3D stereo sound stand: apart to the left and right of the listener close by,
/// nearer to the sound's own place with distance, and both there from the blend distance on.
class QEL_API cStereoCalc {
public:
    /// @param listener  its place
    /// @param at,up     its direction; to the right is up x at
    cStereoCalc(D3DXVECTOR3 const &listener, D3DXVECTOR3 const &at, D3DXVECTOR3 const &up);

    void setBlendDistance(float distance); ///< and its square

    /// @param place       the sound's
    /// @param left,right  receive the voices' places
    void getPositions(D3DXVECTOR3 const &place, D3DXVECTOR3 &left, D3DXVECTOR3 &right) const;

    D3DXVECTOR3 listenerPosition;
    D3DXVECTOR3 rightVector;      ///< of length 1
    float blendDistance = 250.0f; ///< where the voices meet
    float spread = 200.0f;        ///< half their distance when the sound is at the listener
    float blendDistanceSquared = 62500.0f;
};

} // namespace Qel
