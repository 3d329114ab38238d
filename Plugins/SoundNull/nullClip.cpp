#include "nullClip.h"

#include "nullChannel.h"
#include "nullSound.h"

#include "System/Sound/soundSource.h"

#include <algorithm>
#include <cmath>

NullClip::NullClip(NullSound *owner, NullChannel *voice, bool isMultichannel)
    : iSoundClip(owner, voice, isMultichannel), m_owner(owner), m_voice(voice)
{
}

bool NullClip::open(Qel::iSoundSource *newSource, unsigned int ringSize)
{
    if (opened || !iSoundClip::open(newSource, ringSize)) {
        return false;
    }
    m_owed = 0.0;
    m_voice->setClip(this);
    m_owner->countRequest(*m_voice);
    return true;
}

void NullClip::update(float dt)
{
    if (opened && channel != nullptr) {
        unsigned int const enough = std::min(chunkSize, static_cast<unsigned int>(ring.size()) / 2);
        // One that began in a pause would begin anew in every update of it.
        dataReady = !m_owner->isPaused() && (dataReady || getReadable() >= enough || isEOFReached());
        channel->update(dt);
    }
    iSoundClip::update(dt);
}

bool NullClip::playOut(double frames)
{
    unsigned int const frameBytes = 2 * std::max<unsigned int>(source->getNumChannels(), 1);
    m_owed += frames;
    unsigned int const there = getReadable() / frameBytes;
    double const whole = std::floor(m_owed);
    if (whole < there) {
        ring.advanceReadIndex(static_cast<int>(static_cast<unsigned int>(whole) * frameBytes));
        m_owed -= whole;
        return true;
    }
    ring.advanceReadIndex(static_cast<int>(there * frameBytes));
    m_owed = 0.0; // silence until there is more
    if (!isEOFReached()) {
        return true;
    }
    bufferDried = true;
    bool const goesRound = source->goesRound();
    source->decCurrentLoop();
    eofReached = !goesRound;
    return goesRound;
}
