#include "System/Codec/codecs/huffmanDecoderLoop.h"

namespace Qel {

// What it gains is shifts by any number of bits in one step.
unsigned char *HuffmanDecoder::decodeAvx2(unsigned char *to, unsigned char *end, Bits &bits) const
{
    return decodeLoop<os::PROCESSOR_AVX2>(to, end, bits);
}

} // namespace Qel
