#include "Tests/Patterns/resourceFixture.h"

#include "System/System/exception.h"

#include "Tests/Tools/logLines.h"
#include "Tests/virtualSlot.h"

#include <limits>
#include <optional>

namespace Qel {
namespace {

using Resource = TestMgr::Resource;

TEST_F(ResourceMgr, GivesNumbersAndUsesThemAgain)
{
    TestMgr manager;
    EXPECT_EQ(manager.getByID(0, true), nullptr);
    EXPECT_EQ(manager.getByID(7, true), nullptr);
    EXPECT_EQ(manager.nameToID("anything"), 0u);
    EXPECT_EQ(manager.Register(nullptr, PRIORITY_MIDDLE), 0u);

    Resource &first = manager.add("dir/one", 1);
    Resource &second = manager.add("two", 1, PRIORITY_MOST_URGENT);
    manager.add("three", 1, PRIORITY_MOST_URGENT);
    EXPECT_EQ(manager.nameToID("DIR\\One"), 1u);
    EXPECT_EQ(manager.getByName("Two", false), &second);
    EXPECT_EQ(manager.Register(&first, PRIORITY_MIDDLE), 1u) << "a second time changes nothing";

    manager.Unregister(3, false);
    manager.Unregister(2, false);
    EXPECT_EQ(manager.getByID(2, false), nullptr);
    EXPECT_EQ(manager.nameToID("two"), 0u);
    manager.add("four", 1);
    manager.add("five", 1);
    manager.add("six", 1);
    EXPECT_EQ(manager.nameToID("four"), 2u) << "the number freed last";
    EXPECT_EQ(manager.nameToID("five"), 3u);
    EXPECT_EQ(manager.nameToID("six"), 4u);

    StringVector list(1);
    EXPECT_EQ(manager.getAllResources(list), 5u);
    EXPECT_STREQ(list[2], "four [0]");
    first.incRefCount();
    EXPECT_EQ(manager.getRegisteredResources(list), 6u);
    EXPECT_STREQ(list[5], "dir/one [1]");

    manager.resetStats();
    manager.getByID(1, false);
    manager.Register(nullptr, PRIORITY_MIDDLE);
    manager.Unregister(2, false);
    EXPECT_EQ(manager.getStats().lookups, 2u);
    EXPECT_EQ(manager.getStats().registered, 1u);
    EXPECT_EQ(manager.getStats().unregistered, 1u);
    EXPECT_EQ(manager.nameToID("four"), 2u) << "not loaded, so it stays";
}

TEST_F(ResourceMgr, KeepsResourcesOfOneNameApart)
{
    TestMgr manager;
    Resource &first = manager.add("same", 10, PRIORITY_MOST_URGENT);
    Resource &second = manager.add("same", 20, PRIORITY_MOST_URGENT);
    EXPECT_EQ(manager.getByName("same", false), &first);
    EXPECT_EQ(manager.getByID(2, false), &second);
    manager.takeCalls();
    manager.Unregister(2, true);
    EXPECT_EQ(manager.takeCalls(), "unload ~same ");
    EXPECT_EQ(manager.getByName("same", false), &first);
    EXPECT_EQ(manager.getMemoryUsage(), 10u);

    manager.add("same", 20);
    manager.Unregister(1, true);
    EXPECT_EQ(manager.getByName("same", false), nullptr);
    manager.takeCalls();
    manager.unloadAndDestroyAll();
    EXPECT_EQ(manager.takeCalls(), "~same ") << "no leak of one that has no name";
}

TEST_F(ResourceMgr, MakesResourcesOfFilesByName)
{
    test::LogLines log;
    TestMgr manager;
    manager.addArchive(archive);
    int tag = 0;
    EXPECT_EQ(manager.Register("A", PRIORITY_MIDDLE, true, &tag), 1u);
    EXPECT_EQ(manager.lastUser, &tag);
    EXPECT_EQ(manager.at(1)->getRefCount(), 1u);
    EXPECT_FALSE(manager.at(1)->isLoaded());
    EXPECT_EQ(manager.Register("a", PRIORITY_MOST_URGENT, true, nullptr), 1u);
    EXPECT_EQ(manager.at(1)->getRefCount(), 2u);
    EXPECT_FALSE(manager.at(1)->isLoaded()) << "the second call loads nothing";
    EXPECT_EQ(manager.Register("b", PRIORITY_MOST_URGENT, true, nullptr), 2u);
    EXPECT_TRUE(manager.isResourceLoaded("B"));
    EXPECT_EQ(manager.at(2)->content, "bb");
    EXPECT_EQ(log.take(), "");

    EXPECT_EQ(manager.Register("Nowhere", PRIORITY_MIDDLE, false, nullptr), 0u);
    EXPECT_EQ(log.take(), "");
    EXPECT_EQ(manager.Register("Nowhere", PRIORITY_MIDDLE, true, nullptr), 0u);
    EXPECT_EQ(log.take(), "cResourceManager::Register() Failed! File: Nowhere\n");
    manager.makes = false;
    EXPECT_EQ(manager.Register(std::string(5000, 'n').c_str(), PRIORITY_MIDDLE, false, nullptr), 0u);
    EXPECT_EQ(manager.Register("c", PRIORITY_MIDDLE, false, nullptr), 0u);
    EXPECT_EQ(manager.Register(String(), PRIORITY_MIDDLE, false, nullptr), 0u);
}

// The table of states: what a load leaves behind, and what was called for it.
TEST_F(ResourceMgr, LoadsInEveryState)
{
    struct {
        char const *what;
        bool loadsItself, exists, takesData;
        unsigned int read;
        ePriority priority;
        bool result, loaded, streaming;
        char const *calls;
    } const rows[] = {
        {"loads itself", true, true, true, 4, PRIORITY_MOST_URGENT, true, true, false, "load "},
        {"takes its file", false, true, true, 4, PRIORITY_MOST_URGENT, true, true, false, "load forced "},
        {"no file", false, false, true, 4, PRIORITY_MOST_URGENT, true, false, true, "load "},
        {"nothing read", false, true, true, 0, PRIORITY_MOST_URGENT, true, false, true, "load "},
        {"takes it not", false, true, false, 4, PRIORITY_MOST_URGENT, false, false, false, "load forced "},
        {"background, no streamer", true, true, true, 4, PRIORITY_LEAST_URGENT, true, false, false, ""},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        archive.claims = [&](std::string const &) { return row.read; };
        TestMgr manager;
        manager.addArchive(archive);
        Resource &resource = manager.add(row.exists ? "a" : "x", 4);
        resource.loadsItself = row.loadsItself;
        resource.takesData = row.takesData;
        ticks(1);
        EXPECT_EQ(manager.streamResourceById(1, row.priority), row.result);
        EXPECT_EQ(resource.isLoaded(), row.loaded);
        EXPECT_EQ(resource.isStreaming(), row.streaming);
        EXPECT_EQ(manager.takeCalls(), row.calls);
        EXPECT_EQ(resource.getRefCount(), 0u);
        EXPECT_EQ(resource.getLastAccess(), cResourceManager::getResourceMgrTick());
        EXPECT_EQ(manager.getMemoryUsage(), row.loaded || std::string(row.calls) == "load forced " ? 4u : 0u);

        EXPECT_EQ(manager.getByID(1, true), &resource) << "whether it can be loaded or not";
        EXPECT_EQ(manager.takeCalls(), row.loaded        ? ""
                                       : row.loadsItself ? "load "
                                                         : row.calls)
            << "asked again";
        EXPECT_LE(manager.getMemoryUsage(), 4u) << "counted once";
    }

    TestMgr manager;
    Resource &loaded = manager.add("a", 4, PRIORITY_MOST_URGENT);
    std::int64_t const used = loaded.getLastAccess();
    ticks(5);
    EXPECT_TRUE(manager.streamResource(loaded, PRIORITY_MOST_URGENT));
    EXPECT_EQ(loaded.getLastAccess(), used);
    EXPECT_FALSE(manager.streamResourceById(9, PRIORITY_MOST_URGENT));
    EXPECT_FALSE(manager.isResourceStreamed("a"));

    manager.takeCalls();
    manager.refreshResource(1);
    EXPECT_EQ(manager.takeCalls(), "unload load ");
    manager.unloadResource(1);
    manager.unloadResource(1);
    EXPECT_EQ(manager.takeCalls(), "unload ");
    EXPECT_EQ(loaded.getSize() + manager.getMemoryUsage(), 0u);
    manager.refreshResource(1);
    manager.refreshResource(9);
    EXPECT_EQ(manager.takeCalls(), "");
}

TEST_F(ResourceMgr, KeepsAFailedLoadInOrderWhenItThrows)
{
    TestMgr manager;
    manager.addArchive(archive);
    Resource &a = manager.add("a", 4);
    a.onLoad = [] { throw std::runtime_error("no"); };
    EXPECT_THROW(manager.getByID(1, true), std::runtime_error);
    EXPECT_FALSE(a.isStreaming());
    a.onLoad = nullptr;
    a.loadsItself = false;
    a.onStream = [] { throw std::runtime_error("no"); };
    EXPECT_THROW(manager.getByID(1, true), std::runtime_error);
    EXPECT_EQ(a.getRefCount(), 0u);
    a.loaded = false;
    a.onStream = nullptr;
    EXPECT_TRUE(static_cast<Resource *>(manager.getByID(1, true))->isLoaded());
}

TEST_F(ResourceMgr, AsksTheStreamerAndTakesWhatItBrings)
{
    TestStreamer streamer;
    TestMgr manager(0x57AE, 0);
    manager.addArchive(archive);
    Resource &a = manager.add("a", 4);
    a.loadsItself = false;
    EXPECT_TRUE(manager.streamResource(a, PRIORITY_DEFAULT));
    EXPECT_TRUE(manager.streamResource(a, PRIORITY_DEFAULT)) << "under way, not asked for twice";
    ASSERT_EQ(streamer.requests.size(), 1u);
    EXPECT_STREQ(streamer.requests[0].info.name, "a");
    EXPECT_EQ(streamer.requests[0].info.archive, &archive);
    EXPECT_EQ(streamer.requests[0].context, 0x57AEu);
    EXPECT_EQ(streamer.requests[0].priority, PRIORITY_DEFAULT);
    EXPECT_EQ(manager.takeCalls(), "") << "load() is for the calling thread alone";

    for (std::uint32_t const reason : {0u, 2u, 3u, 5u, 0xFFFFFFFFu}) {
        TestStreamer::deliver(streamer.requests[0], static_cast<eStreamCallback>(reason));
        EXPECT_TRUE(a.isStreaming()) << reason;
    }
    EXPECT_EQ(manager.takeCalls(), "");
    ticks(3);
    TestStreamer::deliver(streamer.requests[0]);
    EXPECT_EQ(manager.takeCalls(), "cached ");
    EXPECT_TRUE(a.isLoaded() && !a.isStreaming());
    EXPECT_EQ(a.content, "aaaa");
    EXPECT_EQ(a.getLastAccess(), cResourceManager::getResourceMgrTick());
    EXPECT_EQ(manager.getMemoryUsage(), 4u);
    TestStreamer::deliver(streamer.requests[0]);
    EXPECT_EQ(manager.takeCalls(), "") << "brought twice";
    EXPECT_EQ(manager.getMemoryUsage(), 4u);

    // At once: the request under way is dropped, and a new one is made. Another manager's goes with it, and
    // is made again.
    TestMgr other;
    other.addArchive(archive);
    other.streamResource(other.add("b", 2), PRIORITY_LEAST_URGENT);
    Resource &b = manager.add("b", 2);
    b.loadsItself = false;
    manager.streamResource(b, PRIORITY_LEAST_URGENT);
    streamer.requests.clear();
    EXPECT_EQ(manager.getByName("b", true), &b);
    ASSERT_EQ(streamer.requests.size(), 2u);
    EXPECT_EQ(streamer.requests[0].user, static_cast<cResourceManager *>(&other));
    EXPECT_EQ(streamer.requests[0].priority, PRIORITY_LEAST_URGENT);
    EXPECT_EQ(streamer.requests[1].priority, PRIORITY_MOST_URGENT);
    ASSERT_EQ(streamer.aborted.size(), 1u);
    EXPECT_EQ(streamer.aborted[0], "b");
    EXPECT_TRUE(b.isStreaming());
}

TEST_F(ResourceMgr, DropsWhatComesForTheDead)
{
    TestStreamer streamer;
    std::optional<TestMgr> manager(std::in_place, 0x57AEu, 0u);
    manager->addArchive(archive);
    for (char const *const name : {"a", "b"}) {
        Resource &resource = manager->add(name, 1);
        resource.loadsItself = false;
        manager->streamResource(resource, PRIORITY_DEFAULT);
    }
    ASSERT_EQ(streamer.requests.size(), 2u);
    std::vector<TestStreamer::Request> const requests = streamer.requests;

    manager->at(1)->loaded = true;
    manager->Unregister(1, true);
    manager->add("c", 1);
    manager->takeCalls();
    TestStreamer::deliver(requests[0]);
    EXPECT_EQ(manager->takeCalls(), "") << "the resource is gone and its number another's";

    manager->unloadAndDestroyAll();
    manager->takeCalls();
    TestStreamer::deliver(requests[1]);
    EXPECT_EQ(manager->takeCalls(), "");
    manager.reset();
    TestStreamer::deliver(requests[1]);
    TestStreamer::Request nobody = requests[1];
    nobody.user = nullptr;
    TestStreamer::deliver(nobody);
    PoolBlk block;
    requests[1].callback(nullptr, block, &streamer, STREAM_CACHED);
}

TEST_F(ResourceMgr, StreamsIntoTheCacheByName)
{
    test::LogLines log;
    TestMgr plain;
    EXPECT_FALSE(plain.streamResourceByName("a", PRIORITY_MOST_URGENT, nullptr));
    EXPECT_NE(log.take().find("cResourceManager::streamResourceByName WARNING - Unable to stream resource. "
                              "CACHE_UNREFERENCED_RESOURCES not set.\n"),
              std::string::npos);

    TestMgr manager(0, CACHE_UNREFERENCED_RESOURCES | cResourceManager::UNLOAD_REFERENCED_RESOURCES);
    manager.addArchive(archive);
    EXPECT_FALSE(manager.streamResourceByName("nowhere", PRIORITY_MOST_URGENT, nullptr));
    EXPECT_TRUE(manager.streamResourceByName("A", PRIORITY_MOST_URGENT, nullptr));
    EXPECT_TRUE(manager.isResourceLoaded("a"));
    EXPECT_EQ(manager.at(1)->getRefCount(), 0u);

    manager.takeCalls();
    EXPECT_EQ(manager.Register("a", PRIORITY_MOST_URGENT, true, nullptr), 1u);
    manager.Unregister(1, false);
    EXPECT_EQ(manager.Register("a", PRIORITY_MOST_URGENT, true, nullptr), 1u);
    EXPECT_EQ(manager.takeCalls(), "") << "found again in the cache without a load";
    manager.Unregister(1, true);
    EXPECT_EQ(manager.takeCalls(), "unload ~a ");

    PoolBlk block;
    FileInfo info;
    EXPECT_TRUE(manager._findResourceData("D", block, &info));
    EXPECT_EQ(block.size(), 8u);
}

TEST_F(ResourceMgr, KnowsWhatIsInUse)
{
    TestMgr manager;
    Resource &a = manager.add("a", 1, PRIORITY_MOST_URGENT);
    EXPECT_FALSE(manager.isResourceInUse("nowhere"));
    for (int age = 0; age < 5; ++age, ticks(1)) {
        EXPECT_EQ(manager.isResourceInUse("A"), age <= 2) << age;
    }
    a.touch();
    EXPECT_TRUE(manager.isResourceInUse("a"));
    manager.unloadResource(1);
    EXPECT_FALSE(manager.isResourceInUse("a"));
    Resource older = a;
    EXPECT_EQ(older.getLastAccess(), a.getLastAccess());
    ticks(1);
    a.touch();
    EXPECT_TRUE(older < a);
    EXPECT_FALSE(a < older);
}

TEST_F(ResourceMgr, EndsWithNothingLeft)
{
    test::LogLines log;
    TestMgr manager;
    manager.add("idle", 1);
    manager.add("loaded", 1, PRIORITY_MOST_URGENT);
    EXPECT_FALSE(manager.unloadAndDestroyAll());
    manager.add("used", 1, PRIORITY_MOST_URGENT).incRefCount();
    log.take();
    EXPECT_TRUE(manager.unloadAndDestroyAll());
    EXPECT_NE(
        log.take().find("cResourceManager::unloadAndDestroyAll - Resource is still in use. Name: used\n"),
        std::string::npos);
    EXPECT_EQ(manager.getMemoryUsage(), 0u);
    manager.add("next", 1);
    EXPECT_EQ(manager.nameToID("next"), 1u);

    try {
        manager.unloadAndDestroyResource(nullptr);
        FAIL();
    } catch (Exception const &exception) {
        EXPECT_EQ(exception.getNumber(), 9);
        EXPECT_STREQ(exception.description, "Invalid Resource");
        EXPECT_STREQ(exception.source, "cResourceManager::unloadAndDestroyResource");
        EXPECT_STREQ(exception.file, "System/Patterns/resourceMgr");
    }
}

TEST_F(ResourceMgr, LogsWhatItIsTold)
{
    test::LogLines log(3);
    TestStreamer streamer;
    TestMgr manager;
    manager.addArchive(archive);
    Resource &a = manager.add("a", 1);
    manager.streamResource(a, PRIORITY_DEFAULT);
    EXPECT_NE(log.take().find("cResourceManager::streamResource (Request)  File: a\n"), std::string::npos);

    struct {
        std::uint32_t reason;
        char const *text;
    } const rows[] = {
        {4, "(forced)  File: a Size: 3\n"}, {1, "(cached)  File: a Size: 3\n"}, {7, "()  File: a"}};
    for (auto const &row : rows) {
        PoolBlk block;
        block.alloc(3, 0);
        a.streaming = true;
        EXPECT_FALSE(a.plainCallback(block, static_cast<eStreamCallback>(row.reason)));
        EXPECT_FALSE(a.isStreaming());
        EXPECT_NE(log.take().find("cResource::stream_callback " + std::string(row.text)), std::string::npos);
    }
}

// Opens the operations that are protected.
struct OpenResource : public cResource {
    static bool standsInOrder()
    {
        using R = OpenResource;
        return standInOrder(2, &R::getSize, &R::operator<, &R::getLoadBalanceFactor, &R::load, &R::unload,
                            &R::stream_callback);
    }
};

struct OpenMgr : public cResourceManager {
    static bool standsInOrder()
    {
        using M = OpenMgr;
        using ByResource = unsigned int (M::*)(cResource *, ePriority);
        using ByName = unsigned int (M::*)(String const &, ePriority, bool, void *);
        return standInOrder(
            2, &M::setMemoryBudget, &M::getMemoryBudget, &M::getMemoryUsage,
            static_cast<void (M::*)()>(&M::checkUsage), &M::unloadAllResources, &M::unloadAndDestroyAll,
            &M::getByName, &M::getByID, &M::nameToID, &M::getRegisteredResources, &M::getAllResources,
            &M::isResourceLoaded, &M::isResourceStreamed, &M::refreshResource,
            static_cast<ByResource>(&M::Register), static_cast<ByName>(&M::Register), &M::Unregister,
            &M::streamResourceByName, &M::stream_callback, &M::create, &M::destroy);
    }
};

// Plugins are built against the places; a destructor takes two.
TEST(ResourceSlots, StandInTheirOrder)
{
    EXPECT_TRUE(OpenResource::standsInOrder());
    EXPECT_TRUE(OpenMgr::standsInOrder());
}

} // namespace
} // namespace Qel
