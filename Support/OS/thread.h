#pragma once

#include "Support/export.h"

namespace os {

enum class ThreadPriority {
    BelowNormal,
    Normal,
};

/// Sets the calling thread's share of the processor, as far as the process may. A thread is not set below
/// normal where the process could not bring it back.
/// @return false if nothing has changed
QEL_API bool setCurrentThreadPriority(ThreadPriority priority);

} // namespace os
