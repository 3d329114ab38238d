#include "nullChannel.h"

#include "nullClip.h"
#include "nullSound.h"

#include "System/Sound/soundSource.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr double bytesPerSample = 2;

// Bytes of samples in a companion's file: that one comes with its header.
unsigned int payloadBytes(unsigned char const *data, unsigned int size)
{
    constexpr std::uint64_t headSize = 12;
    constexpr std::uint64_t chunkHead = 8;
    if (size < headSize || std::memcmp(data, "RIFF", 4) != 0) {
        return size;
    }
    std::uint32_t length = 0;
    for (std::uint64_t at = headSize; at + chunkHead <= size; at += std::uint64_t{length} + chunkHead) {
        std::memcpy(&length, data + at + 4, sizeof length);
        if (std::memcmp(data + at, "data", 4) == 0) {
            return std::min(length, static_cast<std::uint32_t>(size - at - chunkHead));
        }
    }
    return 0;
}

} // namespace

NullChannel::NullChannel(unsigned int number, NullSound *owner) : iSoundChannel(number, owner), m_owner(owner)
{
}

double NullChannel::framesOf(unsigned int bytes) const
{
    return std::floor(bytes / (bytesPerSample * std::max<unsigned int>(source->getNumChannels(), 1)));
}

void NullChannel::note(VoiceEvent event)
{
    m_owner->note({0, event, RobReason::none, getIndex(), getUniqueID(), 0});
}

bool NullChannel::init(Qel::iSoundSource *newSource)
{
    bool const isInited = iSoundChannel::init(newSource);
    m_clip = nullptr;
    m_queue.clear();
    m_position = m_played = m_owed = m_length = 0;
    m_dryUpdates = 0;
    if (!isInited) {
        return false;
    }
    unsigned int bytes = 0;
    unsigned char const *const data = source->getData(bytes);
    if (source->getSampleLengthMS() != 0) {
        constexpr double msPerSecond = 1000;
        m_length = source->getSampleLengthMS() / msPerSecond * source->getSamplerate();
    } else if (data != nullptr) {
        m_length = framesOf(payloadBytes(data, bytes));
    }
    return true;
}

bool NullChannel::play(unsigned int fadeInMs)
{
    if (!iSoundChannel::play(fadeInMs)) {
        return false;
    }
    m_isOn = true;
    if (!isPaused()) {
        setPlaying();
    }
    // A sound of several voices counts itself.
    if (!m_isCounted && !is3DStereo() && !is3DSubwoofer()) {
        m_isCounted = true;
        source->setPlaying();
    }
    note(VoiceEvent::started);
    return true;
}

void NullChannel::stop(unsigned int fadeOutMs)
{
    iSoundChannel::stop(fadeOutMs);
    // In a pause the voice is taken back right after this: no fade would ever be heard.
    if (fadeOutMs == 0 || system->isPaused()) {
        end(VoiceEvent::stopped);
    } else {
        fadeDown(0.0f, fadeOutMs);
    }
}

void NullChannel::end(VoiceEvent event)
{
    if (!m_isOn) {
        return;
    }
    m_isOn = false;
    note(event);
    if (m_isCounted) {
        m_isCounted = false;
        source->setStopped();
    }
    m_queue.clear();
    if (event == VoiceEvent::ended) {
        setFinished();
    } else {
        status &= ~static_cast<std::uint32_t>(PLAYING);
    }
}

void NullChannel::setPause(bool pause, bool fade)
{
    bool const wasPaused = isPaused();
    iSoundChannel::setPause(pause, fade);
    if (!m_isOn || wasPaused == pause) {
        return;
    }
    if (!pause) {
        endPause();
    }
    note(pause ? VoiceEvent::paused : VoiceEvent::resumed);
}

bool NullChannel::fillBuffer(unsigned int segmentBit, unsigned char const *, unsigned int size)
{
    if (!isChannelInited()) {
        return false;
    }
    m_queue.push_back({segmentBit, framesOf(size)});
    return true;
}

unsigned int NullChannel::update(float dt)
{
    iSoundChannel::update(dt);
    if (!isChannelInited() || !m_isOn) {
        return 0;
    }
    if (moveFade(dt, m_volume)) {
        end(VoiceEvent::ended);
    }
    if (!isPlaying()) {
        return 0;
    }
    float const pitch = source->getPitchFactor();
    double const seconds = dt > 0 ? static_cast<double>(dt) : 0.0;
    double const frames = seconds * source->getSamplerate() * (pitch > 0 ? static_cast<double>(pitch) : 1.0);
    m_played += seconds;
    if (m_clip == nullptr && source->isStream()) {
        return playStream(frames);
    }
    constexpr double msPerSecond = 1000;
    source->setCurrentTimeMS(static_cast<unsigned int>(m_played * msPerSecond));
    if (m_clip == nullptr) {
        playData(frames);
    } else if (!m_clip->playOut(frames)) {
        end(VoiceEvent::ended);
    }
    return 0;
}

// Segments in the order in which they came. What is due while none is there is made up for by the next ones;
// a stream that brings none has ended.
unsigned int NullChannel::playStream(double frames)
{
    constexpr int mostDryUpdates = 2; // a loop that ends with a segment brings none once
    m_dryUpdates = m_queue.empty() ? m_dryUpdates + 1 : 0;
    if (m_dryUpdates >= mostDryUpdates) {
        end(VoiceEvent::ended);
        return 0;
    }
    m_owed += frames;
    while (!m_queue.empty() && m_owed >= m_queue.front().frames) {
        m_owed -= m_queue.front().frames;
        m_queue.pop_front();
    }
    if (!m_queue.empty()) {
        m_queue.front().frames -= m_owed;
        m_owed = 0;
    }
    unsigned int wanted = 15; // all four segments but those that are queued
    for (Segment const &segment : m_queue) {
        wanted &= ~segment.bit;
    }
    return wanted;
}

void NullChannel::playData(double frames)
{
    m_position += frames;
    while (m_position >= m_length) {
        bool const goesRound = source->goesRound();
        if (!goesRound || m_length <= 0) {
            end(VoiceEvent::ended);
            return;
        }
        if (source->isLooping()) {
            m_position = std::fmod(m_position, m_length);
            return;
        }
        source->decCurrentLoop();
        m_position -= m_length;
    }
}
