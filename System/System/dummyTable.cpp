#include "System/System/dummyTable.h"

namespace Qel {

// Constant and trivial to destroy: there before the first static object and after the last.
constinit DummyManager DummyManager::msInstance;
constinit DummyTable DummyTable::msInstance;

DummyManager &DummyManager::Instance()
{
    return msInstance;
}

DummyTable &DummyTable::Instance()
{
    return msInstance;
}

} // namespace Qel
