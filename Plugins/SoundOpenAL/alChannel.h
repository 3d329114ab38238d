#pragma once

#include "System/Sound/soundChannel.h"

#include <array>
#include <cstddef>
#include <deque>
#include <vector>

#include <AL/al.h>

class AlSound;

/// A voice on a source of the device. Sounds in memory are copied into a buffer of it; a stream's segments go
/// through a queue of four.
class AlChannel final : public Qel::iSoundChannel {
public:
    /// @param deviceSource  the device's; given back by the destructor
    AlChannel(unsigned int number, AlSound *owner, ALuint deviceSource);
    ~AlChannel() override;

    bool init(Qel::iSoundSource *newSource) override;
    bool play(unsigned int fadeInMs) override;
    void stop(unsigned int fadeOutMs) override;
    unsigned int update(float dt) override;
    bool setParams() override;
    void setPause(bool pause, bool fade) override;
    void setActualVolume(float volume) override;
    bool updateVolume() override;
    bool setPosition(D3DXVECTOR3 const &position) override;
    bool fillBuffer(unsigned int segmentBit, unsigned char const *data, unsigned int size) override;
    void const *getChannelHandle() const override { return &m_source; } ///< the number of the device's source

    void loseDevice(); ///< before its source and buffers go

    /// Goes on where it was, on a new device.
    /// @param newSource  0 if the device has none left: the sound ends
    void findDevice(ALuint newSource);

    void applyRoom(); ///< the room or its rules have changed

private:
    static constexpr std::size_t numSegments = 4;

    bool load();
    bool start();
    void startSource();
    bool queue(std::size_t segment);
    void useSpeakers(unsigned int channels);
    void goOn();
    unsigned int updateStream();
    void updateData();
    void end(bool isFinishedNow);
    void applyGain();
    void applyPlace();
    ALint sourceInteger(ALenum what) const;

    AlSound *m_owner;
    ALuint m_source;
    ALuint m_buffer = 0; // of a sound in memory
    std::array<ALuint, numSegments> m_segments{};
    std::array<std::vector<unsigned char>, numSegments> m_segmentData; // for another device
    std::deque<std::size_t> m_queue;                                   // segments in the device's queue
    ALint m_queueOffset = 0; // frames that were played of the queue, in the last update
    float m_volume = 1.0f;
    float m_seconds = 0.0f;   // that it has played
    bool m_isOn = false;      // between play and its end
    bool m_isCounted = false; // as a play of its source
    bool m_isFed = false;     // has a segment come since the last update?
    ALint m_passes = 1;       // of finite loops, in the queue
    ALint m_passesDone = 0;
};
