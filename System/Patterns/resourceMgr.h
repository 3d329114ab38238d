#pragma once

#include "System/File/archiveContainer.h"
#include "System/Patterns/resource.h"
#include "System/System/export.h"
#include "System/System/priority.h"
#include "System/System/string.h"
#include "System/System/stringVector.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string_view>
#include <vector>

class PoolBlk;

namespace Qel {

/// How a cResourceManager treats its resources: bits.
enum eResourceFlags : std::uint32_t {
    CACHE_UNREFERENCED_RESOURCES = 1, ///< Unregister() keeps what nobody refers to, unless forced
    UNLOAD_REFERENCED_RESOURCES = 2   ///< eviction takes referenced ones too; it unloads and never destroys
};

/// Owns resources by name and number, counts them against a budget, throws out what was not used for longest
/// and loads at once or through the streamer.
///
/// A concrete manager supplies destroy(), and create() if it is to make resources from names. It calls
/// unloadAndDestroyAll() in its own destructor, since destroy() is gone after that. Its files are found in
/// the archives that are mounted on it, see cArchiveContainer.
///
/// @code
/// class TextureMgr : public Qel::cResourceManager {
/// public:
///     TextureMgr() : cResourceManager(0x7E27, CACHE_UNREFERENCED_RESOURCES) {}
///     ~TextureMgr() override { unloadAndDestroyAll(); }
///
/// protected:
///     Qel::cResource *create(Qel::String const &name, void *) override { return new Texture(name); }
///     void destroy(Qel::cResource *resource) override { delete resource; }
/// };
///
/// TextureMgr textures;
/// textures.addArchive("media", "FILESYSTEM");
/// textures.setMemoryBudget(64u << 20);
/// unsigned int const id = textures.Register("stone.tga", Qel::PRIORITY_MIDDLE, true, nullptr);
/// auto *stone = static_cast<Texture *>(textures.getByID(id, true)); // loaded now, if it can be
/// @endcode
///
/// **Eviction.** Every load, and a new budget, ends with checkUsage(): above the budget it goes down to three
/// quarters of it, the least recently used first. What was used during the current tick or the two before
/// it, or is referenced, stays. The clock is a tick that Root advances once a frame.
///
/// **Re-entry.** What the library calls on a resource, on create() and destroy(), on an archive or on the
/// streamer may register, unregister, load and evict in its turn, and set the budget. A load or an unload
/// that comes back to its own resource finds it as it is, and a resource is not destroyed while one of its
/// own operations runs. Only the manager must not be destroyed, nor all its resources at once.
///
/// @par Limits     Sizes and the budget have 32 bits; a usage beyond that reads as 4 GiB less one byte. A
///                 number is used again after its resource is gone: a stale one may give another resource.
/// @par Ownership  Owns a resource from Register() to destroy().
/// @par Threads    Takes no lock. One thread drives a manager, its resources and the tick.
class QEL_API cResourceManager : public cArchiveContainer {
public:
    using enum eResourceFlags;

    struct Stats {
        std::uint32_t registered;   ///< calls of Register() with a resource, null included
        std::uint32_t unregistered; ///< calls of Unregister() that did not leave the resource in the cache
        std::uint32_t unused1;
        std::uint32_t lookups; ///< calls of getByID()
        std::uint32_t unused2;
    };

    struct sGlobalStats {
        std::uint32_t unused1;
        std::uint32_t unused2;
    };

    /// @param memoryContext  what blocks of loaded data are counted under
    /// @param flags          of eResourceFlags
    explicit cResourceManager(unsigned int memoryContext = 0x228FC766, unsigned int flags = 0);
    virtual ~cResourceManager(); ///< destroys no resource: unloadAndDestroyAll() comes before it

    /// @param bytes  what loaded resources may take together; 0 for no limit. Evicts at once if need be
    virtual void setMemoryBudget(unsigned int bytes);
    virtual unsigned int getMemoryBudget() const;
    virtual unsigned int getMemoryUsage(); ///< bytes of all that is loaded, as cResource::getSize() told them

    virtual void checkUsage();          ///< evicts if the usage is above the budget
    virtual void unloadAllResources();  ///< all stay registered
    virtual bool unloadAndDestroyAll(); ///< true if one was still referenced; it is destroyed all the same

    /// The resource of a name, used now.
    /// @param load  load it now if it is not
    /// @return null if it is not registered; it may be there and not loaded
    virtual cResource *getByName(String const &name, bool load);
    virtual cResource *getByID(unsigned int id, bool load); ///< by number; null for 0 and for a free number
    virtual unsigned int nameToID(String const &name);      ///< in any spelling; 0 if not registered

    /// Appends "name [references]" of each resource that is referenced, by number.
    /// @return the number of texts in @p out
    virtual unsigned int getRegisteredResources(StringVector &out) const;
    virtual unsigned int getAllResources(StringVector &out) const; ///< the same of all resources

    virtual bool isResourceLoaded(String name);    ///< false if not registered
    virtual bool isResourceStreamed(String name);  ///< always false
    virtual void refreshResource(unsigned int id); ///< loads it anew if it is loaded

    /// Takes a resource over. Its count stays as it is. If its name is taken, the name keeps leading to the
    /// resource before it.
    /// @param priority  0 loads it now
    /// @return its number; 0 for null. One that is registered here already keeps its number, and one that
    ///         another manager owned is taken from it
    virtual unsigned int Register(cResource *resource, ePriority priority);

