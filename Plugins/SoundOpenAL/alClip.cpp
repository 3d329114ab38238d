#include "alClip.h"

#include "alChannel.h"
#include "alSound.h"

#include "System/Sound/soundSource.h"

#include <algorithm>

AlClip::AlClip(AlSound *owner, AlChannel *voice, bool isMultichannel)
    : iSoundClip(owner, voice, isMultichannel), m_owner(owner), m_voice(voice)
{
}

bool AlClip::open(Qel::iSoundSource *newSource, unsigned int ringSize)
{
    if (opened || !iSoundClip::open(newSource, ringSize)) {
        return false;
    }
    constexpr unsigned int segmentsOfAChunk = 4;
    m_segment.resize(chunkSize / segmentsOfAChunk);
    m_voice->setClip(this);
    m_owner->countRequest(*m_voice);
    return true;
}

void AlClip::update(float dt)
{
    if (opened && channel != nullptr) {
        unsigned int const enough = std::min(chunkSize, static_cast<unsigned int>(ring.size()) / 2);
        // One that began in a pause would begin anew in every update of it.
        dataReady = !m_owner->isPaused() && (dataReady || getReadable() >= enough || isEOFReached());
        channel->update(dt);
        feed();
    }
    iSoundClip::update(dt);
}

// A segment that is not full goes only where nothing else is left to play.
void AlClip::feed()
{
    unsigned int const frameBytes = 2 * std::max<unsigned int>(source->getNumChannels(), 1);
    while (isPlaying() && m_voice->freeSegments() != 0) {
        unsigned int const bits = m_voice->freeSegments();
        unsigned int const bit = bits & (~bits + 1); // the lowest
        unsigned int const whole = getReadable() / frameBytes * frameBytes;
        auto const full = static_cast<unsigned int>(m_segment.size());
        if (whole == 0 || (whole < full && !isEOFReached() && m_voice->isFed())) {
            return;
        }
        int const bytes = ring.read(m_segment.data(), static_cast<int>(std::min(whole, full)));
        if (!channel->fillBuffer(bit, m_segment.data(), static_cast<unsigned int>(bytes))) {
            return;
        }
    }
}

bool AlClip::goesOn()
{
    if (!isEOFReached() || getReadable() != 0) {
        return true; // silence until there is more
    }
    bufferDried = true;
    bool const goesRound = source->goesRound();
    source->decCurrentLoop();
    eofReached = !goesRound;
    return goesRound;
}
