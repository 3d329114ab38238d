#include "System/Sound/sound3DStereo.h"
#include "System/Sound/sound3DSubwoofer.h"
#include "System/Sound/soundChannel.h"
#include "System/Sound/soundClip.h"
#include "System/Sound/soundSystem.h"
#include "System/Sound/soundVorbis.h"
#include "System/System/logManager.h"

#include <algorithm>
#include <memory>

namespace Qel {

namespace {

void tell(char const *format, unsigned int id)
{
    if (LogManager::checkDefLogLevel(1)) {
        LogManager::defLevelMessage(format, static_cast<int>(id));
    }
}

// The handle is shown as printf's %x does it.
void tellNotFound(char const *operation, int form, char const *list, void const *handle)
{
    if (LogManager::checkDefLogLevel(3)) {
        LogManager::defLevelMessage("%s() #%d: soundsource handle not found in %s! (%x)\n", operation, form,
                                    list,
                                    static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(handle)));
    }
}

template <class List>
auto findById(List &list, unsigned int id)
{
    return std::find_if(list.begin(), list.end(),
                        [id](auto const *entry) { return entry != nullptr && entry->getUniqueID() == id; });
}

// By its address, which says the same as the id of its source and may lead nowhere any more.
template <class List, class Sound>
auto findEntry(List &list, Sound const *sound)
{
    return sound == nullptr ? list.end() : std::find(list.begin(), list.end(), sound);
}

} // namespace

void iSoundSystem::destroyNow(iSound3DStereo *sound)
{
    std::default_delete<iSound3DStereo>()(sound);
}

void iSoundSystem::destroyNow(iSound3DSubwoofer *sound)
{
    std::default_delete<iSound3DSubwoofer>()(sound);
}

void iSoundSystem::destroyNow(iSoundClip *clip)
{
    std::default_delete<iSoundClip>()(clip);
}

void iSoundSystem::destroyNow(iSoundVorbis *stream)
{
    for (iSound3DStereo *const sound : stereoSounds) {
        sound->_forget(stream);
    }
    for (iSound3DSubwoofer *const sound : subwooferSounds) {
        sound->_forget(stream);
    }
    stream->close();
    // A voice that fades out is spared by that; without its stream nobody would bring it to its end.
    iSoundChannel const *const left = stream->getChannel();
    if (left != nullptr && playing(left->getIndex()) == left) {
        stopChannel(left->getIndex(), 0);
    }
    iSoundVorbis::_destroy(stream);
}

// Each is out of its list before it dies, since what dies stops its channels, and those look at the lists.
template <class Sound, class GroupOf>
bool iSoundSystem::destroyGroup(std::vector<Sound *> &list, unsigned int group, GroupOf groupOf)
{
    bool const isAny = !list.empty();
    for (std::size_t i = 0; i < list.size();) {
        Sound *const sound = list[i];
        if (sound != nullptr && group != 0 && groupOf(*sound) != group) {
            ++i;
            continue;
        }
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(i));
        destroyNow(sound);
    }
    return isAny;
}

// A channel that has stopped for good is nobody's: it may play for another in the same frame, and its source
// may be gone.
void iSoundSystem::release(iSoundChannel &channel)
{
    for (iSoundVorbis *const stream : vorbisStreams) {
        stream->_forget(&channel);
    }
    for (iSound3DStereo *const sound : stereoSounds) {
        sound->_forget(&channel);
    }
    for (iSound3DSubwoofer *const sound : subwooferSounds) {
        sound->_forget(&channel);
    }
    for (iSoundClip *const clip : clips) {
        if (clip != nullptr) {
            clip->_forget(&channel);
        }
    }
    channel.resetChannelInited();
}

bool iSoundSystem::stop(iSoundSource *source, unsigned int ms)
{
    if (!inited || source == nullptr) {
        return false;
    }
    unsigned int const id = source->getUniqueID();
    if ((source->isStream() &&
         (destroyVorbis(static_cast<iSoundSource const *>(source), ms) || destroySoundClip(source, ms))) ||
        (source->is3DStereo() && destroy3DStereo(static_cast<iSoundSource const *>(source), ms)) ||
        (source->is3DSubwoofer() && destroy3DSubwoofer(static_cast<iSoundSource const *>(source), ms))) {
        return true;
    }
    if (iSoundChannel const *const channel = channelOf(id)) {
        stopChannel(channel->getIndex(), ms);
        return true;
    }
    if (LogManager::checkDefLogLevel(3)) {
        LogManager::defLevelMessage("iSoundSystem::stop - could not find soundsource #%d (%s)!\n",
                                    static_cast<int>(id), source->getResourceName().c_str());
    }
    return false;
}

