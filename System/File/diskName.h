#pragma once

#include "System/System/export.h"
#include "System/System/string.h"

namespace Qel {

/// Finds a file or folder on the disk whose name is known in normal form only.
///
/// An archive is made under its name in lower case, and the disk may tell cases apart. The name as it stands
/// comes first; else each element is looked for among the names of its folder, in byte order, and a path that
/// leads nowhere gives way to the next.
/// @param name  relative or absolute, in any spelling
/// @return its path on the disk; empty if there is none
QEL_API String findDiskName(char const *name);

} // namespace Qel
