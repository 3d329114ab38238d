#include "System/Patterns/resourceMgr.h"

#include "System/Patterns/resourceHeld.h"

#include "System/System/exception.h"
#include "System/System/logManager.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

namespace Qel {

namespace {

constexpr std::uint64_t noTarget = std::numeric_limits<std::uint64_t>::max();
constexpr std::size_t prefetchAhead = 8; // resources

} // namespace

// One pass, on the stack.
struct cResourceManager::sCheckUsage {
    struct Candidate {
        cResource *resource;
        std::uint32_t id;
        std::uint32_t registration;
        std::uint32_t lastAccess;
    };

    Candidate candidates[750];
    std::uint32_t count = 0;
    std::uint64_t target = 0; // the pass ends below it
};

void cResourceManager::setMemoryBudget(unsigned int bytes)
{
    m_memoryBudget = bytes;
    if (m_eviction != nullptr) {
        m_eviction->target = evictionTarget();
    }
    checkUsage();
}

unsigned int cResourceManager::getMemoryBudget() const
{
    return m_memoryBudget;
}

unsigned int cResourceManager::getMemoryUsage()
{
    return static_cast<unsigned int>(
        std::min<std::uint64_t>(m_memoryUsage, std::numeric_limits<unsigned int>::max()));
}

bool cResourceManager::isOverBudget() const
{
    return m_memoryBudget != 0 && m_memoryBudget != std::numeric_limits<std::uint32_t>::max() &&
           m_memoryUsage > m_memoryBudget;
}

std::uint64_t cResourceManager::evictionTarget() const
{
    // In 32 bits, so above a third of 4 GiB it comes out lower than three quarters.
    return isOverBudget() ? m_memoryBudget * 3u / 4u : noTarget;
}

void cResourceManager::checkUsage()
{
    // A resource that is evicted may load another: the pass that runs sees to that, too.
    if (m_eviction != nullptr || !isOverBudget()) {
        return;
    }
    sCheckUsage s;
    s.target = evictionTarget();

    struct PassScope {
        sCheckUsage *&pass;
        PassScope(sCheckUsage *&running, sCheckUsage *mine) : pass(running) { pass = mine; }
        ~PassScope() { pass = nullptr; }
    } const scope(m_eviction, &s);

    auto const length = static_cast<unsigned int>(m_resources.size());
    unsigned int const start = static_cast<unsigned int>(std::rand()) % length;
    if (!checkUsage(s, start, length) && !checkUsage(s, 0, start)) {
        checkUsageFlush(s);
    }
}

bool cResourceManager::isCandidate(cResource const &resource) const
{
    return resource.loaded && std::uint64_t{resource.lastAccess} + 2 < mResourceMgrTick &&
           (resource.refCount == 0 || (m_flags & UNLOAD_REFERENCED_RESOURCES) != 0);
}

bool cResourceManager::checkUsage(sCheckUsage &s, unsigned int first, unsigned int last)
{
    for (std::size_t i = first; i < last && i < m_resources.size(); ++i) {
        if (i + prefetchAhead < m_resources.size() && m_resources[i + prefetchAhead] != nullptr) {
            __builtin_prefetch(&m_resources[i + prefetchAhead]->lastAccess);
        }
        cResource *const resource = m_resources[i];
        if (resource == nullptr || !isCandidate(*resource)) {
            continue;
        }
        s.candidates[s.count++] = {resource, static_cast<std::uint32_t>(i), m_slots[i].registration,
                                   resource->lastAccess};
        if (s.count == std::size(s.candidates) && checkUsageFlush(s)) {
            return true;
        }
    }
    return false;
}

bool cResourceManager::checkUsageFlush(sCheckUsage &s)
{
    std::uint32_t const count = s.count;
    s.count = 0;
    std::sort(s.candidates, s.candidates + count,
              [](auto const &a, auto const &b) { return a.lastAccess < b.lastAccess; });
    for (std::uint32_t i = 0; i < count; ++i) {
        // What went before may have destroyed this one, or used it.
        sCheckUsage::Candidate const &candidate = s.candidates[i];
        if (candidate.id >= m_resources.size() || m_resources[candidate.id] != candidate.resource ||
            m_slots[candidate.id].registration != candidate.registration ||
            !isCandidate(*candidate.resource)) {
            continue;
        }
        if ((m_flags & UNLOAD_REFERENCED_RESOURCES) != 0) {
            unloadLoaded(*candidate.resource);
        } else {
            unloadAndDestroyResource(candidate.resource);
        }
        if (m_memoryUsage < s.target) {
            return true;
        }
    }
    return false;
}

// A resource that fails to load is asked again and again: what was added for it before is replaced.
void cResourceManager::account(Held const &held)
{
    std::uint32_t const bytes = held.resource().getSize();
    if (!held.alive()) {
        return;
    }
    if (held.id() != 0) {
        release(held.resource());
        held.slot().accounted = bytes;
    }
    m_memoryUsage += bytes;
}

void cResourceManager::release(cResource const &resource)
{
    std::uint32_t const id = idOf(resource);
    std::uint32_t bytes = resource.size;
    if (id != 0) {
        bytes = m_slots[id].accounted;
        m_slots[id].accounted = 0;
    }
    m_memoryUsage -= std::min<std::uint64_t>(bytes, m_memoryUsage);
}

void cResourceManager::unloadLoaded(cResource &resource)
{
    Held const held(*this, resource);
    if (!resource.loaded || held.slot().unloading) {
        return;
    }
    release(resource);
    {
        SlotFlag const unloading(held, &Slot::unloading);
        resource.unload();
    }
    if (held.alive()) {
        resource.size = 0;
        resource.loaded = false;
        resource.streaming = false;
    }
}

void cResourceManager::unloadResource(cResource &resource)
{
    unloadLoaded(resource);
}

void cResourceManager::unloadResource(unsigned int id)
{
    if (cResource *const resource = id < m_resources.size() ? m_resources[id] : nullptr) {
        unloadLoaded(*resource);
    }
}

void cResourceManager::unloadAndDestroyResource(cResource *resource)
{
    if (resource == nullptr) {
        throw Exception(Exception::InternalFailure, "Invalid Resource",
                        "cResourceManager::unloadAndDestroyResource", "System/Patterns/resourceMgr",
                        __LINE__);
    }
    if (resource->refCount != 0) {
        return;
    }
    Held const held(*this, *resource);
    unloadLoaded(*resource);
    // What unload() did may have made somebody refer to it. And one that is in the middle of a call of its
    // own has to outlive that.
    if (held.alive() && resource->refCount == 0 && !held.slot().loading && !held.slot().unloading) {
        destroyRegistered(*resource);
    }
}

void cResourceManager::destroyRegistered(cResource &resource)
{
    Held const held(*this, resource);
    if (held.id() == 0) {
        return;
    }
    release(resource); // a load that failed may have left something
    // First, since destroy() may call back when the resource is gone.
    std::uint32_t const id = held.id();
    std::uint32_t const registration = held.slot().registration;
    vacate(id);
    destroy(&resource);
    if (id < m_slots.size() && m_slots[id].registration == registration) {
        m_freeIds.push_back(id);
    }
}

void cResourceManager::vacate(std::uint32_t id)
{
    m_resources[id] = nullptr;
    if (m_slots[id].name != m_nameToId.end()) {
        m_nameToId.erase(std::exchange(m_slots[id].name, m_nameToId.end()));
    }
}

void cResourceManager::letGo(cResource &resource)
{
    if (std::uint32_t const id = idOf(resource)) {
        release(resource);
        resource.streaming = false; // what comes for it comes to this manager
        vacate(id);
        m_freeIds.push_back(id);
    }
}

void cResourceManager::unloadAllResources()
{
    std::vector<Held> all;
    all.reserve(m_nameToId.size());
    for (auto const &[key, id] : m_nameToId) {
        all.emplace_back(*this, *m_resources[id]);
    }
    for (Held const &held : all) {
        if (held.alive()) {
            unloadLoaded(held.resource());
        }
    }
}

bool cResourceManager::unloadAndDestroyAll()
{
    bool inUse = false;
    while (!m_nameToId.empty()) {
        inUse = finish(*m_resources[m_nameToId.begin()->second]) || inUse;
    }
    // Those whose name led to another.
    for (std::size_t id = 1; id < m_resources.size(); ++id) {
        if (m_resources[id] != nullptr) {
            inUse = finish(*m_resources[id]) || inUse;
        }
    }
    m_nameToId.clear();
    m_freeIds.clear();
    m_resources.assign(1, nullptr);
    m_slots.assign(1, Slot{m_nameToId.end()});
    return inUse;
}

bool cResourceManager::finish(cResource &resource)
{
    bool const inUse = resource.refCount != 0;
    if (inUse && LogManager::checkDefLogLevel(3)) {
        LogManager::defLevelMessage(
            "cResourceManager::unloadAndDestroyAll - Resource is still in use. Name: %s\n",
            resource.name.c_str());
    }
    unloadAndDestroyAnyway(resource);
    return inUse;
}

// Whoever refers to it.
void cResourceManager::unloadAndDestroyAnyway(cResource &resource)
{
    Held const held(*this, resource);
    unloadLoaded(resource);
    if (held.alive()) {
        destroyRegistered(resource);
    }
}

void cResourceManager::destroyIf(std::function<bool(cResource const &)> const &test)
{
    for (std::size_t id = 1; id < m_resources.size(); ++id) {
        cResource *const resource = m_resources[id];
        if (resource != nullptr && test(*resource)) {
            unloadAndDestroyAnyway(*resource);
        }
    }
}

} // namespace Qel
