#pragma once

#include "System/Sound/soundSystemTypes.h"

#include <AL/al.h>
#include <AL/alc.h>

/// The room that the listener stands in, as the reverb of one effect slot, and low-pass filters. Of a
/// context; all of it does nothing where the device has no effects.
class AlReverb {
public:
    AlReverb() = default;
    AlReverb(AlReverb const &) = delete;
    AlReverb &operator=(AlReverb const &) = delete;

    void open(ALCdevice *device); ///< for the current context
    void close();                 ///< before the context goes

    bool isThere() const { return m_slot != 0; }
    void setRoom(Qel::eListenerRoom room);
    void setWet(float volume);

    /// Sends a source into the room, or not.
    void send(ALuint source, bool on) const;

    /// @param pass  0 to 1 of what is high; 1 lets all pass
    void filter(ALuint source, float pass) const;

private:
    ALuint m_slot = 0;
    ALuint m_effect = 0;
    ALuint m_filter = 0;
    bool m_isFull = false; // has it all that the presets tell?
    Qel::eListenerRoom m_room = Qel::ROOM_NONE;
    float m_wet = 1;
};
