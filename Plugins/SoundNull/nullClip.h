#pragma once

#include "System/Sound/soundClip.h"

class NullChannel;
class NullSound;

/// A clip whose ring is played out by the time of the updates.
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
