#include "alSound.h"

#include "alChannel.h"
#include "alClip.h"
#include "settings.h"

#include "System/Sound/sound3DStereo.h"
#include "System/Sound/soundSource.h"
#include "System/Sound/stereoCalc.h"
#include "System/System/logManager.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

constexpr unsigned int numCrossfade = 4;
constexpr unsigned int mostChannels = 255;

bool isPlace(D3DXVECTOR3 const &v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

Qel::eSoundCaps capsOf(unsigned int speakers)
{
    switch (speakers) {
    case 4:
        return Qel::SOUNDCAPS_40;
    case 6:
        return Qel::SOUNDCAPS_51;
    case 7:
        return Qel::SOUNDCAPS_61;
    case 8:
        return Qel::SOUNDCAPS_71;
    default:
        return Qel::SOUNDCAPS_STEREO;
    }
}

// The library's right-hand vector is that of a left-handed system, and here all vectors are right-handed.
class RightHandedStereo final : public Qel::iSound3DStereo {
public:
    using iSound3DStereo::iSound3DStereo;

    void update(float dt, Qel::cStereoCalc *calc) override
    {
        if (calc == nullptr) {
            iSound3DStereo::update(dt, calc);
            return;
        }
        Qel::cStereoCalc turned = *calc;
        turned.rightVector = -turned.rightVector;
        iSound3DStereo::update(dt, &turned);
    }
};

} // namespace

AlSound::AlSound(Qel::String const &systemName, Qel::String const &type) : iSoundSystem(systemName, type)
{
    description = "OpenAL Soft";
    supportedCaps = {Qel::SOUNDCAPS_WINDOWS, Qel::SOUNDCAPS_STEREO, Qel::SOUNDCAPS_40,
                     Qel::SOUNDCAPS_51,      Qel::SOUNDCAPS_61,     Qel::SOUNDCAPS_71};
}

// The channels need the device, which goes before the base does.
AlSound::~AlSound()
{
    AlSound::shutdownSoundSystem();
}

void AlSound::add(AlChannel &channel)
{
    m_channels.push_back(&channel);
}

void AlSound::remove(AlChannel &channel)
{
    std::erase(m_channels, &channel);
}

bool AlSound::openDevice()
{
    constexpr unsigned int speakers[] = {2, 2, 2, 4, 6, 7, 8}; // by caps
    AlDevice::Wanted const wanted{settings::device.get(), settings::file.get(), params.driverSamplerate,
                                  speakers[params.soundCaps]};
    if (!m_device.open(wanted)) {
        return false;
    }
    versionString = alGetString(AL_VERSION);
    params.driverSamplerate = static_cast<std::uint16_t>(std::min(m_device.rate(), 0xFFFFu));
    params.numSpeakers = static_cast<std::uint8_t>(m_device.speakers());
    params.current3DCaps = capsOf(m_device.speakers());
    params.isMultiChannel = AlDevice::formatOf(6) != AL_NONE; // the device mixes them down where it has to
    params.current51Caps = params.isMultiChannel ? params.current3DCaps : Qel::SOUNDCAPS_NONE;
    return true;
}

bool AlSound::makeChannels()
{
    unsigned int const most = std::min(m_device.numSources(), mostChannels);
    if (most <= numCrossfade) {
        return false;
    }
    unsigned int const num3D = std::min<unsigned int>(params.num3DChannels, most - numCrossfade);
    unsigned int const numAll3D = num3D + numCrossfade;
    params.num3DChannels = static_cast<std::uint8_t>(numAll3D);
    params.num2D51Channels =
        static_cast<std::uint8_t>(std::min<unsigned int>(params.num2D51Channels, most - numAll3D));
    channelTable.assign(std::size_t{numAll3D} + params.num2D51Channels + 1, nullptr);
    for (unsigned int i = 1; i < channelTable.size(); ++i) {
        Qel::iSoundChannel *const channel =
            std::make_unique<AlChannel>(i, this, m_device.takeSource()).release();
        if (i <= num3D) {
            free3DChannels.push_back(channel);
        } else if (i <= numAll3D) {
            crossfadeChannels.push_back(channel);
        } else {
            free2D51Channels.push_back(channel);
        }
    }
    return true;
}

bool AlSound::initSoundSystem(Qel::sSoundSystemParams const &newParams)
{
    if (isInited() || !iSoundSystem::initSoundSystem(newParams)) {
        return isInited();
    }
    if (!openDevice() || !makeChannels()) {
        shutdownSoundSystem();
        return false;
    }
    setDefaultListener();
    tellDevice();
    return true;
}

bool AlSound::shutdownSoundSystem()
{
    bool const isUp = iSoundSystem::shutdownSoundSystem();
    if (!isUp) {
        m_device.close();
    }
    return isUp;
}

bool AlSound::fastDetect()
{
    ALCdevice *const usual = alcOpenDevice(nullptr);
    return usual != nullptr && alcCloseDevice(usual) != ALC_FALSE;
}

