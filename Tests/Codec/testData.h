#pragma once

#include "System/Codec/codec.h"
#include "System/File/fileMem.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace test {

/// Data of a fixed sequence, the same as in makeGolden.py.
/// @param kind  "random", "text", "runs", "ramp", "zeros" or "skewed", whose counts are Fibonacci numbers
inline std::string makeData(std::string const &kind, std::size_t size, std::uint32_t seed)
{
    auto const next = [&seed] { return seed = seed * 1'664'525u + 1'013'904'223u; };
    static char const *const words[] = {"the ",  "engine ", "of ",    "a ",     "game ",   "loads ",
                                        "and ",  "frames ", "sound ", "light ", "\n",      "particle ",
                                        "mesh ", "to ",     "in ",    "x = 0;", "return ", "// "};
    std::string data;
    if (kind == "skewed") {
        unsigned a = 1;
        unsigned b = 1;
        for (int symbol = 27; data.size() < size && symbol >= 0; --symbol) {
            data.append(a, static_cast<char>(symbol));
            b += a;
            a = b - a;
        }
    }
    while (data.size() < size) {
        std::uint32_t const x = next();
        if (kind == "random") {
            data += static_cast<char>(x >> 24);
        } else if (kind == "text") {
            std::uint32_t const i = x >> 24;
            data += words[i * i * 18 / 65'536];
        } else if (kind == "runs") {
            data.append((x >> 16 & 63) + 1, static_cast<char>(x >> 28));
        } else if (kind == "ramp") {
            data += static_cast<char>(data.size() & 255);
        } else {
            data += '\0';
        }
    }
    data.resize(size);
    return data;
}

inline void fill(Qel::cFileMem &file, std::string const &data)
{
    file.set(static_cast<unsigned int>(data.size()), reinterpret_cast<unsigned char const *>(data.data()));
}

inline std::string content(Qel::cFileMem const &file)
{
    return file.size() == 0 ? std::string()
                            : std::string(reinterpret_cast<char const *>(file.getData()), file.size());
}

/// What a codec makes of some bytes in memory.
inline std::string run(Qel::iCodec &codec, bool (Qel::iCodec::*method)(Qel::cFile &, Qel::cFile &, ...),
                       std::string const &data, bool *result = nullptr)
{
    Qel::cFileMem in;
    Qel::cFileMem out;
    fill(in, data);
    bool const done = (codec.*method)(in, out);
    if (result != nullptr) {
        *result = done;
    }
    return content(out);
}

inline std::string encoded(Qel::iCodec &codec, std::string const &data)
{
    return run(codec, &Qel::iCodec::encode, data);
}

inline std::string decoded(Qel::iCodec &codec, std::string const &stream, bool *result = nullptr)
{
    return run(codec, &Qel::iCodec::decode, stream, result);
}

/// Bytes from hexadecimal digits; blanks are ignored.
inline std::string fromHex(std::string digits)
{
    std::erase(digits, ' ');
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

} // namespace test
