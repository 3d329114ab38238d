#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// One live particle, in the pool of a ParticleSystem. Plain and small: a frame walks all of them.
class QEL_API Particle {
public:
    /// @name Bits of flags
    /// @{
    static constexpr std::uint8_t INTENSE = 1;
    static constexpr std::uint8_t ANIMATED = 2;
    /// @}

    static constexpr unsigned int allEmitters = 255; ///< an affector's number that stands for every emitter

    D3DXVECTOR3 position{0, 0, 0};     ///< in the system's space
    float size = 1.0f;                 ///< 0 once it has expired
    D3DXVECTOR3 direction{0, 0, 0};    ///< velocity, units a second
    float timeToLive = -0.01f;         ///< seconds left; below 0 it has expired
    float totalTimeToLive = -0.01f;    ///< seconds given at birth
    float rotationSpeed = 0.0f;        ///< radians a second
    float rotation = 0.0f;             ///< radians; set it with setRotation()
    std::uint32_t colour = 0xFFFFFFFF; ///< packed, as Color
    std::uint8_t currentFrame = 0;     ///< of an animated particle
    std::uint8_t emitterId = 0;        ///< index of the emitter in its system
    std::uint8_t flags = 0;            ///< INTENSE, ANIMATED
    std::uint8_t brightness = 0;       ///< 0 to 255; getBrightness() gives it as 0 to 1
    std::uint16_t rotationIndex = 0;   ///< the rotation as a position in a table of 4096 steps

    float getSize() const { return size; }
    void setSize(float newSize) { size = newSize; }
    float getRotation() const { return rotation; }
    void setRotation(float radians);
    float getRotationSpeed() const { return rotationSpeed; }
    void setRotationSpeed(float radiansPerSecond) { rotationSpeed = radiansPerSecond; }
    unsigned char getCurrentFrame() const { return currentFrame; }
    void setCurrentFrame(unsigned char frame) { currentFrame = frame; }

    void setBrightness(float newBrightness)
    {
        brightness = brightnessByte(newBrightness);
    } ///< clamped to 0 .. 1
    float getBrightness() const { return static_cast<float>(brightness) * 0.003921569f; } ///< 0 to 1

    bool isExpired() const { return timeToLive < 0; }

    /// Is it a particle of an affector on this emitter? @param id  the affector's getOnEmitter()
    bool canAffect(unsigned int id) const { return id == emitterId || id == allEmitters; }

    /// 0 .. 1 as a byte: cut, clamped, 0 for what is no number.
    static std::uint8_t brightnessByte(float value)
    {
        float const scaled = value * 255;
        return scaled > 0 ? static_cast<std::uint8_t>(scaled < 255 ? scaled : 255.0f) : std::uint8_t{0};
    }
};

} // namespace Qel
