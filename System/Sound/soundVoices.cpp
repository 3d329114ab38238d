#include "System/Sound/soundVoices.h"

#include "System/Sound/soundChannel.h"
#include "System/Sound/soundSystem.h"
#include "System/Sound/soundVorbis.h"

#include <algorithm>

namespace Qel {

namespace {

constexpr std::size_t needed = 2; // the first two

bool isOver(iSoundVorbis const *stream)
{
    return stream->getChannel() == nullptr || stream->getChannel()->isFinished();
}

} // namespace

void SoundVoices::set(std::array<Voice, 3> const &newVoices)
{
    voices = newVoices;
    m_hasLost = false;
}

bool SoundVoices::open()
{
    bool const onStreams = hasStreams();
    for (Voice const &voice : voices) {
        if (onStreams ? voice.stream == nullptr : voice.channel == nullptr) {
            continue;
        }
        if (!onStreams) {
            if (!voice.channel->init(voice.source)) {
                return false;
            }
            continue;
        }
        if (!voice.stream->open(voice.source, voice.channel)) {
            return false;
        }
        voice.stream->resetStandAlone();
        voice.stream->_prefill();
    }
    return true;
}

bool SoundVoices::play(iSoundSource &parent)
{
    bool const onStreams = hasStreams();
    for (std::size_t i = 0; i < voices.size(); ++i) {
        Voice const &voice = voices[i];
        bool const isThere = onStreams ? voice.stream != nullptr : voice.channel != nullptr;
        if (!isThere && i >= needed) {
            continue;
        }
        if (!isThere || !(onStreams ? voice.stream->play() : voice.channel->play(0))) {
            return false;
        }
    }
    if (!m_isCounted) {
        m_isCounted = true;
        parent.setPlaying();
    }
    return true;
}

void SoundVoices::setStopped(iSoundSource *parent)
{
    if (m_isCounted) {
        parent->setStopped();
        m_isCounted = false;
    }
}

void SoundVoices::update(float dt)
{
    for (Voice const &voice : voices) {
        if (voice.stream != nullptr) {
            voice.stream->update(dt);
        }
    }
}

void SoundVoices::stop(iSoundSystem &system, unsigned int ms)
{
    bool const onStreams = hasStreams();
    for (Voice const &voice : voices) {
        if (onStreams && voice.stream != nullptr) {
            voice.stream->stop(ms);
        } else if (!onStreams && voice.channel != nullptr) {
            system.stopChannel(voice.channel->getIndex(), ms);
        }
    }
}

bool SoundVoices::isFinished() const
{
    if (m_hasLost) {
        return true;
    }
    if (!hasStreams()) {
        return std::any_of(voices.begin(), voices.end(), [](Voice const &voice) {
            return voice.channel != nullptr && voice.channel->isFinished();
        });
    }
    iSoundVorbis const *const third = voices[needed].stream;
    return isOver(voices[0].stream) || isOver(voices[1].stream) ||
           (third != nullptr && third->isEOFReached() && third->isFinished());
}

void SoundVoices::forget(iSoundChannel const *gone)
{
    for (Voice &voice : voices) {
        if (voice.channel == gone) {
            voice.channel = nullptr;
            m_hasLost = true;
        }
    }
}

void SoundVoices::forget(iSoundVorbis const *gone)
{
    for (Voice &voice : voices) {
        if (voice.stream == gone) {
            voice.stream = nullptr;
            m_hasLost = true;
        }
    }
}

void SoundVoices::letGo()
{
    for (Voice const &voice : voices) {
        if (voice.stream != nullptr) {
            voice.stream->setStandAlone(); // so that the system's next pass takes it
            voice.stream->close();
            voice.stream->_forget(voice.stream->getChannel());
        }
    }
}

void SoundVoices::makeCompanion(iSoundSource &source, iSoundSource const &parent)
{
    unsigned int size = 0;
    unsigned char *const companion = parent.getCompanionData(size);
    source = parent;
    source.setResourceName(parent.getCompanionName());
    source.setData(companion, size);
}

void SoundVoices::makeSubwoofer(iSoundSource &source, iSoundSource const &parent)
{
    makeCompanion(source, parent);
    source.setLFEOnly();
    source.force2D();
}

} // namespace Qel
