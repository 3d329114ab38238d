#include "System/Sound/stereoCalc.h"

#include <cmath>

namespace Qel {

cStereoCalc::cStereoCalc(D3DXVECTOR3 const &listener, D3DXVECTOR3 const &at, D3DXVECTOR3 const &up)
    : listenerPosition(listener),
      rightVector(at.z * up.y - at.y * up.z, at.x * up.z - up.x * at.z, up.x * at.y - at.x * up.y)
{
    D3DXVec3Normalize(&rightVector, &rightVector);
}

void cStereoCalc::setBlendDistance(float distance)
{
    blendDistance = distance;
    blendDistanceSquared = distance * distance;
}

void cStereoCalc::getPositions(D3DXVECTOR3 const &place, D3DXVECTOR3 &left, D3DXVECTOR3 &right) const
{
    constexpr float tiny = 0.001f;
    D3DXVECTOR3 const away = place - listenerPosition;
    float const squared = D3DXVec3LengthSq(&away);
    // A sound without any range has no blend either.
    if (squared > blendDistanceSquared || !(blendDistance > 0)) {
        left = right = place;
        return;
    }
    float const distance = squared > tiny ? std::sqrt(squared) : squared;
    float const t = distance / blendDistance;
    float const reach = (blendDistance - spread) * t + spread;
    auto const towards = [&](D3DXVECTOR3 from) {
        from += (place - from) * t;
        from -= listenerPosition;
        D3DXVec3Normalize(&from, &from);
        return listenerPosition + from * reach;
    };
    left = towards(listenerPosition - rightVector * spread);
    right = towards(listenerPosition + rightVector * spread);
}

} // namespace Qel
