#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// Running CRC-32 with the polynomial 0xEDB88320, never inverted at the end.
///
/// The values are the bitwise complements of what zip, PNG and zlib write: "123456789" gives 0x340BC6D9 and
/// nothing gives 0xFFFFFFFF.
///
/// @code
/// cCRC32 crc;
/// crc.add(header, headerBytes);
/// crc.add(body, bodyBytes);
/// unsigned int const id = crc.getCRC();
/// @endcode
class QEL_API cCRC32 {
public:
    cCRC32() = default;
    void reset() { crc = start; } ///< as after construction

    /// Adds bytes.
    /// @param data  may be null if @p size is 0
    /// @return the running value
    unsigned int add(unsigned char const *data, unsigned int size);

    /// Adds the bytes before the terminator. Null adds nothing.
    void addString(char const *text);

    unsigned int getCRC() const { return crc; } ///< the running value as it is

    /// The value of @p data alone. The running value stays as it is.
    unsigned int calcCRC(unsigned char const *data, unsigned int size);

    /// The value of a text's bytes before its terminator. Null is the empty text.
    static unsigned int calcCRC(char const *text);

    /// One step on a running value of the caller's.
    static void addCrc(unsigned int &crc, unsigned char byte)
    {
        crc = (crc >> 8U) ^ CRC32Table[(crc ^ byte) & 0xFFU];
    }

    bool operator==(cCRC32 const &other) const { return crc == other.crc; }
    bool operator!=(cCRC32 const &other) const { return crc != other.crc; }

    static std::uint32_t const CRC32Table[256]; ///< the step of one byte

private:
    static constexpr std::uint32_t start = 0xFFFFFFFF;

    std::uint32_t crc = start;
};

} // namespace Qel
