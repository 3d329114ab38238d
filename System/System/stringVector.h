#pragma once

#include "System/System/string.h"

#include <vector>

namespace Qel {

/// A list of texts, as split() fills it and the lists of names give it.
using StringVector = std::vector<String>;

} // namespace Qel
