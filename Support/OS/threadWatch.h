#pragma once

#include "Support/export.h"

#include <cstdint>

namespace os {

/// Tells whether the thread that made it has gone on since, or is merely being kept from the processor.
///
/// @par Threads  Made on the watched thread, asked on one other.
class QEL_API ThreadWatch {
public:
    ThreadWatch();

    void restart(); ///< asks from now on about what comes after this call

    /// @return true if the thread has used a millisecond of the processor since, waits for something, or has
    ///         ended; false while it could go on and has had no turn
    bool hasGoneOn() const;

private:
    std::uint32_t m_id;
    std::int32_t m_clock = 0;       // of the thread's processor time
    std::int64_t m_usedBefore = -1; // ns; negative if it cannot be told
};

} // namespace os
