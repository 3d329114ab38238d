#include "System/Thread/threadBarrier.h"

#include "Support/OS/debug.h"

#include <string>

namespace Qel {

void reportThreadException(char const *what)
{
    os::debugOutput((std::string("thread ended by an exception: ") + what + '\n').c_str());
}

} // namespace Qel
