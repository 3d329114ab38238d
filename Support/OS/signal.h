#pragma once

#include "Support/export.h"

#include <atomic>
#include <cstdint>

namespace os {

/// A wake-up that saturates: given twice before anybody waits, it lets one waiter through.
///
/// Giving it costs no system call unless somebody sleeps. The last user may destroy it as soon as its wait
/// has come back, even while the giver is still on its way out.
class QEL_API Signal {
public:
    Signal() = default;

    Signal(Signal const &) = delete;
    Signal &operator=(Signal const &) = delete;

    void give();
    void wait(); ///< takes the signal; sleeps until there is one

private:
    std::atomic<std::uint32_t> m_state{0}; // bit 0: given; above: how many wait
};

} // namespace os
