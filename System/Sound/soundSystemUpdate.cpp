#include "System/Sound/sound3DStereo.h"
#include "System/Sound/sound3DSubwoofer.h"
#include "System/Sound/soundChannel.h"
#include "System/Sound/soundClip.h"
#include "System/Sound/soundSystem.h"
#include "System/Sound/soundVorbis.h"
#include "System/Sound/stereoCalc.h"
#include "System/System/logManager.h"

#include "Support/OS/clock.h"

#include <algorithm>
#include <initializer_list>
#include <memory>

namespace Qel {

namespace {

constexpr unsigned int keptChannels = 30; // 2D and 5.1 ones, whatever the game began with

void tell(char const *format, unsigned int id)
{
    if (LogManager::checkDefLogLevel(1)) {
        LogManager::defLevelMessage(format, static_cast<int>(id));
    }
}

bool hasFinished(iSound3DStereo const &sound)
{
    return sound.isFinished();
}

bool hasFinished(iSound3DSubwoofer const &sound)
{
    return sound.isFinished();
}

bool hasFinished(iSoundVorbis const &stream)
{
    return stream.isStandAlone() && stream.isFinished();
}

// Is it just being made, and has no voice yet?
template <class Sound>
bool isNew(Sound const &)
{
    return false;
}

bool isNew(iSoundVorbis const &stream)
{
    return !stream.isOpened();
}

void setStandAlone(std::initializer_list<iSoundVorbis *> streams)
{
    for (iSoundVorbis *const stream : streams) {
        if (stream != nullptr) {
            stream->setStandAlone();
        }
    }
}

// Streams that belonged to it go with the pass over the streams that follows.
void tellDestroyed(iSound3DStereo const &sound)
{
    tell("cFinishedDestroy: destroyed 3DStereo #%d.\n", sound.getUniqueID());
    setStandAlone({sound.getLeftVorbis(), sound.getRightVorbis(), sound.getLFEVorbis()});
}

void tellDestroyed(iSound3DSubwoofer const &sound)
{
    tell("cFinishedDestroy: destroyed 3DSubwoofer #%d.\n", sound.getUniqueID());
    setStandAlone({sound.getVorbis(), sound.getLFEVorbis()});
}

void tellDestroyed(iSoundVorbis const &stream)
{
    tell("cFinishedDestroy: destroyed vorbis stream #%d.\n", stream.getUniqueID());
}

} // namespace

// Each is out of its list before it dies, since what dies stops its channels, and those look at the lists.
template <class Sound>
void iSoundSystem::destroyFinished(std::vector<Sound *> &list, unsigned int const *onlyId)
{
    for (std::size_t i = 0; i < list.size();) {
        Sound *const sound = list[i];
        if (!hasFinished(*sound) ||
            (onlyId != nullptr && (sound->getUniqueID() != *onlyId || isNew(*sound)))) {
            ++i;
            continue;
        }
        tellDestroyed(*sound);
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(i));
        destroyNow(sound);
    }
}

// What has lost its voices goes with the next update. When its source plays again before that, it goes at
// once: a stop must not find it in place of the new one.
void iSoundSystem::destroyFinished(unsigned int id)
{
    destroyFinished(stereoSounds, &id);
    destroyFinished(subwooferSounds, &id);
    destroyFinished(vorbisStreams, &id);
}

