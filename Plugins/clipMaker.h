#pragma once

namespace Qel {
class iSoundClip;
}

/// Makes the clips that a game feeds itself, for the types "NULL" and "OPENAL":
/// iSoundSystem::getSoundDriverHandle3() is its address as a number. It lives as long as the system.
///
/// A clip begins with a chunk of samples or half its ring, or with all there is once setEOFReached() was
/// said. What comes late is played late. After the last of it the clip ends, or, where its source has loops
/// left, waits: isEOFAndBufferDried() tells the game to write the next round.
class ClipMaker {
public:
    /// @param multichannel  for sounds of 5.1
    /// @return a clip of the system's, with a voice that is its own until it has been stopped; it lives until
    ///         iSoundSystem::destroySoundClip() or stopAll(). Null without a free voice
    virtual Qel::iSoundClip *createClip(bool multichannel) = 0;

protected:
    ~ClipMaker() = default;
};
