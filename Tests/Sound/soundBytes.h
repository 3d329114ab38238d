#pragma once

#include "Tests/Tools/testSound.h"

#include "System/Sound/soundSource.h"

#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

namespace test {

using Bytes = std::vector<unsigned char>;

inline Bytes operator+(Bytes left, Bytes const &right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/// Little-endian, by hand.
inline Bytes number(std::uint32_t value, int bytes)
{
    Bytes out;
    for (int i = 0; i < bytes; ++i) {
        out.push_back(static_cast<unsigned char>(value >> 8 * i));
    }
    return out;
}

inline Bytes chunk(char const *id, std::uint32_t length, Bytes const &content)
{
    return Bytes(id, id + 4) + number(length, 4) + content;
}

inline Bytes wavFormat(std::uint32_t channels, std::uint32_t rate, std::uint32_t bits,
                       std::uint32_t format = 1)
{
    return chunk("fmt ", 16,
                 number(format, 2) + number(channels, 2) + number(rate, 4) +
                     number(rate * channels * bits / 8, 4) + number(channels * bits / 8, 2) +
                     number(bits, 2));
}

inline Bytes riff(Bytes const &chunks)
{
    Bytes const body = Bytes{'W', 'A', 'V', 'E'} + chunks;
    return chunk("RIFF", static_cast<std::uint32_t>(body.size()), body);
}

/// A WAV file with 64 bytes of 16-bit samples.
inline Bytes shortWav(std::uint32_t channels = 1)
{
    return riff(wavFormat(channels, 8000, 16) + chunk("data", 64, Bytes(64)));
}

inline Bytes soundFile(char const *name)
{
    std::ifstream file(std::string(SOUND_DATA) + name, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

/// A source with data of its own.
struct Sound {
    explicit Sound(unsigned int id, Bytes bytes = shortWav(), char const *name = "a.wav")
        : data(std::move(bytes))
    {
        source.setResourceName(name);
        source.setUniqueID(id);
        source.setData(data.data(), static_cast<unsigned int>(data.size()));
    }
    Sound &at(float x, unsigned int priority = Qel::PRIORITY_DEFAULT)
    {
        source.setPosition({x, 0, 0});
        source.getSoundParams().numChannels = 1;
        source.getSoundParams().basePriority = static_cast<Qel::ePriority>(priority);
        return *this;
    }
    operator Qel::iSoundSource *() { return &source; }
    Qel::iSoundSource *operator->() { return &source; }

    Bytes data;
    Qel::iSoundSource source;
};

} // namespace test