// The order is fixed: 3D sounds hand their streams over to the pass over the streams. A back end's operation
// may change any list: no iterator is kept over one.
void iSoundSystem::update(float dt)
{
    constexpr float trimSeconds = 20.0f;
    if (!inited) {
        return;
    }
    if (!stereoSounds.empty()) {
        constexpr float share = 0.5f;
        D3DXVECTOR3 pos(0, 0, 0);
        D3DXVECTOR3 at(0, 0, 0);
        D3DXVECTOR3 up(0, 0, 0);
        getListener(pos, at, up);
        cStereoCalc calc(pos, at, up);
        for (std::size_t i = 0; i < stereoSounds.size(); ++i) {
            calc.setBlendDistance(stereoSounds[i]->getMaxDistance() * share);
            stereoSounds[i]->update(dt, &calc);
        }
        destroyFinished(stereoSounds);
    }
    for (std::size_t i = 0; i < subwooferSounds.size(); ++i) {
        subwooferSounds[i]->update(dt);
    }
    destroyFinished(subwooferSounds);
    for (std::size_t i = 0; i < vorbisStreams.size(); ++i) {
        if (vorbisStreams[i]->isStandAlone()) {
            vorbisStreams[i]->update(dt);
        }
    }
    destroyFinished(vorbisStreams);
    for (std::size_t i = 0; i < clips.size(); ++i) {
        if (clips[i] != nullptr) {
            clips[i]->update(dt);
        }
    }
    std::erase(clips, nullptr);
    updateChannels(dt);
    serveWaitlist();
    surplusTimer += dt;
    if (surplusTimer > trimSeconds) {
        surplusTimer -= trimSeconds;
        freeSurplus2D51Channels();
    }
}

// Channels of streams and clips are updated by those.
void iSoundSystem::updateChannels(float dt)
{
    for (std::size_t i = 0; i < channelTable.size(); ++i) {
        iSoundChannel *const channel = channelTable[i];
        if (channel == nullptr || channel->isStream()) {
            continue;
        }
        channel->update(dt);
        if (channelTable[i] == channel && channel->isFinished()) {
            stopChannel(static_cast<unsigned int>(i), 0);
        }
    }
}

// The most urgent one alone, and the first of equals; one that fails stays and goes on keeping others back.
void iSoundSystem::serveWaitlist()
{
    if (paused || waitlist.empty()) {
        return;
    }
    auto const place =
        std::min_element(waitlist.begin(), waitlist.end(), [](iSoundSource const *a, iSoundSource const *b) {
            return a->getBasePriority() < b->getBasePriority();
        });
    iSoundSource *const source = *place;
    if (!play(source)) {
        return;
    }
    tell("iSoundSystem::update: sound #%d removed from waitlist.\n", source->getUniqueID());
    if (auto const still = std::find(waitlist.begin(), waitlist.end(), source); still != waitlist.end()) {
        waitlist.erase(still);
    }
}

void iSoundSystem::freeSurplus2D51Channels()
{
    if (params.num2D51Channels <= keptChannels) {
        return;
    }
    unsigned int const surplus = params.num2D51Channels - keptChannels;
    if (free2D51Channels.size() < surplus) {
        return;
    }
    for (unsigned int i = 0; i < surplus; ++i) {
        std::unique_ptr<iSoundChannel> const channel(free2D51Channels.front());
        free2D51Channels.pop_front();
        m_freeIndices.push_back(channel->getIndex());
    }
    params.num2D51Channels = static_cast<std::uint8_t>(keptChannels);
    if (LogManager::checkDefLogLevel(2)) {
        LogManager::defLevelMessage("iSoundSystem::freeSurplus2D51Channels(): deleted %d surplus channels.\n",
                                    static_cast<int>(surplus));
    }
}

bool iSoundSystem::updateDucking()
{
    if (!inited) {
        return false;
    }
    bool isChanged = false;
    for (iSoundChannel *const channel : channelTable) {
        if (channel == nullptr) {
            continue;
        }
        bool const isRequester = channel->hasDuckingRequest();
        if ((duckingCounter != 0 && !isRequester) || channel->isLocalDuckingOn()) {
            channel->setDucking();
            isChanged = true;
        } else if (duckingCounter == 0 && channel->isDucked() && !isRequester) {
            channel->resetDucking();
            isChanged = true;
        }
    }
    return isChanged;
}

void iSoundSystem::setMasterVolume(float volume)
{
    masterVolume = std::min(volume, 1.0f);
    if (LogManager::checkDefLogLevel(1)) {
        LogManager::defLevelMessage("iSoundSystem::setMasterVolume() to vol %f.\n",
                                    static_cast<double>(masterVolume));
    }
}

