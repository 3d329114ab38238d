#pragma once

#include "System/File/bitStore.h"
#include "System/File/file.h"

#include <vector>

namespace Qel {

/// A growing stream of bits in memory whose bytes stand on byte boundaries: the carrier of Huffman trees.
///
/// Single bits are as in cFileBit. A read or write of bytes first moves up to the next whole byte, which
/// leaves a gap of 0 to 7 bits, and keeps the bytes as they are. There are no fields of several bits. What
/// was written with one of the two classes can be read back with the same one only.
///
/// @par Limits  512 MiB less one byte. What lies behind that is dropped, and the position stays.
class QEL_API cFileBitOld : public cFile {
public:
    cFileBitOld() = default;
    explicit cFileBitOld(std::vector<unsigned char> const &source)
        : m_bits(source) {} ///< a copy, at position 0
    cFileBitOld(cFileBitOld const &) = default;
    cFileBitOld &operator=(cFileBitOld const &) = default;
    ~cFileBitOld() override;

    /// Reads from the next whole byte on.
    /// @return @p size, whatever the stream holds: behind the end there are zeros. 0 for a null @p buffer
    unsigned int read(void *buffer, unsigned int size) override;

    /// Appends: the bytes go to the end of the stream, which is made to reach from the next whole byte over
    /// @p size bytes. After a seek back they therefore land at the end all the same, over what is there,
    /// while the position moves on from where it stood.
    /// @return @p size; 0 for a null @p buffer or at the limit
    unsigned int write(void const *buffer, unsigned int size) override;

    /// To any bit, also behind the end: a write there puts zeros between. @return the new position
    unsigned int seek(unsigned int bit) override
    {
        m_bits.seek(bit);
        return bit;
    }

    unsigned int size() const override { return m_bits.sizeInBits(); } ///< bits in whole bytes
    unsigned int tell() const override { return m_bits.position(); }   ///< in bits
    eFileClass getType() const override { return FILECLASS_BITOLD; }

    virtual void write_bit(bool bit) { m_bits.writeBit(bit); }
    virtual bool read_bit() { return m_bits.readBit(); } ///< false at the end, where the position stays

    virtual void write_bits(unsigned int value, unsigned int count); ///< does nothing
    virtual unsigned int read_bits(unsigned int count);              ///< 0, and reads nothing

    virtual unsigned char *getData() { return m_bits.data(); }             ///< good until the next write
    virtual unsigned int getNumBytes() const { return m_bits.numBytes(); } ///< bytes begun

private:
    BitStore m_bits;
};

} // namespace Qel
