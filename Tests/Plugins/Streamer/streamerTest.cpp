#include "Tests/Plugins/archivePlugin.h"

#include "System/File/archiveStreaming.h"
#include "System/Patterns/resourceMgr.h"
#include "System/System/Root.h"

#include "Tests/Tools/memoryArchive.h"

#include "Support/PoolHeap/poolHeap.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace Qel {
namespace {

constexpr unsigned int context = 0x57AE44;

/// An archive whose reads wait until a test opens it, and which notes them. Any thread may read it.
class Gate : public test::MemoryArchive {
public:
    using MemoryArchive::MemoryArchive;

    unsigned int readFile(FileInfo *info, void *buffer, unsigned int room, unsigned int handle) override
    {
        std::unique_lock lock(m_lock);
        started.emplace_back(info->name);
        m_inside += info->size;
        mostInside = std::max(mostInside, m_inside);
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_open; });
        m_inside -= info->size;
        if (throws) {
            throw std::runtime_error("no");
        }
        return MemoryArchive::readFile(info, buffer, room, handle);
    }

    void open()
    {
        std::lock_guard const hold(m_lock);
        m_open = true;
        m_changed.notify_all();
    }
    void close()
    {
        std::lock_guard const hold(m_lock);
        m_open = false;
    }
    void awaitStarted(std::size_t count)
    {
        std::unique_lock lock(m_lock);
        m_changed.wait(lock, [&] { return started.size() >= count; });
    }

    std::vector<std::string> started; // while no thread reads
    std::uint64_t mostInside = 0;
    bool throws = false;

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_open = false;
    std::uint64_t m_inside = 0;
};

class Streaming : public ArchivePlugin {
protected:
    explicit Streaming(char const *options = "Workers=1\nMegabytesInFlight=1\n")
        : ArchivePlugin("plugin_streamer.dll", "streamer.cfg", options)
    {
        for (int i = 0; i < 10; ++i) {
            gate.files.emplace_back(std::to_string(i), std::string(100, static_cast<char>('0' + i)));
        }
    }
    ~Streaming() override
    {
        gate.open();
        loader().flushRequests();
    }

    void ask(char const *name, int priority)
    {
        FileInfo info;
        ASSERT_TRUE(gate.findFile(name, &info, 0));
        loader().requestFile(&info, &Streaming::take, this, context, static_cast<ePriority>(priority));
    }

    static iArchiveStreaming &loader() { return *cArchiveContainer::streamer; }

    static void take(char const *name, PoolBlk &data, void *user, eStreamCallback reason)
    {
        auto &self = *static_cast<Streaming *>(user);
        EXPECT_EQ(std::this_thread::get_id(), self.m_thread);
        EXPECT_EQ(reason, STREAM_CACHED);
        EXPECT_EQ(static_cast<char const *>(data.data())[data.size() - 1], name[0]);
        self.taken += std::string(name) + " ";
        if (self.onTaken) {
            self.onTaken(name);
        }
    }

    static std::uint64_t liveBlocks()
    {
        PoolHeap::ContextCounts counts;
        return PoolHeap::context_counts(context, counts) ? counts.liveBlocks : 0;
    }

    Gate gate{"gate"};
    std::string taken;
    std::function<void(std::string const &)> onTaken;

private:
    std::thread::id m_thread = std::this_thread::get_id();
};

TEST_F(Streaming, ReadsTheMostUrgentFirstAndThenTheOneThatCameFirst)
{
    ask("0", 13);
    gate.awaitStarted(1);
    struct {
        char const *name;
        int priority;
    } const rows[] = {{"1", 13}, {"2", 14}, {"3", 0}, {"4", 7}, {"5", 13}, {"6", 0}};
    for (auto const &row : rows) {
        ask(row.name, row.priority);
    }
    loader().deliverFinished();
    EXPECT_EQ(taken, "") << "not before it is read";
    gate.open();
    loader().flushRequests();
    EXPECT_EQ(taken, "0 3 6 4 1 5 2 ");
    EXPECT_EQ(liveBlocks(), 0u);
}