// All that a new device has to know.
void AlSound::tellDevice()
{
    m_device.use();
    setListenerPosition(m_position);
    setListenerOrientation(m_at, m_up);
    setMasterVolume(masterVolume);
    m_device.reverb().setWet(params.wetVolume);
    m_device.reverb().setRoom(params.isRoomReverbOn ? params.listenerRoom : Qel::ROOM_NONE);
}

void AlSound::update(float dt)
{
    if (isInited()) {
        m_device.use();
        if (m_device.isLost(dt)) {
            backendOperation1();
        }
    }
    iSoundSystem::update(dt);
    m_device.render(dt);
}

void AlSound::backendOperation1()
{
    if (!isInited()) {
        return;
    }
    Qel::logMessage("SoundOpenAL: the device is lost\n", 3);
    for (AlChannel *const channel : m_channels) {
        channel->loseDevice();
    }
    bool const isFound = m_device.openAgain();
    if (isFound) {
        tellDevice();
    }
    for (AlChannel *const channel : m_channels) {
        channel->findDevice(isFound ? m_device.takeSource() : 0);
    }
}

// The fade that comes before it takes the other groups down as well: they come back.
bool AlSound::stopAll(unsigned int group)
{
    constexpr unsigned int fadeMs = 400;
    bool const isAny = iSoundSystem::stopAll(group);
    if (group != 0) {
        fadeIn(0, 1.0f, fadeMs, false);
    }
    return isAny;
}

void AlSound::getListener(D3DXVECTOR3 &pos, D3DXVECTOR3 &at, D3DXVECTOR3 &up)
{
    pos = m_position;
    at = m_at;
    up = m_up;
}

void AlSound::setListenerPosition(D3DXVECTOR3 const &pos)
{
    if (!isPlace(pos)) {
        return;
    }
    m_position = pos;
    if (m_device.isOpen()) {
        m_device.use();
        alListener3f(AL_POSITION, pos.x, pos.y, pos.z);
    }
}

void AlSound::setListenerOrientation(D3DXVECTOR3 const &at, D3DXVECTOR3 const &up)
{
    if (!isPlace(at) || !isPlace(up)) {
        return;
    }
    m_at = at;
    m_up = up;
    if (m_device.isOpen()) {
        m_device.use();
        ALfloat const orientation[] = {at.x, at.y, at.z, up.x, up.y, up.z};
        alListenerfv(AL_ORIENTATION, orientation);
    }
}

bool AlSound::setListenerRoom(Qel::eListenerRoom room, bool flag)
{
    bool const result = iSoundSystem::setListenerRoom(room, flag);
    if (m_device.isOpen() && params.isRoomReverbOn) {
        m_device.use();
        m_device.reverb().setRoom(room);
    }
    return result;
}

void AlSound::setMasterVolume(float volume)
{
    iSoundSystem::setMasterVolume(volume);
    if (m_device.isOpen()) {
        m_device.use();
        alListenerf(AL_GAIN, muted || !(masterVolume > 0) ? 0.0f : masterVolume);
    }
}

void AlSound::setWetVolume(float volume)
{
    iSoundSystem::setWetVolume(volume);
    if (m_device.isOpen()) {
        m_device.use();
        m_device.reverb().setWet(params.wetVolume);
    }
}

bool AlSound::checkForError(Qel::String const &where, bool isTold)
{
    ALenum const error = alGetError();
    if (error == AL_NO_ERROR) {
        return false;
    }
    if (isTold) {
        Qel::logMessage("SoundOpenAL: " + where + ": " + alGetString(error) + '\n', 3);
    }
    return true;
}

std::uint64_t AlSound::getSoundDriverHandle1() const
{
    return reinterpret_cast<std::uintptr_t>(m_device.device());
}

std::uint64_t AlSound::getSoundDriverHandle2() const
{
    return reinterpret_cast<std::uintptr_t>(m_device.context());
}

std::uint64_t AlSound::getSoundDriverHandle3() const
{
    return reinterpret_cast<std::uintptr_t>(static_cast<ClipMaker const *>(this));
}

Qel::iSoundClip *AlSound::createClip(bool multichannel)
{
    auto *const channel = isInited() ? static_cast<AlChannel *>(getFreeChannel(false)) : nullptr;
    if (channel == nullptr) {
        return nullptr;
    }
    return addClip(std::make_unique<AlClip>(this, channel, multichannel && isMultiChannel()));
}

Qel::iSound3DStereo *AlSound::create3DStereo()
{
    if (!isInited()) {
        return nullptr;
    }
    stereoSounds.push_back(nullptr);
    stereoSounds.back() = std::make_unique<RightHandedStereo>(this).release();
    return stereoSounds.back();
}

void AlSound::create2D51Channel()
{
    unsigned int const index = getNew2D51Index();
    ALuint const source = index == 0 ? 0 : m_device.takeSource();
    if (source != 0) {
        add2D51Channel(std::make_unique<AlChannel>(index, this, source));
    }
}
