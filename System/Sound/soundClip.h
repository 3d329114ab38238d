#pragma once

#include "System/Sound/ringBufferByte.h"
#include "System/System/export.h"

#include <cstdint>

namespace Qel {

class iSoundChannel;
class iSoundSource;
class iSoundSystem;

/// A sound whose samples the game writes itself, through a ring: a film's track, a voice over the network.
///
/// A back end makes its clips, reads the ring on the device's side, and says through dataReady when there is
/// enough to begin.
///
/// @code
/// if (clip->open(&source, 1 << 18)) {
///     clip->write(pcm, bytes);
///     clip->play(); // begins when the back end has enough
/// }
/// @endcode
///
/// @par Ownership  The sound system's. Channel and source are not owned.
class QEL_API iSoundClip {
public:
    iSoundClip(iSoundSystem *owner, iSoundChannel *voice, bool isMultichannel);
    iSoundClip(iSoundClip const &) = delete;
    iSoundClip &operator=(iSoundClip const &) = delete;
    virtual ~iSoundClip(); ///< as close()

    /// @param ringSize  bytes, a power of two
    /// @return isOpened(); false, too, for a clip that was open already or has no channel
    virtual bool open(iSoundSource *newSource, unsigned int ringSize);
    virtual void close(); ///< stops, and frees the ring
    virtual bool isOpened() const { return opened; }
    virtual bool isPlaying() const;
    virtual bool isFinished() const; ///< true also without a usable channel
    virtual bool alreadyPlayed() const;
    virtual bool
    play(); ///< @return false if it is not open or plays already; true also while it waits for data
    virtual void update(float dt);
    virtual void stop(unsigned int ms);
    virtual void setPause(bool pause, bool fade);
    virtual bool setSpeakerSettings(bool front, bool rear, bool centerLFE); ///< @return isOpened()
    virtual float getTime() const { return time; }                          ///< seconds played
    virtual void setTime(float seconds) { time = seconds; }

    /// Appends samples. @return true if all of them found room; what did is taken in any case
    virtual bool write(unsigned char *data, unsigned int size);
    virtual unsigned int getWriteable() const; ///< bytes of room
    virtual unsigned int getReadable() const;  ///< bytes that wait to be played
    virtual void setVolume1(float volume);
    virtual float getVolume1() const;
    virtual void setVolume2(float volume);
    virtual float getVolume2() const;

    iSoundChannel *getChannel() const { return channel; }
    iSoundSource *getSoundSource() const { return source; }
    bool isValid() const { return valid; } ///< Was it made with a system and a channel?
    bool isMultiChannelClip() const { return multichannel; }
    void setMultiChannelClip(bool on) { multichannel = on; }
    bool isPlayRequested() const { return playRequested; } ///< Does play() wait for data?
    void setEOFReached() { eofReached = true; }            ///< the game has no more to write
    bool isEOFReached() const { return eofReached; }
    bool isEOFAndBufferDried() const { return bufferDried; } ///< and the device has played all of it
    void resetEOFAndBufferDried() { bufferDried = false; }
    void _forget(iSoundChannel const *gone); ///< it is not this clip's any more

protected:
    iSoundSystem *system;
    iSoundChannel *channel;
    iSoundSource *source = nullptr;
    bool dataReady = false; ///< the back end's: enough lies in the ring to begin
    bool front = false;
    bool rear = false;
    bool centerLFE = false;
    bool valid;
    bool multichannel;
    bool opened = false;
    bool playRequested = false;
    bool eofReached = false;
    bool bufferDried = false;    ///< the back end's
    std::uint32_t chunkSize = 0; ///< bytes, for the back end
    float time = 0.0f;           ///< seconds
    RingBufferByte ring;

private:
    bool m_lostChannel = false;
};

} // namespace Qel
