#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// A version: three numbers and the build number.
class QEL_API BuildVersion {
public:
    std::uint8_t major = 0;
    std::uint8_t minor = 0;
    std::uint8_t release = 0;
    std::uint16_t build = 0;

    BuildVersion() = default; ///< all zero
    BuildVersion(unsigned char major, unsigned char minor, unsigned char release,
                 char const *date); ///< see set()

    /// Sets all fields.
    /// @param date  the date that BuildNumber makes the build number of; null stands for the library's own
    void set(unsigned char majorNumber, unsigned char minorNumber, unsigned char releaseNumber,
             char const *date);
};

} // namespace Qel
