#pragma once

#include "System/System/configurable.h"

/// What can be changed from the command line (--set) and from the console while frames run.
namespace settings {

extern Qel::Configurable<int> frames; ///< "host.frames": the loop ends after so many
extern Qel::Configurable<int> fps;    ///< "host.fps": frames a second at most, 0 for no limit
extern Qel::Configurable<int> budget; ///< "host.budget": bytes that loaded media may take, 0 for no limit

} // namespace settings
