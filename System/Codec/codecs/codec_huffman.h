#pragma once

#include "System/Codec/codecFactory.h"
#include "System/System/export.h"

#include <array>
#include <cstdint>
#include <memory>

namespace Qel {

class HuffmanDecoder;
class HuffmanTree;

/// "CODEC_HUFFMAN": a prefix code for bytes, with its tree in the stream or apart.
///
/// A stream is the number of bytes in 4 bytes, the tree and the codes. The other way to use this class is a
/// fixed table: a tree made from all data once, stored once, and no tree in front of each block.
///
/// @code
/// cCodecHuffman packer;
/// packer.fixedTable_encode_init();
/// packer.fixedTable_encode_add(sample, sampleBytes);
/// packer.fixedTable_encode_finish();
/// packer.fixedTable_encode_getTable(tableFile);
/// packer.fixedTable_encode_compress(blockFile, block, blockBytes);
///
/// cCodecHuffman unpacker;
/// unpacker.fixedTable_decode_init(table, tableBytes);
/// unpacker.fixedTable_decode_decompress(dest, destBytes, packed, packedBytes);
/// @endcode
///
/// The tree is built from the bytes' order as much as from their counts, so the code is not always the
/// shortest there is. The method is D. Huffman's, "A Method for the Construction of Minimum-Redundancy
/// Codes", 1952.
///
/// @par Threads  fixedTable_decode_decompress() and the lengths may be asked for by several threads at once;
///               apart from that one thread at a time.
class QEL_API cCodecHuffman : public iCodec {
public:
    cCodecHuffman();
    ~cCodecHuffman() override;
    cCodecHuffman(cCodecHuffman const &) = delete;
    cCodecHuffman &operator=(cCodecHuffman const &) = delete;

    /// @return true; false if @p out does not take it all, or its bits do not fit into a stream
    bool encode(cFile &in, cFile &out, ...) override;

    /// A tree that is not there in full gives no bytes, and zeros stand in for codes that are cut off.
    /// @return true; false if the limit of output has cut the bytes short, see setOutputLimit(), or @p out
    ///         does not take them
    bool decode(cFile &in, cFile &out, ...) override;

    virtual char const *get_type() const; ///< "CODEC_HUFFMAN"

    /// Starts to learn. Does nothing once a table is finished: there is one for the life of the object.
    void fixedTable_encode_init();

    /// Learns from @p size bytes. Only what lies between init and finish counts.
    void fixedTable_encode_add(void const *data, unsigned int size);

    /// Makes the table from what was learned. What is compressed with it must hold no byte above the highest
    /// one that was learned: such a byte has no code, and what follows it is lost.
    void fixedTable_encode_finish();

    /// Writes @p size in 4 bytes and the codes.
    /// @param data  5 bytes or more
    /// @return false, with nothing written, for less, for null or without a table
    bool fixedTable_encode_compress(cFile &out, void const *data, unsigned int size);

    /// Writes the table, for fixedTable_decode_init(). @return false if there is none
    bool fixedTable_encode_getTable(cFile &out);

    /// Takes a table in, in place of any earlier one. One that is damaged leaves none.
    void fixedTable_decode_init(void const *table, unsigned int size);

    /// How many bytes a block will give: the room that fixedTable_decode_decompress() needs.
    /// @return 0 for null or fewer than 5 bytes
    unsigned int fixedTable_decode_getuncompressedlength(void const *data, unsigned int size) const;

    /// Decodes a block. Damaged codes give other bytes, never more of them.
    /// @param destSize  room at @p dest; more than the block's length is left alone
    /// @return false, with nothing written, without a table, for null, for a block of less than 5 bytes or
    ///         with the length 0, and for a length beyond @p destSize
    bool fixedTable_decode_decompress(void *dest, unsigned int destSize, void const *data,
                                      unsigned int size) const;

private:
    using Counts = std::array<std::uint32_t, 256>;

    std::unique_ptr<HuffmanTree> encodeTree;    // null until finish
    std::unique_ptr<HuffmanDecoder> decodeTree; // null until decode_init
    std::unique_ptr<Counts> symbols;            // what was learned, null until init
};

/// Makes cCodecHuffman.
class QEL_API CodecHuffmanFactory : public CodecFactory {
public:
    String getType() const override;
    iCodec *createInstance(String const &name) override;
};

} // namespace Qel
