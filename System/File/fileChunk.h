#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

class cFile;

/// A file header of 128 bytes, in memory as in the file. What its fields mean is its user's business; nothing
/// here looks at them, and nothing initialises them.
struct QEL_API _sHeader {
    char magic[4];
    unsigned char kind;
    unsigned char extra[3];
    std::uint32_t value;
    std::uint32_t reserved[29];

    /// Writes the header field by field. @return how far the stream's position has moved: 128 if it took all
    unsigned int save(cFile &file) const;

    /// Reads what save() writes; fields that are not there keep their value.
    /// @return how far the stream's position has moved: 128 if all was there
    unsigned int load(cFile &file);
};
static_assert(sizeof(_sHeader) == 128);

/// A chunk header of 16 bytes, in memory as in the file. Its user says what the values mean.
struct QEL_API _sFile_chunk {
    _sFile_chunk() = default;
    _sFile_chunk(unsigned int chunkId, unsigned int v1, unsigned int v2) ///< @p chunkId is cut to 16 bits
        : id(static_cast<std::uint16_t>(chunkId)), value1(v1), value2(v2)
    {
    }

    std::uint16_t id = 0;
    std::uint16_t reserved1 = 0;
    std::uint32_t value1 = 0;
    std::uint32_t value2 = 0;
    std::uint32_t reserved2 = 0;

    /// Writes the header field by field. @return how far the stream's position has moved: 16 if it took all
    unsigned int save(cFile &file) const;

    /// Reads what save() writes; fields that are not there keep their value.
    /// @return how far the stream's position has moved: 16 if all was there
    unsigned int load(cFile &file);
};
static_assert(sizeof(_sFile_chunk) == 16);

} // namespace Qel
