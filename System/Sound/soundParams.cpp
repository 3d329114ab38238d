#include "System/Sound/soundParams.h"

namespace Qel {

std::uint8_t sSoundCone::steps(float degrees)
{
    float const wanted = degrees * stepsPerDegree;
    return wanted > 0 ? static_cast<std::uint8_t>(wanted < 255 ? wanted : 255.0f) : std::uint8_t{0};
}

void sSoundCone::setConeData(float innerDegrees, float outerDegrees, unsigned int outOfConePercent)
{
    setInnerAngle(innerDegrees);
    setOuterAngle(outerDegrees);
    setOutOfConeVol(outOfConePercent);
}

} // namespace Qel