TEST_F(Streaming, DropsWhatIsAborted)
{
    ask("0", 1);
    gate.awaitStarted(1);
    for (char const *const name : {"1", "2", "1", "3"}) {
        ask(name, 2);
    }
    loader().abortFile("0");
    loader().abortFile("1");
    loader().abortFile("nowhere");
    loader().abortFile(nullptr);
    gate.open();
    loader().flushRequests();
    EXPECT_EQ(taken, "2 3 ");

    ask("4", 1);
    ask("5", 1);
    gate.awaitStarted(5); // so 4 is read
    loader().abortFile("4");
    loader().flushRequests();
    EXPECT_EQ(taken, "2 3 5 ");
    EXPECT_EQ(liveBlocks(), 0u);
}

TEST_F(Streaming, LetsCallbacksAskAbortAndFlush)
{
    gate.open();
    int chain = 0;
    onTaken = [&](std::string const &name) {
        if (name == "0") {
            ask("1", 0);
            loader().abortFile("2");
            loader().flushRequests();
            EXPECT_EQ(taken, "0 1 ");
            loader().deliverFinished();
        } else if (name == "3" && ++chain < 1000) {
            ask("3", 0);
        }
    };
    gate.close();
    ask("0", 1);
    ask("2", 1);
    gate.open();
    loader().flushRequests();
    EXPECT_EQ(taken, "0 1 ");

    // One that asks anew each time it is served: the flush must not wait for the end of that.
    ask("3", 0);
    loader().flushRequests();
    EXPECT_LE(chain, 2);
    onTaken = nullptr;
    loader().flushRequests();

    onTaken = [](std::string const &) { throw std::runtime_error("no"); };
    ask("4", 0);
    EXPECT_THROW(loader().flushRequests(), std::runtime_error);
    onTaken = nullptr;
    ask("5", 0);
    loader().flushRequests();
    EXPECT_TRUE(taken.ends_with("5 ")) << "and it goes on after that";
}

TEST_F(Streaming, SaysWhatCouldNotBeRead)
{
    gate.open();
    gate.claims = [](std::string const &) { return 0u; };
    ask("0", 1);
    loader().flushRequests();
    EXPECT_EQ(log.take(), "Streamer: '0' could not be read\n");
    gate.throws = true;
    ask("1", 1);
    loader().flushRequests();
    EXPECT_EQ(log.take(), "Streamer: '1' could not be read\n");
    EXPECT_EQ(taken, "");
    FileInfo nobody;
    loader().requestFile(&nobody, &Streaming::take, this, context, PRIORITY_DEFAULT);
    loader().requestFile(nullptr, &Streaming::take, this, context, PRIORITY_DEFAULT);
}

class StreamingInParallel : public Streaming {
protected:
    StreamingInParallel() : Streaming("Workers=4\nMegabytesInFlight=1\n") {}
};

TEST_F(StreamingInParallel, KeepsToItsMemory)
{
    // 300 000 bytes each: three fit into a megabyte, and a longer file goes alone.
    for (auto &[name, content] : gate.files) {
        content = std::string(name == "9" ? 3000000 : 300000, name[0]);
    }
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 9; ++i) {
            ask(std::to_string(i).c_str(), 5);
        }
    }
    gate.awaitStarted(3);
    gate.open();
    // Nothing is handed over, so nothing more may be begun.
    for (int i = 0; i < 20 && liveBlocks() < 3; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_LE(liveBlocks(), 3u);
    loader().flushRequests();
    EXPECT_EQ(taken.size(), 27u * 2);
    EXPECT_LE(gate.mostInside, std::uint64_t{1} << 20);

    ask("9", 0);
    ask("1", 0);
    loader().flushRequests();
    EXPECT_EQ(taken.size(), 29u * 2);
    EXPECT_LE(gate.mostInside, 3000000u) << "the long one was alone";
    PoolHeap::ContextCounts counts;
    ASSERT_TRUE(PoolHeap::context_counts(context, counts));
    EXPECT_LE(counts.peakBytes, 3000000u + 5 * 65536u); // each thread may be off by 64 KiB
}

/// A manager whose resources take what is streamed to them.
class StreamedMgr : public cResourceManager {
public:
    StreamedMgr() : cResourceManager(context, CACHE_UNREFERENCED_RESOURCES) {}
    ~StreamedMgr() override { unloadAndDestroyAll(); }

    class Streamed : public cResource {
    public:
        explicit Streamed(char const *file) { setName(file); }

