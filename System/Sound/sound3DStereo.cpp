#include "System/Sound/sound3DStereo.h"

#include "System/Sound/stereoCalc.h"

namespace Qel {

iSound3DStereo::~iSound3DStereo()
{
    iSound3DStereo::close();
    m_voices.letGo();
    parent = nullptr;
}

bool iSound3DStereo::open(iSoundSource *source, iSoundChannel *left, iSoundChannel *right, iSoundChannel *lfe,
                          iSoundVorbis *leftStream, iSoundVorbis *rightStream, iSoundVorbis *lfeStream)
{
    if (source == nullptr || left == nullptr || right == nullptr) {
        return opened;
    }
    if (opened) {
        close();
    }
    if (!source->is2DForced() && !source->has3DInformation()) {
        source->force2D();
    }
    parent = source;
    m_leftSource = *source;
    SoundVoices::makeCompanion(m_rightSource, *source);
    SoundVoices::makeSubwoofer(m_lfeSource, *source);
    if (source->is2DForced()) {
        m_leftSource.setFrontLeftOnly();
        m_rightSource.setFrontRightOnly();
    }
    m_voices.set({{{left, leftStream, &m_leftSource},
                   {right, rightStream, &m_rightSource},
                   {lfe, lfeStream, &m_lfeSource}}});
    opened = m_voices.open();
    return opened;
}

void iSound3DStereo::close()
{
    stop(0);
    m_voices.setStopped(parent);
    opened = false;
}

bool iSound3DStereo::play()
{
    return opened && m_voices.play(*parent);
}

void iSound3DStereo::updateLeftRightPos(cStereoCalc *calc)
{
    if (!opened || calc == nullptr || parent->is2DForced()) {
        return;
    }
    sSoundParams params = parent->getSoundParams();
    D3DXVECTOR3 left;
    D3DXVECTOR3 right;
    calc->getPositions(params.position, left, right);
    // The loops that are left are each voice's own: the parent's stand where they began.
    params.position = left;
    params.currentLoop = m_leftSource.getCurrentLoop();
    m_leftSource.setSoundParams(params, true);
    params.position = right;
    params.currentLoop = m_rightSource.getCurrentLoop();
    if (left.x == right.x && left.y == right.y && left.z == right.z) {
        params.volume1 = 0.0f; // one point: the left voice carries the sound alone
    }
    m_rightSource.setSoundParams(params, true);
}

void iSound3DStereo::update(float dt, cStereoCalc *calc)
{
    if (!opened) {
        return;
    }
    updateLeftRightPos(calc);
    m_voices.update(dt);
    if (isFinished()) {
        close();
    }
}

void iSound3DStereo::stop(unsigned int ms)
{
    if (system != nullptr) {
        m_voices.stop(*system, ms);
    }
}

bool iSound3DStereo::isFinished() const
{
    return m_voices.isFinished();
}

unsigned int iSound3DStereo::getUniqueID() const
{
    return parent == nullptr ? 0 : parent->getUniqueID();
}

unsigned char iSound3DStereo::getSoundGroup() const
{
    return parent == nullptr ? std::uint8_t{0} : parent->getSoundGroup();
}

float iSound3DStereo::getMinDistance() const
{
    return parent == nullptr ? 0.0f : parent->getSoundParams().minDistance;
}

float iSound3DStereo::getMaxDistance() const
{
    return parent == nullptr ? 0.0f : parent->getSoundParams().maxDistance;
}

} // namespace Qel
