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
