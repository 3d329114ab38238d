#include "System/Sound/sound3DStereo.h"
#include "System/Sound/sound3DSubwoofer.h"
#include "System/Sound/soundChannel.h"
#include "System/Sound/soundSystem.h"
#include "System/Sound/soundVorbis.h"
#include "System/System/logManager.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace Qel {

namespace {

constexpr unsigned int stealFadeMs = 400;

void formatFromName(iSoundSource &source)
{
    String const &name = source.getResourceName();
    if (name.match("*.ogg", false)) {
        source.setOGGHeader();
    } else if (name.match("*.wav", false)) {
        source.setWAVHeader(false);
    } else if (name.match("*.mp3", false)) {
        source.setMP3Header();
    }
}

// A sound without a place, or of more than one channel, is not placed in 3D.
void force2DWhereNeeded(iSoundSource &source)
{
    if (!source.has3DInformation() || source.getNumChannels() >= 2) {
        source.force2D();
    }
}

bool wants3D(iSoundSource const &source)
{
    return !source.is2DForced() && !source.is51Sound() && source.has3DInformation();
}

float distanceBetween(D3DXVECTOR3 const &a, D3DXVECTOR3 const &b)
{
    D3DXVECTOR3 const apart = a - b;
    return D3DXVec3Length(&apart);
}

// What the system makes itself: final, since a stream has no virtual destructor.
class OwnVorbis final : public iSoundVorbis {
public:
    using iSoundVorbis::iSoundVorbis;
};

// Names of sounds, and what is said of them.
void tell(LogMessageLevel weight, char const *format, char const *first, char const *second = "")
{
    if (LogManager::checkDefLogLevel(weight)) {
        LogManager::defLevelMessage(format, first, second);
    }
}

} // namespace

bool iSoundSystem::play(iSoundSource *source)
{
    if (!inited || source == nullptr) {
        return false;
    }
    String const &title = source->getResourceName();
    if (paused && !source->playOnPause()) {
        if (LogManager::checkDefLogLevel(1)) {
            LogManager::defLevelMessage(
                "iSoundSystem::play(): soundsystem is paused, sound '%s' will not be played.\n",
                title.c_str());
        }
        return false;
    }
    switch (playWork(source)) {
    case SOUND_PLAY_OK:
        if (LogManager::checkDefLogLevel(1)) {
            if (source->is3DStereo()) {
                LogManager::defLevelMessage("iSoundSystem::play(): playing sounds '%s' & '%s'\n",
                                            title.c_str(), source->getCompanionName().c_str());
            } else {
                LogManager::defLevelMessage("iSoundSystem::play(): playing sound '%s'\n", title.c_str());
            }
        }
        return true;
    case SOUND_PLAY_WAITLIST:
        if (LogManager::checkDefLogLevel(2)) {
            LogManager::defLevelMessage("iSoundSystem::play(): sound '%s' set on waitlist.\n", title.c_str());
        }
        return false;
    default:
        break;
    }
    unsigned int bytes = 0;
    source->getData(bytes);
    if (source->getFallbackName().empty() || source->getFallbackName() == title || bytes != 0) {
        return false;
    }
    if (LogManager::checkDefLogLevel(2)) {
        LogManager::defLevelMessage("iSoundSystem::play(): try fallback sound '%s'!\n",
                                    source->getFallbackName().c_str());
    }
    // The name is used up: one fallback is the limit.
    source->setResourceName(String(source->getFallbackName()));
    source->resetFallbackName();
    return play(source);
}

bool iSoundSystem::plays(iSoundSource const &source) const
{
    unsigned int const id = source.getUniqueID();
    return channelOf(id) != nullptr ||
           std::find(m_starting.begin(), m_starting.end(), id) != m_starting.end();
}

