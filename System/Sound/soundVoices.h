#pragma once

#include "System/Sound/soundSource.h"
#include "System/System/export.h"

#include <array>
#include <cstddef>

namespace Qel {

class iSoundChannel;
class iSoundSystem;
class iSoundVorbis;

/// The voices of one sound that starts, stops and ends as a whole: two that it cannot do without, and maybe a
/// third on the subwoofer. They play on streams if the first two have one, else on their channels alone.
///
/// @par Ownership  Channels, streams and sources are not owned.
class QEL_API SoundVoices {
public:
    struct Voice {
        iSoundChannel *channel = nullptr;
        iSoundVorbis *stream = nullptr;
        iSoundSource *source = nullptr; ///< what it plays
    };

    std::array<Voice, 3> voices;

    bool hasStreams() const { return voices[0].stream != nullptr && voices[1].stream != nullptr; }

    void set(std::array<Voice, 3> const &newVoices); ///< in place of those before, none of them lost
    bool open(); ///< false at the first voice that does not take its source

    /// Starts them; the parent counts it once for all of them, until setStopped().
    /// @return false at the first voice that fails
    bool play(iSoundSource &parent);
    void setStopped(iSoundSource *parent); ///< takes the count back
    void update(float dt);                 ///< of the streams
    void stop(iSoundSystem &system, unsigned int ms);

    /// Has one of the first two ended, or been lost? A stream on the subwoofer ends all at its data's end, a
    /// channel there by itself.
    bool isFinished() const;

    void forget(iSoundChannel const *gone); ///< it is lost to this sound
    void forget(iSoundVorbis const *gone);
    void letGo(); ///< closes the streams and leaves them to the system

    /// Makes a source the companion of another one, for the subwoofer alone. Its voice is one of the 2D
    /// channels, and goes back to those.
    static void makeSubwoofer(iSoundSource &source, iSoundSource const &parent);

    /// Gives a source the companion's name and data of another one.
    static void makeCompanion(iSoundSource &source, iSoundSource const &parent);

private:
    bool m_isCounted = false; // as a play of the parent
    bool m_hasLost = false;   // a voice
};

} // namespace Qel
