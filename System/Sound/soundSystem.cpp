#include "System/Sound/soundSystem.h"

#include "System/Sound/sound3DStereo.h"
#include "System/Sound/sound3DSubwoofer.h"
#include "System/Sound/soundChannel.h"
#include "System/Sound/soundClip.h"
#include "System/Sound/soundVorbis.h"
#include "System/System/logManager.h"

#include <algorithm>
#include <memory>
#include <numeric>

namespace Qel {

namespace {

constexpr char const *capsTexts[] = {"",
                                     "Windows configuration",
                                     "Stereo",
                                     "4.0 Digital",
                                     "5.1 Digital",
                                     "6.1 Digital",
                                     "7.1 Digital",
                                     "8.1 Digital",
                                     "Creative EAX 4.0 ADVANCED HD",
                                     "Creative EAX 5.0 ADVANCED HD"};

constexpr char const *roomTexts[] = {"No room", "Outside",  "House",   "Big House",        "Church",
                                     "Hallway", "Bathroom", "Dungeon", "Special Shadeform"};

template <class Channels>
void deleteAll(Channels &channels)
{
    for (iSoundChannel *const channel : channels) {
        std::default_delete<iSoundChannel>()(channel);
    }
    channels.clear();
}

} // namespace

iSoundSystem::iSoundSystem() : iSoundSystem("INVALID", "")
{
}

iSoundSystem::iSoundSystem(String const &systemName, String const &nameOfFactory)
    : supportedCaps{SOUNDCAPS_STEREO}
{
    std::fill(std::begin(groupVolumes), std::end(groupVolumes), 1.0f);
    name = systemName;
    factoryName = nameOfFactory;
}

iSoundSystem::~iSoundSystem()
{
    // What a shutdown would have freed: a back end that forgot it loses nothing but its device's state.
    inited = false;
    for (auto *const sound : stereoSounds) {
        std::default_delete<iSound3DStereo>()(sound);
    }
    for (auto *const sound : subwooferSounds) {
        std::default_delete<iSound3DSubwoofer>()(sound);
    }
    for (auto *const clip : clips) {
        std::default_delete<iSoundClip>()(clip);
    }
    for (auto *const stream : vorbisStreams) {
        iSoundVorbis::_destroy(stream);
    }
    emptyChannels();
}

bool iSoundSystem::load()
{
    return false;
}

void iSoundSystem::unload()
{
}

bool iSoundSystem::initSoundSystem(sSoundSystemParams const &newParams)
{
    if (!isLoaded() || inited) {
        return inited;
    }
    params = newParams;
    inited = std::find(supportedCaps.begin(), supportedCaps.end(), params.soundCaps) != supportedCaps.end();
    if (!inited && LogManager::checkDefLogLevel(3)) {
        LogManager::defLevelMessage(
            "ERROR: iSoundSystem::initSoundSystem: requested soundCaps '%s' not supported by sound plugin!\n",
            getSoundCapsDesc(params.soundCaps).c_str());
    }
    return inited;
}

bool iSoundSystem::shutdownSoundSystem()
{
    constexpr unsigned int fadeMs = 400;
    if (!isLoaded() || !inited) {
        if (LogManager::checkDefLogLevel(3)) {
            LogManager::defLevelMessage("ERROR: iSoundSystem::shutdownSoundSystem: not loaded/inited!\n");
        }
        return inited;
    }
    stopAll(0);
    waitForFade(fadeMs);
    emptyChannels();
    waitlist.clear();
    inited = false;
    return inited;
}

void iSoundSystem::emptyChannels()
{
    // A stolen channel that still fades stands in the table and among the crossfade channels.
    std::erase_if(crossfadeChannels, [this](iSoundChannel *channel) {
        return channel == nullptr || playing(channel->getIndex()) == channel;
    });
    deleteAll(channelTable);
    deleteAll(free3DChannels);
    deleteAll(free2D51Channels);
    deleteAll(crossfadeChannels);
    m_freeIndices.clear();
}

bool iSoundSystem::fastDetect()
{
    return true;
}

iSoundChannel *iSoundSystem::playing(unsigned int index) const
{
    return index < channelTable.size() ? channelTable[index] : nullptr;
}

iSoundChannel *iSoundSystem::channelOf(unsigned int id) const
{
    for (iSoundChannel *const channel : channelTable) {
        if (channel != nullptr && channel->isChannelInited() && channel->getUniqueID() == id) {
            return channel;
        }
    }
    return nullptr;
}

iSoundChannel *iSoundSystem::getChannel(unsigned int index) const
{
    if (iSoundChannel *const channel = playing(index)) {
        return channel;
    }
    auto const place = std::find_if(free3DChannels.begin(), free3DChannels.end(),
                                    [&](iSoundChannel const *free) { return free->getIndex() == index; });
    return place == free3DChannels.end() ? nullptr : *place;
}

unsigned int iSoundSystem::getNumPlayingChannels() const
{
    return static_cast<unsigned int>(channelTable.size()) -
           static_cast<unsigned int>(std::count(channelTable.begin(), channelTable.end(), nullptr));
}

unsigned int iSoundSystem::getPlayingChannels(std::vector<iSoundChannel *> &out) const
{
    std::copy_if(channelTable.begin(), channelTable.end(), std::back_inserter(out),
                 [](iSoundChannel const *channel) { return channel != nullptr; });
    return getNumPlayingChannels();
}

unsigned int iSoundSystem::getChannelID(unsigned int id) const
{
    iSoundChannel const *const channel = channelOf(id);
    return channel == nullptr ? 0 : channel->getIndex();
}

bool iSoundSystem::isCrossfadeChannel(iSoundChannel const *channel) const
{
    return channel != nullptr &&
           std::find(crossfadeChannels.begin(), crossfadeChannels.end(), channel) != crossfadeChannels.end();
}

bool iSoundSystem::isCrossfadeChannel(unsigned int index) const
{
    return index != 0 &&
           std::any_of(crossfadeChannels.begin(), crossfadeChannels.end(), [&](iSoundChannel const *channel) {
               return channel != nullptr && channel->getIndex() == index;
           });
}

unsigned int iSoundSystem::countVoices_51() const
{
    return static_cast<unsigned int>(
        std::count_if(channelTable.begin(), channelTable.end(), [](iSoundChannel const *channel) {
            return channel != nullptr && channel->is51Sound();
        }));
}

unsigned int iSoundSystem::countVoices_3D() const
{
    return static_cast<unsigned int>(
        std::count_if(channelTable.begin(), channelTable.end(), [](iSoundChannel const *channel) {
            return channel != nullptr && channel->is3DChannel();
        }));
}

unsigned int iSoundSystem::countVoices_2D() const
{
    return static_cast<unsigned int>(
        std::count_if(channelTable.begin(), channelTable.end(), [](iSoundChannel const *channel) {
            return channel != nullptr && !channel->is3DChannel() && !channel->is51Sound();
        }));
}

bool iSoundSystem::isSoundSourcePlaying(iSoundSource *source) const
{
    iSoundChannel const *const channel = source == nullptr ? nullptr : channelOf(source->getUniqueID());
    return channel != nullptr && channel->isPlaying();
}

bool iSoundSystem::isSoundSourcePaused(iSoundSource *source) const
{
    iSoundChannel const *const channel = source == nullptr ? nullptr : channelOf(source->getUniqueID());
    return channel != nullptr && channel->isPaused();
}

String iSoundSystem::getSoundCapsDesc(eSoundCaps caps)
{
    return caps < std::size(capsTexts) ? capsTexts[caps] : "";
}

String iSoundSystem::getCurrent3DCapsDesc()
{
    String const text = getSoundCapsDesc(params.current3DCaps);
    bool const isSystems = params.soundCaps == SOUNDCAPS_WINDOWS && params.current3DCaps != SOUNDCAPS_WINDOWS;
    return isSystems ? text + " (windows)" : text;
}

String iSoundSystem::getCurrent51CapsDesc()
{
    return getSoundCapsDesc(params.current51Caps);
}

unsigned int iSoundSystem::getNumChannels_Vorbis(iSoundSource *source)
{
    unsigned int const count = iSoundVorbis(this).getNumChannels(source);
    if (source != nullptr) {
        source->setNumChannels(static_cast<unsigned char>(count));
    }
    return count;
}

bool iSoundSystem::setSpeakerSettings(unsigned int id, bool front, bool rear, bool centerLFE)
{
    for (iSoundClip *const clip : clips) {
        if (clip != nullptr && clip->getSoundSource() != nullptr &&
            clip->getSoundSource()->getUniqueID() == id) {
            return clip->setSpeakerSettings(front, rear, centerLFE);
        }
    }
    return false;
}

void iSoundSystem::setListener(D3DXVECTOR3 const &pos, D3DXVECTOR3 const &at, D3DXVECTOR3 const &up)
{
    setListenerPosition(pos);
    setListenerOrientation(at, up);
}

void iSoundSystem::setListenerPosition(D3DXVECTOR3 const &)
{
}

void iSoundSystem::setListenerOrientation(D3DXVECTOR3 const &, D3DXVECTOR3 const &)
{
}

void iSoundSystem::setDefaultListener()
{
    setListenerPosition({0, 0, 0});
    setListenerOrientation({0, 0, -1}, {0, 1, 0});
}

void iSoundSystem::getListener(D3DXVECTOR3 &, D3DXVECTOR3 &, D3DXVECTOR3 &)
{
}

void iSoundSystem::setCameraListener(D3DXVECTOR3 const &pos, D3DXVECTOR3 const &at, D3DXVECTOR3 const &up)
{
    if (params.listenerMode == LISTENER_MIXED) {
        setListenerOrientation(at, up);
    } else if (params.listenerMode == LISTENER_CAMERA) {
        setListener(pos, at, up);
    }
}

void iSoundSystem::setTargetListener(D3DXVECTOR3 const &pos, D3DXVECTOR3 const &at, D3DXVECTOR3 const &up)
{
    if (params.listenerMode == LISTENER_MIXED) {
        setListenerPosition(pos);
    } else if (params.listenerMode == LISTENER_TARGET) {
        setListener(pos, at, up);
    }
}

void iSoundSystem::setListenerMode(eListenerMode mode)
{
    if (mode == params.listenerMode) {
        return;
    }
    params.listenerMode = mode;
    constexpr char const *names[] = {"MIXED", "CAMERA", "TARGET"};
    if (mode < std::size(names)) {
        if (LogManager::checkDefLogLevel(1)) {
            LogManager::defLevelMessage("iSoundSystem::setListenerMode to %s MODE.\n", names[mode]);
        }
    } else if (LogManager::checkDefLogLevel(3)) {
        LogManager::defLevelMessage("iSoundSystem::setListenerMode to unknown mode.\n");
    }
}

bool iSoundSystem::setListenerRoom(eListenerRoom room, bool)
{
    if (params.isRoomReverbOn) {
        params.listenerRoom = room;
    }
    return true;
}

String iSoundSystem::getListenerRoomDesc() const
{
    return params.listenerRoom < std::size(roomTexts) ? roomTexts[params.listenerRoom] : "";
}

int iSoundSystem::getSoundInfo(eSoundInfo info, unsigned int index, String *out)
{
    if (!inited) {
        return 0;
    }
    switch (info) {
    case SOUNDINFO_MAX_3D:
        return params.num3DChannels;
    case SOUNDINFO_VOICES_51:
        return static_cast<int>(countVoices_51());
    case SOUNDINFO_VOICES_3D:
        return static_cast<int>(countVoices_3D());
    case SOUNDINFO_VOICES_2D:
        return static_cast<int>(countVoices_2D());
    case SOUNDINFO_NUM_3DSTEREO:
        return static_cast<int>(stereoSounds.size());
    case SOUNDINFO_NUM_3DSUBWOOFER:
        return static_cast<int>(subwooferSounds.size());
    case SOUNDINFO_NUM_CLIPS:
        return static_cast<int>(clips.size());
    case SOUNDINFO_NUM_VORBIS:
        return static_cast<int>(vorbisStreams.size());
    case SOUNDINFO_CHANNEL:
        break;
    case SOUNDINFO_ROOM:
        if (out != nullptr) {
            *out = getListenerRoomDesc();
        }
        return 0;
    case SOUNDINFO_LISTENER:
        if (out != nullptr) {
            D3DXVECTOR3 pos(0, 0, 0);
            D3DXVECTOR3 at(0, 0, 0);
            D3DXVECTOR3 up(0, 0, 0);
            getListener(pos, at, up);
            auto const d = [](float value) { return static_cast<double>(value); };
            out->sprintf(
                "LISTENER pos[%04.2f, %04.2f, %04.2f] at[%04.2f, %04.2f, %04.2f], up[%04.2f, %04.2f, %04.2f]",
                d(pos.x), d(pos.y), d(pos.z), d(at.x), d(at.y), d(at.z), d(up.x), d(up.y), d(up.z));
        }
        return 0;
    default:
        return 0;
    }
    if (index >= channelTable.size()) {
        return -1;
    }
    iSoundChannel const *const channel = channelTable[index];
    if (channel == nullptr) {
        if (out != nullptr) {
            out->sprintf("(unused) %s", isCrossfadeChannel(index) ? "[X]" : "");
        }
        return 0;
    }
    if (out != nullptr) {
        bool const isMuffled =
            (channel->isLocalDuckingOn() && channel->isDuckingLowPassOn()) || channel->useLowPassFiltering();
        out->sprintf("PLAYING [%s] [%s%s%s%s%s%s] '%s'", channel->getTypeDesc().c_str(),
                     channel->isDucked() ? "D" : "", isMuffled ? "L" : "",
                     channel->hasDuckingRequest() ? "R" : "", channel->isFadingUp() ? "_FU_" : "",
                     channel->isFadingDown() ? "_FD_" : "", isCrossfadeChannel(channel) ? "X" : "",
                     channel->getResourceName().c_str());
    }
    return 1;
}

} // namespace Qel