void iSoundSystem::setMuteOnOff(bool mute)
{
    if (mute != muted) {
        muted = mute;
        setMasterVolume(masterVolume); // one place for a back end to apply both
    }
}

void iSoundSystem::setGroupVolume(unsigned int group, float volume)
{
    constexpr float audibleChange = 0.1f;
    if (!inited || group >= numGroups) {
        return;
    }
    float const before = groupVolumes[group];
    groupVolumes[group] = std::min(volume, 1.0f);
    float const change = groupVolumes[group] - before;
    if (change > audibleChange || change < -audibleChange) {
        for (iSoundChannel *const channel : channelTable) {
            if (channel != nullptr && channel->isChannelInited() && channel->getSoundGroup() == group) {
                channel->setVolChanged();
            }
        }
    }
    if (LogManager::checkDefLogLevel(1)) {
        LogManager::defLevelMessage("iSoundSystem::setGroupVolume group %d to vol %f.\n",
                                    static_cast<int>(group), static_cast<double>(groupVolumes[group]));
    }
}

float iSoundSystem::getGroupVolume(unsigned int group) const
{
    return group < numGroups ? groupVolumes[group] : 0.0f;
}

void iSoundSystem::setWetVolume(float volume)
{
    if (volume != params.wetVolume) {
        params.wetVolume = std::min(volume, 1.0f);
        updateVolume();
    }
}

void iSoundSystem::updateVolume()
{
    for (iSoundChannel *const channel : channelTable) {
        if (channel != nullptr) {
            channel->setVolChanged();
        }
    }
}

void iSoundSystem::setPause(bool pause)
{
    if (!inited || pause == paused) {
        return;
    }
    int numClips = 0;
    for (std::size_t i = 0; i < clips.size(); ++i) {
        if (clips[i] != nullptr) {
            clips[i]->setPause(pause, true);
            ++numClips;
        }
    }
    int numChannels = 0;
    for (std::size_t i = 0; i < channelTable.size(); ++i) {
        if (channelTable[i] != nullptr) {
            channelTable[i]->setPause(pause, true);
            ++numChannels;
        }
    }
    if (LogManager::checkDefLogLevel(1)) {
        LogManager::defLevelMessage(pause ? "iSoundSystem::setPause: pause all sounds (%d/%d/%d).\n"
                                          : "iSoundSystem::setPause: resume all sounds (%d/%d/%d).\n",
                                    static_cast<int>(vorbisStreams.size()), numClips, numChannels);
    }
    paused = pause; // last: the channels have seen the old state
}

bool iSoundSystem::fade(unsigned int id, float target, unsigned int ms, bool wait, bool up)
{
    if (!inited) {
        return false;
    }
    bool isAny = false;
    for (std::size_t i = 0; i < channelTable.size(); ++i) {
        iSoundChannel *const channel = channelTable[i];
        if (channel != nullptr && (id == 0 || channel->getUniqueID() == id)) {
            if (up) {
                channel->fadeUp(target, ms);
            } else {
                channel->fadeDown(target, ms);
            }
            isAny = true;
        }
    }
    if (isAny && wait && ms != 0) {
        waitForFade(ms);
    }
    return isAny;
}

bool iSoundSystem::fadeIn(unsigned int id, float target, unsigned int ms, bool wait)
{
    return fade(id, target, ms, wait, true);
}

bool iSoundSystem::fadeOut(unsigned int id, float target, unsigned int ms, bool wait)
{
    return fade(id, target, ms, wait, false);
}

void iSoundSystem::waitForFade(unsigned int ms)
{
    constexpr unsigned int stepMs = 10;
    constexpr unsigned int mostSteps = 500;
    constexpr float stepSeconds = 0.01f;
    if (!inited || ms == 0) {
        return;
    }
    unsigned int const steps = std::min(ms / stepMs, mostSteps);
    for (unsigned int i = 0; i <= steps; ++i) {
        os::sleepMs(stepMs);
        update(stepSeconds);
    }
    update(stepSeconds);
}

} // namespace Qel
