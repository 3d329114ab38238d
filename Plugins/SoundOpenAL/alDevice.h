#pragma once

#include "alReverb.h"
#include "waveFile.h"

#include "System/System/string.h"

#include <vector>

#include <AL/alext.h>

/// The output: a device of the machine, or one that only renders, into a WAV file or into nothing.
///
/// It makes all sources when it opens and lends them out.
class AlDevice {
public:
    struct Wanted {
        Qel::String name;          ///< empty for the usual device; "loopback" for the one that only renders
        Qel::String file;          ///< to be rendered into; empty for none
        unsigned int rate = 48000; ///< Hz, where it is for us to choose
        unsigned int speakers = 2; ///< the same: 2, 4, 6, 7 or 8
    };

    AlDevice() = default;
    AlDevice(AlDevice const &) = delete;
    AlDevice &operator=(AlDevice const &) = delete;
    ~AlDevice() { close(); }

    /// Opens the device, or where there is none the one that only renders.
    /// @return false, with a line in the log, if the file cannot be written or nothing can be opened
    bool open(Wanted const &wanted);

    /// The same again after it was lost. All sources and buffers have gone; the file goes on.
    bool openAgain();
    void close();

    bool isOpen() const { return m_context != nullptr; }
    bool isLost() const;
    bool rendersItself() const { return m_render != nullptr; }
    unsigned int speakers() const { return m_speakers; }
    unsigned int rate() const { return m_rate; }
    unsigned int numSources() const { return m_numSources; }
    ALCdevice *device() const { return m_device; }
    ALCcontext *context() const { return m_context; }
    AlReverb &reverb() { return m_reverb; }

    void use() const; ///< makes its context the current one

    ALuint takeSource(); ///< 0 if none is left
    void giveBack(ALuint source);

    /// Lets time pass where it renders itself.
    void render(float seconds);

    /// @return the format of 16-bit samples; AL_NONE if the device has none for so many channels
    static ALenum formatOf(unsigned int channels);

private:
    bool openDevice();
    bool openLoopback();
    bool makeContext(ALCint const *attributes);
    void closeDevice();

    Wanted m_wanted;
    ALCdevice *m_device = nullptr;
    ALCcontext *m_context = nullptr;
    LPALCRENDERSAMPLESSOFT m_render = nullptr;
    AlReverb m_reverb;
    WaveFile m_file;
    std::vector<ALuint> m_sources; // free ones
    unsigned int m_numSources = 0;
    unsigned int m_speakers = 2;
    unsigned int m_rate = 48000;
    double m_owed = 0; // frames that are not whole yet
    std::vector<float> m_block;
};
