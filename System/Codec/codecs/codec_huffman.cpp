#include "System/Codec/codecs/codec_huffman.h"

#include "System/Codec/codecs/bytes.h"
#include "System/Codec/codecs/huffmanDecoder.h"
#include "System/Codec/codecs/huffmanEncoder.h"
#include "System/Codec/codecs/huffmanTree.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace Qel {

namespace {

constexpr std::uint64_t largestFile = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t smallestBlock = 5;
constexpr std::uint64_t usualBlocks = 64 * 1024; // bytes that a fixed table is made for: many small blocks

bool writeAll(cFile &out, unsigned char const *bytes, std::size_t size)
{
    return out.write(bytes, static_cast<unsigned int>(size)) == size;
}

std::uint32_t firstNumber(void const *data)
{
    std::uint32_t number;
    std::memcpy(&number, data, sizeof(number));
    return number;
}

} // namespace

cCodecHuffman::cCodecHuffman() = default;

cCodecHuffman::~cCodecHuffman() = default;

char const *cCodecHuffman::get_type() const
{
    return "CODEC_HUFFMAN";
}

bool cCodecHuffman::encode(cFile &in, cFile &out, ...)
{
    // Taken in as a whole: a file that changes between counting and coding would need other room.
    RestOfStream const rest(in, out);
    if (!rest.ok()) {
        return false;
    }
    std::span<unsigned char const> const bytes{rest.data(), rest.size()};
    HuffmanTree::Counts counts{};
    addCounts(counts, bytes);
    HuffmanTree tree;
    tree.build(counts);
    HuffmanEncoder encoder(tree);
    std::uint64_t const codeBytes = encoder.bytesFor(counts);
    PoolBytes const bits = codeBytes > largestFile - HuffmanTree::largestSaved
                               ? nullptr
                               : makePoolBytes(HuffmanTree::largestSaved + codeBytes + HuffmanEncoder::slack);
    if (!bits) {
        return false;
    }
    encoder.start(bits.get() + tree.save(bits.get()));
    encoder.put(bytes);
    std::size_t const size = static_cast<std::size_t>(encoder.finish() - bits.get());
    return out.write_32(static_cast<std::uint32_t>(bytes.size())) == sizeof(std::uint32_t) &&
           writeAll(out, bits.get(), size);
}

bool cCodecHuffman::decode(cFile &in, cFile &out, ...)
{
    constexpr std::size_t blockSize = 64 * 1024;
    RestOfStream const rest(in, out);
    if (!rest.ok()) {
        return false;
    }
    if (rest.size() < sizeof(std::uint32_t)) {
        return true;
    }
    std::uint32_t const count = firstNumber(rest.data());
    unsigned char const *const behind = rest.data() + sizeof(count);
    std::size_t const size = rest.size() - sizeof(count);
    HuffmanTree tree;
    std::size_t const treeBytes = tree.load(behind, size);
    if (treeBytes == 0 || count == 0) {
        return true;
    }
    std::uint64_t const allowed = std::min<std::uint64_t>(count, outputBound(rest.size()));
    HuffmanDecoder const decoder(tree, allowed);
    HuffmanDecoder::Bits bits{behind + treeBytes, size - treeBytes, false};
    PoolBytes const block = makePoolBytes(blockSize);
    if (!block) {
        return false;
    }
    for (std::uint64_t left = allowed; left > 0;) {
        std::size_t const some = static_cast<std::size_t>(std::min<std::uint64_t>(left, blockSize));
        decoder.decode(block.get(), some, bits);
        if (!writeAll(out, block.get(), some)) {
            return false;
        }
        left -= some;
    }
    return allowed == count;
}

void cCodecHuffman::fixedTable_encode_init()
{
    if (!encodeTree) {
        symbols = std::make_unique<Counts>();
    }
}

void cCodecHuffman::fixedTable_encode_add(void const *data, unsigned int size)
{
    if (!encodeTree && symbols && data != nullptr) {
        addCounts(*symbols, {static_cast<unsigned char const *>(data), size});
    }
}

void cCodecHuffman::fixedTable_encode_finish()
{
    if (!encodeTree && symbols) {
        encodeTree = std::make_unique<HuffmanTree>();
        encodeTree->build(*symbols);
    }
}

bool cCodecHuffman::fixedTable_encode_compress(cFile &out, void const *data, unsigned int size)
{
    if (!encodeTree || data == nullptr || size < smallestBlock) {
        return false;
    }
    std::span<unsigned char const> const bytes{static_cast<unsigned char const *>(data), size};
    HuffmanTree::Counts counts{};
    addCounts(counts, bytes);
    HuffmanEncoder encoder(*encodeTree);
    std::uint64_t const codeBytes = encoder.bytesFor(counts);
    PoolBytes const block = codeBytes > largestFile - sizeof(size)
                                ? nullptr
                                : makePoolBytes(sizeof(size) + codeBytes + HuffmanEncoder::slack);
    if (!block) {
        return false;
    }
    std::memcpy(block.get(), &size, sizeof(size));
    encoder.start(block.get() + sizeof(size));
    encoder.put(bytes);
    return writeAll(out, block.get(), static_cast<std::size_t>(encoder.finish() - block.get()));
}

bool cCodecHuffman::fixedTable_encode_getTable(cFile &out)
{
    if (!encodeTree) {
        return false;
    }
    std::array<unsigned char, HuffmanTree::largestSaved> bits;
    return writeAll(out, bits.data(), encodeTree->save(bits.data()));
}

void cCodecHuffman::fixedTable_decode_init(void const *table, unsigned int size)
{
    decodeTree.reset();
    HuffmanTree tree;
    if (table != nullptr && tree.load(static_cast<unsigned char const *>(table), size) > 0) {
        decodeTree = std::make_unique<HuffmanDecoder>(tree, usualBlocks);
    }
}

unsigned int cCodecHuffman::fixedTable_decode_getuncompressedlength(void const *data, unsigned int size) const
{
    return data != nullptr && size >= smallestBlock ? firstNumber(data) : 0;
}

bool cCodecHuffman::fixedTable_decode_decompress(void *dest, unsigned int destSize, void const *data,
                                                 unsigned int size) const
{
    std::uint32_t const count = fixedTable_decode_getuncompressedlength(data, size);
    if (!decodeTree || dest == nullptr || count == 0 || count > destSize) {
        return false;
    }
    HuffmanDecoder::Bits bits{static_cast<unsigned char const *>(data) + sizeof(count), size - sizeof(count),
                              true};
    decodeTree->decode(static_cast<unsigned char *>(dest), count, bits);
    return true;
}

String CodecHuffmanFactory::getType() const
{
    return "CODEC_HUFFMAN";
}

iCodec *CodecHuffmanFactory::createInstance(String const &)
{
    return std::make_unique<cCodecHuffman>().release();
}

} // namespace Qel
