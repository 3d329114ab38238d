#include "System/Sound/soundVorbis.h"

#include "System/Sound/soundChannel.h"
#include "System/Sound/soundSystem.h"
#include "System/System/logManager.h"

#include "Support/OS/file.h"
#include "Support/PoolHeap/poolHeap.h"

#define OV_EXCLUDE_STATIC_CALLBACKS
#include <vorbis/vorbisfile.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

namespace Qel {

namespace {

constexpr unsigned int numSegments = 4;
constexpr unsigned int scratchSize = 16384;
constexpr unsigned int segmentPerChannel = 24576;

struct Memory {
    unsigned char const *data = nullptr;
    std::uint32_t size = 0;
    std::uint32_t position = 0; // one past the size after a seek to the end
};

std::size_t readMemory(void *to, std::size_t size, std::size_t count, void *source)
{
    auto &memory = *static_cast<Memory *>(source);
    if (memory.position >= memory.size) {
        return 0;
    }
    std::size_t const bytes = std::min<std::size_t>(size * count, memory.size - memory.position);
    std::memcpy(to, memory.data + memory.position, bytes);
    memory.position += static_cast<std::uint32_t>(bytes);
    return bytes;
}

int seekMemory(void *source, ogg_int64_t offset, int whence)
{
    auto &memory = *static_cast<Memory *>(source);
    auto const limited = [&](std::int64_t position) {
        return static_cast<std::uint32_t>(std::clamp<std::int64_t>(position, 0, memory.size));
    };
    switch (whence) {
    case SEEK_SET:
        memory.position = limited(offset);
        break;
    case SEEK_CUR:
        memory.position = limited(memory.position + offset);
        break;
    case SEEK_END:
        memory.position = memory.size + 1; // the tell that follows reports that as the length
        break;
    default:
        std::printf("*** ERROR *** Unknown seek command in VorbisSeek\n");
        break;
    }
    return 0;
}

int closeMemory(void *)
{
    return 1;
}

long tellMemory(void *source)
{
    return static_cast<long>(static_cast<Memory *>(source)->position);
}

std::uint16_t wordAt(unsigned char const *bytes)
{
    std::uint16_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

std::uint32_t longAt(unsigned char const *bytes)
{
    std::uint32_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

} // namespace

struct iSoundVorbis::Decoder {
    OggVorbis_File file{};
    Memory memory;

    ~Decoder() { ov_clear(&file); }
};

iSoundVorbis::iSoundVorbis(iSoundSystem *owner) : system(owner)
{
}

iSoundVorbis::~iSoundVorbis()
{
    iSoundVorbis::close();
    channel = nullptr;
}

void iSoundVorbis::_destroy(iSoundVorbis *stream)
{
    stream->iSoundVorbis::~iSoundVorbis();
    ::operator delete(static_cast<void *>(stream));
}

// Opens what the source names. With isTold failures are logged.
bool iSoundVorbis::openDecoder(iSoundSource &source, bool isTold)
{
    auto decoder = std::make_unique<Decoder>();
    unsigned int size = 0;
    if (unsigned char *const data = source.getData(size)) {
        decoder->memory = {data, size, 0};
        ov_callbacks const callbacks{readMemory, seekMemory, closeMemory, tellMemory};
        if (ov_open_callbacks(&decoder->memory, &decoder->file, nullptr, 0, callbacks) != 0) {
            return false;
        }
    } else if (char const *const name = source.getResourceName().c_str(); *name != 0) {
        os::FilePtr file = os::openFile(name, "rb");
        if (file == nullptr) {
            if (isTold && LogManager::checkDefLogLevel(3)) {
                LogManager::defLevelMessage("iSoundVorbis::open(): fopen failed for '%s'!\n", name);
            }
            return false;
        }
        if (ov_open(file.get(), &decoder->file, nullptr, 0) < 0) {
            if (isTold && LogManager::checkDefLogLevel(3)) {
                LogManager::defLevelMessage("iSoundVorbis::open(): ov_open failed for '%s'!\n", name);
            }
            return false;
        }
        file.release(); // the decoder closes it from now on
    } else {
        return false;
    }
    m_decoder = std::move(decoder);
    return true;
}

bool iSoundVorbis::open(iSoundSource *newSource, iSoundChannel *newChannel)
{
    if (opened) {
        close();
    }
    std::fill(std::begin(segmentFilled), std::end(segmentFilled), false);
    eof = false;
    setSpeakerSettings(true, true, true);
    channel = nullptr;
    m_lastId = 0;
    bytePosition = 0;
    m_hasAdvanced = false;
    time = 0.0f;
    if (newSource == nullptr || newChannel == nullptr) {
        return false;
    }
    channel = newChannel;
    opened = openDecoder(*newSource, true);
    if (!opened) {
        return false;
    }
    if (unsigned int const ms = newSource->getCurrentTimeMS(); ms != 0) {
        if (int const result = ov_time_seek(&m_decoder->file, ms * 0.001); result != 0) {
            if (LogManager::checkDefLogLevel(3)) {
                LogManager::defLevelMessage("iSoundVorbis::open - could not seek to time %d - error #%d\n",
                                            static_cast<int>(ms), result);
            }
        }
    }
    vorbis_info const *const info = ov_info(&m_decoder->file, -1);
    if (info == nullptr || info->channels <= 0 || info->channels > 255) {
        close();
        return false;
    }
    channels = static_cast<std::uint8_t>(info->channels);
    sampleRate = static_cast<std::uint32_t>(info->rate);
    segmentSize = channels * segmentPerChannel;
    newSource->setNumChannels(channels);
    newSource->setSamplerate(static_cast<unsigned short>(sampleRate));
    newSource->setStream();
    buffer = static_cast<unsigned char *>(poolheap_malloc(segmentSize));
    if (buffer == nullptr) {
        close();
        return false;
    }
    if (LogManager::checkDefLogLevel(1)) {
        LogManager::defLevelMessage("iSoundVorbis::open(): opened stream #%d (%s).\n",
                                    static_cast<int>(newSource->getUniqueID()),
                                    newSource->getResourceName().c_str());
    }
    if (!channel->init(newSource)) {
        close();
    }
    return opened;
}

void iSoundVorbis::close()
{
    if (opened) {
        if (channel != nullptr && !channel->isFadingDown()) {
            stop(0);
        }
        m_decoder.reset();
        poolheap_free(buffer);
        buffer = nullptr;
    }
    opened = false;
    eof = true;
}

bool iSoundVorbis::play()
{
    if (!opened || channel == nullptr || channel->isPlaying()) {
        return false;
    }
    while (!segmentFilled[0] && !eof && channel->isChannelInited()) {
        update(0.0f);
        if (!opened || channel == nullptr) {
            return false; // it was stopped meanwhile
        }
    }
    time = 0.0f;
    if (iSoundSource *const source = channel->getSoundSource()) {
        source->setCurrentTimeMS(0);
        channel->play(source->getFadeInTimeMS());
        if (system != nullptr && system->isPaused()) {
            setPause(true, false);
        }
    }
    return true;
}

void iSoundVorbis::_prefill()
{
    unsigned int filled = 0;
    auto const count = [this] {
        return static_cast<unsigned int>(
            std::count(std::begin(segmentFilled), std::end(segmentFilled), true));
    };
    while (!allBufferFilled() && !eof && channel != nullptr && channel->isChannelInited()) {
        update(0.0f);
        if (count() == filled) {
            return;
        }
        filled = count();
    }
}

void iSoundVorbis::update(float dt)
{
    if (!opened || channel == nullptr || !channel->isChannelInited()) {
        return;
    }
    unsigned int wanted = 0;
    for (unsigned int i = 0; i < numSegments && !eof; ++i) {
        wanted |= segmentFilled[i] ? 0 : 1u << i;
    }
    if (eof || wanted == 0) {
        wanted = channel->update(dt);
    }
    if (channel == nullptr) {
        return; // the back end has stopped it meanwhile
    }
    if (channel->isFinished()) {
        stop(0);
        return;
    }
    for (unsigned int i = 0; i < numSegments && !eof && channel != nullptr; ++i) {
        unsigned int const bit = 1u << i;
        if ((wanted & bit) == 0) {
            continue;
        }
        if (unsigned int const bytes = stream(bit, segmentSize); bytes != 0 && channel != nullptr) {
            channel->fillBuffer(bit, buffer, bytes);
        }
    }
}

bool iSoundVorbis::stop(unsigned int ms)
{
    if (!opened || system == nullptr || channel == nullptr) {
        return false;
    }
    return system->stopChannel(channel->getIndex(), ms);
}

void iSoundVorbis::setPause(bool pause, bool fade)
{
    if (opened && channel != nullptr) {
        channel->setPause(pause, fade);
    }
}

bool iSoundVorbis::setSpeakerSettings(bool frontOn, bool rearOn, bool centerLFEOn)
{
    front = frontOn;
    rear = rearOn;
    centerLFE = centerLFEOn;
    return true;
}

// At the end of the data: once more from the start, or the end for good.
bool iSoundVorbis::rewindOrEnd()
{
    iSoundSource *const source = channel->getSoundSource();
    bool const goesRound = source != nullptr && source->goesRound();
    // A sound without a single sample would go round for ever.
    if (!goesRound || !m_hasAdvanced) {
        eof = true;
        return false;
    }
    source->decCurrentLoop();
    bytePosition = 0;
    m_hasAdvanced = false;
    m_decoder->memory.position = 0;
    ov_raw_seek(&m_decoder->file, 0);
    return true;
}

unsigned int iSoundVorbis::stream(unsigned int segmentBit, unsigned int maxBytes)
{
    unsigned int segment = 0;
    while (segment < numSegments && segmentBit != 1u << segment) {
        ++segment;
    }
    if (segment == numSegments || maxBytes == 0 || !opened || eof || channel == nullptr) {
        return 0;
    }
    sSoundParams const &params = channel->getSoundParams();
    bool const hasFront = params.isFrontSpeakersOn();
    bool const hasRear = params.isRearSpeakersOn();
    bool const hasCenter = params.isCenterLFEOn();
    unsigned int const frameBytes = channels * 2u;
    unsigned int const framesWanted = std::min(maxBytes, segmentSize) / frameBytes;
    unsigned int const framesPerRead = scratchSize / frameBytes;
    unsigned int frames = 0;
    unsigned int total = 0;
    while (frames < framesWanted) {
        float **samples = nullptr;
        int section = 0;
        long const got =
            ov_read_float(&m_decoder->file, &samples,
                          static_cast<int>(std::min(framesPerRead, framesWanted - frames)), &section);
        if (got == 0) {
            rewindOrEnd();
            break;
        }
        if (got < 0) {
            if (LogManager::checkDefLogLevel(3)) {
                LogManager::defLevelMessage("iSoundVorbis::stream (\"%s\") failed: %s!\n",
                                            channel->getResourceName().c_str(),
                                            oggErrorString(static_cast<int>(got)));
            }
            eof = true;
            break;
        }
        vorbis_info const *const info = ov_info(&m_decoder->file, -1);
        if (info == nullptr || info->channels != channels) {
            eof = true; // a link of a chained file that no segment of this stream can hold
            break;
        }
        auto const count = static_cast<unsigned int>(got);
        short scratch[scratchSize / sizeof(short)];
        if (channels == 1) {
            transform_float_I16(samples[0], scratch, count, 1);
        } else if (channels == 2) {
            transformStereo(samples[0], samples[1], scratch, count);
        } else if (channels == 6) {
            // Left, centre, right, rear left, rear right, subwoofer, to the device's order.
            float const *const planes[] = {hasFront ? samples[0] : nullptr,  hasFront ? samples[2] : nullptr,
                                           hasCenter ? samples[1] : nullptr, hasCenter ? samples[5] : nullptr,
                                           hasRear ? samples[3] : nullptr,   hasRear ? samples[4] : nullptr};
            transformSix(planes, scratch, count);
        } else {
            std::memset(scratch, 0, std::size_t{count} * frameBytes);
        }
        std::memcpy(buffer + total, scratch, std::size_t{count} * frameBytes);
        frames += count;
        total += count * frameBytes;
        bytePosition += count * frameBytes;
        m_hasAdvanced = true;
        double const seconds = ov_time_tell(&m_decoder->file);
        if (seconds == OV_EINVAL) {
            if (LogManager::checkDefLogLevel(3)) {
                LogManager::defLevelMessage(
                    "iSoundVorbis::stream - could not get current time from stream\n");
            }
        } else if (iSoundSource *const source = channel->getSoundSource();
                   source != nullptr && seconds >= 0 && seconds < 4e6) {
            source->setCurrentTimeMS(static_cast<unsigned int>(seconds * 1000));
        }
    }
    if (total != 0) {
        segmentFilled[segment] = true;
    }
    return total;
}

void iSoundVorbis::setVolume1(float volume)
{
    if (opened && channel != nullptr) {
        channel->setVolume1(volume);
    }
}

float iSoundVorbis::getVolume1() const
{
    return opened && channel != nullptr ? channel->getVolume1() : 1.0f;
}

void iSoundVorbis::setVolume2(float volume)
{
    if (opened && channel != nullptr) {
        channel->setVolume2(volume);
    }
}

float iSoundVorbis::getVolume2() const
{
    return opened && channel != nullptr ? channel->getVolume2() : 1.0f;
}

unsigned int iSoundVorbis::getNumChannels(iSoundSource *source)
{
    iSoundVorbis probe(nullptr);
    if (source == nullptr || !probe.openDecoder(*source, false)) {
        return 0;
    }
    vorbis_info const *const info = ov_info(&probe.m_decoder->file, -1);
    return info == nullptr || info->channels < 0 ? 0 : static_cast<unsigned int>(info->channels);
}

bool iSoundVorbis::allBufferFilled() const
{
    return opened &&
           std::all_of(std::begin(segmentFilled), std::end(segmentFilled), [](bool on) { return on; });
}

bool iSoundVorbis::isFinished() const
{
    return channel == nullptr || channel->isFinished();
}

unsigned char iSoundVorbis::getSoundGroup() const
{
    return channel == nullptr ? std::uint8_t{0} : channel->getSoundGroup();
}

unsigned int iSoundVorbis::getUniqueID() const
{
    return channel == nullptr ? m_lastId : channel->getUniqueID();
}

void iSoundVorbis::_forget(iSoundChannel const *gone)
{
    if (channel != nullptr && channel == gone) {
        m_lastId = channel->getUniqueID();
        channel = nullptr;
    }
}

char const *iSoundVorbis::oggErrorString(int code)
{
    switch (code) {
    case OV_EREAD:
        return "Read from media.";
    case OV_EFAULT:
        return "Internal logic fault (bug or heap/stack corruption.";
    case OV_ENOTVORBIS:
        return "Not Vorbis data.";
    case OV_EBADHEADER:
        return "Invalid Vorbis header.";
    case OV_EVERSION:
        return "Vorbis version mismatch.";
    default:
        return "Unknown Ogg error.";
    }
}

bool iSoundVorbis::checkHeaderWAV(unsigned char const *data, char const *name)
{
    if (data == nullptr || std::memcmp(data, "RIFF", 4) != 0) {
        return false;
    }
    constexpr std::uint64_t riffHead = 8;
    std::uint64_t const size = std::min<std::uint64_t>(riffHead + longAt(data + 4), 0xFFFFFFFFu);
    return checkHeaderWAV(data, static_cast<unsigned int>(size), name);
}

bool iSoundVorbis::checkHeaderWAV(unsigned char const *data, unsigned int size, char const *name)
{
    constexpr unsigned int headSize = 12;
    constexpr unsigned int chunkHead = 8;
    constexpr unsigned int formatSize = 24;
    if (data == nullptr || size < headSize || std::memcmp(data, "RIFF", 4) != 0 ||
        std::memcmp(data + 8, "WAVE", 4) != 0) {
        return false;
    }
    for (std::uint64_t at = headSize; at + chunkHead <= size;
         at += std::uint64_t{longAt(data + at + 4)} + chunkHead) {
        unsigned char const *const chunk = data + at;
        if (std::memcmp(chunk, "fmt ", 4) == 0 && at + formatSize <= size) {
            channels = chunk[10];
            sampleRate = wordAt(chunk + 12);
            if (wordAt(chunk + 22) != 16) {
                if (LogManager::checkDefLogLevel(3)) {
                    LogManager::defLevelMessage("iSoundVorbis::checkHeaderWAV(\"%s\") 16bit only!\n", name);
                }
                return false;
            }
        } else if (std::memcmp(chunk, "data", 4) == 0) {
            bytePosition = static_cast<std::uint32_t>(at) + chunkHead;
            return true;
        }
    }
    return false;
}

} // namespace Qel
