#include "alChannel.h"

#include "System/Sound/soundSource.h"
#include "alClip.h"
#include "alSound.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

constexpr float leastPitch = 0.01f;

// The device takes no value that is no number.
float sound(float value, float otherwise)
{
    return std::isfinite(value) ? value : otherwise;
}

void set(ALuint source, ALenum what, D3DXVECTOR3 const &v)
{
    alSource3f(source, what, sound(v.x, 0), sound(v.y, 0), sound(v.z, 0));
}

} // namespace

AlChannel::AlChannel(unsigned int number, AlSound *owner, ALuint deviceSource)
    : iSoundChannel(number, owner), m_owner(owner), m_source(deviceSource)
{
    m_owner->add(*this);
}

AlChannel::~AlChannel()
{
    AlDevice &device = m_owner->device();
    if (device.isOpen() && m_source != 0) {
        device.use();
        end(false);
        alDeleteBuffers(static_cast<ALsizei>(m_segments.size()), m_segments.data());
        device.giveBack(m_source);
    }
    m_owner->remove(*this);
}

ALint AlChannel::sourceInteger(ALenum what) const
{
    ALint value = 0;
    alGetSourcei(m_source, what, &value);
    return value;
}

bool AlChannel::init(Qel::iSoundSource *newSource)
{
    m_owner->device().use();
    if (!iSoundChannel::init(newSource)) {
        return false;
    }
    m_seconds = 0;
    m_dryUpdates = 0;
    m_clip = nullptr;
    // A stream's head is read elsewhere, and its samples come segment by segment.
    if (m_source == 0 || (!source->isStream() && !load())) {
        resetChannelInited();
        return false;
    }
    applyRoom();
    return true;
}

bool AlChannel::load()
{
    Pcm pcm;
    if (!decode(*source, pcm)) {
        return false;
    }
    ALenum const format = AlDevice::formatOf(pcm.channels);
    alGetError();
    alGenBuffers(1, &m_buffer);
    if (format != AL_NONE && alGetError() == AL_NO_ERROR) {
        alBufferData(m_buffer, format, pcm.samples.data(), static_cast<ALsizei>(pcm.bytes()),
                     static_cast<ALsizei>(pcm.rate));
        if (!m_owner->checkForError("load", true)) {
            useSpeakers(pcm.channels);
            return true;
        }
    }
    alDeleteBuffers(1, &m_buffer);
    m_buffer = 0;
    return false;
}

bool AlChannel::play(unsigned int fadeInMs)
{
    m_owner->device().use();
    if (!iSoundChannel::play(fadeInMs) || !start()) {
        return false;
    }
    // A sound of several voices counts itself.
    if (!m_isCounted && !is3DStereo() && !is3DSubwoofer()) {
        m_isCounted = true;
        source->setPlaying();
    }
    return true;
}

bool AlChannel::start()
{
    alGetError();
    if (!source->isStream()) {
        bool const hasPasses = !source->isLooping() && source->getLoop() > 1;
        m_passes = hasPasses ? std::max<ALint>(source->getCurrentLoop(), 1) : 1;
        m_passesDone = 0;
        alSourcei(m_source, AL_LOOPING, source->isLooping() ? AL_TRUE : AL_FALSE);
        for (ALint i = 0; i < m_passes; ++i) {
            alSourceQueueBuffers(m_source, 1, &m_buffer);
        }
    }
    m_isOn = true;
    if (!isPaused()) {
        startSource();
        setPlaying();
    }
    if (m_owner->checkForError("play", true)) {
        end(false);
        return false;
    }
    return true;
}

void AlChannel::startSource()
{
    applyGain();
    if (!source->isStream() || !m_queue.empty()) {
        alSourcePlay(m_source);
    }
}

void AlChannel::stop(unsigned int fadeOutMs)
{
    iSoundChannel::stop(fadeOutMs);
    // In a pause the voice is taken back right after this: no fade would ever be heard.
    if (fadeOutMs == 0 || system->isPaused()) {
        end(false);
    } else {
        fadeDown(0.0f, fadeOutMs);
    }
}

void AlChannel::end(bool isFinishedNow)
{
    if (m_source != 0 && m_owner->device().isOpen()) {
        m_owner->device().use();
        alSourceStop(m_source);
        alSourcei(m_source, AL_LOOPING, AL_FALSE);
        alSourcei(m_source, AL_BUFFER, 0);
        if (m_buffer != 0) {
            alDeleteBuffers(1, &m_buffer);
        }
    }
    m_buffer = 0;
    m_queue.clear();
    if (!std::exchange(m_isOn, false)) {
        return;
    }
    if (std::exchange(m_isCounted, false)) {
        source->setStopped();
    }
    if (isFinishedNow) {
        setFinished();
    } else {
        status &= ~static_cast<std::uint32_t>(PLAYING);
    }
}

