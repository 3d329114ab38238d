#include "System/Patterns/resourceMgr.h"

#include "Support/PoolHeap/poolBlk.h"

#include <memory>
#include <utility>

// Keeps the file's bytes. A texture would make itself of them and say how much that takes.
class Bytes : public Qel::cResource {
public:
    explicit Bytes(Qel::String const &file) { setName(file); }
    PoolBlk const &bytes() const { return m_bytes; }

protected:
    bool stream_callback(PoolBlk &data, Qel::eStreamCallback) override
    {
        m_bytes = std::move(data); // what is left in it is freed after the call
        size = m_bytes.size();     // counts against the budget
        loaded = true;
        return true;
    }
    void unload() override { m_bytes.free(); }

private:
    PoolBlk m_bytes;
};

class BytesMgr : public Qel::cResourceManager {
public:
    BytesMgr() : cResourceManager(0xB17E5, CACHE_UNREFERENCED_RESOURCES) {}
    ~BytesMgr() override { unloadAndDestroyAll(); } // here, while destroy() is there

protected:
    Qel::cResource *create(Qel::String const &name, void *) override
    {
        return std::make_unique<Bytes>(name).release();
    }
    void destroy(Qel::cResource *resource) override { std::unique_ptr<Qel::cResource> const owner(resource); }
};

int main()
{
    BytesMgr manager;
    manager.addArchive("media", "FILESYSTEM");
    manager.setMemoryBudget(64u << 20);

    // Now, on this thread.
    unsigned int const id = manager.Register("stone.tga", Qel::PRIORITY_MOST_URGENT, true, nullptr);
    auto const *stone = static_cast<Bytes *>(manager.getByID(id, true));
    bool const there = stone != nullptr && stone->isLoaded();

    // In the background, into the cache: it stays until the budget is short, or is found again at once.
    manager.streamResourceByName("music.ogg", Qel::PRIORITY_LEAST_URGENT, nullptr);

    manager.Unregister(id, false); // the reference; the resource stays in the cache
    return there ? 0 : 1;
}
