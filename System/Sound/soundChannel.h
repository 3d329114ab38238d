#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/Sound/soundSource.h"
#include "System/System/export.h"
#include "System/System/string.h"

#include <cstdint>

namespace Qel {

class iSoundSystem;

/// One voice: all of it that does not depend on the audio device.
///
/// A back end derives its channel from this class and adds the device calls. It sets isPlaying() and
/// isFinished() through setPlaying() and setFinished(), and moves its volume along a fade:
///
/// - fadeUp() and fadeDown() note the target and the speed, in volume a second, or -1 for at once;
/// - its update() moves the device's volume by that, and calls resetFade() at the end, or setFinished() where
///   stopAfterFade() says so.
///
/// Operations on the source do nothing, and give 0, false or an empty text, while isChannelInited() is false.
///
/// @par Ownership  The sound system owns its channels; the source is the game's.
/// @par Threads    The thread that runs iSoundSystem::update().
class QEL_API iSoundChannel {
public:
    /// @param number  its own in the system's table, not 0
    iSoundChannel(unsigned int number, iSoundSystem *owner) : system(owner), index(number) {}
    iSoundChannel(iSoundChannel const &) = delete;
    iSoundChannel &operator=(iSoundChannel const &) = delete;
    virtual ~iSoundChannel();

    /// Takes a source, after stopping what it had. A sound of no volume is taken only if it plays on pause.
    /// @return isChannelInited()
    virtual bool init(iSoundSource *newSource);
    virtual bool init_play(iSoundSource *newSource, unsigned int fadeInMs); ///< init(), then play()
    virtual bool play(unsigned int fadeInMs);  ///< @return false, after stop(0), without a usable source
    virtual void stop(unsigned int fadeOutMs); ///< here it only notes that the fade is to end it

    /// Follows changes of the source. Called once a frame by whoever plays the channel.
    /// @return which segments of a stream the device has played and wants filled again, bits 0 to 3; 0 here
    virtual unsigned int update(float dt);
    virtual bool setParams(); ///< hands all parameters on, and draws a pitch if it varies

    /// Here a pause is noted; a back end silences the device, and ends the pause of a resume without a fade.
    virtual void setPause(bool pause, bool fade);
    virtual void fadeUp(float target, unsigned int ms);
    virtual void fadeDown(float target, unsigned int ms);
    virtual void setActualVolume(float volume); ///< on the device, 0 to 1; nothing here
    virtual bool updateVolume(); ///< works the volume and the low-pass out, and steps the ducking
    virtual bool setPosition(D3DXVECTOR3 const &position);
    virtual bool getPosition(D3DXVECTOR3 &position);

    /// Takes a segment of a stream.
    /// @param segmentBit  1, 2, 4 or 8
    /// @param data        @p size bytes of 16-bit PCM, good during the call
    virtual bool fillBuffer(unsigned int segmentBit, unsigned char const *data, unsigned int size);
    virtual void const *getChannelHandle() const; ///< of the device; null here

    bool isChannelInited() const { return inited && source != nullptr; }
    void setChannelInited() { inited = true; }
    void resetChannelInited() { inited = false, source = nullptr; }
    void setCustomFlag() { customFlag = true; } ///< the back end's
    void resetCustomFlag() { customFlag = false; }
    bool getCustomFlag() const { return customFlag; }
    bool is3DChannel() const { return channel3D; } ///< placed in 3D: a mono sound where 2D is not forced
    unsigned int getIndex() const { return index; }
    unsigned int getStartTime() const { return startTime; } ///< ms of Root's timer at play()
    String const &getTypeDesc() const { return typeText; } ///< "2D", "3D", "5.1", "SS" or "LFE", after play()
    float getActualVolume() const { return actualVolume; } ///< as updateVolume() made it, without the master
    float getLowPass() const { return lowPass; }           ///< 0 to 1; 1 lets all pass

