#pragma once

#include "Support/export.h"

#include <cstddef>

namespace os {

/// Copies memory of this process that may not be there, without a fault.
/// @param address  any value
/// @param out      @p size bytes of the caller's
/// @return false if not all of it can be read, or the system lets no process look; @p out is then not to be
/// used
QEL_API bool readMemory(void const *address, void *out, std::size_t size);

} // namespace os
