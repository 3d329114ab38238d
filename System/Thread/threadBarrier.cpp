#include "System/Thread/threadBarrier.h"

#include "System/System/logManager.h"

namespace Qel {

void reportThreadException(char const *what)
{
    logMessage(String("Thread ended by an exception: ") + what + "\n", 3);
}

} // namespace Qel
