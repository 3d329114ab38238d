#include "nullSound.h"

#include "nullChannel.h"
#include "nullClip.h"

#include "System/Sound/soundSource.h"

#include <algorithm>
#include <memory>

NullSound::NullSound(Qel::String const &systemName, Qel::String const &type) : iSoundSystem(systemName, type)
{
    versionString = "NULL 1";
    description = "No device; time runs with update()";
    supportedCaps = {Qel::SOUNDCAPS_WINDOWS, Qel::SOUNDCAPS_STEREO, Qel::SOUNDCAPS_40,
                     Qel::SOUNDCAPS_51,      Qel::SOUNDCAPS_61,     Qel::SOUNDCAPS_71};
}

bool NullSound::initSoundSystem(Qel::sSoundSystemParams const &newParams)
{
    constexpr unsigned int numCrossfade = 4;
    constexpr unsigned int mostChannels = 255;
    if (isInited() || !iSoundSystem::initSoundSystem(newParams)) {
        return isInited();
    }
    bool const hasMany = params.soundCaps >= Qel::SOUNDCAPS_51;
    params.current3DCaps =
        params.soundCaps == Qel::SOUNDCAPS_WINDOWS ? Qel::SOUNDCAPS_STEREO : params.soundCaps;
    params.current51Caps = hasMany ? params.soundCaps : Qel::SOUNDCAPS_NONE;
    params.isMultiChannel = hasMany;
    constexpr std::uint8_t speakers[] = {2, 2, 2, 4, 6, 7, 8};
    params.numSpeakers = speakers[params.soundCaps];
    unsigned int const num3D = params.num3DChannels;
    unsigned int const numAll3D = std::min(num3D + numCrossfade, mostChannels);
    params.num3DChannels = static_cast<std::uint8_t>(numAll3D);
    channelTable.assign(std::size_t{numAll3D} + params.num2D51Channels + 1, nullptr);
    for (unsigned int i = 1; i < channelTable.size(); ++i) {
        Qel::iSoundChannel *const channel = std::make_unique<NullChannel>(i, this).release();
        if (i <= num3D) {
            free3DChannels.push_back(channel);
        } else if (i <= numAll3D) {
            crossfadeChannels.push_back(channel);
        } else {
            free2D51Channels.push_back(channel);
        }
    }
    setDefaultListener();
    return true;
}

bool NullSound::shutdownSoundSystem()
{
    bool const isUp = iSoundSystem::shutdownSoundSystem();
    if (!isUp) {
        m_time = 0.0;
    }
    return isUp;
}

void NullSound::note(VoiceRecord record)
{
    record.time = m_time;
    m_log.push_back(record);
}

std::uint64_t NullSound::getSoundDriverHandle1() const
{
    return reinterpret_cast<std::uintptr_t>(&m_log);
}

std::uint64_t NullSound::getSoundDriverHandle3() const
{
    return reinterpret_cast<std::uintptr_t>(static_cast<ClipMaker const *>(this));
}

Qel::iSoundClip *NullSound::createClip(bool multichannel)
{
    auto *const channel = isInited() ? static_cast<NullChannel *>(getFreeChannel(false)) : nullptr;
    if (channel == nullptr) {
        return nullptr;
    }
    return addClip(std::make_unique<NullClip>(this, channel, multichannel && isMultiChannel()));
}

void NullSound::update(float dt)
{
    if (isInited() && dt > 0) {
        m_time += static_cast<double>(dt);
    }
    iSoundSystem::update(dt);
}

// The fade that comes before it takes the other groups down as well: they come back.
bool NullSound::stopAll(unsigned int group)
{
    constexpr unsigned int fadeMs = 400;
    bool const isAny = iSoundSystem::stopAll(group);
    if (group != 0) {
        fadeIn(0, 1.0f, fadeMs, false);
    }
    return isAny;
}

void NullSound::getListener(D3DXVECTOR3 &pos, D3DXVECTOR3 &at, D3DXVECTOR3 &up)
{
    pos = m_position;
    at = m_at;
    up = m_up;
}

void NullSound::setListenerOrientation(D3DXVECTOR3 const &at, D3DXVECTOR3 const &up)
{
    m_at = at;
    m_up = up;
}

bool NullSound::checkPriority(unsigned int voices, std::vector<unsigned int> &stolen,
                              Qel::iSoundSource *source)
{
    if (!iSoundSystem::checkPriority(voices, stolen, source)) {
        return false;
    }
    for (unsigned int const index : stolen) {
        Qel::iSoundChannel const *const victim = getChannel(index);
        if (victim != nullptr) {
            bool const isLower = victim->getPriority() > source->getBasePriority();
            note({0, VoiceEvent::robbed, isLower ? RobReason::lowerPriority : RobReason::fartherAway, index,
                  victim->getUniqueID(), source->getUniqueID()});
        }
    }
    return true;
}

void NullSound::create2D51Channel()
{
    if (unsigned int const index = getNew2D51Index(); index != 0) {
        add2D51Channel(std::make_unique<NullChannel>(index, this));
    }
}
