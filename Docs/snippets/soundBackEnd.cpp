#include "System/Sound/soundChannel.h"
#include "System/Sound/soundSystem.h"
#include "System/Sound/soundSystemFactory.h"
#include "System/Sound/soundSystemManager.h"

#include <algorithm>
#include <memory>

using namespace Qel;

namespace {

class Voice final : public iSoundChannel {
public:
    using iSoundChannel::iSoundChannel;

    bool play(unsigned int fadeInMs) override
    {
        if (!iSoundChannel::play(fadeInMs)) {
            return false;
        }
        // Start the device's voice with the source's data here.
        if (!isPaused()) {
            setPlaying();
        }
        return true;
    }

    void stop(unsigned int fadeOutMs) override
    {
        iSoundChannel::stop(fadeOutMs);
        if (fadeOutMs == 0 || system->isPaused()) {
            // Silence the device's voice at once: the channel may play for another right after this.
        } else {
            fadeDown(0.0f, fadeOutMs);
        }
    }

    unsigned int update(float dt) override
    {
        iSoundChannel::update(dt); // works volume, ducking and low-pass out
        if (isFadingUp() || isFadingDown()) {
            float const step = fadeSpeed < 0 ? 1.0f : fadeSpeed * dt;
            bool const isDown = isFadingDown();
            m_fade = isDown ? std::max(m_fade - step, fadeTarget) : std::min(m_fade + step, fadeTarget);
            if (m_fade == fadeTarget) {
                resetFade();
                if (isDown && stopAfterFade()) {
                    setFinished();
                }
            }
        }
        // The device gets m_fade * actualVolume here; setFinished() when it has run out of data.
        return 0; // bits of the segments of a stream that it has played
    }

    void setPause(bool pause, bool fade) override
    {
        iSoundChannel::setPause(pause, fade);
        if (!pause && isPaused()) {
            setPlaying();
        }
    }

    void setActualVolume(float volume) override { m_fade = volume; }

private:
    float m_fade = 1.0f;
};

class MySound final : public iSoundSystem {
public:
    MySound(String const &title, String const &type) : iSoundSystem(title, type)
    {
        supportedCaps.push_back(SOUNDCAPS_WINDOWS);
    }

    bool initSoundSystem(sSoundSystemParams const &wanted) override
    {
        if (isInited() || !iSoundSystem::initSoundSystem(wanted)) {
            return isInited();
        }
        unsigned int const num3D = params.num3DChannels;
        unsigned int const numCrossfade = std::min(num3D / 8, 4u); // of them: stolen voices fade out there
        channelTable.assign(num3D + params.num2D51Channels + 1u, nullptr);
        for (unsigned int i = 1; i < channelTable.size(); ++i) {
            iSoundChannel *const voice = std::make_unique<Voice>(i, this).release();
            if (i > num3D) {
                free2D51Channels.push_back(voice);
            } else if (i > num3D - numCrossfade) {
                crossfadeChannels.push_back(voice);
            } else {
                free3DChannels.push_back(voice);
            }
        }
        return true;
    }

    void getListener(D3DXVECTOR3 &pos, D3DXVECTOR3 &at, D3DXVECTOR3 &up) override
    {
        pos = m_pos, at = m_at, up = m_up;
    }

protected:
    bool load() override { return true; } // opens the device
    void setListenerPosition(D3DXVECTOR3 const &pos) override { m_pos = pos; }
    void setListenerOrientation(D3DXVECTOR3 const &at, D3DXVECTOR3 const &up) override
    {
        m_at = at, m_up = up;
    }
    void create2D51Channel() override
    {
        if (unsigned int const index = getNew2D51Index(); index != 0) {
            add2D51Channel(std::make_unique<Voice>(index, this));
        }
    }

private:
    D3DXVECTOR3 m_pos{0, 0, 0};
    D3DXVECTOR3 m_at{0, 0, -1};
    D3DXVECTOR3 m_up{0, 1, 0};
};

class MySoundFactory : public SoundSystemFactory {
public:
    String getType() const override { return "MINE"; }
    iSoundSystem *createInstance(String const &name) override
    {
        return std::make_unique<MySound>(name, getType()).release();
    }
};

std::unique_ptr<MySoundFactory> factory;

} // namespace

extern "C" QEL_API void dllStartPlugin()
{
    factory = std::make_unique<MySoundFactory>();
    SoundSystemManager::Instance().addSoundSystemFactory(factory.get());
}

extern "C" QEL_API void dllStopPlugin()
{
    if (SoundSystemManager *const manager = SoundSystemManager::InstancePtr()) {
        manager->removeSoundSystemFactory(factory.get());
    }
    factory.reset();
}
