#pragma once

#include "System/Sound/soundSource.h"
#include "System/Sound/soundVoices.h"
#include "System/System/export.h"

namespace Qel {

class iSoundChannel;
class iSoundSystem;
class iSoundVorbis;

/// A sound with a second file that the subwoofer alone plays. The main voice plays the game's source, the
/// parent, directly; either voice's end is the end of both.
///
/// @par Ownership  The sound system's. Parent, channels and streams are not owned.
class QEL_API iSound3DSubwoofer {
public:
    explicit iSound3DSubwoofer(iSoundSystem *owner) : system(owner) {}
    iSound3DSubwoofer(iSound3DSubwoofer const &) = delete;
    iSound3DSubwoofer &operator=(iSound3DSubwoofer const &) = delete;
    virtual ~iSound3DSubwoofer(); ///< as close()

    /// @param mainStream,lfeStream  both, for sounds that are decoded while they play, or null
    /// @return is it open? Without source, main or subwoofer channel nothing is changed
    virtual bool open(iSoundSource *source, iSoundChannel *main, iSoundChannel *lfe, iSoundVorbis *mainStream,
                      iSoundVorbis *lfeStream);
    virtual void close();
    virtual bool play(); ///< false at the first voice that fails
    virtual void update(float dt);
    virtual void stop(unsigned int ms);
    virtual bool isFinished() const;
    virtual iSoundVorbis *getVorbis() const { return m_voices.voices[0].stream; }
    virtual iSoundVorbis *getLFEVorbis() const { return m_voices.voices[1].stream; }
    virtual unsigned int getUniqueID() const;    ///< the parent's
    virtual unsigned char getSoundGroup() const; ///< the parent's

    void _forget(iSoundChannel const *gone) { m_voices.forget(gone); } ///< not this sound's any more: it ends
    void _forget(iSoundVorbis const *gone) { m_voices.forget(gone); }

protected:
    iSoundSystem *system;
    iSoundSource *parent = nullptr; ///< the game's
    SoundVoices m_voices;           ///< main, subwoofer
    bool opened = false;
    iSoundSource m_lfeSource; ///< what the subwoofer plays
};

} // namespace Qel
