#pragma once

#include "System/File/archiveStreaming.h"
#include "System/File/fileInfo.h"
#include "System/Patterns/resourceMgr.h"

#include "Tests/Tools/memoryArchive.h"

#include "Support/PoolHeap/poolBlk.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Qel {

/// A manager that is open to tests, and its resources, which note what is done to them.
class TestMgr : public cResourceManager {
public:
    class Resource : public cResource {
    public:
        Resource(TestMgr &owner, char const *itsName, unsigned int itsBytes) : bytes(itsBytes), m_owner(owner)
        {
            setName(itsName);
        }
        ~Resource() override { m_owner.calls += "~" + std::string(getName().c_str()) + " "; }

        bool load() override
        {
            m_owner.calls += "load ";
            if (onLoad) {
                onLoad();
            }
            size = loadsItself ? bytes : 0;
            return loadsItself;
        }
        void unload() override
        {
            m_owner.calls += "unload ";
            if (onUnload) {
                onUnload();
            }
        }
        bool stream_callback(PoolBlk &data, eStreamCallback reason) override
        {
            m_owner.calls += reason == STREAM_FORCED ? "forced " : "cached ";
            content.assign(static_cast<char const *>(data.data()), data.size());
            size = data.size();
            loaded = takesData;
            if (onStream) {
                onStream();
            }
            return true;
        }

        using cResource::lastAccess;
        using cResource::loaded;
        using cResource::refCount;
        using cResource::size;
        using cResource::streaming;
        bool plainCallback(PoolBlk &data, eStreamCallback reason)
        {
            return cResource::stream_callback(data, reason);
        }

        unsigned int bytes;
        bool loadsItself = false;
        bool takesData = true;
        std::string content;
        std::function<void()> onLoad, onUnload, onStream;

    private:
        TestMgr &m_owner;
    };

    using cResourceManager::cResourceManager;
    using cResourceManager::unloadAndDestroyResource;
    using cResourceManager::unloadResource;

    ~TestMgr() override { unloadAndDestroyAll(); }

    /// Registers a resource that loads itself.
    Resource &add(char const *name, unsigned int bytes, ePriority priority = PRIORITY_MIDDLE)
    {
        auto resource = std::make_unique<Resource>(*this, name, bytes);
        resource->loadsItself = true;
        Resource &result = *resource;
        Register(resource.release(), priority);
        return result;
    }

    Resource *at(unsigned int id) { return static_cast<Resource *>(getByID(id, false)); }

    std::string takeCalls()
    {
        std::string text;
        text.swap(calls);
        return text;
    }

    std::string calls;
    std::function<void()> onDestroy, onDestroyed;

protected:
    cResource *create(String const &name, void *user) override
    {
        lastUser = user;
        return makes ? std::make_unique<Resource>(*this, name, 0).release() : nullptr;
    }
    void destroy(cResource *resource) override
    {
        if (onDestroy) {
            onDestroy();
        }
        std::unique_ptr<cResource>(resource).reset();
        if (onDestroyed) {
            onDestroyed();
        }
    }

public:
    bool makes = true;
    void *lastUser = nullptr;
};

/// A streamer that delivers when it is told to.
class TestStreamer : public iArchiveStreaming {
public:
    struct Request {
        FileInfo info;
        StreamCallback callback;
        void *user;
        unsigned int context;
        ePriority priority;
    };

    TestStreamer() { cArchiveContainer::setStreamingMgr(this); }
    ~TestStreamer() override { cArchiveContainer::setStreamingMgr(nullptr); }

    void flushRequests() override { requests.clear(); }
    void requestFile(FileInfo *info, StreamCallback callback, void *user, unsigned int context,
                     ePriority priority) override
    {
        requests.push_back({*info, callback, user, context, priority});
    }
    void abortFile(char const *name) override { aborted.emplace_back(name); }

    static void deliver(Request request, eStreamCallback reason = STREAM_CACHED)
    {
        PoolBlk block;
        cArchiveContainer::_readResourceData(request.info, block, request.context);
        request.callback(request.info.name, block, request.user, reason);
    }

    std::vector<Request> requests;
    std::vector<std::string> aborted;
};

class ResourceMgr : public testing::Test {
protected:
    ResourceMgr() : archive("files", {{"a", "aaaa"}, {"b", "bb"}, {"c", "c"}, {"d", "dddddddd"}})
    {
        cResourceManager::mResourceMgrTick = 100;
    }

    static void ticks(int count)
    {
        for (; count > 0; --count) {
            cResourceManager::resourceMgrTick();
        }
    }

    test::MemoryArchive archive;
};

} // namespace Qel
