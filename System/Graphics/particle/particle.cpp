#include "System/Graphics/particle/particle.h"

#include <cmath>

namespace Qel {

void Particle::setRotation(float radians)
{
    constexpr float stepsPerRadian = 651.7395f; // 4095 / 2 pi
    constexpr float largest = 0x1p62f;
    rotation = radians;
    float const steps = radians * stepsPerRadian;
    rotationIndex =
        std::fabs(steps) < largest ? static_cast<std::uint16_t>(static_cast<std::int64_t>(steps) & 0xFFF) : 0;
}

} // namespace Qel