    /// Finds the resource of a name or makes it through create(), if there is such a file; it is referenced
    /// once more.
    /// @param name        in any spelling
    /// @param priority    0 loads it now if it is new
    /// @param logFailure  log a failure
    /// @param user        handed to create()
    /// @return its number, 0 on failure
    virtual unsigned int Register(String const &name, ePriority priority, bool logFailure, void *user);

    /// Gives a reference back, and destroys the resource with the last one if it is loaded. One that is not
    /// loaded stays registered until it is destroyed with all others.
    /// @param force  also if CACHE_UNREFERENCED_RESOURCES would keep it
    virtual void Unregister(unsigned int id, bool force);

    /// Loads a resource into the cache, referenced by nobody. Needs CACHE_UNREFERENCED_RESOURCES.
    /// @param priority  0 loads it now, else in the background
    /// @return false if there is no such file; else as streamResource()
    virtual bool streamResourceByName(String const &name, ePriority priority, void *user);

    /// Takes the data of a load. Called for the manager by itself and by the streamer.
    virtual void stream_callback(cResource &resource, PoolBlk &data, eStreamCallback reason);

protected:
    virtual cResource *create(String const &name, void *user); ///< null makes no resource
    virtual void destroy(cResource *resource) = 0;             ///< frees it; it is unloaded already

public:
    void unloadResource(unsigned int id); ///< nothing happens if it is not loaded

    /// Loads a resource, at once or in the background.
    /// @param priority  0 for at once. Without a streamer nothing happens for another one
    /// @return is it loaded, or under way? A resource whose file is not found counts as under way
    bool streamResource(cResource &resource, ePriority priority);
    bool streamResourceById(unsigned int id, ePriority priority); ///< false for a free number

    /// Is it loaded or under way, and used during this tick or the two before?
    bool isResourceInUse(String const &name);

    using cArchiveContainer::_findResourceData;
    bool _findResourceData(char const *name, PoolBlk &block, FileInfo *info); ///< in the manager's context

    void setName(String const &name) { m_name = name; } ///< of the manager; for its user
    String const &getName() const { return m_name; }

    void resetStats() { m_stats = {}; }
    Stats const &getStats() const { return m_stats; }
    static sGlobalStats const &getGlobalStats();
    static void resetGlobalStats();

    static void resourceMgrTick() { ++mResourceMgrTick; } ///< a frame has passed, for all managers
    static unsigned int getResourceMgrTick() { return mResourceMgrTick; }

    void debugLog(unsigned short) {} ///< kept for callers; does nothing

    static std::uint32_t mResourceMgrTick;

protected:
    void unloadResource(cResource &resource);

    /// Destroys a resource that nobody refers to.
    /// @throws Exception number 9 for null
    void unloadAndDestroyResource(cResource *resource);

    /// Destroys every resource that a test holds for, referenced or not.
    void destroyIf(std::function<bool(cResource const &)> const &test);

private:
    struct sCheckUsage;

    struct Key {
        String name;
        std::uint32_t hash;
    };
    struct KeyView {
        std::string_view name;
        std::uint32_t hash;
    };
    struct KeyLess {
        using is_transparent = void;
        template <class A, class B>
        bool operator()(A const &a, B const &b) const
        {
            return a.hash != b.hash ? a.hash < b.hash : std::string_view(a.name) < std::string_view(b.name);
        }
    };
    using NameToId = std::map<Key, std::uint32_t, KeyLess>;

    // What the manager keeps beside a resource.
    struct Slot {
        NameToId::iterator name;        // end() if its name belonged to another
        std::uint32_t registration = 0; // tells resources apart that had one number and one address
        std::uint32_t accounted = 0;    // bytes of m_memoryUsage
        ePriority asked{};              // of the last request to the streamer
        bool loading = false;           // its load() or its stream_callback() runs
        bool unloading = false;         // its unload() runs
    };

    class Held;
    class SlotFlag;

    void abort_streaming(cResource &resource);
    void askAgain(HashConstCharPtr const &file);
    bool checkUsage(sCheckUsage &s, unsigned int first, unsigned int last);
    bool checkUsageFlush(sCheckUsage &s);
    static void static_stream_callback(char const *name, PoolBlk &data, void *user, eStreamCallback reason);

    bool isOverBudget() const;
    bool isCandidate(cResource const &resource) const;
    std::uint64_t evictionTarget() const;
    std::uint32_t idOf(cResource const &resource) const;
    std::uint32_t idOf(char const *normalName, std::uint32_t hash) const;
    bool findFile(cResource const &resource, FileInfo &info);
    void request(FileInfo &info, ePriority priority);
    void loadNow(cResource &resource);
    void account(Held const &held);
    void release(cResource const &resource);
    void unloadLoaded(cResource &resource);
    void destroyRegistered(cResource &resource);
    void unloadAndDestroyAnyway(cResource &resource);
    void vacate(std::uint32_t id);
    void letGo(cResource &resource);
    static bool isLiving(void const *manager);
    bool finish(cResource &resource);
    unsigned int listResources(StringVector &out, bool all) const;

    String m_name;
    NameToId m_nameToId;
    std::vector<cResource *> m_resources; // by number; 0 stays free
    std::vector<std::uint32_t> m_freeIds; // the last one is used first
    std::uint32_t m_memoryBudget = 0xFFFFFFFF;
    std::uint64_t m_memoryUsage = 0;
    Stats m_stats{};
    std::uint32_t m_memoryContext;
    std::uint32_t m_flags;

    std::vector<Slot> m_slots; // beside m_resources
    std::uint32_t m_registrations = 0;
    sCheckUsage *m_eviction = nullptr; // the pass that runs
    cResourceManager *m_next;          // all managers that live
    cResourceManager *m_previous = nullptr;
};

} // namespace Qel
