#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"
#include "System/System/priority.h"

#include <cstdint>

namespace Qel {

/// The cone that a sound is directed in. Angles are kept in bytes: 360 degrees in 255 steps.
class QEL_API sSoundCone {
public:
    sSoundCone() = default;
    void reset() { *this = sSoundCone(); } ///< a full sphere, with no loss outside it

    float getInnerAngle() const { return static_cast<float>(innerAngle) * degreesPerStep; } ///< degrees
    float getOuterAngle() const { return static_cast<float>(outerAngle) * degreesPerStep; } ///< degrees
    void setInnerAngle(float degrees) { innerAngle = steps(degrees); } ///< 0 to 360, cut to whole steps
    void setOuterAngle(float degrees) { outerAngle = steps(degrees); } ///< 0 to 360, cut to whole steps
    unsigned int getOutOfConeVol() const { return outOfConeVolume; }   ///< percent
    void setOutOfConeVol(unsigned int percent);                        ///< up to 255 is kept
    void setConeData(float innerDegrees, float outerDegrees, unsigned int outOfConePercent);

    std::uint8_t innerAngle = 255;
    std::uint8_t outerAngle = 255;
    std::uint8_t outOfConeVolume = 100;

private:
    static constexpr float stepsPerDegree = 0.7083333f;
    static constexpr float degreesPerStep = 1.4117647f;

    static std::uint8_t steps(float degrees);
};

static_assert(sizeof(sSoundCone) == 3);

/// Bits of sSoundParams::flags.
enum eSoundFlags : std::uint32_t {
    SOUNDFLAG_FRONT_SPEAKERS = 1u << 0,
    SOUNDFLAG_REAR_SPEAKERS = 1u << 1,
    SOUNDFLAG_CENTER_LFE = 1u << 2,
    SOUNDFLAG_DUCKING_REQUEST = 1u << 3,  ///< all other sounds are ducked while it plays
    SOUNDFLAG_LOCAL_DUCKING = 1u << 4,    ///< it is played ducked itself
    SOUNDFLAG_DUCKING_LOW_PASS = 1u << 5, ///< ducking also applies a low-pass
    SOUNDFLAG_LOW_PASS = 1u << 6,
    SOUNDFLAG_PLAY_ON_PAUSE = 1u << 7,    ///< may start while the system is paused, and at no volume
    SOUNDFLAG_FALLOFF_OVERRIDE = 1u << 8, ///< falloff takes part in the volume
    SOUNDFLAG_OPEN_SKY = 1u << 9,
    SOUNDFLAG_RENDER_SCAN = 1u << 10, ///< for the back end
    SOUNDFLAG_FORCE_2D = 1u << 11,    ///< never placed in 3D
    SOUNDFLAG_WET_VOLUME = 1u << 12,
};

/// Bits of sSoundParams::singleSpeaker.
enum eSoundSpeaker : std::uint8_t {
    SOUNDSPEAKER_FRONT_LEFT = 1u << 0,
    SOUNDSPEAKER_FRONT_RIGHT = 1u << 1,
    SOUNDSPEAKER_CENTER = 1u << 2,
    SOUNDSPEAKER_LFE = 1u << 3, ///< the subwoofer
    SOUNDSPEAKER_REAR_LEFT = 1u << 4,
    SOUNDSPEAKER_REAR_RIGHT = 1u << 5,
};

/// How a sound is played: what can be prepared ahead of time and copied as a plain value.
struct QEL_API sSoundParams {
    std::uint32_t flags = SOUNDFLAG_FRONT_SPEAKERS | SOUNDFLAG_REAR_SPEAKERS | SOUNDFLAG_CENTER_LFE |
                          SOUNDFLAG_OPEN_SKY; ///< of eSoundFlags
    std::uint8_t singleSpeaker = 0;           ///< of eSoundSpeaker; 0 for no fixed speaker
    std::uint16_t sampleRate = 48000;         ///< Hz
    float pitchFactor = 1.0f;
    std::uint8_t numChannels = 2;   ///< in the data
    float volume1 = 1.0f;           ///< first factor of the volume
    float volume2 = 0.75f;          ///< second factor
    float falloff = 1.0f;           ///< third one, with SOUNDFLAG_FALLOFF_OVERRIDE
    D3DXVECTOR3 position{0, 0, 0};  ///< in the world; the origin stands for no place at all
    D3DXVECTOR3 motion{0, 0, 0};    ///< for the back end
    D3DXVECTOR3 direction{0, 1, 0}; ///< for the back end
    float minDistance = 5.0f;       ///< full volume inside it
    float maxDistance = 25.0f;      ///< nothing is heard beyond it
    sSoundCone cone;
    std::uint8_t backEnd[12] = {}; ///< the back end's
    std::uint8_t soundGroup = 0;   ///< 0 to 31, of iSoundSystem::setGroupVolume()
    ePriority basePriority = PRIORITY_DEFAULT;
    std::uint8_t loopCount = 1;       ///< 0: for ever
    std::uint8_t currentLoop = 1;     ///< loops left
    std::uint16_t fadeInTimeMS = 50;  ///< milliseconds of fade at the start
    std::uint8_t pitchVariation = 0;  ///< percent by which pitch varies at random, 50 at most
    std::uint32_t sampleLengthMS = 0; ///< milliseconds

