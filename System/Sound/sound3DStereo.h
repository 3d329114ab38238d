#pragma once

#include "System/Sound/soundSource.h"
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
    virtual iSoundVorbis *getLeftVorbis() const { return m_leftStream; }
    virtual iSoundVorbis *getRightVorbis() const { return m_rightStream; }
    virtual iSoundVorbis *getLFEVorbis() const { return m_lfeStream; }
    virtual unsigned int getUniqueID() const;    ///< the parent's
    virtual unsigned char getSoundGroup() const; ///< the parent's
    virtual float getMinDistance() const;        ///< the parent's
    virtual float getMaxDistance() const;        ///< the parent's

    void _forget(iSoundChannel const *gone); ///< it is not this sound's any more, which ends the sound
    void _forget(iSoundVorbis const *gone);

protected:
    bool hasStreams() const { return m_leftStream != nullptr && m_rightStream != nullptr; }

    iSoundSystem *system;
    iSoundSource *parent = nullptr; ///< the game's
    iSoundChannel *m_left = nullptr;
    iSoundChannel *m_right = nullptr;
    iSoundChannel *m_lfe = nullptr;
    iSoundVorbis *m_leftStream = nullptr;
    iSoundVorbis *m_rightStream = nullptr;
    iSoundVorbis *m_lfeStream = nullptr;
    bool opened = false;
    iSoundSource m_leftSource; ///< what the channels play
    iSoundSource m_rightSource;
    iSoundSource m_lfeSource;

private:
    bool m_isCounted = false; // as a play of its parent
    bool m_hasLost = false;   // a voice
};

} // namespace Qel
