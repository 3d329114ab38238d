#include "System/Codec/codecs/codec_huffman.h"
#include "Tests/Fuzz/codecFuzz.h"

#include <cstring>
#include <vector>

// The bytes are a stream, and a table and a block of codes: the first byte says where that begins.
std::string fuzzTarget(unsigned char const *data, std::size_t size)
{
    Qel::cCodecHuffman codec;
    std::string seen = decodeAndRoundTrip(codec, data, size);
    if (size == 0) {
        return seen;
    }
    std::size_t const middle = 1 + data[0] % size;
    auto const tableSize = static_cast<unsigned int>(middle - 1);
    codec.fixedTable_decode_init(data + 1, tableSize);
    auto const blockSize = static_cast<unsigned int>(size - middle);
    std::vector<unsigned char> dest(1000);
    bool const done = codec.fixedTable_decode_decompress(dest.data(), 1000, data + middle, blockSize);
    seen.append(reinterpret_cast<char const *>(dest.data()), done ? dest.size() : 0);

    codec.fixedTable_encode_init();
    codec.fixedTable_encode_add(data, static_cast<unsigned int>(size));
    codec.fixedTable_encode_finish();
    Qel::cFileMem table;
    Qel::cFileMem block;
    codec.fixedTable_encode_getTable(table);
    if (codec.fixedTable_encode_compress(block, data, static_cast<unsigned int>(size)) && block.size() > 4) {
        codec.fixedTable_decode_init(table.getData(), table.size());
        std::vector<unsigned char> back(size);
        fuzzRequire(codec.fixedTable_decode_decompress(back.data(), static_cast<unsigned int>(size),
                                                       block.getData(), block.size()) &&
                        std::memcmp(back.data(), data, size) == 0,
                    "a block comes back through its table");
    }
    return seen;
}