bool iSoundSystem::stopChannel(unsigned int index, unsigned int ms)
{
    iSoundChannel *const channel = inited ? playing(index) : nullptr;
    if (channel == nullptr) {
        return false;
    }
    bool const staysForItsFade = ms != 0 && !paused;
    channel->stop(ms);
    if (staysForItsFade || playing(index) != channel) {
        return true; // until it has finished; or the back end has stopped it for good meanwhile
    }
    // The voices of one sound have asked for ducking once.
    bool const isLastRequester =
        channel->hasDuckingRequest() &&
        std::none_of(channelTable.begin(), channelTable.end(), [channel](iSoundChannel const *other) {
            return other != nullptr && other != channel && other->hasDuckingRequest() &&
                   other->getUniqueID() == channel->getUniqueID();
        });
    if (isLastRequester) {
        duckingCounter -= duckingCounter != 0;
        if (LogManager::checkDefLogLevel(1)) {
            LogManager::defLevelMessage("iSoundSystem::stopChannel(): duckingcounter--\n");
        }
        updateDucking();
    }
    channelTable[index] = nullptr;
    bool const isCrossfade = isCrossfadeChannel(channel);
    // A 3D channel may have played what has no place: where it came from counts.
    bool const is3D = channel->m_home == iSoundChannel::Home::UNKNOWN
                          ? channel->is3DChannel()
                          : channel->m_home == iSoundChannel::Home::LIST_3D;
    release(*channel);
    if (!isCrossfade) { // one that is stays where it is, for the next voice that is stolen
        (is3D ? free3DChannels : free2D51Channels).push_back(channel);
    }
    return true;
}

bool iSoundSystem::stopAll(unsigned int group)
{
    constexpr unsigned int fadeMs = 400;
    if (!inited) {
        return false;
    }
    bool isAny = false;
    std::erase_if(waitlist, [group](iSoundSource *source) {
        bool const isMeant = group == 0 || source->getSoundGroup() == group;
        if (isMeant) {
            source->setStopped();
        }
        return isMeant;
    });
    if (countVoices_51() + countVoices_3D() + countVoices_2D() != 0) {
        fadeOut(0, 0.0f, fadeMs, true);
    }
    auto const ownGroup = [](auto const &sound) -> unsigned int { return sound.getSoundGroup(); };
    isAny |= destroyGroup(stereoSounds, group, ownGroup);
    isAny |= destroyGroup(subwooferSounds, group, ownGroup);
    isAny |= destroyGroup(clips, group, [](iSoundClip const &clip) -> unsigned int {
        return clip.getSoundSource() == nullptr ? 0 : clip.getSoundSource()->getSoundGroup();
    });
    isAny |= destroyGroup(vorbisStreams, group, ownGroup);
    for (std::size_t i = 0; i < channelTable.size(); ++i) {
        iSoundChannel const *const channel = channelTable[i];
        if (channel != nullptr && (group == 0 || channel->getSoundGroup() == group)) {
            stopChannel(static_cast<unsigned int>(i), 0);
            isAny = true;
        }
    }
    if (isAny && LogManager::checkDefLogLevel(1)) {
        if (group == 0) {
            LogManager::defLevelMessage("iSoundSystem::stopAll: stopped all soundgroups.\n");
        } else {
            LogManager::defLevelMessage("iSoundSystem::stopAll: stopped soundgroup %d.\n",
                                        static_cast<int>(group));
        }
    }
    duckingCounter = 0;
    return isAny;
}

void iSoundSystem::destroyEntry(std::vector<iSoundClip *>::iterator place, unsigned int ms)
{
    iSoundClip *const clip = *place;
    iSoundSource const *const source = clip->getSoundSource();
    unsigned int const id = source == nullptr ? 0 : source->getUniqueID();
    clip->stop(ms);
    tell("iSoundSystem::destroySoundClip(): destroyed soundclip ID %d.\n", id);
    if (ms == 0) {
        clips.erase(place);
        destroyNow(clip);
    }
}

bool iSoundSystem::destroySoundClip(iSoundSource *source, unsigned int ms)
{
    auto const place = std::find_if(clips.begin(), clips.end(), [&](iSoundClip const *clip) {
        return source != nullptr && clip != nullptr && clip->getSoundSource() != nullptr &&
               clip->getSoundSource()->getUniqueID() == source->getUniqueID();
    });
    if (!inited || place == clips.end()) {
        tellNotFound("destroySoundClip", 1, "vClips", source);
        return false;
    }
    destroyEntry(place, ms);
    return true;
}

