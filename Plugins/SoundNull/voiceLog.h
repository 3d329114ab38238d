#pragma once

#include <cstdint>
#include <vector>

/// What befell a voice.
enum class VoiceEvent : std::uint8_t { started, ended, stopped, robbed, paused, resumed };

/// Why a voice was robbed.
enum class RobReason : std::uint8_t { none, lowerPriority, fartherAway };

/// One line about a voice.
struct VoiceRecord {
    double time;          ///< seconds of updates since the system began
    VoiceEvent event;     ///< what befell it
    RobReason reason;     ///< of a robbery
    std::uint32_t index;  ///< the channel's
    std::uint32_t source; ///< unique id of what it played
    std::uint32_t by;     ///< unique id of the robber
};

/// The log of a system of the type "NULL": iSoundSystem::getSoundDriverHandle1() is its address as a number.
/// It lives as long as the system, and grows until its reader clears it.
using VoiceLog = std::vector<VoiceRecord>;
