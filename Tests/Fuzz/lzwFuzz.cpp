#include "System/Codec/codecs/codec_lzw.h"
#include "Tests/Fuzz/codecFuzz.h"

std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    Qel::cCodecLZW codec;
    return decodeAndRoundTrip(codec, data, size);
}
