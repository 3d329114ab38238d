#include "System/Codec/codecs/codec_lz77.h"
#include "Tests/Fuzz/codecFuzz.h"

std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    Qel::cCodecLZ77 codec;
    return decodeAndRoundTrip(codec, data, size);
}
