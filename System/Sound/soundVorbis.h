#pragma once

#include "System/System/export.h"

#include <cstdint>
#include <memory>

namespace Qel {

class iSoundChannel;
class iSoundSource;
class iSoundSystem;

// Its owner deletes it as what it is: there is no virtual destructor in its table.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A sound that is decoded while it plays, from an Ogg Vorbis file or from its image in memory.
///
/// It feeds its channel in four segments: all four are filled ahead of play(), and from then on those that
/// the channel's update() asks for. 16-bit PCM, interleaved; six channels come as left, right, centre,
/// subwoofer, rear left, rear right.
///
/// @par Limits     1, 2 and 6 channels; another count gives silence. A chained file ends where that changes.
/// @par Ownership  The sound system's; a 3D stereo or subwoofer sound's while it is not stand-alone. Channel
///                 and source are not owned.
class QEL_API iSoundVorbis {
public:
    explicit iSoundVorbis(iSoundSystem *owner);
    ~iSoundVorbis(); ///< as close()

    /// Deletes it as an iSoundVorbis, whatever was made, and its memory as a whole.
    static void _destroy(iSoundVorbis *stream);

    iSoundVorbis(iSoundVorbis const &) = delete;
    iSoundVorbis &operator=(iSoundVorbis const &) = delete;

    /// Opens the source's data, or without any the file of its name, and goes to its current time. Channel
    /// count and rate of the source become those of the file.
    /// @return false if that is no Ogg Vorbis, or the channel does not take the source; all is closed then
    virtual bool open(iSoundSource *newSource, iSoundChannel *newChannel);
    virtual void close();
    virtual bool
    play(); ///< fills the first segment and starts the channel. @return false if it plays already
    virtual void update(float dt);
    virtual bool stop(unsigned int ms); ///< false if it is not open
    virtual void setPause(bool pause, bool fade);
    virtual bool setSpeakerSettings(bool frontOn, bool rearOn, bool centerLFEOn); ///< stored. @return true

    /// Decodes a segment. At the end of the data it goes round or sets isEOFReached().
    /// @param segmentBit  1, 2, 4 or 8
    /// @param maxBytes    up to a segment's size
    /// @return bytes that lie in the buffer then; 0 at the end
    virtual unsigned int stream(unsigned int segmentBit, unsigned int maxBytes);
    virtual float getTime() const { return time; }
    virtual void setTime(float seconds) { time = seconds; }
    virtual void setVolume1(float volume);
    virtual float getVolume1() const; ///< 1 if it is not open
    virtual void setVolume2(float volume);
    virtual float getVolume2() const; ///< 1 if it is not open

    /// Reads how many channels the source's sound has. @return 0 if that cannot be read
    unsigned int getNumChannels(iSoundSource *source);

    bool isOpened() const { return opened; }
    bool isEOFReached() const { return eof; }
    bool allBufferFilled() const; ///< open, and every segment has been filled once
    bool isFinished() const;      ///< true without a channel
    iSoundChannel *getChannel() const { return channel; }
    unsigned char getSoundGroup() const;
    /// Of the channel's source, also once the channel has been given back; 0 without a usable channel.
    unsigned int getUniqueID() const;
    bool isStandAlone() const { return standAlone; } ///< Does the system update and destroy it by itself?
    void setStandAlone() { standAlone = true; }
    void resetStandAlone() { standAlone = false; }

    unsigned int getBytePosition() const
    {
        return bytePosition;
    } ///< decoded since the start or the last round

    void _forget(iSoundChannel const *gone); ///< it is not this stream's any more; its id is kept

    /// Fills segments until all are filled, the end comes, or nothing more does.
    void _prefill();

    /// @name Helpers
    /// @{

    /// Turns samples of -1 .. 1 into 16 bits.
    /// @param stride  from one sample of @p out to the next
    static void transform_float_I16(float const *in, short *out, unsigned int count, unsigned int stride);
    /// The same for two planes side by side, and for six, of which one that is null is silent.
    static void transformStereo(float const *left, float const *right, short *out, unsigned int count);
    static void transformSix(float const *const *planes, short *out, unsigned int count);
    static char const *oggErrorString(int code);

    /// Reads the head of a WAV image.
    /// @param data  the image
    /// @param size  its size in bytes
    /// @return true if it is 16-bit PCM; the payload's place, channels and rate are then this stream's
    bool checkHeaderWAV(unsigned char const *data, unsigned int size, char const *name);
    bool checkHeaderWAV(unsigned char const *data, char const *name); ///< as large as its head says
    /// @}

private:
    struct Decoder;

    bool openDecoder(iSoundSource &source, bool isTold);
    bool rewindOrEnd();

    std::unique_ptr<Decoder> m_decoder;
    bool m_hasAdvanced = false; // since the start or the last round
    std::uint32_t m_lastId = 0; // of the source, when the channel was given back

protected:
    iSoundSystem *system;
    iSoundChannel *channel = nullptr;
    bool opened = false;
    std::uint8_t channels = 2;
    std::uint32_t segmentSize = 0; // bytes
    std::uint32_t sampleRate = 48000;
    std::uint32_t bytePosition = 0;
    bool standAlone = true;
    unsigned char *buffer = nullptr; // one segment
    bool segmentFilled[4] = {};
    bool eof = false;
    bool front = true;
    bool rear = true;
    bool centerLFE = true;
    float time = 0.0f;
};

#pragma GCC diagnostic pop

} // namespace Qel
