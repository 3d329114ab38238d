#include "System/Sound/soundSource.h"

#include "Support/PoolHeap/poolHeap.h"

#include <cstring>

namespace Qel {

iSoundSource::iSoundSource(iSoundSource const &other)
{
    *this = other;
}

iSoundSource &iSoundSource::operator=(iSoundSource const &other)
{
    if (this == &other) {
        return *this;
    }
    freeOwned();
    status = other.status & ~static_cast<std::uint32_t>(EXCLUSIVE);
    playingCounter = other.playingCounter;
    currentTimeMS = other.currentTimeMS;
    data = other.data;
    dataSize = other.dataSize;
    companionData = other.companionData;
    companionDataSize = other.companionDataSize;
    resourceManagerID = other.resourceManagerID;
    resourceManagerCompanionID = other.resourceManagerCompanionID;
    resourceProfileID = other.resourceProfileID;
    uniqueID = other.uniqueID;
    params = other.params;
    resourceName = other.resourceName;
    fallbackName = other.fallbackName;
    companionName = other.companionName;
    m_image = other.m_image;
    m_imageSize = other.m_imageSize;
    m_stripped = other.m_stripped;
    return *this;
}

iSoundSource::~iSoundSource()
{
    freeOwned();
}

void iSoundSource::freeOwned()
{
    poolheap_free(m_block);
    m_block = nullptr;
}

void iSoundSource::init(sSoundParams const &newParams)
{
    reset();
    params = newParams;
    params.currentLoop = params.loopCount;
}

void iSoundSource::reset()
{
    *this = iSoundSource();
}

void iSoundSource::setSoundParams(sSoundParams const &newParams, bool markChanged)
{
    params = newParams;
    if (markChanged) {
        setParamChanged();
    }
}

void iSoundSource::setData(unsigned char *newData, unsigned int size)
{
    data = newData;
    dataSize = size;
    m_image = nullptr;
}

void iSoundSource::setCompanionData(unsigned char *newData, unsigned int size)
{
    companionData = newData;
    companionDataSize = size;
}

void iSoundSource::_stripData(unsigned char *payload, unsigned int size)
{
    if (m_image == nullptr || data != m_stripped) { // a second strip is of the same image
        m_image = data;
        m_imageSize = dataSize;
    }
    m_stripped = data = payload;
    dataSize = size;
}

void iSoundSource::_restoreData()
{
    // Data that the game has set since then are another image.
    if (m_image != nullptr && data == m_stripped) {
        data = m_image;
        dataSize = m_imageSize;
    }
    m_image = m_stripped = nullptr;
}

void iSoundSource::setDataExclusive(unsigned char const *newData, unsigned int size)
{
    // Copied first: the new data may stand in the block that goes.
    unsigned char *fresh = nullptr;
    if (newData != nullptr && size != 0) {
        fresh = static_cast<unsigned char *>(poolheap_malloc(size));
        if (fresh != nullptr) {
            std::memcpy(fresh, newData, size);
        }
    }
    if (has(EXCLUSIVE)) {
        freeOwned();
        set(EXCLUSIVE, false);
        data = nullptr;
    }
    m_image = nullptr;
    if (fresh != nullptr) {
        m_block = data = fresh;
        dataSize = size;
        set(EXCLUSIVE, true);
    } else if (newData != nullptr && size != 0) {
        data = nullptr;
        dataSize = 0;
    }
}

void iSoundSource::setPlaying()
{
    ++playingCounter;
    set(PLAYED_ONCE, true);
}

void iSoundSource::setStopped()
{
    if (playingCounter != 0) {
        --playingCounter;
    }
}

void iSoundSource::setWAVHeader(bool adpcm)
{
    set(WAV, true);
    if (adpcm) {
        set(ADPCM, true);
    }
    set(OGG, false);
    set(MP3, false);
}

void iSoundSource::setOGGHeader()
{
    set(WAV, false);
    set(MP3, false);
    set(OGG, true);
}

void iSoundSource::setMP3Header()
{
    set(WAV, false);
    set(OGG, false);
    set(MP3, true);
}

void iSoundSource::set51Sound()
{
    set(SOUND_51, true);
    set(STEREO_3D, false);
    set(SUBWOOFER_3D, false);
}

void iSoundSource::set3DStereo()
{
    if (!companionName.empty()) {
        set(SOUND_51, false);
        set(STEREO_3D, true);
    }
}

void iSoundSource::set3DSubwoofer()
{
    if (!companionName.empty() && !is2DForced()) {
        set(SOUND_51, false);
        set(SUBWOOFER_3D, true);
    }
}

void iSoundSource::setSpeaker(eSoundSpeaker speaker)
{
    params.singleSpeaker |= speaker;
    params.position = D3DXVECTOR3(0, 0, 0);
}

void iSoundSource::decCurrentLoop()
{
    if (params.loopCount != 0 && params.currentLoop != 0) {
        --params.currentLoop;
    }
}

} // namespace Qel
