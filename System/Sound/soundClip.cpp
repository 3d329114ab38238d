#include "System/Sound/soundClip.h"

#include "System/Sound/soundChannel.h"
#include "System/Sound/soundSystem.h"
#include "System/System/logManager.h"

#include <algorithm>
#include <limits>

namespace Qel {

iSoundClip::iSoundClip(iSoundSystem *owner, iSoundChannel *voice, bool isMultichannel)
    : system(owner), channel(voice), valid(owner != nullptr && voice != nullptr),
      multichannel(valid && isMultichannel)
{
}

iSoundClip::~iSoundClip()
{
    iSoundClip::close();
}

bool iSoundClip::open(iSoundSource *newSource, unsigned int ringSize)
{
    constexpr unsigned int chunkPerChannel = 49152;
    if (!valid || opened || newSource == nullptr || channel == nullptr) {
        return false;
    }
    source = newSource;
    chunkSize = source->getNumChannels() * chunkPerChannel;
    if (multichannel) {
        source->set51Sound();
    }
    source->setStream();
    if (ringSize > static_cast<unsigned int>(std::numeric_limits<int>::max()) ||
        !ring.init(static_cast<int>(ringSize))) {
        if (LogManager::checkDefLogLevel(3)) {
            LogManager::defLevelMessage("iSoundClip::open(\"%s\") ringbuffer init failed!\n",
                                        source->getResourceName().c_str());
        }
        source = nullptr;
        return false;
    }
    opened = channel->init(source);
    if (LogManager::checkDefLogLevel(opened ? 1 : 3)) {
        LogManager::defLevelMessage(opened ? "iSoundClip::open() successfully opened clip #%d.\n"
                                           : "iSoundClip::open() clip #%d has failed!\n",
                                    static_cast<int>(source->getUniqueID()));
    }
    if (!opened) {
        ring.close();
        source = nullptr;
    }
    return opened;
}

void iSoundClip::_forget(iSoundChannel const *gone)
{
    if (channel == gone) {
        channel = nullptr;
        m_lostChannel = true;
        // The source is the game's again.
        if (source != nullptr) {
            source->resetStream();
            source = nullptr;
        }
    }
}

void iSoundClip::close()
{
    if (opened) {
        stop(0);
        ring.close();
        channel = nullptr;
        if (source != nullptr) {
            source->resetStream();
        }
    }
    source = nullptr;
    opened = false;
}

bool iSoundClip::isPlaying() const
{
    return opened && channel != nullptr && channel->isPlaying();
}

bool iSoundClip::isFinished() const
{
    return !opened || channel == nullptr || !channel->isChannelInited() || channel->isFinished();
}

bool iSoundClip::alreadyPlayed() const
{
    return opened && channel != nullptr && channel->alreadyPlayed();
}

bool iSoundClip::play()
{
    if (!opened || m_lostChannel || isPlaying()) {
        return false;
    }
    if (!dataReady) {
        playRequested = true;
        return true;
    }
    setTime(0.0f);
    source->setCurrentTimeMS(0);
    if (channel != nullptr) {
        channel->play(source->getFadeInTimeMS());
    }
    if (system->isPaused()) {
        setPause(true, false);
    }
    return true;
}

void iSoundClip::update(float dt)
{
    if (!opened) {
        return;
    }
    if (!system->isPaused()) {
        time += dt;
    }
    if (playRequested) {
        playRequested = !alreadyPlayed();
        if (playRequested) {
            play();
        }
    }
    if (m_lostChannel || (alreadyPlayed() && isFinished())) {
        close();
        return;
    }
    if (source->isVolChanged() && channel != nullptr) {
        if (channel->isDuckingComplete()) {
            source->resetVolChanged();
        }
        channel->updateVolume();
        return;
    }
    if (source->isParamChanged()) {
        if (channel != nullptr) {
            channel->setParams();
        }
        source->resetParamChanged();
    }
}

void iSoundClip::stop(unsigned int ms)
{
    if (system != nullptr && channel != nullptr) {
        system->stopChannel(channel->getIndex(), ms);
    }
}

void iSoundClip::setPause(bool pause, bool fade)
{
    if (opened && channel != nullptr) {
        channel->setPause(pause, fade);
    }
}

bool iSoundClip::setSpeakerSettings(bool frontOn, bool rearOn, bool centerLFEOn)
{
    if (opened) {
        front = frontOn;
        rear = rearOn;
        centerLFE = centerLFEOn;
    }
    return opened;
}

bool iSoundClip::write(unsigned char *data, unsigned int size)
{
    if (data == nullptr || size == 0) {
        return false;
    }
    int const wanted =
        static_cast<int>(std::min(size, static_cast<unsigned int>(std::numeric_limits<int>::max())));
    return static_cast<unsigned int>(ring.write(data, wanted)) == size;
}

unsigned int iSoundClip::getWriteable() const
{
    return static_cast<unsigned int>(ring.getWriteAvailable());
}

unsigned int iSoundClip::getReadable() const
{
    return static_cast<unsigned int>(ring.getReadAvailable());
}

void iSoundClip::setVolume1(float volume)
{
    if (source != nullptr) {
        source->setVolume1(volume);
    }
}

float iSoundClip::getVolume1() const
{
    return source == nullptr ? 1.0f : source->getVolume1();
}

void iSoundClip::setVolume2(float volume)
{
    if (source != nullptr) {
        source->setVolume2(volume);
    }
}

float iSoundClip::getVolume2() const
{
    return source == nullptr ? 1.0f : source->getVolume2();
}

} // namespace Qel
