#include "System/Patterns/resource.h"

#include "System/Patterns/resourceMgr.h"
#include "System/System/logManager.h"

#include "Support/PoolHeap/poolBlk.h"

namespace Qel {

cResource::cResource() : m_lastAccess(cResourceManager::getResourceMgrTick())
{
}

cResource::cResource(cResource const &other)
    : m_name(other.m_name), m_factoryName(other.m_factoryName), m_lastAccess(other.m_lastAccess),
      m_size(other.m_size), m_refCount(other.m_refCount), m_loaded(other.m_loaded),
      m_streaming(other.m_streaming)
{
}

cResource &cResource::operator=(cResource const &other)
{
    m_name = other.m_name;
    m_factoryName = other.m_factoryName;
    m_lastAccess = other.m_lastAccess;
    m_size = other.m_size;
    m_refCount = other.m_refCount;
    m_loaded = other.m_loaded;
    m_streaming = other.m_streaming;
    return *this;
}

cResource::~cResource() = default;

bool cResource::operator<(cResource &other)
{
    return m_lastAccess < other.m_lastAccess;
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
    m_streaming = false;
    if (LogManager::checkDefLogLevel(1)) {
        char const *const label = reason == STREAM_FORCED   ? "forced"
                                  : reason == STREAM_CACHED ? "cached"
                                                            : "";
        LogManager::defLevelMessage("cResource::stream_callback (%s)  File: %s Size: %d\n", label,
                                    m_name.c_str(), static_cast<int>(data.size()));
    }
    return false;
}

void cResource::touch()
{
    m_lastAccess = cResourceManager::getResourceMgrTick();
}

} // namespace Qel
