#include "mediaManager.h"

#include "Support/PoolHeap/poolHeap.h"

#include <memory>
#include <utility>

namespace {

constexpr unsigned memoryContext = 0x3ED1A;

} // namespace

class MediaManager::File final : public Qel::cResource {
public:
    File(MediaManager &manager, Qel::String const &file) : m_manager(manager) { setName(file); }

protected:
    // At once, also where a streamer would queue it.
    bool load() override
    {
        PoolBlk bytes;
        return m_manager._findResourceData(getName().c_str(), bytes, nullptr) && take(bytes);
    }

    void unload() override
    {
        m_bytes.free();
        if (!m_manager.m_isClearing) {
            m_manager.m_watcher.unloaded(getName());
        }
    }

    bool stream_callback(PoolBlk &data, Qel::eStreamCallback) override
    {
        loaded = take(data);
        return loaded;
    }

private:
    bool take(PoolBlk &bytes)
    {
        m_manager.m_watcher.loaded(getName(), bytes);
        m_bytes = std::move(bytes);
        size = m_bytes.size();
        return true;
    }

    MediaManager &m_manager;
    PoolBlk m_bytes;
};

MediaManager::MediaManager(MediaWatcher &watcher)
    : cResourceManager(memoryContext, CACHE_UNREFERENCED_RESOURCES), m_watcher(watcher)
{
    PoolHeap::ContextInfo context;
    context.name = "loaded media";
    context.id = memoryContext;
    PoolHeap::context_init(context);
}

void MediaManager::clear()
{
    m_isClearing = true;
    unloadAndDestroyAll();
    m_isClearing = false;
}

Qel::cResource *MediaManager::create(Qel::String const &name, void *)
{
    return std::make_unique<File>(*this, name).release();
}

void MediaManager::destroy(Qel::cResource *resource)
{
    std::unique_ptr<Qel::cResource> const owner(resource);
}
