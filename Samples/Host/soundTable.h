#pragma once

#include <string>
#include <vector>

namespace Qel {
class iSoundSystem;
}

/// One playing voice.
struct VoiceRow {
    unsigned int channel = 0; ///< its number
    std::string kind;         ///< "2D", "3D", "5.1"
    std::string sound;        ///< name of the file
    float volume = 0;         ///< without the master volume, 0 to 1
    float ducking = 1;        ///< factor in the volume
    char const *state = "";   ///< "fades in", "fades out", "paused" or empty
};

/// All voices that play, by the numbers of their channels.
std::vector<VoiceRow> playingVoices(Qel::iSoundSystem const &system);
