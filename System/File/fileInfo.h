#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

class iArchive;

/// What is known of one file, in an archive or on the disk. Copied whole by assignment.
struct QEL_API FileInfo {
    char name[256];            ///< terminated, so at most 255 characters; a longer name is cut
    std::uint32_t packedSize;  ///< bytes as stored
    std::uint32_t size;        ///< bytes that a reader gets
    std::int64_t modTime;      ///< time of the last change in seconds since 1970, 0 when unknown
    std::uint32_t reserved[2]; ///< zero
    std::uint32_t handle;      ///< the archive's own value for the file, given back to iArchive::readFile()
    iArchive *archive;         ///< the archive that holds the file; null for a plain file

    FileInfo() { reset(); }

    void reset(); ///< empties the name and clears everything else

    /// Sets the name, cut to 255 characters. Null counts as empty.
    void setName(char const *text);

    /// Can the time of the last change be told? The arguments are looked at by nobody.
    /// @return false if modTime is 0 or no calendar holds it
    bool getModDate(unsigned short year, unsigned char month, unsigned char day);
};

} // namespace Qel
