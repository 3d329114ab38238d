#include "System/Codec/codecs/codec_huffman.h"
#include "Tests/Fuzz/codecFuzz.h"

#include <cstring>
#include <vector>

namespace {

using Qel::cCodecHuffman;

// Some thousand symbols show what millions do; a count with a highest byte of 0xFF is left as it is, for the
// limit and the larger tables.
std::string feedStream(unsigned char const *data, std::size_t size)
{
    std::vector<unsigned char> stream(data, data + size);
    if (size >= 4 && stream[3] != 0xFF) {
        stream[1] &= 0x0F;
        stream[2] = stream[3] = 0;
    }
    cCodecHuffman codec;
    return decodeAndRoundTrip(codec, stream.data(), size);
}

std::string feedTable(unsigned char const *table, std::size_t tableSize, unsigned char const *block,
                      std::size_t blockSize)
{
    cCodecHuffman codec;
    codec.fixedTable_decode_init(table, static_cast<unsigned int>(tableSize));
    std::string dest(1000, '\0');
    bool const done =
        codec.fixedTable_decode_decompress(dest.data(), 1000, block, static_cast<unsigned int>(blockSize));
    return done ? dest : std::string();
}

void learnAndRoundTrip(unsigned char const *data, unsigned int size)
{
    cCodecHuffman codec;
    codec.fixedTable_encode_init();
    codec.fixedTable_encode_add(data, size);
    codec.fixedTable_encode_finish();
    Qel::cFileMem table;
    Qel::cFileMem block;
    codec.fixedTable_encode_getTable(table);
    if (codec.fixedTable_encode_compress(block, data, size) && block.size() > 4) {
        codec.fixedTable_decode_init(table.getData(), table.size());
        std::vector<unsigned char> back(size);
        fuzzRequire(codec.fixedTable_decode_decompress(back.data(), size, block.getData(), block.size()) &&
                        std::memcmp(back.data(), data, size) == 0,
                    "a block comes back through its table");
    }
}

} // namespace

// The lowest bit of the first byte says what the rest is: a stream, or a table and a block of codes, which
// begins where the other bits say.
std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    if (size == 0) {
        return {};
    }
    if ((data[0] & 1) == 0) {
        return feedStream(data + 1, size - 1);
    }
    std::size_t const middle = 1 + data[0] / 2 % size;
    learnAndRoundTrip(data, static_cast<unsigned int>(size));
    return feedTable(data + 1, middle - 1, data + middle, size - middle);
}
