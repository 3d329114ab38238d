#include "System/Sound/sound3DSubwoofer.h"

#include "System/Sound/soundChannel.h"
#include "System/Sound/soundSystem.h"
#include "System/Sound/soundVorbis.h"

namespace Qel {

iSound3DSubwoofer::~iSound3DSubwoofer()
{
    iSound3DSubwoofer::close();
    // Streams live on until their next turn, but what they play does not.
    for (iSoundVorbis *const stream : {m_mainStream, m_lfeStream}) {
        if (stream != nullptr) {
            stream->setStandAlone(); // so that the next pass takes it
            stream->close();
            stream->_forget(stream->getChannel());
        }
    }
    parent = nullptr;
}

bool iSound3DSubwoofer::open(iSoundSource *source, iSoundChannel *main, iSoundChannel *lfe,
                             iSoundVorbis *mainStream, iSoundVorbis *lfeStream)
{
    if (source == nullptr || main == nullptr || lfe == nullptr) {
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
    m_lfeSource = *source;
    m_main = main;
    m_lfe = lfe;
    m_mainStream = mainStream;
    m_lfeStream = lfeStream;
    unsigned int size = 0;
    unsigned char *const companion = source->getCompanionData(size);
    m_lfeSource.setResourceName(source->getCompanionName());
    m_lfeSource.setData(companion, size);
    m_lfeSource.setLFEOnly();
    m_lfeSource.force2D(); // its voice is one of the 2D channels, and goes back to those
    if (hasStreams()) {
        auto const openStream = [](iSoundVorbis *stream, iSoundSource &from, iSoundChannel *channel) {
            if (!stream->open(&from, channel)) {
                return false;
            }
            stream->resetStandAlone();
            stream->_prefill();
            return true;
        };
        opened = openStream(mainStream, *parent, main) && openStream(lfeStream, m_lfeSource, lfe);
    } else {
        opened = main->init(parent) && lfe->init(&m_lfeSource);
    }
    return opened;
}

void iSound3DSubwoofer::close()
{
    stop(0);
    if (m_isCounted) {
        parent->setStopped();
        m_isCounted = false;
    }
    opened = false;
}

bool iSound3DSubwoofer::play()
{
    if (!opened) {
        return false;
    }
    bool const isPlaying = hasStreams()
                               ? m_mainStream->play() && m_lfeStream->play()
                               : m_main != nullptr && m_lfe != nullptr && m_main->play(0) && m_lfe->play(0);
    if (isPlaying && !m_isCounted) {
        m_isCounted = true;
        parent->setPlaying(); // once for both voices
    }
    return isPlaying;
}

void iSound3DSubwoofer::update(float dt)
{
    if (!opened) {
        return;
    }
    for (iSoundVorbis *const stream : {m_mainStream, m_lfeStream}) {
        if (stream != nullptr) {
            stream->update(dt);
        }
    }
    if (isFinished()) {
        close();
    }
}

void iSound3DSubwoofer::stop(unsigned int ms)
{
    if (system == nullptr) {
        return;
    }
    if (hasStreams()) {
        m_mainStream->stop(ms);
        m_lfeStream->stop(ms);
        return;
    }
    for (iSoundChannel *const channel : {m_main, m_lfe}) {
        if (channel != nullptr) {
            system->stopChannel(channel->getIndex(), ms);
        }
    }
}

void iSound3DSubwoofer::_forget(iSoundChannel const *gone)
{
    for (iSoundChannel **const channel : {&m_main, &m_lfe}) {
        if (*channel == gone) {
            *channel = nullptr;
            m_hasLost = true;
        }
    }
}

void iSound3DSubwoofer::_forget(iSoundVorbis const *gone)
{
    for (iSoundVorbis **const stream : {&m_mainStream, &m_lfeStream}) {
        if (*stream == gone) {
            *stream = nullptr;
            m_hasLost = true;
        }
    }
}

bool iSound3DSubwoofer::isFinished() const
{
    if (m_hasLost) {
        return true;
    }
    if (hasStreams()) {
        return m_mainStream->isFinished() || m_lfeStream->isFinished();
    }
    return (m_main != nullptr && m_main->isFinished()) || (m_lfe != nullptr && m_lfe->isFinished());
}

unsigned int iSound3DSubwoofer::getUniqueID() const
{
    return parent == nullptr ? 0 : parent->getUniqueID();
}

unsigned char iSound3DSubwoofer::getSoundGroup() const
{
    return parent == nullptr ? std::uint8_t{0} : parent->getSoundGroup();
}

} // namespace Qel
