#include "System/Patterns/observer.h"

namespace Qel {

cObserver::~cObserver() = default;

} // namespace Qel