    /// @name State
    /// @{
    void setPlaying();
    bool isPlaying() const { return has(PLAYING); }
    bool alreadyPlayed() const { return has(PLAYED); } ///< Has it played at all?
    bool isPaused() const { return has(PAUSED); }
    void setFinished();
    bool isFinished() const { return has(FINISHED); }
    bool isFadingUp() const { return has(FADING_UP); }
    bool isFadingDown() const { return has(FADING_DOWN); }
    void resetFade() { status &= ~(FADING_UP | FADING_DOWN); }
    void setstopAfterFade() { status |= STOP_AFTER_FADE; }
    bool stopAfterFade() const { return has(STOP_AFTER_FADE); }
    void resetStatus() { status = 0; }
    float getFadeTarget() const { return fadeTarget; }
    float getFadeSpeed() const { return fadeSpeed; } ///< volume a second; -1 for at once
    /// @}

    /// @name Priority
    /// @{
    ePriority getPriority() const { return priority; }
    void setPriority(ePriority newPriority) { priority = newPriority; }
    void increasePriority(); ///< towards 0
    void decreasePriority(); ///< towards 14
    /// @}

    /// @name Ducking: other sounds ask for it, see iSoundSystem::updateDucking()
    /// @{
    void setDucking();   ///< down to 0.6, in steps of 0.02
    void resetDucking(); ///< up to 1 again
    bool isDucked() const;
    bool isDuckingComplete() const { return duckingTarget == duckingLevel; }
    float getActualDuckingVolume() const { return duckingLevel; }
    bool hasDuckingRequest() const { return duckingRequest; } ///< Does this voice duck the others?
    void resetDuckingRequest() { duckingRequest = false; }
    /// @}

    /// @name Of the source
    /// @{
    iSoundSource *getSoundSource() const { return isChannelInited() ? source : nullptr; }
    sSoundParams const &getSoundParams() const; ///< defaults without a usable source
    String const &getResourceName() const;      ///< empty without a usable source
    void setVolume1(float volume);
    float getVolume1() const;
    void setVolume2(float volume);
    float getVolume2() const;
    void setNumChannels(unsigned char count);
    unsigned char getNumChannels() const;
    void setSamplerate(unsigned short hz);
    unsigned int getUniqueID() const;
    unsigned char getSoundGroup() const;
    void setVolChanged();
    bool isLocalDuckingOn() const { return isChannelInited() && source->isLocalDuckingOn(); }
    bool isDuckingLowPassOn() const { return isChannelInited() && source->isDuckingLowPassOn(); }
    bool useLowPassFiltering() const { return isChannelInited() && source->useLowPassFiltering(); }
    bool isStream() const { return isChannelInited() && source->isStream(); }
    bool is3DStereo() const { return isChannelInited() && source->is3DStereo(); }
    bool is3DSubwoofer() const { return isChannelInited() && source->is3DSubwoofer(); }
    bool is51Sound() const { return isChannelInited() && source->is51Sound(); }
    bool isStreamRequested() const { return isChannelInited() && source->isStreamRequested(); }
    /// @}

protected:
    /// Moves a device's volume along the fade, and ends the fade at its target: for a back end's update().
    /// @param volume  on the device, 0 to 1
    /// @return true if that was the end of a fade that ends the sound
    bool moveFade(float dt, float &volume);

    /// Plays again after a pause, and goes on to fade out if it was on its way out: for a back end's
    /// setPause().
    void endPause();

    enum Status : std::uint32_t {
        PLAYING = 0x01,
        PLAYED = 0x02,
        PAUSED = 0x04,
        FINISHED = 0x08,
        FADING_UP = 0x10,
        FADING_DOWN = 0x20,
        STOP_AFTER_FADE = 0x40,
    };

    bool has(Status bit) const { return (status & bit) != 0; }

    iSoundSystem *system; ///< the owner
    bool inited = false;  ///< Has it a usable source?
    bool customFlag = false;
    bool channel3D = false;
    std::uint32_t index; ///< in the system's table
    std::uint32_t status = 0;
    ePriority priority = PRIORITY_DEFAULT;
    std::uint32_t startTime = 0; ///< ms
    iSoundSource *source = nullptr;
    bool duckingRequest = false;
    float actualVolume = 0.0f;
    float duckingTarget = 1.0f;
    float duckingLevel = 1.0f;
    float fadeTarget = 0.0f;
    float fadeSpeed = 0.0f;
    float lowPass = 0.0f;
    String typeText;

private:
    friend class iSoundSystem;

    enum class Home : std::uint8_t { UNKNOWN, LIST_3D, LIST_2D51 };

    Home m_home = Home::UNKNOWN; // the free list that the system took it from
};

} // namespace Qel
