#pragma once

#include "System/Sound/soundClip.h"

#include <vector>

class AlChannel;
class AlSound;

/// A clip whose ring goes through the segments of its channel.
class AlClip final : public Qel::iSoundClip {
public:
    AlClip(AlSound *owner, AlChannel *voice, bool isMultichannel);

    bool open(Qel::iSoundSource *newSource, unsigned int ringSize) override;
    void update(float dt) override;

    /// Asked by the channel when all that it had is played. @return false at the end
    bool goesOn();

private:
    void feed();

    AlSound *m_owner;
    AlChannel *m_voice; // as long as channel is not null
    std::vector<unsigned char> m_segment;
};
