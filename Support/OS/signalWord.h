#pragma once

#include "Support/OS/futex.h"

namespace os {

/// The signal of Signal and SharedSignal, wherever its word lies.
void giveSignal(std::atomic<std::uint32_t> &state, FutexScope scope);
void waitSignal(std::atomic<std::uint32_t> &state, FutexScope scope);

} // namespace os