eSoundPlayReturn iSoundSystem::playWork(iSoundSource *source)
{
    if (!inited || source == nullptr) {
        return SOUND_PLAY_FAILED;
    }
    formatFromName(*source);
    char const *const title = source->getResourceName().c_str();
    if (plays(*source)) {
        if (LogManager::checkDefLogLevel(3)) {
            LogManager::defLevelMessage("iSoundSystem::play(): sound source ID #%d is already in use!\n",
                                        static_cast<int>(source->getUniqueID()));
        }
        return SOUND_PLAY_FAILED;
    }
    destroyFinished(source->getUniqueID());
    bool isMultichannelSound = source->is51Sound();
    if (!isMultichannelSound && source->hasOGGHeader() && getNumChannels_Vorbis(source) > 2) {
        source->set51Sound();
        isMultichannelSound = true;
    }
    bool const isMultichannelDevice = isMultiChannel();
    unsigned int voices = source->is3DStereo() ? 2 : 1;
    if (source->is3DSubwoofer()) {
        if (isMultichannelDevice) {
            ++voices;
        } else if (!source->is3DStereo()) {
            source->reset3DSubwoofer(); // plays as a plain sound
        }
    }
    if (isMultichannelSound) {
        if (!isMultichannelDevice) {
            tell(3, "iSoundSystem::play(): multichannel file '%s' does not work on '%s' speaker settings!\n",
                 title, getSoundCapsDesc(params.current3DCaps).c_str());
            return SOUND_PLAY_FAILED;
        }
        if (source->is3DStereo()) {
            tell(3, "iSoundSystem::play(): impossible to play file '%s' as 3D stereo soundsource!\n", title);
            return SOUND_PLAY_FAILED;
        }
        if (source->is3DSubwoofer()) {
            tell(3, "iSoundSystem::play(): impossible to play file '%s' as 3D subwoofer soundsource!\n",
                 title);
            return SOUND_PLAY_FAILED;
        }
    }
    if (source->isSingleSpeaker() && !isMultichannelDevice) {
        tell(3, "iSoundSystem::play(): single-speaker file '%s' does not work on '%s' speaker settings!\n",
             title, getSoundCapsDesc(params.current3DCaps).c_str());
        return SOUND_PLAY_FAILED;
    }

    std::vector<unsigned int> stolen;
    if (!checkPriority(voices, stolen, source)) {
        if (!source->isPriorityWait()) {
            return SOUND_PLAY_FAILED;
        }
        auto const place = std::find_if(waitlist.begin(), waitlist.end(), [&](iSoundSource const *waiting) {
            return waiting->getUniqueID() == source->getUniqueID();
        });
        if (place != waitlist.end()) {
            *place = source;
        } else {
            waitlist.push_back(source);
            if (LogManager::checkDefLogLevel(2)) {
                LogManager::defLevelMessage("iSoundSystem::play(): soundsource #%d is on waitlist.\n",
                                            static_cast<int>(source->getUniqueID()));
            }
        }
        return SOUND_PLAY_WAITLIST;
    }
    if (crossfadeChannels.size() >= stolen.size()) {
        stealVoices(stolen);
    }
    m_starting.push_back(source->getUniqueID());
    bool const isPlaying = checkSoundfileAndPlay(source, false);
    m_starting.pop_back();
    if (!isPlaying) {
        return SOUND_PLAY_FAILED;
    }
    sSoundParams const &settings = source->getSoundParams();
    if (source->is51Sound()) {
        setSpeakerSettings(source->getUniqueID(), settings.isFrontSpeakersOn(), settings.isRearSpeakersOn(),
                           settings.isCenterLFEOn());
    }
    latestPlaying = source->getResourceName();
    if (settings.hasDuckingRequested()) {
        ++duckingCounter;
        if (LogManager::checkDefLogLevel(1)) {
            LogManager::defLevelMessage("iSoundSystem::playWork(): duckingcounter++\n");
        }
    }
    updateDucking();
    return SOUND_PLAY_OK;
}

