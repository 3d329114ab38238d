#include "System/Sound/soundChannel.h"
#include "System/Sound/soundClip.h"
#include "System/Sound/soundSystem.h"
#include "System/System/logManager.h"

#include <algorithm>
#include <memory>

namespace Qel {

namespace {

constexpr unsigned int stealFadeMs = 400;

float distanceBetween(D3DXVECTOR3 const &a, D3DXVECTOR3 const &b)
{
    D3DXVECTOR3 const apart = a - b;
    return D3DXVec3Length(&apart);
}

} // namespace

// An idle crossfade channel goes to the free list for the new sound; the stolen one takes its place there and
// fades out. The stop of one may have freed others of the same sound already, which are then free as they
// are.
void iSoundSystem::stealVoices(std::vector<unsigned int> const &stolen)
{
    for (unsigned int const index : stolen) {
        unsigned int const place = getFreeCrossfadeChannel();
        iSoundChannel *const victim = playing(index);
        if (place == 0 || place > crossfadeChannels.size() || victim == nullptr) {
            continue;
        }
        free3DChannels.push_back(crossfadeChannels[place - 1]);
        crossfadeChannels[place - 1] = victim;
        if (victim->isPlaying()) {
            stop(victim->getSoundSource(), stealFadeMs);
        }
    }
}

bool iSoundSystem::checkPriority(unsigned int voices, std::vector<unsigned int> &stolen, iSoundSource *source)
{
    if (source == nullptr) {
        return false;
    }
    if (source->is2DForced() || free3DChannels.size() >= voices) {
        return true;
    }
    D3DXVECTOR3 listener(0, 0, 0);
    D3DXVECTOR3 at(0, 0, 0);
    D3DXVECTOR3 up(0, 0, 0);
    getListener(listener, at, up);
    float const distance = distanceBetween(listener, source->getPosition());
    std::vector<iSoundChannel const *> lower;
    std::vector<iSoundChannel const *> equal;
    for (iSoundChannel const *const channel : channelTable) {
        if (channel == nullptr || !channel->is3DChannel() || !channel->isPlaying() ||
            isCrossfadeChannel(channel)) {
            continue;
        }
        if (channel->getPriority() > source->getBasePriority()) {
            lower.push_back(channel);
        } else if (channel->getPriority() == source->getBasePriority() && channel->isChannelInited() &&
                   channel->getSoundParams().has3DInformation() &&
                   distanceBetween(channel->getSoundParams().position, source->getPosition()) > distance) {
            equal.push_back(channel);
        }
    }
    char const *const title = source->getResourceName().c_str();
    if (lower.size() + equal.size() < voices) {
        if (LogManager::checkDefLogLevel(3)) {
            LogManager::defLevelMessage(
                "iSoundSystem::checkPriority(): not enough 3D channels found for #%d ('%s')!\n",
                static_cast<int>(source->getUniqueID()), title);
        }
        return false;
    }
    // In the order of the table, not by how low or how far they are.
    std::size_t left = voices;
    auto const take = [&](std::vector<iSoundChannel const *> const &victims, char const *format) {
        for (std::size_t i = 0; i < victims.size() && left != 0; ++i, --left) {
            stolen.push_back(victims[i]->getIndex());
            if (LogManager::checkDefLogLevel(2)) {
                LogManager::defLevelMessage(format, title, static_cast<int>(victims[i]->getIndex()),
                                            victims[i]->getResourceName().c_str());
            }
        }
    };
    take(lower, "iSoundSystem::checkPriority(): '%s' steals 3D channel #%d from '%s' (lower priority)\n");
    take(equal,
         "iSoundSystem::checkPriority(): '%s' steals 3D channel #%d from '%s' (equal priority, but higher "
         "distance)\n");
    return true;
}

unsigned int iSoundSystem::getFreeCrossfadeChannel() const
{
    for (std::size_t i = 0; i < crossfadeChannels.size(); ++i) {
        if (crossfadeChannels[i] != nullptr && !crossfadeChannels[i]->isChannelInited()) {
            return static_cast<unsigned int>(i) + 1;
        }
    }
    return 0;
}

iSoundChannel *iSoundSystem::getFreeChannel(bool want3D)
{
    if (want3D) {
        if (free3DChannels.empty()) {
            if (LogManager::checkDefLogLevel(3)) {
                LogManager::defLevelMessage("iSoundSystem::getFreeChannel(): no 3D voice available!\n");
            }
            return nullptr;
        }
        iSoundChannel *const channel = free3DChannels.front();
        free3DChannels.pop_front();
        channel->m_home = iSoundChannel::Home::LIST_3D;
        return channel;
    }
    if (free2D51Channels.empty()) {
        create2D51Channel();
    }
    if (free2D51Channels.empty()) {
        return nullptr;
    }
    iSoundChannel *const channel = free2D51Channels.front();
    free2D51Channels.pop_front();
    channel->m_home = iSoundChannel::Home::LIST_2D51;
    return channel;
}

void iSoundSystem::create2D51Channel()
{
    if (unsigned int const index = getNew2D51Index(); index != 0) {
        add2D51Channel(std::make_unique<iSoundChannel>(index, this));
    }
}

unsigned int iSoundSystem::getNew2D51Index() const
{
    constexpr unsigned int mostChannels = 255; // what the count can hold
    if (params.num2D51Channels >= mostChannels) {
        return 0;
    }
    // Where channels have been trimmed, one of their numbers is free; a new one might still be in use.
    return m_freeIndices.empty() ? params.num3DChannels + params.num2D51Channels + 1u : m_freeIndices.back();
}

void iSoundSystem::add2D51Channel(std::unique_ptr<iSoundChannel> channel)
{
    if (m_freeIndices.empty()) {
        channelTable.push_back(nullptr);
    } else {
        m_freeIndices.pop_back();
    }
    free2D51Channels.push_back(channel.get());
    channel.release();
    ++params.num2D51Channels;
    if (LogManager::checkDefLogLevel(2)) {
        LogManager::defLevelMessage("iSoundSystem::checkSoundfileAndPlay(): created new 2D/5.1 channel.\n");
    }
}

iSoundClip *iSoundSystem::addClip(std::unique_ptr<iSoundClip> clip)
{
    enter(clip->getChannel());
    clips.push_back(clip.get());
    return clip.release();
}

// As a play does it for other sounds.
void iSoundSystem::countRequest(iSoundChannel const &channel)
{
    if (channel.hasDuckingRequest()) {
        ++duckingCounter;
        updateDucking();
    }
}

// The channel's place in the table is where it plays.
void iSoundSystem::enter(iSoundChannel *channel)
{
    if (channel->getIndex() >= channelTable.size()) {
        channelTable.resize(std::size_t{channel->getIndex()} + 1);
    }
    channelTable[channel->getIndex()] = channel;
}

// Behind a start that failed: a channel goes back on the free list that it came from.
void iSoundSystem::giveBack(iSoundChannel *channel, bool from3D)
{
    if (channel == nullptr) {
        return;
    }
    auto const isFree = [channel](std::deque<iSoundChannel *> const &list) {
        return std::find(list.begin(), list.end(), channel) != list.end();
    };
    if (isFree(free3DChannels) || isFree(free2D51Channels)) {
        return; // it was stopped on the way
    }
    if (channel->isPlaying() || channel->isPaused()) {
        channel->stop(0); // the half of a pair that did start
    }
    release(*channel);
    (from3D ? free3DChannels : free2D51Channels).push_back(channel);
}

} // namespace Qel
