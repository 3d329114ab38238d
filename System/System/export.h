#pragma once

#include "Support/export.h"

#include <cassert>

/// A caller's fault: stops in debug and sanitizer builds, costs nothing in release.
#define QEL_ASSERT(condition) assert(condition)

/// Lets the compiler check a printf format against its arguments. Positions count from 1, and a member
/// function's object is argument 1.
#define QEL_PRINTF(formatAt, firstArgumentAt) __attribute__((format(printf, formatAt, firstArgumentAt)))