// An idle crossfade channel goes to the free list for the new sound; the stolen one takes its place there and
// fades out.
void iSoundSystem::stealVoices(std::vector<unsigned int> const &stolen)
{
    for (unsigned int const index : stolen) {
        unsigned int const place = getFreeCrossfadeChannel();
        iSoundChannel *const victim = getChannel(index);
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

// The channel's place in the table is where it plays.
void iSoundSystem::enter(iSoundChannel *channel)
{
    if (channel->getIndex() >= channelTable.size()) {
        channelTable.resize(std::size_t{channel->getIndex()} + 1);
    }
    channelTable[channel->getIndex()] = channel;
}

void iSoundSystem::checkSoundfile(iSoundSource *source, bool strip)
{
    constexpr std::uint64_t headSize = 12;
    constexpr std::uint64_t chunkHead = 8;
    constexpr std::uint64_t formatSize = 24;
    if (source == nullptr) {
        return;
    }
    if (strip) {
        source->_restoreData(); // an earlier play has stripped it
    }
    formatFromName(*source);
    unsigned int bytes = 0;
    unsigned char *const data = source->getData(bytes);
    if (data == nullptr) {
        return;
    }
    if (bytes < headSize || std::memcmp(data, "RIFF", 4) != 0 || std::memcmp(data + 8, "WAVE", 4) != 0) {
        source->resetWAVHeader();
        if (bytes >= 4 && std::memcmp(data, "OggS", 4) == 0) {
            source->setOGGHeader();
        } else {
            source->resetOGGHeader();
        }
        return;
    }
    auto const wordAt = [&](std::uint64_t at) {
        return static_cast<unsigned int>(data[at] | data[at + 1] << 8);
    };
    std::uint32_t length = 0;
    for (std::uint64_t at = headSize; at + chunkHead <= bytes; at += std::uint64_t{length} + chunkHead) {
        std::memcpy(&length, data + at + 4, sizeof length);
        if (std::memcmp(data + at, "fmt ", 4) == 0 && at + formatSize <= bytes) {
            constexpr unsigned int leastBits = 8; // fewer are compressed
            source->setNumChannels(data[at + 10]);
            source->setSamplerate(static_cast<unsigned short>(wordAt(at + 12)));
            source->setWAVHeader(wordAt(at + 22) < leastBits);
        } else if (std::memcmp(data + at, "data", 4) == 0 && strip) {
            auto const left = static_cast<unsigned int>(bytes - at - chunkHead);
            source->_stripData(data + at + chunkHead, std::min(length, left));
        }
    }
}

bool iSoundSystem::checkSoundfileAndPlay(iSoundSource *source, bool quiet)
{
    unsigned int bytes = 0;
    if (source == nullptr || source->getData(bytes) == nullptr || source->isStream()) {
        return false;
    }
    checkSoundfile(source, true);
    bool isPlaying = false;
    if (source->hasOGGHeader()) {
        force2DWhereNeeded(*source);
        isPlaying = createAndPlayVorbis(source) != nullptr;
    } else if (source->is3DStereo()) {
        isPlaying = createAndPlay3DStereo(source) != nullptr;
    } else if (source->is3DSubwoofer()) {
        isPlaying = createAndPlay3DSubwoofer(source) != nullptr;
    } else if (source->hasWAVHeader()) {
        force2DWhereNeeded(*source);
        isPlaying = startWav(*source);
    }
    if (!isPlaying && !quiet) {
        tell(3, "iSoundSystem::checkSoundfileAndPlay(): unable to play file '%s'!\n",
             source->getResourceName().c_str());
    }
    return isPlaying;
}

bool iSoundSystem::startWav(iSoundSource &source)
{
    iSoundChannel *const channel = getFreeChannel(!source.is2DForced());
    if (channel == nullptr) {
        return false;
    }
    bool const from3D = !source.is2DForced();
    if (!channel->init_play(&source, source.getFadeInTimeMS())) {
        giveBack(channel, from3D);
        return false;
    }
    enter(channel);
    return true;
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

iSoundVorbis *iSoundSystem::createVorbisStream()
{
    if (!inited) {
        return nullptr;
    }
    vorbisStreams.push_back(nullptr);
    vorbisStreams.back() = std::make_unique<OwnVorbis>(this).release();
    return vorbisStreams.back();
}

iSoundVorbis *iSoundSystem::createAndPlayVorbis(iSoundSource *source)
{
    iSoundVorbis *const stream = source == nullptr ? nullptr : createVorbisStream();
    if (stream == nullptr) {
        return nullptr;
    }
    bool const want3D = wants3D(*source);
    iSoundChannel *const channel = getFreeChannel(want3D);
    if (openVorbis(stream, source, channel) && stream->play()) {
        return stream;
    }
    if (channel != nullptr && playing(channel->getIndex()) == channel) {
        channelTable[channel->getIndex()] = nullptr;
    }
    // By its own entry: another stream may have the same id.
    auto const place = std::find(vorbisStreams.begin(), vorbisStreams.end(), stream);
    if (place != vorbisStreams.end()) {
        destroyVorbis_work(&*place, 0);
    }
    giveBack(channel, want3D);
    return nullptr;
}

bool iSoundSystem::openVorbis(iSoundVorbis *stream, iSoundSource *source, iSoundChannel *channel)
{
    if (stream == nullptr || source == nullptr || channel == nullptr || !stream->open(source, channel)) {
        return false;
    }
    enter(channel);
    stream->_prefill();
    return true;
}

iSound3DStereo *iSoundSystem::create3DStereo()
{
    if (!inited) {
        return nullptr;
    }
    stereoSounds.push_back(nullptr);
    stereoSounds.back() = std::make_unique<iSound3DStereo>(this).release();
    return stereoSounds.back();
}

iSound3DStereo *iSoundSystem::createAndPlay3DStereo(iSoundSource *source)
{
    iSound3DStereo *const sound = source == nullptr ? nullptr : create3DStereo();
    if (sound == nullptr) {
        return nullptr;
    }
    bool const want3D = wants3D(*source);
    iSoundChannel *const left = getFreeChannel(want3D);
    iSoundChannel *const right = getFreeChannel(want3D);
    iSoundChannel *lfe = nullptr;
    if (source->is3DSubwoofer() && isMultiChannel() && !free2D51Channels.empty()) {
        lfe = getFreeChannel(false);
    }
    if (left != nullptr && right != nullptr &&
        sound->open(source, left, right, lfe, nullptr, nullptr, nullptr) && sound->play()) {
        for (iSoundChannel *const channel : {left, right, lfe}) {
            if (channel != nullptr) {
                enter(channel);
            }
        }
        return sound;
    }
    giveBack(left, want3D);
    giveBack(right, want3D);
    giveBack(lfe, false);
    destroy3DStereo(static_cast<iSound3DStereo const *>(sound), 0);
    return nullptr;
}

iSound3DSubwoofer *iSoundSystem::create3DSubwoofer()
{
    if (!inited) {
        return nullptr;
    }
    subwooferSounds.push_back(nullptr);
    subwooferSounds.back() = std::make_unique<iSound3DSubwoofer>(this).release();
    return subwooferSounds.back();
}

iSound3DSubwoofer *iSoundSystem::createAndPlay3DSubwoofer(iSoundSource *source)
{
    iSound3DSubwoofer *const sound = source == nullptr ? nullptr : create3DSubwoofer();
    if (sound == nullptr) {
        return nullptr;
    }
    bool const want3D = wants3D(*source);
    iSoundChannel *const main = getFreeChannel(want3D);
    iSoundChannel *lfe = nullptr;
    if (isMultiChannel() && !free2D51Channels.empty()) {
        lfe = getFreeChannel(false);
    }
    if (main != nullptr && sound->open(source, main, lfe, nullptr, nullptr) && sound->play()) {
        enter(main);
        enter(lfe);
        return sound;
    }
    giveBack(main, want3D);
    giveBack(lfe, false);
    destroy3DSubwoofer(static_cast<iSound3DSubwoofer const *>(sound), 0);
    return nullptr;
}

} // namespace Qel
