#pragma once

namespace Qel {
class iSoundClip;
}

/// Makes clips of a system of the type "NULL": iSoundSystem::getSoundDriverHandle2() is its address as a
/// number. It lives as long as the system.
class ClipMaker {
public:
    /// @param multichannel  for sounds of 5.1
    /// @return a clip of the system's, with a voice that is its own until it has been stopped; it lives until
    ///         iSoundSystem::destroySoundClip() or stopAll(). Null without a free voice
    virtual Qel::iSoundClip *createClip(bool multichannel) = 0;

protected:
    ~ClipMaker() = default;
};
