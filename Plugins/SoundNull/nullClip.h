#pragma once

#include "System/Sound/soundClip.h"

class NullChannel;
class NullSound;

/// A clip whose ring is played out by the time of the updates.
///
/// It begins with as much as a chunk or half the ring, or with all there is once setEOFReached() was said.
/// What comes late is played late. After the last of it the clip ends, or, where its source has loops left,
/// waits: isEOFAndBufferDried() tells the game to write the next round.
class NullClip final : public Qel::iSoundClip {
public:
    NullClip(NullSound *owner, NullChannel *voice, bool isMultichannel);

    bool open(Qel::iSoundSource *newSource, unsigned int ringSize) override;
    void update(float dt) override;

    /// Takes so many frames, for the channel. @return false at the end
    bool playOut(double frames);

private:
    NullSound *m_owner;
    NullChannel *m_voice; // as long as channel is not null
    double m_owed = 0.0;  // parts of a frame
};
