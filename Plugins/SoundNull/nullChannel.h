#pragma once

#include "voiceLog.h"

#include "System/Sound/soundChannel.h"

#include <cstdint>
#include <deque>

class NullClip;
class NullSound;

/// A voice that plays by the time of its updates.
class NullChannel final : public Qel::iSoundChannel {
public:
    NullChannel(unsigned int number, NullSound *owner);

    bool init(Qel::iSoundSource *newSource) override;
    bool play(unsigned int fadeInMs) override;
    void stop(unsigned int fadeOutMs) override;
    unsigned int update(float dt) override;
    void setPause(bool pause, bool fade) override;
    void setActualVolume(float volume) override { m_volume = volume; }
    bool fillBuffer(unsigned int segmentBit, unsigned char const *data, unsigned int size) override;

    void setClip(NullClip *clip) { m_clip = clip; }    ///< which it plays until the next init()
    float getDeviceVolume() const { return m_volume; } ///< where the fade is, 0 to 1

private:
    struct Segment {
        unsigned int bit;
        double frames; // left to be played
    };

    unsigned int playStream(double frames);
    void playData(double frames);
    void end(VoiceEvent event);
    double framesOf(unsigned int bytes) const;
    void note(VoiceEvent event);

    NullSound *m_owner;
    NullClip *m_clip = nullptr;
    float m_volume = 1.0f;
    bool m_isOn = false;         // between play and its end
    bool m_isCounted = false;    // as a play of its source
    double m_length = 0.0;       // frames of one pass
    double m_position = 0.0;     // frames of this pass
    double m_played = 0.0;       // seconds
    double m_owed = 0.0;         // frames that were due before a segment was there
    std::deque<Segment> m_queue; // of a stream
    bool m_isFed = false;        // has a segment come since the last update?
};
