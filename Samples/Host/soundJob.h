#pragma once

#include <string>

namespace Qel {
class iSoundSystem;
}

/// What the sound screen was asked to do.
struct SoundRequest {
    bool wanted = false;
    std::string folder;    ///< of the scene's sounds
    std::string audioFile; ///< WAV file to render the scene into, as fast as it goes; empty to hear it
};

/// Starts the back end "OPENAL", or "NULL" where there is none, for the scene.
/// @return the manager's; null, with a line on the error stream, if there is none or it does not start
Qel::iSoundSystem *openSound();

/// Plays the scene and prints the voices of each second.
/// @return false, with a line on the error stream, if the scene could not be played
bool playSoundScene(SoundRequest const &request);
