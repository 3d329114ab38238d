#pragma once

#include "System/File/bitStore.h"
#include "System/File/file.h"

#include <vector>

namespace Qel {

/// A growing stream of bits in memory: what compressed formats are written through.
///
/// Bit k of the stream is bit (k mod 8), counted from the least significant, of byte k / 8; a field of
/// several bits goes out most significant bit first. Nothing is aligned: bytes follow at once behind bits.
/// Position and size count bits, and the stream only grows. Bits are ORed in, so a 0 does not clear a 1 that
/// is there.
///
/// @code
/// cFileBit bits;
/// bits.write_bits(0x0A, 4); // 1, 0, 1, 0: the byte 0x05
/// bits.seek(0);
/// unsigned int const ten = bits.read_bits(4);
/// @endcode
///
/// @par Limits  512 MiB less one byte. Bits behind that are dropped, and the position stays.
class QEL_API cFileBit : public cFile {
public:
    cFileBit() = default;
    explicit cFileBit(std::vector<unsigned char> const &source) : m_bits(source) {} ///< a copy, at position 0
    ~cFileBit() override;
    cFileBit(cFileBit const &) = default;
    cFileBit &operator=(cFileBit const &) = default;

    /// Reads whole bytes, 8 bits each, wherever the position stands.
    /// @return @p size, whatever the stream holds: behind the end there are zeros. 0 for a null @p buffer
    unsigned int read(void *buffer, unsigned int size) override;

    /// Writes whole bytes, 8 bits each, wherever the position stands.
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
    eFileClass getType() const override { return FILECLASS_BIT; }

    virtual void write_bit(bool bit) { m_bits.writeBit(bit); }
    virtual bool read_bit() { return m_bits.readBit(); } ///< false at the end, where the position stays

    /// Writes the lowest @p count bits, the most significant of them first.
    /// @param count  1 to 32; 0 stands for 32. Beyond that nothing is written
    virtual void write_bits(unsigned int value, unsigned int count);

    /// Reads a field as write_bits() writes it; bits behind the end are 0.
    /// @param count  1 to 32; 0 stands for 32. Beyond that nothing is read, and 0 returned
    virtual unsigned int read_bits(unsigned int count);

    virtual unsigned char *getData() { return m_bits.data(); }             ///< good until the next write
    virtual unsigned int getNumBytes() const { return m_bits.numBytes(); } ///< bytes begun

private:
    BitStore m_bits;
};

} // namespace Qel
