#include "settings.h"

namespace settings {

Qel::Configurable<int> frames("host.frames", 300);
Qel::Configurable<int> fps("host.fps", 100);

} // namespace settings