bool iSoundSystem::destroySoundClip(iSoundClip *clip, unsigned int ms)
{
    auto const place = findEntry(clips, clip);
    if (!inited || place == clips.end()) {
        tellNotFound("destroySoundClip", 2, "vClips", clip);
        return false;
    }
    destroyEntry(place, ms);
    return true;
}

bool iSoundSystem::destroyVorbis(iSoundSource const *source, unsigned int ms)
{
    auto const place =
        source == nullptr ? vorbisStreams.end() : findById(vorbisStreams, source->getUniqueID());
    if (!inited || place == vorbisStreams.end()) {
        tellNotFound("destroyVorbis", 1, "vVorbis", source);
        return false;
    }
    destroyVorbis_work(&*place, ms);
    return true;
}

bool iSoundSystem::destroyVorbis(iSoundVorbis const *stream, unsigned int ms)
{
    auto const place = findEntry(vorbisStreams, stream);
    if (!inited || place == vorbisStreams.end()) {
        tellNotFound("destroyVorbis", 2, "vVorbis", stream);
        return false;
    }
    destroyVorbis_work(&*place, ms);
    return true;
}

void iSoundSystem::destroyVorbis_work(iSoundVorbis **entry, unsigned int ms)
{
    iSoundVorbis *const stream = *entry;
    tell("iSoundSystem::destroyVorbis(): destroyed vorbis stream #%d.\n", stream->getUniqueID());
    if (ms != 0) {
        stream->stop(ms);
        return;
    }
    vorbisStreams.erase(vorbisStreams.begin() + (entry - vorbisStreams.data()));
    destroyNow(stream);
}

void iSoundSystem::destroyEntry(std::vector<iSound3DStereo *>::iterator place, unsigned int ms)
{
    iSound3DStereo *const sound = *place;
    if (ms != 0) {
        sound->stop(ms);
        return;
    }
    tell("iSoundSystem::destroy3DStereo(): destroyed 3DStereo source #%d.\n", sound->getUniqueID());
    stereoSounds.erase(place);
    destroyNow(sound);
}

bool iSoundSystem::destroy3DStereo(iSoundSource const *source, unsigned int ms)
{
    auto const place = source == nullptr ? stereoSounds.end() : findById(stereoSounds, source->getUniqueID());
    if (!inited || place == stereoSounds.end()) {
        tellNotFound("destroy3DStereo", 1, "v3DStereo", source);
        return false;
    }
    destroyEntry(place, ms);
    return true;
}

bool iSoundSystem::destroy3DStereo(iSound3DStereo const *sound, unsigned int ms)
{
    auto const place = findEntry(stereoSounds, sound);
    if (!inited || place == stereoSounds.end()) {
        tellNotFound("destroy3DStereo", 2, "v3DStereo", sound);
        return false;
    }
    destroyEntry(place, ms);
    return true;
}

void iSoundSystem::destroyEntry(std::vector<iSound3DSubwoofer *>::iterator place, unsigned int ms)
{
    iSound3DSubwoofer *const sound = *place;
    tell("iSoundSystem::destroy3DSubwoofer(): destroyed 3DSubwoofer source #%d.\n", sound->getUniqueID());
    if (ms != 0) {
        sound->stop(ms);
        return;
    }
    subwooferSounds.erase(place);
    destroyNow(sound);
}

bool iSoundSystem::destroy3DSubwoofer(iSoundSource const *source, unsigned int ms)
{
    auto const place =
        source == nullptr ? subwooferSounds.end() : findById(subwooferSounds, source->getUniqueID());
    if (!inited || place == subwooferSounds.end()) {
        tellNotFound("destroy3DSubwoofer", 1, "v3DSubwoofer", source);
        return false;
    }
    destroyEntry(place, ms);
    return true;
}

bool iSoundSystem::destroy3DSubwoofer(iSound3DSubwoofer const *sound, unsigned int ms)
{
    auto const place = findEntry(subwooferSounds, sound);
    if (!inited || place == subwooferSounds.end()) {
        tellNotFound("destroy3DSubwoofer", 2, "v3DSubwoofer", sound);
        return false;
    }
    destroyEntry(place, ms);
    return true;
}

} // namespace Qel