    void reset() { *this = sSoundParams(); }
    void setConeData(float innerDegrees, float outerDegrees, unsigned int outOfConePercent)
    {
        cone.setConeData(innerDegrees, outerDegrees, outOfConePercent);
    }
    void resetConeData() { cone.reset(); }

    /// Has it a place in the world? A sound at the exact origin has none and plays in 2D.
    bool has3DInformation() const { return position.x != 0 || position.y != 0 || position.z != 0; }

    bool isFrontSpeakersOn() const { return has(SOUNDFLAG_FRONT_SPEAKERS); }
    bool isRearSpeakersOn() const { return has(SOUNDFLAG_REAR_SPEAKERS); }
    bool isCenterLFEOn() const { return has(SOUNDFLAG_CENTER_LFE); }
    bool hasDuckingRequested() const { return has(SOUNDFLAG_DUCKING_REQUEST); }
    bool isLocalDuckingOn() const { return has(SOUNDFLAG_LOCAL_DUCKING); }
    bool isDuckingLowPassOn() const { return has(SOUNDFLAG_DUCKING_LOW_PASS); }
    bool useLowPassFiltering() const { return has(SOUNDFLAG_LOW_PASS); }
    bool playOnPause() const { return has(SOUNDFLAG_PLAY_ON_PAUSE); }
    bool isFalloffOverride() const { return has(SOUNDFLAG_FALLOFF_OVERRIDE); }
    bool isOpenSky() const { return has(SOUNDFLAG_OPEN_SKY); }
    bool isRenderScan() const { return has(SOUNDFLAG_RENDER_SCAN); }
    bool is2DForced() const { return has(SOUNDFLAG_FORCE_2D); }
    bool isWetVolumeOn() const { return has(SOUNDFLAG_WET_VOLUME); }
    bool isSingleSpeaker() const { return singleSpeaker != 0; }
    void set(eSoundFlags flag, bool on)
    {
        flags = on ? flags | flag : flags & ~static_cast<std::uint32_t>(flag);
    }
    void force2D() { set(SOUNDFLAG_FORCE_2D, true); }
    void resetForce2D() { set(SOUNDFLAG_FORCE_2D, false); }
    void enableWetVolume() { set(SOUNDFLAG_WET_VOLUME, true); }
    void disableWetVolume() { set(SOUNDFLAG_WET_VOLUME, false); }

private:
    bool has(eSoundFlags flag) const { return (flags & flag) != 0; }
};

} // namespace Qel