    protected:
        bool stream_callback(PoolBlk &data, eStreamCallback) override
        {
            m_block = std::move(data);
            size = m_block.size();
            loaded = true;
            return true;
        }
        void unload() override { m_block.free(); }

    private:
        PoolBlk m_block;
    };

protected:
    cResource *create(String const &name, void *) override
    {
        return std::make_unique<Streamed>(name).release();
    }
    void destroy(cResource *resource) override { std::unique_ptr<cResource> const owner(resource); }
};

TEST_F(StreamingInParallel, ServesAManagerThatComesAndGoes)
{
    std::optional<StreamedMgr> streamed(std::in_place);
    streamed->addArchive(gate);
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(streamed->streamResourceByName(std::to_string(i).c_str(), PRIORITY_DEFAULT, nullptr));
    }
    gate.awaitStarted(1);
    streamed->setMemoryBudget(300);
    gate.open();
    loader().flushRequests();
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(streamed->isResourceLoaded(std::to_string(i).c_str()));
    }
    EXPECT_EQ(streamed->getMemoryUsage(), 1000u) << "all were used in this tick";
    for (int i = 0; i < 3; ++i) {
        cResourceManager::resourceMgrTick();
    }
    streamed->checkUsage();
    EXPECT_LT(streamed->getMemoryUsage(), 225u);

    gate.close();
    streamed->unloadAllResources();
    for (int i = 0; i < 10; ++i) {
        streamed->streamResourceByName(std::to_string(i).c_str(), PRIORITY_DEFAULT, nullptr);
    }
    streamed.reset();
    gate.open();
    loader().flushRequests();
    EXPECT_EQ(liveBlocks(), 0u);
}

TEST(StreamerPlugin, EndsWhileRequestsFly)
{
    for (int round = 0; round < 20; ++round) {
        PluginMgr plugins;
        Gate gate("gate", {{"a", std::string(1000, 'a')}, {"b", std::string(1000, 'b')}});
        StreamedMgr streamed;
        streamed.addArchive(gate);
        {
            StartedPlugin const plugin("plugin_streamer.dll");
            streamed.streamResourceByName("a", PRIORITY_DEFAULT, nullptr);
            streamed.streamResourceByName("b", PRIORITY_LEAST_URGENT, nullptr);
            gate.open();
        }
        EXPECT_EQ(cArchiveContainer::streamer, nullptr);
        EXPECT_TRUE(streamed.isResourceLoaded("a") && streamed.isResourceLoaded("b")) << "nothing is lost";
    }
}

TEST(StreamerPlugin, IsPumpedByTheFrames)
{
    test::TempFolder const folder;
    test::writeFile("plugins.cfg", "Plugin=plugin_streamer\n");
    testing::internal::CaptureStderr();
    Gate gate("gate", {{"a", "aaaa"}});
    {
        Root root("plugins.cfg", "debug.log", false);
        ASSERT_NE(cArchiveContainer::streamer, nullptr);
        EXPECT_TRUE(ArchiveManager::InstanceActive());
        StreamedMgr streamed;
        streamed.addArchive(gate);
        streamed.streamResourceByName("a", PRIORITY_DEFAULT, nullptr);
        gate.open();
        FrameEvent event;
        for (int i = 0; i < 2000 && !streamed.isResourceLoaded("a"); ++i) {
            EXPECT_TRUE(root._fireFrameStarted(event));
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_TRUE(streamed.isResourceLoaded("a"));

        // The clock of the resources has moved before a listener is told of the frame's end.
        struct Listener final : FrameListener {
            bool frameEnded(FrameEvent const &) override
            {
                tick = cResourceManager::getResourceMgrTick();
                return false;
            }
            unsigned int tick = 0;
        } listener;
        root.addFrameListener(&listener);
        unsigned int const before = cResourceManager::getResourceMgrTick();
        EXPECT_FALSE(root._fireFrameEnded(event));
        EXPECT_EQ(listener.tick, before + 1);
        root.removeFrameListener(&listener);
    }
    EXPECT_FALSE(ArchiveManager::InstanceActive());
    EXPECT_EQ(cArchiveContainer::streamer, nullptr);
    testing::internal::GetCapturedStderr();
}

} // namespace
} // namespace Qel
