#include "System/Codec/codecs/codec_mtf.h"
#include "Tests/Fuzz/codecFuzz.h"

std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    Qel::cCodecMTF codec;
    return decodeAndRoundTrip(codec, data, size);
}
