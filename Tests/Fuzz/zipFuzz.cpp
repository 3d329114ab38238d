#include "System/Codec/codecs/codec_zip.h"
#include "Tests/Fuzz/codecFuzz.h"

std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    Qel::cCodecZIP codec;
    std::string seen = decodeAndRoundTrip(codec, data, size);
    Qel::cFileMem blocks(static_cast<unsigned int>(size), data);
    SmallFile out;
    seen += static_cast<char>(codec.getUncompressedSize(blocks));
    while (codec.decodeEx(blocks, out)) {
        seen += '+';
    }
    return out.size() == 0 ? seen : seen.append(reinterpret_cast<char const *>(out.getData()), out.size());
}
