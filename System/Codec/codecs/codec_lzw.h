#pragma once

#include "System/Codec/codecFactory.h"
#include "System/System/export.h"

#include <cstddef>
#include <cstdint>

namespace Qel {

/// "CODEC_LZW": a dictionary of strings that grows as the data go by, with codes of 9 to 15 bits.
///
/// Codes 0 to 255 stand for their byte. The dictionary starts again when it has 32768 codes. A code of w bits
/// stands for less than 2^w bytes, and of 15 bits for 32 510 at the most, so a stream cannot give more than
/// 17 340 times its length, and a long run of one byte gives half of that.
///
/// The decoder stops at the first code that no encoder could have written there and where the data end
/// without an end code; what it has up to there is written.
///
/// Published by T. Welch, "A Technique for High-Performance Data Compression", 1984; the codes for the width
/// and for the end by M. Nelson, 1989.
class QEL_API cCodecLZW : public iCodec {
public:
    cCodecLZW() = default;
    ~cCodecLZW() override;
    cCodecLZW(cCodecLZW const &) = delete;
    cCodecLZW &operator=(cCodecLZW const &) = delete;

    /// @return false, always
    /// @throws Exception number 9 if there is no memory for the dictionary
    bool encode(cFile &in, cFile &out, ...) override;

    /// @return true if the end code was met and everything written. False for damaged data, and if @p out
    /// does
    ///         not take everything
    /// @throws Exception number 9 if there is no memory for the dictionary
    bool decode(cFile &in, cFile &out, ...) override;

protected:
    static constexpr std::uint32_t TABLE_SIZE = 35023; ///< room of decode_stack
    static constexpr std::uint32_t MAX_CODE = 32767;   ///< the largest code, 15 bits
    static constexpr std::uint32_t MAX_BITS = 15;
    static constexpr std::uint32_t END_OF_STREAM = 256; ///< ends the decoder
    static constexpr std::uint32_t BUMP_CODE = 257;     ///< the next codes are one bit wider
    static constexpr std::uint32_t FLUSH_CODE = 258;    ///< the dictionary starts again
    static constexpr std::uint32_t FIRST_CODE = 259;    ///< of a string of two bytes or more

    /// Takes the dictionary's memory, the first time.
    void InitializeStorage();

    /// Starts again, with no strings and codes of 9 bits.
    void InitializeDictionary();

    /// For encode(): the slot of a string and one byte more, or the free slot where it is to go.
    unsigned int find_child_node(int parent_code, int child_character) const;

    /// For decode(): appends the string of a code to the @p count bytes in decode_stack, if it fits in.
    /// @return bytes then in decode_stack
    unsigned int decode_string(unsigned int count, unsigned int code);

private:
    struct Decoder;

    static constexpr std::uint32_t LARGEST_SLOT_BITS = 16; // twice as many slots as there are codes

    void useSlots(std::size_t inputBytes);

    // To encode, the keys of the strings and hashed slots for their codes. To decode, two words for each
    // code, see decode_string().
    std::uint64_t *dict = nullptr;
    unsigned char decode_stack[TABLE_SIZE + 8]; // decoded bytes that wait to be written; the last are spare
    std::uint32_t next_code = 0;
    std::uint32_t current_code_bits = 0;
    std::uint32_t next_bump_code = 0;
    std::uint32_t m_slotBits = LARGEST_SLOT_BITS; // the slots in use: as many as the input needs
};

/// Makes cCodecLZW.
class QEL_API CodecLzwFactory : public CodecFactory {
public:
    String getType() const override;
    iCodec *createInstance(String const &name) override;
};

} // namespace Qel
