#include "System/Codec/codecs/codec_mtf.h"
#include "Tests/Fuzz/codecFuzz.h"

#include "Support/OS/processorLevel.h"

std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    Qel::cCodecMTF codec;
    std::string seen;
    for (std::uint32_t level = 0; os::setProcessorLevel(static_cast<os::eProcessorLevel>(level)); ++level) {
        std::string const decoded = decodeAndRoundTrip(codec, data, size);
        fuzzRequire(level == 0 || decoded == seen, "every level of the processor gives the same bytes");
        seen = decoded;
    }
    return seen;
}
