#include "System/Patterns/resource.h"

#include "System/Patterns/resourceMgr.h"
#include "System/System/logManager.h"

#include "Support/PoolHeap/poolBlk.h"

namespace Qel {

cResource::cResource() : lastAccess(cResourceManager::getResourceMgrTick())
{
}

cResource::cResource(cResource const &other)
    : name(other.name), factoryName(other.factoryName), lastAccess(other.lastAccess), size(other.size),
      refCount(other.refCount), loaded(other.loaded), streaming(other.streaming)
{
}

cResource &cResource::operator=(cResource const &other)
{
    name = other.name;
    factoryName = other.factoryName;
    lastAccess = other.lastAccess;
    size = other.size;
    refCount = other.refCount;
    loaded = other.loaded;
    streaming = other.streaming;
    return *this;
}

cResource::~cResource() = default;

bool cResource::operator<(cResource &other)
{
    return lastAccess < other.lastAccess;
}

bool cResource::load()
{
    return false;
}

void cResource::unload()
{
}

bool cResource::stream_callback(PoolBlk &data, eStreamCallback reason)
{
    streaming = false;
    if (LogManager::checkDefLogLevel(1)) {
        char const *const label = reason == STREAM_FORCED   ? "forced"
                                  : reason == STREAM_CACHED ? "cached"
                                                            : "";
        LogManager::defLevelMessage("cResource::stream_callback (%s)  File: %s Size: %d\n", label,
                                    name.c_str(), static_cast<int>(data.size()));
    }
    return false;
}

void cResource::touch()
{
    lastAccess = cResourceManager::getResourceMgrTick();
}

} // namespace Qel
