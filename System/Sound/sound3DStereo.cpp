#include "System/Sound/sound3DStereo.h"

#include "System/Sound/soundChannel.h"
#include "System/Sound/soundSystem.h"
#include "System/Sound/soundVorbis.h"
#include "System/Sound/stereoCalc.h"

namespace Qel {

namespace {

bool openStream(iSoundVorbis *stream, iSoundSource &source, iSoundChannel *channel)
{
    if (!stream->open(&source, channel)) {
        return false;
    }
    stream->resetStandAlone();
    stream->_prefill();
    return true;
}

bool isOver(iSoundVorbis const *stream)
{
    return stream->getChannel() == nullptr || stream->getChannel()->isFinished();
}

bool isOver(iSoundChannel const *channel)
{
    return channel != nullptr && channel->isFinished();
}

} // namespace

iSound3DStereo::~iSound3DStereo()
{
    iSound3DStereo::close();
    // Streams live on until their next turn, but what they play does not.
    for (iSoundVorbis *const stream : {m_leftStream, m_rightStream, m_lfeStream}) {
        if (stream != nullptr) {
            stream->setStandAlone(); // so that the next pass takes it
            stream->close();
            stream->_forget(stream->getChannel());
        }
    }
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
    m_hasLost = false;
    m_leftSource = m_rightSource = m_lfeSource = *source;
    m_left = left;
    m_right = right;
    m_lfe = lfe;
    m_leftStream = leftStream;
    m_rightStream = rightStream;
    m_lfeStream = lfeStream;
    unsigned int size = 0;
    unsigned char *const companion = source->getCompanionData(size);
    m_rightSource.setResourceName(source->getCompanionName());
    m_rightSource.setData(companion, size);
    if (lfe != nullptr) {
        m_lfeSource.setResourceName(source->getCompanionName());
        m_lfeSource.setData(companion, size);
        m_lfeSource.setLFEOnly();
        m_lfeSource.force2D(); // its voice is one of the 2D channels, and goes back to those
    }
    if (source->is2DForced()) {
        m_leftSource.setFrontLeftOnly();
        m_rightSource.setFrontRightOnly();
    }
    if (hasStreams()) {
        opened = openStream(leftStream, m_leftSource, left) &&
                 openStream(rightStream, m_rightSource, right) &&
                 (lfeStream == nullptr || openStream(lfeStream, m_lfeSource, lfe));
    } else {
        opened = left->init(&m_leftSource) && right->init(&m_rightSource) &&
                 (lfe == nullptr || lfe->init(&m_lfeSource));
    }
    return opened;
}

void iSound3DStereo::close()
{
    stop(0);
    if (m_isCounted) {
        parent->setStopped();
        m_isCounted = false;
    }
    opened = false;
}

bool iSound3DStereo::play()
{
    if (!opened) {
        return false;
    }
    bool const isPlaying = hasStreams() ? m_leftStream->play() && m_rightStream->play() &&
                                              (m_lfeStream == nullptr || m_lfeStream->play())
                                        : m_left != nullptr && m_right != nullptr && m_left->play(0) &&
                                              m_right->play(0) && (m_lfe == nullptr || m_lfe->play(0));
    if (isPlaying && !m_isCounted) {
        m_isCounted = true;
        parent->setPlaying(); // once for all voices
    }
    return isPlaying;
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
    params.position = left;
    m_leftSource.setSoundParams(params, true);
    params.position = right;
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
    for (iSoundVorbis *const stream : {m_leftStream, m_rightStream, m_lfeStream}) {
        if (stream != nullptr) {
            stream->update(dt);
        }
    }
    if (isFinished()) {
        close();
    }
}

void iSound3DStereo::stop(unsigned int ms)
{
    if (system == nullptr) {
        return;
    }
    if (hasStreams()) {
        for (iSoundVorbis *const stream : {m_leftStream, m_rightStream, m_lfeStream}) {
            if (stream != nullptr) {
                stream->stop(ms);
            }
        }
        return;
    }
    for (iSoundChannel *const channel : {m_left, m_right, m_lfe}) {
        if (channel != nullptr) {
            system->stopChannel(channel->getIndex(), ms);
        }
    }
}

void iSound3DStereo::_forget(iSoundChannel const *gone)
{
    for (iSoundChannel **const channel : {&m_left, &m_right, &m_lfe}) {
        if (*channel == gone) {
            *channel = nullptr;
            m_hasLost = true;
        }
    }
}

void iSound3DStereo::_forget(iSoundVorbis const *gone)
{
    for (iSoundVorbis **const stream : {&m_leftStream, &m_rightStream, &m_lfeStream}) {
        if (*stream == gone) {
            *stream = nullptr;
            m_hasLost = true;
        }
    }
}

bool iSound3DStereo::isFinished() const
{
    if (m_hasLost) {
        return true;
    }
    if (hasStreams()) {
        if (isOver(m_leftStream) || isOver(m_rightStream)) {
            return true;
        }
        return m_lfeStream != nullptr && m_lfeStream->isEOFReached() && m_lfeStream->isFinished();
    }
    return isOver(m_left) || isOver(m_right) || isOver(m_lfe);
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
