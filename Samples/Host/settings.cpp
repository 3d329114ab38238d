#include "settings.h"

namespace settings {

Qel::Configurable<int> frames("host.frames", 300);
Qel::Configurable<int> fps("host.fps", 100);
Qel::Configurable<int> budget("host.budget", 4 << 20);

} // namespace settings