void AlChannel::setPause(bool pause, bool fade)
{
    m_owner->device().use();
    bool const wasPaused = isPaused();
    iSoundChannel::setPause(pause, fade);
    if (!m_isOn || wasPaused == pause) {
        return;
    }
    if (pause) {
        if (!fade) {
            alSourcePause(m_source); // with a fade when that is over
        }
        return;
    }
    endPause();
    // What still plays, or has come to its end meanwhile, must not begin anew.
    ALint const state = sourceInteger(AL_SOURCE_STATE);
    if (state == AL_PAUSED || state == AL_INITIAL) {
        startSource();
    }
}

bool AlChannel::fillBuffer(unsigned int segmentBit, unsigned char const *data, unsigned int size)
{
    std::size_t segment = 0;
    while (segment < numSegments && segmentBit != 1u << segment) {
        ++segment;
    }
    bool const isQueued = std::find(m_queue.begin(), m_queue.end(), segment) != m_queue.end();
    if (!isChannelInited() || segment == numSegments || data == nullptr || isQueued) {
        return false;
    }
    m_owner->device().use();
    Pcm &pcm = m_segmentData[segment]; // its memory serves again
    pcm.channels = source->getNumChannels();
    pcm.rate = source->getSamplerate();
    pcm.samples.resize(size / sizeof(std::int16_t));
    std::memcpy(pcm.samples.data(), data, pcm.bytes());
    toSpeakers(pcm, source->getSoundParams());
    if (!queue(segment)) {
        return false;
    }
    if (isPlaying() && sourceInteger(AL_SOURCE_STATE) != AL_PLAYING) {
        alSourcePlay(m_source); // it had run dry
    }
    return true;
}

unsigned int AlChannel::freeSegments() const
{
    unsigned int bits = (1u << numSegments) - 1;
    for (std::size_t const segment : m_queue) {
        bits &= ~(1u << segment);
    }
    return bits;
}

bool AlChannel::queue(std::size_t segment)
{
    Pcm const &pcm = m_segmentData[segment];
    ALenum const format = AlDevice::formatOf(pcm.channels);
    if (format == AL_NONE) {
        return false;
    }
    alGetError();
    if (m_segments[0] == 0) {
        alGenBuffers(static_cast<ALsizei>(m_segments.size()), m_segments.data());
    }
    useSpeakers(pcm.channels);
    alBufferData(m_segments[segment], format, pcm.samples.data(), static_cast<ALsizei>(pcm.bytes()),
                 static_cast<ALsizei>(pcm.rate));
    alSourceQueueBuffers(m_source, 1, &m_segments[segment]);
    if (m_owner->checkForError("queue", true)) {
        return false;
    }
    m_queue.push_back(segment);
    return true;
}

// Each channel of a file on its own speaker, where there are as many.
void AlChannel::useSpeakers(unsigned int channels)
{
    if (alIsExtensionPresent("AL_SOFT_direct_channels") != AL_FALSE) {
        alSourcei(m_source, AL_DIRECT_CHANNELS_SOFT,
                  channels > 1 && channels <= m_owner->device().speakers() ? AL_TRUE : AL_FALSE);
    }
}

unsigned int AlChannel::update(float dt)
{
    m_owner->device().use();
    iSoundChannel::update(dt);
    if (!isChannelInited() || !m_isOn) {
        return 0;
    }
    bool const wasFading = isFadingUp() || isFadingDown();
    if (moveFade(dt, m_volume)) {
        end(true);
        return 0;
    }
    if (wasFading) {
        applyGain();
    }
    if (!isPlaying()) {
        if (isPaused() && !isFadingDown() && sourceInteger(AL_SOURCE_STATE) == AL_PLAYING) {
            alSourcePause(m_source);
        }
        return 0;
    }
    m_seconds += std::max(dt, 0.0f);
    if (source->isStream()) {
        return updateStream();
    }
    constexpr float msPerSecond = 1000;
    source->setCurrentTimeMS(static_cast<unsigned int>(m_seconds * msPerSecond));
    updateData();
    return 0;
}

// A stream that brings no segment while none is queued has ended. It may bring none once: where its loop ends
// with a segment.
unsigned int AlChannel::updateStream()
{
    constexpr int mostDryUpdates = 2;
    m_dryUpdates = m_queue.empty() ? m_dryUpdates + 1 : 0;
    if (m_dryUpdates >= mostDryUpdates && (m_clip == nullptr || !m_clip->goesOn())) {
        end(true);
        return 0;
    }
    for (ALint left = sourceInteger(AL_BUFFERS_PROCESSED); left > 0 && !m_queue.empty(); --left) {
        ALuint buffer = 0;
        alSourceUnqueueBuffers(m_source, 1, &buffer);
        m_queue.pop_front();
    }
    if (m_queue.empty()) {
        alSourceRewind(m_source); // what is queued on a source that has stopped counts as played
    }
    m_queueOffset = sourceInteger(AL_SAMPLE_OFFSET);
    return freeSegments();
}

