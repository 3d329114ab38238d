#pragma once

#include "System/Sound/soundSource.h"
#include "System/Sound/soundVoices.h"
#include "System/System/export.h"

namespace Qel {

class cStereoCalc;
class iSoundChannel;
class iSoundSystem;
class iSoundVorbis;

/// A sound of two mono files that has a place in the world and keeps its stereo image, see cStereoCalc.
///
/// The channels play sources of its own, which follow the game's, the parent, in every update. Either voice's
/// end is the end of both. A subwoofer voice may go with them.
///
/// @par Ownership  The sound system's. Parent, channels and streams are not owned.
class QEL_API iSound3DStereo {
private:
    virtual void updateLeftRightPos(cStereoCalc *calc);

public:
    explicit iSound3DStereo(iSoundSystem *owner) : system(owner) {}
    iSound3DStereo(iSound3DStereo const &) = delete;
    iSound3DStereo &operator=(iSound3DStereo const &) = delete;
    virtual ~iSound3DStereo(); ///< as close()

    /// @param lfe         null for no subwoofer voice
    /// @param leftStream,rightStream  both, for sounds that are decoded while they play, or null
    /// @return is it open? Without source, left or right channel nothing is changed
    virtual bool open(iSoundSource *source, iSoundChannel *left, iSoundChannel *right, iSoundChannel *lfe,
                      iSoundVorbis *leftStream, iSoundVorbis *rightStream, iSoundVorbis *lfeStream);
    virtual void close();
    virtual bool play(); ///< false at the first voice that fails
    virtual void update(float dt, cStereoCalc *calc);
    virtual void stop(unsigned int ms);
    virtual bool isFinished() const;
    virtual iSoundVorbis *getLeftVorbis() const { return m_voices.voices[0].stream; }
    virtual iSoundVorbis *getRightVorbis() const { return m_voices.voices[1].stream; }
    virtual iSoundVorbis *getLFEVorbis() const { return m_voices.voices[2].stream; }
    virtual unsigned int getUniqueID() const;    ///< the parent's
    virtual unsigned char getSoundGroup() const; ///< the parent's
    virtual float getMinDistance() const;        ///< the parent's
    virtual float getMaxDistance() const;        ///< the parent's

    void _forget(iSoundChannel const *gone) { m_voices.forget(gone); } ///< not this sound's any more: it ends
    void _forget(iSoundVorbis const *gone) { m_voices.forget(gone); }

protected:
    iSoundSystem *system;
    iSoundSource *parent = nullptr; ///< the game's
    SoundVoices m_voices;           ///< left, right, subwoofer
    bool opened = false;
    iSoundSource m_leftSource; ///< what the channels play
    iSoundSource m_rightSource;
    iSoundSource m_lfeSource;
};

} // namespace Qel
