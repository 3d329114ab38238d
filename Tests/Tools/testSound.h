#pragma once

#include "System/Sound/soundChannel.h"
#include "System/Sound/soundSystem.h"

#include <memory>
#include <string>
#include <vector>

namespace test {

/// A voice without a device. It tells what it was asked, and plays until the test lets it finish.
class TestChannel : public Qel::iSoundChannel {
public:
    using iSoundChannel::iSoundChannel;

    bool play(unsigned int fadeInMs) override
    {
        if (!acceptsPlay || !iSoundChannel::play(fadeInMs)) {
            return false;
        }
        if (!isPaused()) {
            setPlaying();
        }
        return true;
    }
    void stop(unsigned int fadeOutMs) override
    {
        iSoundChannel::stop(fadeOutMs);
        stops.push_back(fadeOutMs);
        if (fadeOutMs == 0) {
            status &= ~static_cast<std::uint32_t>(PLAYING);
        } else {
            fadeDown(0.0f, fadeOutMs);
        }
    }
    unsigned int update(float dt) override
    {
        ++updates;
        return iSoundChannel::update(dt) | refill;
    }
    void setActualVolume(float volume) override { deviceVolume = volume; }
    bool fillBuffer(unsigned int bit, unsigned char const *data, unsigned int size) override
    {
        segments += std::to_string(bit) + ' ';
        filled.insert(filled.end(), data, data + size);
        return true;
    }

    /// 16-bit samples out of what was filled, by their place.
    short sample(std::size_t i) const
    {
        return static_cast<short>(filled.at(2 * i) | filled.at(2 * i + 1) << 8);
    }

    float ducking() const { return duckingLevel; }

    bool acceptsPlay = true;
    unsigned int refill = 0; ///< what update() asks for
    int updates = 0;
    float deviceVolume = -1.0f;
    std::vector<unsigned int> stops;
    std::string segments;
    std::vector<unsigned char> filled;
};

/// A back end of the tests: all policy, no device.
class TestSound : public Qel::iSoundSystem {
public:
    TestSound() : iSoundSystem("test", "TEST") { loaded = true; }
    ~TestSound() override = default;

    /// Makes channels: 3D ones from 1 on, of which the last are for crossfades, then 2D ones.
    bool start(unsigned int num3D, unsigned int numCrossfade, unsigned int num2D, bool multichannel = false)
    {
        Qel::sSoundSystemParams wanted;
        wanted.soundCaps = Qel::SOUNDCAPS_STEREO;
        wanted.isMultiChannel = multichannel;
        wanted.num3DChannels = static_cast<std::uint8_t>(num3D + numCrossfade);
        wanted.num2D51Channels = static_cast<std::uint8_t>(num2D);
        if (!initSoundSystem(wanted)) {
            return false;
        }
        channelTable.resize(num3D + numCrossfade + num2D + 1);
        for (unsigned int i = 1; i < channelTable.size(); ++i) {
            Qel::iSoundChannel *const channel = make(i).release();
            if (i <= num3D) {
                free3DChannels.push_back(channel);
            } else if (i <= num3D + numCrossfade) {
                crossfadeChannels.push_back(channel);
            } else {
                free2D51Channels.push_back(channel);
            }
        }
        return true;
    }

    void getListener(D3DXVECTOR3 &pos, D3DXVECTOR3 &at, D3DXVECTOR3 &up) override
    {
        pos = listener, at = listenerAt, up = listenerUp;
    }
    void setListenerPosition(D3DXVECTOR3 const &pos) override { listener = pos; }
    void setListenerOrientation(D3DXVECTOR3 const &at, D3DXVECTOR3 const &up) override
    {
        listenerAt = at, listenerUp = up;
    }

    TestChannel *channel(unsigned int index) const
    {
        return static_cast<TestChannel *>(channelTable.at(index));
    }

    /// Every channel, once if all is well.
    std::vector<Qel::iSoundChannel *> all() const
    {
        std::vector<Qel::iSoundChannel *> list(free3DChannels.begin(), free3DChannels.end());
        list.insert(list.end(), free2D51Channels.begin(), free2D51Channels.end());
        list.insert(list.end(), crossfadeChannels.begin(), crossfadeChannels.end());
        for (Qel::iSoundChannel *const playing : channelTable) {
            if (playing != nullptr && !isCrossfadeChannel(playing)) {
                list.push_back(playing);
            }
        }
        return list;
    }

    D3DXVECTOR3 listener{0, 0, 0};
    D3DXVECTOR3 listenerAt{0, 0, 1};
    D3DXVECTOR3 listenerUp{0, 1, 0};

    using iSoundSystem::channelTable, iSoundSystem::checkPriority, iSoundSystem::checkSoundfile,
        iSoundSystem::clips, iSoundSystem::createVorbisStream, iSoundSystem::crossfadeChannels,
        iSoundSystem::duckingCounter, iSoundSystem::free2D51Channels, iSoundSystem::free3DChannels,
        iSoundSystem::getFreeChannel, iSoundSystem::loaded, iSoundSystem::openVorbis, iSoundSystem::params,
        iSoundSystem::setDefaultListener, iSoundSystem::stereoSounds, iSoundSystem::subwooferSounds,
        iSoundSystem::vorbisStreams, iSoundSystem::waitlist;

protected:
    void create2D51Channel() override
    {
        if (unsigned int const index = getNew2D51Index(); index != 0) {
            add2D51Channel(make(index));
        }
    }

private:
    std::unique_ptr<Qel::iSoundChannel> make(unsigned int index)
    {
        return std::make_unique<TestChannel>(index, this);
    }
};

} // namespace test
