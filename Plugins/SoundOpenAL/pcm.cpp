#include "pcm.h"

#include "System/Sound/soundSource.h"
#include "System/Sound/soundVorbis.h"

#include <sndfile.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>

namespace {

constexpr std::size_t mostSamples = std::size_t{128} << 20;
constexpr unsigned int numSpeakers = 6;

struct Bytes {
    unsigned char const *data;
    sf_count_t size;
    sf_count_t at;
};

bool isWave(unsigned char const *data, unsigned int size)
{
    constexpr unsigned int headSize = 12;
    return size >= headSize && std::memcmp(data, "RIFF", 4) == 0 && std::memcmp(data + 8, "WAVE", 4) == 0;
}

sf_count_t lengthOf(void *user)
{
    return static_cast<Bytes *>(user)->size;
}

sf_count_t seekIn(sf_count_t offset, int whence, void *user)
{
    Bytes &bytes = *static_cast<Bytes *>(user);
    sf_count_t const from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? bytes.at : bytes.size;
    if (offset >= -from && offset <= bytes.size - from) {
        bytes.at = from + offset;
    }
    return bytes.at;
}

sf_count_t readFrom(void *target, sf_count_t count, void *user)
{
    Bytes &bytes = *static_cast<Bytes *>(user);
    count = std::clamp<sf_count_t>(count, 0, bytes.size - bytes.at);
    std::memcpy(target, bytes.data + bytes.at, static_cast<std::size_t>(count));
    bytes.at += count;
    return count;
}

sf_count_t tellOf(void *user)
{
    return static_cast<Bytes *>(user)->at;
}

bool decodeFile(unsigned char const *data, unsigned int size, Pcm &pcm)
{
    constexpr sf_count_t framesAtOnce = 4096;
    Bytes bytes{data, sf_count_t{size}, 0};
    SF_VIRTUAL_IO io{lengthOf, seekIn, readFrom, nullptr, tellOf};
    SF_INFO info{};
    SNDFILE *const file = sf_open_virtual(&io, SFM_READ, &info, &bytes);
    if (file == nullptr) {
        return false;
    }
    pcm.channels = static_cast<unsigned int>(info.channels);
    pcm.rate = static_cast<unsigned int>(info.samplerate);
    int const coding = info.format & SF_FORMAT_SUBMASK;
    bool const isFloat = coding == SF_FORMAT_FLOAT || coding == SF_FORMAT_DOUBLE;
    std::vector<short> block(static_cast<std::size_t>(framesAtOnce) * pcm.channels);
    std::vector<float> floats(isFloat ? block.size() : 0);
    auto const read = [&] {
        if (!isFloat) {
            return sf_readf_short(file, block.data(), framesAtOnce);
        }
        sf_count_t const frames = sf_readf_float(file, floats.data(), framesAtOnce);
        Qel::iSoundVorbis::transform_float_I16(floats.data(), block.data(),
                                               static_cast<unsigned int>(frames) * pcm.channels, 1);
        return frames;
    };
    // The file's own word for its length is not taken: what is there counts.
    bool fits = true;
    for (sf_count_t frames; fits && (frames = read()) > 0;) {
        std::size_t const samples = static_cast<std::size_t>(frames) * pcm.channels;
        fits = pcm.samples.size() + samples <= mostSamples;
        if (fits) {
            pcm.samples.insert(pcm.samples.end(), block.begin(),
                               block.begin() + static_cast<std::ptrdiff_t>(samples));
        }
    }
    sf_close(file);
    return fits;
}

// The whole file again, if its head has been taken off.
bool decodeImage(Qel::iSoundSource &source, Pcm &pcm)
{
    unsigned int size = 0;
    unsigned char *const data = source.getData(size);
    if (data == nullptr) {
        return false;
    }
    if (isWave(data, size)) {
        return decodeFile(data, size, pcm);
    }
    source._restoreData();
    unsigned int imageSize = 0;
    unsigned char const *const image = source.getData(imageSize);
    bool const hasImage = image != nullptr && image != data && isWave(image, imageSize);
    bool const isDecoded = hasImage && decodeFile(image, imageSize, pcm);
    source._stripData(data, size);
    if (hasImage) {
        return isDecoded;
    }
    pcm.channels = source.getNumChannels();
    pcm.rate = source.getSamplerate();
    pcm.samples.resize(size / sizeof(std::int16_t));
    std::memcpy(pcm.samples.data(), data, pcm.samples.size() * sizeof(std::int16_t));
    return true;
}

void spread(Pcm &pcm, Qel::sSoundParams const &params)
{
    constexpr Qel::eSoundSpeaker speakers[numSpeakers] = {
        Qel::SOUNDSPEAKER_FRONT_LEFT, Qel::SOUNDSPEAKER_FRONT_RIGHT, Qel::SOUNDSPEAKER_CENTER,
        Qel::SOUNDSPEAKER_LFE,        Qel::SOUNDSPEAKER_REAR_LEFT,   Qel::SOUNDSPEAKER_REAR_RIGHT};
    std::vector<std::int16_t> all(pcm.samples.size() * numSpeakers);
    for (unsigned int i = 0; i < numSpeakers; ++i) {
        if ((params.singleSpeaker & speakers[i]) != 0) {
            for (std::size_t frame = 0; frame < pcm.samples.size(); ++frame) {
                all[frame * numSpeakers + i] = pcm.samples[frame];
            }
        }
    }
    pcm.samples = std::move(all);
    pcm.channels = numSpeakers;
}

void silence(Pcm &pcm, Qel::sSoundParams const &params)
{
    bool const isOn[numSpeakers] = {params.isFrontSpeakersOn(), params.isFrontSpeakersOn(),
                                    params.isCenterLFEOn(),     params.isCenterLFEOn(),
                                    params.isRearSpeakersOn(),  params.isRearSpeakersOn()};
    for (std::size_t i = 0; i < pcm.samples.size(); ++i) {
        pcm.samples[i] = isOn[i % numSpeakers] ? pcm.samples[i] : std::int16_t{0};
    }
}

} // namespace

bool decode(Qel::iSoundSource &source, Pcm &pcm)
{
    try {
        if (!decodeImage(source, pcm) || pcm.channels == 0 || pcm.rate == 0) {
            return false;
        }
        pcm.samples.resize(pcm.samples.size() / pcm.channels * pcm.channels);
        Qel::sSoundParams const &params = source.getSoundParams();
        if (pcm.channels == 1 && params.isSingleSpeaker()) {
            if (pcm.samples.size() > mostSamples / numSpeakers) {
                return false;
            }
            spread(pcm, params);
        } else if (pcm.channels == numSpeakers) {
            silence(pcm, params);
        }
        return !pcm.samples.empty();
    } catch (std::bad_alloc const &) {
        return false;
    }
}
