#include "alDevice.h"

#include "System/System/logManager.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace {

constexpr unsigned int mostSources = 255; // a system has no more channels
constexpr unsigned int framesAtOnce = 1024;

// The same for all devices of the library.
template <typename Function>
Function deviceFunction(char const *name)
{
    return reinterpret_cast<Function>(alcGetProcAddress(nullptr, name));
}

ALCint renderChannels(unsigned int speakers)
{
    switch (speakers) {
    case 4:
        return ALC_QUAD_SOFT;
    case 6:
        return ALC_5POINT1_SOFT;
    case 7:
        return ALC_6POINT1_SOFT;
    case 8:
        return ALC_7POINT1_SOFT;
    default:
        return ALC_STEREO_SOFT;
    }
}

} // namespace

ALenum AlDevice::formatOf(unsigned int channels)
{
    switch (channels) {
    case 1:
        return AL_FORMAT_MONO16;
    case 2:
        return AL_FORMAT_STEREO16;
    case 4:
        return alIsExtensionPresent("AL_EXT_MCFORMATS") != AL_FALSE ? AL_FORMAT_QUAD16 : AL_NONE;
    case 6:
        return alIsExtensionPresent("AL_EXT_MCFORMATS") != AL_FALSE ? AL_FORMAT_51CHN16 : AL_NONE;
    default:
        return AL_NONE;
    }
}

bool AlDevice::open(Wanted const &wanted)
{
    close();
    m_wanted = wanted;
    if (!m_wanted.file.empty() && !m_file.open(m_wanted.file, m_wanted.rate, m_wanted.speakers)) {
        Qel::logMessage("SoundOpenAL: cannot write '" + m_wanted.file + "'\n", 3);
        return false;
    }
    return openAgain();
}

bool AlDevice::openAgain()
{
    closeDevice();
    bool const onlyRenders = m_file.isOpen() || m_wanted.name == "loopback";
    if ((onlyRenders || !openDevice()) && !openLoopback()) {
        Qel::logMessage("SoundOpenAL: there is no device\n", 3);
        closeDevice();
        return false;
    }
    m_reverb.open(m_device);
    alDistanceModel(AL_LINEAR_DISTANCE_CLAMPED);
    alGetError();
    for (ALuint source = 0; m_sources.size() < mostSources;) {
        alGenSources(1, &source);
        if (alGetError() != AL_NO_ERROR) {
            break;
        }
        m_sources.push_back(source);
    }
    m_numSources = static_cast<unsigned int>(m_sources.size());
    Qel::logMessage(2, "SoundOpenAL: %u of %u sources, %u speakers, %u Hz, reverb %s, on '%s'\n",
                    m_numSources, mostSources, m_speakers, m_rate, m_reverb.isThere() ? "on" : "off",
                    rendersItself() ? "no device" : alcGetString(m_device, ALC_DEVICE_SPECIFIER));
    return true;
}

bool AlDevice::openDevice()
{
    m_device = alcOpenDevice(m_wanted.name.empty() ? nullptr : m_wanted.name.c_str());
    ALCint const attributes[] = {ALC_FREQUENCY, static_cast<ALCint>(m_wanted.rate), ALC_MONO_SOURCES,
                                 static_cast<ALCint>(mostSources), 0};
    if (m_device == nullptr || !makeContext(attributes)) {
        closeDevice();
        return false;
    }
    m_speakers = 2; // no device tells more of itself here
    ALCint rate = 0;
    alcGetIntegerv(m_device, ALC_FREQUENCY, 1, &rate);
    m_rate = static_cast<unsigned int>(rate);
    return true;
}

bool AlDevice::openLoopback()
{
    auto const open = deviceFunction<LPALCLOOPBACKOPENDEVICESOFT>("alcLoopbackOpenDeviceSOFT");
    m_render = deviceFunction<LPALCRENDERSAMPLESSOFT>("alcRenderSamplesSOFT");
    if (open == nullptr || m_render == nullptr) {
        return false;
    }
    m_device = open(nullptr);
    m_rate = m_wanted.rate;
    m_speakers = m_wanted.speakers;
    ALCint const attributes[] = {ALC_FORMAT_CHANNELS_SOFT,
                                 renderChannels(m_speakers),
                                 ALC_FORMAT_TYPE_SOFT,
                                 ALC_FLOAT_SOFT,
                                 ALC_FREQUENCY,
                                 static_cast<ALCint>(m_rate),
                                 ALC_MONO_SOURCES,
                                 static_cast<ALCint>(mostSources),
                                 ALC_HRTF_SOFT,
                                 ALC_FALSE,
                                 ALC_OUTPUT_LIMITER_SOFT,
                                 ALC_FALSE,
                                 0};
    m_block.assign(std::size_t{framesAtOnce} * m_speakers, 0.0f);
    return m_device != nullptr && makeContext(attributes);
}

bool AlDevice::makeContext(ALCint const *attributes)
{
    m_context = alcCreateContext(m_device, attributes);
    return m_context != nullptr && alcMakeContextCurrent(m_context) != ALC_FALSE;
}

void AlDevice::close()
{
    closeDevice();
    m_file.close();
    m_owed = 0;
}

void AlDevice::closeDevice()
{
    if (m_context != nullptr) {
        use();
        alDeleteSources(static_cast<ALsizei>(m_sources.size()), m_sources.data());
        m_reverb.close();
        alcMakeContextCurrent(nullptr);
        alcDestroyContext(std::exchange(m_context, nullptr));
    }
    m_sources.clear();
    if (m_device != nullptr) {
        alcCloseDevice(std::exchange(m_device, nullptr));
    }
    m_render = nullptr;
}

bool AlDevice::isLost() const
{
    if (m_device == nullptr || rendersItself() ||
        alcIsExtensionPresent(m_device, "ALC_EXT_disconnect") == ALC_FALSE) {
        return false;
    }
    ALCint isConnected = ALC_TRUE;
    alcGetIntegerv(m_device, ALC_CONNECTED, 1, &isConnected);
    return isConnected == ALC_FALSE;
}

void AlDevice::use() const
{
    if (alcGetCurrentContext() != m_context) {
        alcMakeContextCurrent(m_context);
    }
}

ALuint AlDevice::takeSource()
{
    if (m_sources.empty()) {
        return 0;
    }
    ALuint const source = m_sources.back();
    m_sources.pop_back();
    return source;
}

void AlDevice::giveBack(ALuint source)
{
    m_sources.push_back(source);
}

void AlDevice::render(float seconds)
{
    constexpr float longest = 10; // a standstill of the host is not made up for
    if (!rendersItself() || !(seconds > 0)) {
        return;
    }
    m_owed += static_cast<double>(std::min(seconds, longest)) * m_rate;
    while (m_owed >= 1) {
        auto const frames = static_cast<unsigned int>(std::min<double>(m_owed, framesAtOnce));
        m_owed -= frames;
        m_render(m_device, m_block.data(), static_cast<ALCsizei>(frames));
        if (m_file.isOpen() && !m_file.write(m_block.data(), frames)) {
            Qel::logMessage("SoundOpenAL: cannot write more of '" + m_wanted.file + "'\n", 3);
        }
    }
}
