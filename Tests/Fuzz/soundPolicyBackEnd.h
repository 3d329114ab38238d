#pragma once

#include "System/Sound/soundChannel.h"
#include "System/Sound/soundClip.h"
#include "System/Sound/soundSource.h"
#include "System/Sound/soundSystem.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

namespace policy {

/// Trouble that a device makes at some call into it: it refuses what it is asked for, or calls the system.
struct Trouble {
    unsigned int callsLeft = 0;     ///< until it comes; 0 for none
    std::function<void()> callBack; ///< instead of refusing
    bool hasCome = false;

    bool refuses()
    {
        if (callsLeft == 0 || --callsLeft != 0) {
            return false;
        }
        hasCome = true;
        if (std::function<void()> const call = std::move(callBack)) {
            callBack = nullptr;
            call();
            return false;
        }
        return true;
    }
};

class FuzzSound;

/// A voice in memory: it lasts for so many updates.
class FuzzChannel final : public Qel::iSoundChannel {
public:
    FuzzChannel(unsigned int number, Qel::iSoundSystem *owner, Trouble &deviceTrouble)
        : iSoundChannel(number, owner), m_trouble(deviceTrouble)
    {
    }

    bool init(Qel::iSoundSource *newSource) override
    {
        if (m_trouble.refuses() || !iSoundChannel::init(newSource)) {
            return false;
        }
        constexpr unsigned int longest = 40;
        updatesLeft = 1 + newSource->getUniqueID() * 7 % longest;
        return true;
    }
    bool play(unsigned int fadeInMs) override
    {
        if (m_trouble.refuses() || !iSoundChannel::play(fadeInMs) || !isChannelInited()) {
            return false;
        }
        if (!isPaused()) {
            setPlaying();
        }
        m_isOn = true;
        if (!m_isCounted && !is3DStereo() && !is3DSubwoofer()) {
            m_isCounted = true;
            source->setPlaying();
        }
        return true;
    }
    void stop(unsigned int fadeOutMs) override
    {
        iSoundChannel::stop(fadeOutMs);
        if (fadeOutMs == 0 || system->isPaused()) {
            end();
            status &= ~static_cast<std::uint32_t>(PLAYING);
        } else {
            fadeDown(0.0f, fadeOutMs);
        }
        m_trouble.refuses();
    }
    unsigned int update(float dt) override
    {
        m_trouble.refuses();
        iSoundChannel::update(dt);
        if (!isChannelInited() || !m_isOn) {
            return 0;
        }
        if (isFadingUp() || isFadingDown()) {
            float const step = fadeSpeed < 0 ? 1.0f : fadeSpeed * dt;
            bool const isDown = isFadingDown();
            m_fade = isDown ? std::max(m_fade - step, fadeTarget) : std::min(m_fade + step, fadeTarget);
            if (m_fade == fadeTarget) {
                resetFade();
                if (isDown && stopAfterFade()) {
                    finish();
                    return 0;
                }
            }
        }
        if (!isPlaying()) {
            return 0;
        }
        if (updatesLeft == 0 || --updatesLeft == 0) {
            finish();
            return 0;
        }
        return 15;
    }
    void setPause(bool pause, bool fade) override
    {
        iSoundChannel::setPause(pause, fade);
        if (!pause && m_isOn && isPaused()) {
            setPlaying();
        }
        m_trouble.refuses();
    }
    void setActualVolume(float volume) override { m_fade = volume; }
    bool fillBuffer(unsigned int, unsigned char const *, unsigned int) override
    {
        return !m_trouble.refuses();
    }

    unsigned int updatesLeft = 0;

private:
    void end()
    {
        m_isOn = false;
        if (m_isCounted) {
            m_isCounted = false;
            source->setStopped();
        }
    }
    void finish()
    {
        end();
        setFinished();
    }

    Trouble &m_trouble;
    float m_fade = 1.0f;
    bool m_isOn = false;
    bool m_isCounted = false;
};

/// A clip that begins at once.
class FuzzClip final : public Qel::iSoundClip {
public:
    FuzzClip(Qel::iSoundSystem *owner, Qel::iSoundChannel *voice) : iSoundClip(owner, voice, false)
    {
        dataReady = true;
    }
    void update(float dt) override
    {
        if (opened && channel != nullptr) {
            channel->update(dt);
        }
        iSoundClip::update(dt);
    }
};

/// The system above them.
class FuzzSound final : public Qel::iSoundSystem {
public:
    FuzzSound() : iSoundSystem("fuzz", "FUZZ") { loaded = true; }
    ~FuzzSound() override = default;

    void start(unsigned int num3D, unsigned int numCrossfade, unsigned int num2D, bool multichannel)
    {
        Qel::sSoundSystemParams wanted;
        wanted.soundCaps = Qel::SOUNDCAPS_STEREO;
        wanted.isMultiChannel = multichannel;
        wanted.num3DChannels = static_cast<std::uint8_t>(num3D + numCrossfade);
        wanted.num2D51Channels = static_cast<std::uint8_t>(num2D);
        initSoundSystem(wanted);
        channelTable.resize(num3D + numCrossfade + num2D + 1);
        for (unsigned int i = 1; i < channelTable.size(); ++i) {
            Qel::iSoundChannel *const channel = std::make_unique<FuzzChannel>(i, this, trouble).release();
            if (i <= num3D) {
                free3DChannels.push_back(channel);
            } else if (i <= num3D + numCrossfade) {
                crossfadeChannels.push_back(channel);
            } else {
                free2D51Channels.push_back(channel);
            }
        }
    }

    void openClip(Qel::iSoundSource *source)
    {
        Trouble const later = trouble;
        trouble = {}; // not while a clip is in the making
        Qel::iSoundChannel *const channel = getFreeChannel(false);
        if (channel == nullptr) {
            trouble = later;
            return;
        }
        Qel::iSoundClip *const clip = std::make_unique<FuzzClip>(this, channel).release();
        clips.push_back(clip);
        constexpr unsigned int ringSize = 64;
        if (!clip->open(source, ringSize)) {
            channel->resetChannelInited();
            free2D51Channels.push_back(channel);
            destroySoundClip(clip, 0);
            trouble = later;
            return;
        }
        channelTable[channel->getIndex()] = channel;
        if (channel->hasDuckingRequest()) {
            ++duckingCounter;
            updateDucking();
        }
        clip->play();
        trouble = later;
    }

    void getListener(D3DXVECTOR3 &pos, D3DXVECTOR3 &at, D3DXVECTOR3 &up) override
    {
        trouble.refuses();
        pos = {listener, listener, 0}, at = {0, 0, 1}, up = {0, 1, 0};
    }

    Trouble trouble;
    float listener = 0;

    using iSoundSystem::channelTable;
    using iSoundSystem::clips;
    using iSoundSystem::crossfadeChannels;
    using iSoundSystem::duckingCounter;
    using iSoundSystem::free2D51Channels;
    using iSoundSystem::free3DChannels;
    using iSoundSystem::params;
    using iSoundSystem::stereoSounds;
    using iSoundSystem::subwooferSounds;
    using iSoundSystem::vorbisStreams;
    using iSoundSystem::waitlist;

protected:
    void create2D51Channel() override
    {
        if (trouble.refuses()) {
            return;
        }
        if (unsigned int const index = getNew2D51Index(); index != 0) {
            add2D51Channel(std::make_unique<FuzzChannel>(index, this, trouble));
        }
    }
};

} // namespace policy
