#pragma once

#include "System/Codec/codec.h"
#include "System/File/fileMem.h"
#include "Tests/Fuzz/fuzzTarget.h"

#include <cstddef>
#include <string>

/// Takes and reserves so much and no more, as if memory ended there: what is too long to be of interest ends
/// early, and a claim of a size costs nothing.
class SmallFile : public Qel::cFileMem {
public:
    using cFileMem::write;
    unsigned int write(void const *buffer, unsigned int size) override
    {
        return m_size + size > most ? 0 : cFileMem::write(buffer, size);
    }
    bool reserve(unsigned int size) override { return size <= most && cFileMem::reserve(size); }

private:
    static constexpr unsigned int most = 72 * 1024; // a block of a decoder's and a little
};

/// Decodes any bytes, then codes them and decodes that.
/// @return what the bytes were decoded to
inline std::string decodeAndRoundTrip(Qel::iCodec &codec, unsigned char const *data, std::size_t size)
{
    auto const run = [&codec](bool (Qel::iCodec::*method)(Qel::cFile &, Qel::cFile &, ...),
                              unsigned char const *bytes, std::size_t count) {
        Qel::cFileMem in;
        SmallFile out;
        in.set(static_cast<unsigned int>(count), bytes);
        (codec.*method)(in, out);
        return out.size() == 0 ? std::string()
                               : std::string(reinterpret_cast<char const *>(out.getData()), out.size());
    };
    Qel::iCodec::setOutputLimit(128 * 1024);
    std::string decoded = run(&Qel::iCodec::decode, data, size);
    std::string const encoded = run(&Qel::iCodec::encode, data, size);
    std::string const back =
        run(&Qel::iCodec::decode, reinterpret_cast<unsigned char const *>(encoded.data()), encoded.size());
    fuzzRequire(back == std::string(reinterpret_cast<char const *>(data), size), "what was coded comes back");
    return decoded;
}
