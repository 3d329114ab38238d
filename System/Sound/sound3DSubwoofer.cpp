#include "System/Sound/sound3DSubwoofer.h"

namespace Qel {

iSound3DSubwoofer::~iSound3DSubwoofer()
{
    iSound3DSubwoofer::close();
    m_voices.letGo();
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
    SoundVoices::makeSubwoofer(m_lfeSource, *source);
    m_voices.set({{{main, mainStream, parent}, {lfe, lfeStream, &m_lfeSource}, {}}});
    opened = m_voices.open();
    return opened;
}

void iSound3DSubwoofer::close()
{
    stop(0);
    m_voices.setStopped(parent);
    opened = false;
}

bool iSound3DSubwoofer::play()
{
    return opened && m_voices.play(*parent);
}

void iSound3DSubwoofer::update(float dt)
{
    if (!opened) {
        return;
    }
    m_voices.update(dt);
    if (isFinished()) {
        close();
    }
}

void iSound3DSubwoofer::stop(unsigned int ms)
{
    if (system != nullptr) {
        m_voices.stop(*system, ms);
    }
}

bool iSound3DSubwoofer::isFinished() const
{
    return m_voices.isFinished();
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
