#include "System/Patterns/resourceMgr.h"

#include "System/Patterns/resourceHeld.h"

#include "System/File/archive.h"
#include "System/File/archiveStreaming.h"
#include "System/File/fileInfo.h"
#include "System/System/logManager.h"

#include "Support/PoolHeap/poolBlk.h"

#include <cstring>
#include <utility>

namespace Qel {

namespace {

// The managers that live: a streamer may call for one that is gone. Not to be destroyed, so that managers
// may die at any time.
constinit cResourceManager *firstManager = nullptr;

constinit cResourceManager::sGlobalStats globalStats{};

// A name in normal form with its hash. Names of usual length take no memory.
class NormalName {
public:
    explicit NormalName(char const *name)
    {
        std::size_t const bytes = std::strlen(name) + 1;
        char *normal = m_short;
        if (bytes > sizeof m_short) {
            m_long.resize(bytes);
            normal = m_long.data();
        }
        StringTools::remap(normal, name, StringTools::getMapTable(MAP_PATH));
        m_file = HashConstCharPtr(normal);
    }

    NormalName(NormalName const &) = delete;
    NormalName &operator=(NormalName const &) = delete;

    HashConstCharPtr const &file() const { return m_file; }

private:
    char m_short[260];
    String m_long;
    HashConstCharPtr m_file;
};

} // namespace

std::uint32_t cResourceManager::mResourceMgrTick = 0;

cResourceManager::cResourceManager(unsigned int memoryContext, unsigned int flags)
    : m_resources(1, nullptr), m_memoryContext(memoryContext), m_flags(flags), m_slots(1),
      m_next(firstManager)
{
    if (m_next != nullptr) {
        m_next->m_previous = this;
    }
    firstManager = this;
}

cResourceManager::~cResourceManager()
{
    if (m_next != nullptr) {
        m_next->m_previous = m_previous;
    }
    (m_previous != nullptr ? m_previous->m_next : firstManager) = m_next;
}

unsigned int cResourceManager::Register(cResource *resource, ePriority priority)
{
    ++m_stats.registered;
    if (resource == nullptr) {
        return 0;
    }
    std::uint32_t id = idOf(*resource);
    if (id == 0) {
        for (cResourceManager *other = firstManager; resource->m_id != 0 && other != nullptr;
             other = other->m_next) {
            other->letGo(*resource);
        }
        if (m_freeIds.empty()) {
            id = static_cast<std::uint32_t>(m_resources.size());
            m_slots.emplace_back();
            m_resources.push_back(resource);
        } else {
            id = m_freeIds.back();
            m_freeIds.pop_back();
            m_resources[id] = resource;
        }
        resource->m_id = id;
        char const *const name = resource->name.c_str();
        auto const [place, isNew] =
            m_nameToId.try_emplace(Key{String(name), StringTools::calcHash(name)}, id);
        m_slots[id] = Slot{isNew ? place : m_nameToId.end(), ++m_registrations};
    }
    if (priority == PRIORITY_MOST_URGENT) {
        streamResource(*resource, priority);
    }
    return id;
}

unsigned int cResourceManager::Register(String const &name, ePriority priority, bool logFailure, void *user)
{
    NormalName const normal(name.c_str());
    std::uint32_t id = idOf(normal.file().text, normal.file().hash);
    if (id != 0) {
        m_resources[id]->incRefCount();
        return id;
    }
    FileInfo info;
    if (_findResource(normal.file(), &info)) {
        if (cResource *const resource = create(String(info.name), user)) {
            resource->incRefCount();
            id = Register(resource, priority);
        }
    }
    if (id == 0 && logFailure && LogManager::checkDefLogLevel(3)) {
        LogManager::defLevelMessage("cResourceManager::Register() Failed! File: %s\n", name.c_str());
    }
    return id;
}

void cResourceManager::Unregister(unsigned int id, bool force)
{
    cResource *const resource = getByID(id, false);
    if (resource == nullptr) {
        return;
    }
    resource->decRefCount();
    if (!force && (m_flags & CACHE_UNREFERENCED_RESOURCES) != 0) {
        return;
    }
    ++m_stats.unregistered;
    if (resource->loaded) {
        unloadAndDestroyResource(resource);
    }
}

std::uint32_t cResourceManager::idOf(cResource const &resource) const
{
    std::uint32_t const id = resource.m_id;
    return id < m_resources.size() && m_resources[id] == &resource ? id : 0;
}

std::uint32_t cResourceManager::idOf(char const *normalName, std::uint32_t hash) const
{
    auto const place = m_nameToId.find(KeyView{normalName, hash});
    return place == m_nameToId.end() ? 0 : place->second;
}

unsigned int cResourceManager::nameToID(String const &name)
{
    NormalName const normal(name.c_str());
    return idOf(normal.file().text, normal.file().hash);
}

cResource *cResourceManager::getByName(String const &name, bool load)
{
    return getByID(nameToID(name), load);
}

cResource *cResourceManager::getByID(unsigned int id, bool load)
{
    ++m_stats.lookups;
    cResource *resource = id < m_resources.size() ? m_resources[id] : nullptr;
    if (resource == nullptr) {
        return nullptr;
    }
    if (load && !resource->loaded) {
        streamResourceById(id, PRIORITY_MOST_URGENT);
        resource = id < m_resources.size() ? m_resources[id] : nullptr;
        if (resource == nullptr) {
            return nullptr;
        }
    }
    resource->lastAccess = mResourceMgrTick;
    return resource;
}

bool cResourceManager::findFile(cResource const &resource, FileInfo &info)
{
    return _findResource(HashConstCharPtr(resource.name.c_str()), &info);
}

void cResourceManager::request(FileInfo &info, ePriority priority)
{
    if (LogManager::checkDefLogLevel(1)) {
        LogManager::defLevelMessage("cResourceManager::streamResource (Request)  File: %s\n", info.name);
    }
    streamer->requestFile(&info, &static_stream_callback, this, m_memoryContext, priority);
}

bool cResourceManager::streamResource(cResource &resource, ePriority priority)
{
    if (resource.loaded) {
        return true;
    }
    Held const held(*this, resource);
    resource.lastAccess = mResourceMgrTick;
    if (held.slot().loading) {
        return true;
    }
    if (priority == PRIORITY_MOST_URGENT) {
        loadNow(resource);
    } else {
        if (streamer == nullptr || resource.streaming) {
            return true;
        }
        resource.streaming = true;
        held.slot().asked = priority;
        FileInfo info;
        if (findFile(resource, info) && held.alive() && streamer != nullptr) {
            request(info, priority);
        }
    }
    if (!held.alive()) {
        return false;
    }
    if (resource.loaded) {
        resource.streaming = false;
    }
    return resource.loaded || resource.streaming;
}

void cResourceManager::loadNow(cResource &resource)
{
    Held const held(*this, resource);
    if (resource.streaming) {
        abort_streaming(resource);
        if (!held.alive()) {
            return;
        }
    }
    resource.streaming = true;
    bool hasLoaded = false;
    try {
        SlotFlag const loading(held, &Slot::loading);
        hasLoaded = resource.load();
    } catch (...) {
        if (held.alive()) {
            resource.streaming = false;
        }
        throw;
    }
    if (!held.alive()) {
        return;
    }
    if (hasLoaded) {
        account(held);
        if (held.alive()) {
            resource.loaded = true;
            checkUsage();
        }
        return;
    }

    FileInfo info;
    if (!findFile(resource, info) || !held.alive()) {
        return;
    }
    if (streamer != nullptr) {
        held.slot().asked = PRIORITY_MOST_URGENT;
        request(info, PRIORITY_MOST_URGENT);
        return;
    }
    PoolBlk block;
    if (_readResourceData(info, block, m_memoryContext) > 0 && held.alive()) {
        stream_callback(resource, block, STREAM_FORCED);
    }
}

void cResourceManager::stream_callback(cResource &resource, PoolBlk &data, eStreamCallback reason)
{
    if (reason != STREAM_CACHED && reason != STREAM_FORCED) {
        return;
    }
    Held const held(*this, resource);
    if (!resource.loaded) {
        resource.incRefCount(); // it must outlive what it does in the call, and the eviction for its sake
        resource.lastAccess = mResourceMgrTick;
        try {
            SlotFlag const loading(held, &Slot::loading);
            resource.stream_callback(data, reason);
        } catch (...) {
            if (held.alive()) {
                resource.decRefCount();
                resource.streaming = false;
            }
            throw;
        }
        if (held.alive()) {
            account(held);
            checkUsage();
        }
        if (!held.alive()) {
            return;
        }
        resource.decRefCount();
    }
    resource.streaming = false;
}

bool cResourceManager::isLiving(void const *manager)
{
    cResourceManager const *living = firstManager;
    while (living != nullptr && living != manager) {
        living = living->m_next;
    }
    return living != nullptr;
}

// A streamer may be late: for a manager that is gone, for a resource that is gone, or twice.
void cResourceManager::static_stream_callback(char const *name, PoolBlk &data, void *user,
                                              eStreamCallback reason)
{
    if (!isLiving(user)) {
        return;
    }
    auto *const manager = static_cast<cResourceManager *>(user);
    if (cResource *const resource = manager->getByName(String(name), false)) {
        manager->stream_callback(*resource, data, reason);
    }
}

void cResourceManager::abort_streaming(cResource &resource)
{
    if (streamer != nullptr && resource.streaming) {
        resource.streaming = false;
        String const file = resource.name; // the resource may be gone before the call has returned
        streamer->abortFile(file.c_str());
        // It knows requests by the name alone, so those of other managers are dropped, too.
        std::vector<cResourceManager *> others;
        for (cResourceManager *other = firstManager; other != nullptr; other = other->m_next) {
            if (other != this) {
                others.push_back(other);
            }
        }
        for (cResourceManager *const other : others) {
            if (isLiving(other)) {
                other->askAgain(HashConstCharPtr(file.c_str()));
            }
        }
    }
}

void cResourceManager::askAgain(HashConstCharPtr const &file)
{
    std::uint32_t const id = idOf(file.text, file.hash);
    if (id == 0 || !m_resources[id]->streaming || m_slots[id].loading) {
        return;
    }
    Held const held(*this, *m_resources[id]);
    FileInfo info;
    if (findFile(held.resource(), info) && held.alive() && streamer != nullptr) {
        request(info, held.slot().asked);
    }
}

bool cResourceManager::streamResourceById(unsigned int id, ePriority priority)
{
    cResource *const resource = id < m_resources.size() ? m_resources[id] : nullptr;
    return resource != nullptr && streamResource(*resource, priority);
}

bool cResourceManager::streamResourceByName(String const &name, ePriority priority, void *user)
{
    if ((m_flags & CACHE_UNREFERENCED_RESOURCES) == 0) {
        if (LogManager::checkDefLogLevel(3)) {
            LogManager::defLevelMessage("cResourceManager::streamResourceByName WARNING - Unable to stream "
                                        "resource. CACHE_UNREFERENCED_RESOURCES not set.\n");
        }
        return false;
    }
    unsigned int const id = Register(name, PRIORITY_MIDDLE, false, user);
    cResource *const resource = id < m_resources.size() ? m_resources[id] : nullptr;
    if (resource == nullptr) {
        return false;
    }
    Held const held(*this, *resource);
    bool const result = streamResource(*resource, priority);
    if (held.alive()) {
        resource->decRefCount();
    }
    return result;
}

void cResourceManager::refreshResource(unsigned int id)
{
    cResource *const resource = id < m_resources.size() ? m_resources[id] : nullptr;
    if (resource == nullptr || !resource->loaded) {
        return;
    }
    Held const held(*this, *resource);
    unloadLoaded(*resource);
    if (held.alive()) {
        streamResource(*resource, PRIORITY_MOST_URGENT);
    }
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the given way to take a name.
bool cResourceManager::isResourceLoaded(String name)
{
    cResource const *const resource = getByName(name, false);
    return resource != nullptr && resource->loaded;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the given way to take a name.
bool cResourceManager::isResourceStreamed(String)
{
    return false;
}

bool cResourceManager::isResourceInUse(String const &name)
{
    unsigned int const id = nameToID(name);
    cResource const *const resource = id < m_resources.size() ? m_resources[id] : nullptr;
    return resource != nullptr && (resource->loaded || resource->streaming) &&
           std::uint64_t{resource->lastAccess} + 2 >= mResourceMgrTick;
}

bool cResourceManager::_findResourceData(char const *name, PoolBlk &block, FileInfo *info)
{
    return cArchiveContainer::_findResourceData(name, block, m_memoryContext, info);
}

unsigned int cResourceManager::getRegisteredResources(StringVector &out) const
{
    return listResources(out, false);
}

unsigned int cResourceManager::getAllResources(StringVector &out) const
{
    return listResources(out, true);
}

unsigned int cResourceManager::listResources(StringVector &out, bool all) const
{
    for (cResource const *const resource : m_resources) {
        if (resource != nullptr && (all || resource->refCount != 0)) {
            out.push_back(resource->name + " [" + String(static_cast<unsigned int>(resource->refCount)) +
                          "]");
        }
    }
    return static_cast<unsigned int>(out.size());
}

cResource *cResourceManager::create(String const &, void *)
{
    return nullptr;
}

cResourceManager::sGlobalStats const &cResourceManager::getGlobalStats()
{
    return globalStats;
}

void cResourceManager::resetGlobalStats()
{
    globalStats = {};
}

} // namespace Qel
