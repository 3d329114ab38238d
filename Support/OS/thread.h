#pragma once

#include "Support/export.h"

namespace os {

enum class ThreadPriority {
    BelowNormal,
    Normal,
};

/// Sets the calling thread's share of the processor, as far as the process may.
/// @return false if the system refuses; nothing has then changed
QEL_API bool setCurrentThreadPriority(ThreadPriority priority);

} // namespace os
