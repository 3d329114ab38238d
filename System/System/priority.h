#pragma once

#include <cstdint>

namespace Qel {

/// The library's one scale of priorities: 0 is the most urgent, 14 the least. Any number of it may be used.
enum ePriority : std::uint32_t {
    PRIORITY_MOST_URGENT = 0, ///< to the resource manager: at once
    PRIORITY_MIDDLE = 7,
    PRIORITY_DEFAULT = 13, ///< what a sound has
    PRIORITY_LEAST_URGENT = 14,
};

} // namespace Qel
