#include "System/Sound/soundParams.h"

#include <algorithm>

namespace Qel {

std::uint8_t sSoundCone::steps(float degrees)
{
    float const wanted = degrees * stepsPerDegree;
    return wanted > 0 ? static_cast<std::uint8_t>(wanted < 255 ? wanted : 255.0f) : std::uint8_t{0};
}

void sSoundCone::setOutOfConeVol(unsigned int percent)
{
    outOfConeVolume = static_cast<std::uint8_t>(std::min(percent, 255u));
}

void sSoundCone::setConeData(float innerDegrees, float outerDegrees, unsigned int outOfConePercent)
{
    setInnerAngle(innerDegrees);
    setOuterAngle(outerDegrees);
    setOutOfConeVol(outOfConePercent);
}

} // namespace Qel