void AlChannel::updateData()
{
    bool const isOver = sourceInteger(AL_SOURCE_STATE) != AL_PLAYING;
    ALint const done = isOver ? m_passes : sourceInteger(AL_BUFFERS_PROCESSED);
    for (; m_passesDone < std::min(done, m_passes - 1); ++m_passesDone) {
        source->decCurrentLoop();
    }
    if (isOver) {
        end(true);
    }
}

bool AlChannel::setParams()
{
    if (!iSoundChannel::setParams()) {
        return false;
    }
    applyPlace();
    applyRoom();
    return true;
}

bool AlChannel::updateVolume()
{
    if (!iSoundChannel::updateVolume()) {
        return false;
    }
    applyGain();
    return true;
}

bool AlChannel::setPosition(D3DXVECTOR3 const &position)
{
    if (!iSoundChannel::setPosition(position)) {
        return false;
    }
    if (m_source != 0) {
        m_owner->device().use();
        applyPlace();
    }
    return true;
}

void AlChannel::setActualVolume(float volume)
{
    m_volume = volume;
    applyGain();
}

void AlChannel::applyGain()
{
    if (m_source != 0 && m_owner->device().isOpen()) {
        m_owner->device().use();
        alSourcef(m_source, AL_GAIN, std::clamp(sound(m_volume * getActualVolume(), 0), 0.0f, 1.0f));
        m_owner->device().reverb().filter(m_source, sound(getLowPass(), 1));
    }
}

void AlChannel::applyPlace()
{
    if (m_source == 0) {
        return;
    }
    Qel::sSoundParams const &params = getSoundParams();
    bool const isPlaced = is3DChannel() && params.has3DInformation();
    alSourcei(m_source, AL_SOURCE_RELATIVE, isPlaced ? AL_FALSE : AL_TRUE);
    alSourcef(m_source, AL_ROLLOFF_FACTOR, isPlaced ? 1.0f : 0.0f);
    set(m_source, AL_POSITION, isPlaced ? params.position : D3DXVECTOR3(0, 0, 0));
    set(m_source, AL_VELOCITY, isPlaced ? params.motion : D3DXVECTOR3(0, 0, 0));
    float const least = std::max(sound(params.minDistance, 0), 0.0f);
    alSourcef(m_source, AL_REFERENCE_DISTANCE, least);
    alSourcef(m_source, AL_MAX_DISTANCE, std::max(sound(params.maxDistance, least), least + 0.001f));
    constexpr unsigned int fullCircle = 360;
    bool const hasCone = isPlaced && params.cone.getInnerAngle() < fullCircle;
    set(m_source, AL_DIRECTION, hasCone ? params.direction : D3DXVECTOR3(0, 0, 0));
    alSourcef(m_source, AL_CONE_INNER_ANGLE, static_cast<float>(params.cone.getInnerAngle()));
    alSourcef(m_source, AL_CONE_OUTER_ANGLE, static_cast<float>(params.cone.getOuterAngle()));
    alSourcef(m_source, AL_CONE_OUTER_GAIN,
              std::min(static_cast<float>(params.cone.getOutOfConeVol()) / 100, 1.0f));
    alSourcef(m_source, AL_PITCH, std::max(sound(params.pitchFactor, 1), leastPitch));
}

void AlChannel::applyRoom()
{
    if (m_source != 0) {
        bool const isInRoom = is3DChannel() || getSoundParams().isWetVolumeOn();
        m_owner->device().reverb().send(m_source, isInRoom && m_owner->isRoomReverbOn());
    }
}

void AlChannel::loseDevice()
{
    m_source = m_buffer = 0;
    m_segments = {};
}

void AlChannel::findDevice(ALuint newSource)
{
    m_source = newSource;
    if (isChannelInited()) {
        applyPlace();
        applyRoom();
        applyGain();
    }
    if (!m_isOn) {
        m_queue.clear();
        return;
    }
    if (m_source == 0 || (!source->isStream() && !load())) {
        end(true);
        return;
    }
    goOn();
    if (isPaused()) {
        alSourcePause(m_source);
    }
}

void AlChannel::goOn()
{
    if (source->isStream()) {
        for (std::size_t const segment : std::exchange(m_queue, {})) {
            queue(segment);
        }
        startSource();
        alSourcei(m_source, AL_SAMPLE_OFFSET, m_queueOffset);
        return;
    }
    std::uint32_t const before = status;
    if (!start()) {
        return;
    }
    status = before;
    ALint bytes = 0;
    ALint channels = 0;
    ALint rate = 0;
    alGetBufferi(m_buffer, AL_SIZE, &bytes);
    alGetBufferi(m_buffer, AL_CHANNELS, &channels);
    alGetBufferi(m_buffer, AL_FREQUENCY, &rate);
    constexpr ALint bytesOfSample = 2;
    ALint const frames = bytes / bytesOfSample / std::max(channels, 1);
    float const played = m_seconds * std::max(sound(source->getPitchFactor(), 1), leastPitch);
    if (frames > 0 && rate > 0) {
        float const length = static_cast<float>(frames) / static_cast<float>(rate);
        alSourcef(m_source, AL_SEC_OFFSET, std::fmod(played, length));
    }
}
