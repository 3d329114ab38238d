#include "Tests/Patterns/resourceFixture.h"

#include <limits>

namespace Qel {
namespace {

using Resource = TestMgr::Resource;

std::string named(int number)
{
    return "r" + std::to_string(number);
}

// Registers and loads that many resources of the same size, one a tick.
void fill(TestMgr &manager, int count, unsigned int bytes)
{
    for (int i = 0; i < count; ++i) {
        manager.add(named(i).c_str(), bytes, PRIORITY_MOST_URGENT);
        cResourceManager::resourceMgrTick();
    }
}

std::string loadedOnes(TestMgr &manager, int count)
{
    std::string result;
    for (int i = 0; i < count; ++i) {
        unsigned int const id = manager.nameToID(named(i).c_str());
        result += id == 0 ? '-' : static_cast<Resource *>(manager.getByID(id, false))->isLoaded() ? 'L' : '.';
    }
    return result;
}

TEST_F(ResourceMgr, EvictsTheOldestDownToThreeQuarters)
{
    struct {
        char const *what;
        unsigned int budget, flags;
        int referenced; // or -1
        unsigned int usage;
        char const *left;
    } const rows[] = {
        {"below", 1000, 0, -1, 1000, "LLLLLLLLLL"},
        {"down to below 675", 900, 0, -1, 600, "----LLLLLL"},
        {"exactly three quarters is not enough", 800, 0, -1, 500, "-----LLLLL"},
        {"no limit", 0, 0, -1, 1000, "LLLLLLLLLL"},
        {"all but what was just used", 1, 0, -1, 200, "--------LL"},
        {"not what is referenced", 900, 0, 0, 600, "L----LLLLL"},
        {"unloads the referenced too and destroys none", 900, 2, 0, 600, "....LLLLLL"},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        TestMgr manager(0, row.flags);
        fill(manager, 10, 100);
        if (row.referenced >= 0) {
            manager.at(manager.nameToID(named(row.referenced).c_str()))->incRefCount();
            manager.at(manager.nameToID(named(row.referenced).c_str()))->lastAccess = 1;
        }
        manager.at(10)->lastAccess = cResourceManager::getResourceMgrTick();
        manager.setMemoryBudget(row.budget);
        EXPECT_EQ(manager.getMemoryBudget(), row.budget);
        EXPECT_EQ(manager.getMemoryUsage(), row.usage);
        EXPECT_EQ(loadedOnes(manager, 10), row.left);
    }
}

TEST_F(ResourceMgr, TakesNothingThatWasUsedInTheLastThreeTicks)
{
    for (int age = 0; age < 5; ++age) {
        TestMgr manager;
        manager.add("r0", 100, PRIORITY_MOST_URGENT);
        ticks(age);
        manager.setMemoryBudget(10);
        EXPECT_EQ(manager.getMemoryUsage(), age < 3 ? 100u : 0u) << age;
    }
    // The tick comes round: of what was used before that nothing is old, so nothing goes.
    cResourceManager::mResourceMgrTick = 0xFFFFFFFD;
    TestMgr manager;
    fill(manager, 4, 100);
    ticks(2);
    manager.setMemoryBudget(10);
    EXPECT_EQ(manager.getMemoryUsage(), 300u);
    EXPECT_EQ(loadedOnes(manager, 4), "LLL-") << "the last one is of the new count";
}

TEST_F(ResourceMgr, EvictsBatchByBatchUntilTheTargetIsMet)
{
    struct {
        unsigned int budget;
        unsigned int usage;
    } const rows[] = {{2000, 1499}, {1000, 749}, {4, 2}, {1, 0}};
    for (auto const &row : rows) {
        TestMgr manager;
        for (int i = 0; i < 2500; ++i) {
            manager.add(named(i).c_str(), 1, PRIORITY_MOST_URGENT);
        }
        ticks(3);
        manager.setMemoryBudget(row.budget);
        EXPECT_EQ(manager.getMemoryUsage(), row.usage) << row.budget;
        StringVector left;
        EXPECT_EQ(manager.getAllResources(left), row.usage);
    }
}

TEST_F(ResourceMgr, KeepsItsAccountsWhateverAResourceSays)
{
    TestMgr manager;
    Resource &a = manager.add("a", 100, PRIORITY_MOST_URGENT);
    Resource &b = manager.add("b", 50, PRIORITY_MOST_URGENT);
    a.size = 100000;
    b.size = 0;
    manager.unloadResource(1);
    EXPECT_EQ(manager.getMemoryUsage(), 50u);
    manager.unloadResource(2);
    EXPECT_EQ(manager.getMemoryUsage(), 0u);

    Resource &born = manager.add("born loaded", 10);
    born.loaded = true;
    born.size = 10;
    manager.unloadResource(3);
    EXPECT_EQ(manager.getMemoryUsage(), 0u) << "what was never added is not taken off";

    Resource copy = a;
    copy.loaded = true;
    copy.size = 7;
    manager.unloadResource(copy);
    EXPECT_EQ(manager.getMemoryUsage(), 0u);
    EXPECT_FALSE(copy.isLoaded());
    manager.takeCalls();
    manager.unloadAndDestroyResource(&copy);
    EXPECT_EQ(manager.takeCalls(), "") << "it is none of the manager's";

    a.decRefCount();
    a.decRefCount();
    EXPECT_EQ(a.getRefCount(), 0u);

    for (unsigned int const bytes : {0xFFFFFFF0u, 0x20u}) {
        manager.add(named(static_cast<int>(bytes % 7)).c_str(), bytes, PRIORITY_MOST_URGENT);
    }
    EXPECT_EQ(manager.getMemoryUsage(), 0xFFFFFFFFu) << "does not come round";
    ticks(3);
    manager.setMemoryBudget(0x100);
    EXPECT_LE(manager.getMemoryUsage(), 0x20u);
}

// Above a third of 4 GiB three quarters are worked out modulo 2^32: 0x80000000 gives 0x20000000.
TEST_F(ResourceMgr, WorksTheTargetOutIn32Bits)
{
    TestMgr manager;
    fill(manager, 5, 0x20000000);
    ticks(3);
    manager.setMemoryBudget(0x80000000);
    EXPECT_EQ(manager.getMemoryUsage(), 0u);
}

// Everything that is called may do as it likes with the manager. The sanitizers are the judge of much of it.
TEST_F(ResourceMgr, BearsWhatItsResourcesDo)
{
    struct {
        char const *what;
        void (*act)(TestMgr &manager, Resource &a, Resource &b);
    } const rows[] = {
        {"load registers until the tables move",
         [](TestMgr &manager, Resource &a, Resource &) {
             a.onLoad = [&manager] { fill(manager, 1000, 1); };
             EXPECT_TRUE(manager.getByID(1, true) == &a && a.isLoaded());
         }},
        {"load destroys another",
         [](TestMgr &manager, Resource &a, Resource &b) {
             b.loaded = true;
             a.onLoad = [&manager] { manager.Unregister(2, true); };
             EXPECT_EQ(manager.getByID(1, true), &a);
             EXPECT_EQ(manager.getByID(2, true), nullptr);
         }},
        {"a callback that unregisters its own",
         [](TestMgr &manager, Resource &a, Resource &) {
             a.loadsItself = false;
             a.onStream = [&manager] {
                 manager.Unregister(1, true);
                 manager.Unregister(1, true);
                 EXPECT_EQ(manager.takeCalls(), "load forced unload ");
             };
             EXPECT_EQ(manager.getByID(1, true), &a);
             EXPECT_FALSE(a.isLoaded());
             EXPECT_EQ(a.getRefCount(), 0u);
         }},
        {"load asks for itself, and for what asks for it",
         [](TestMgr &manager, Resource &a, Resource &b) {
             a.onLoad = [&manager] {
                 EXPECT_NE(manager.getByID(1, true), nullptr);
                 EXPECT_NE(manager.getByID(2, true), nullptr);
             };
             b.onLoad = [&manager] { EXPECT_NE(manager.getByID(1, true), nullptr); };
             manager.getByID(1, true);
             EXPECT_TRUE(a.isLoaded() && b.isLoaded());
             EXPECT_EQ(manager.takeCalls(), "load load ");
             EXPECT_EQ(manager.getMemoryUsage(), 200u);
         }},
        {"a callback that asks for itself and sets the budget",
         [](TestMgr &manager, Resource &a, Resource &) {
             a.loadsItself = false;
             a.takesData = false;
             a.onStream = [&manager] {
                 manager.getByID(1, true);
                 manager.setMemoryBudget(1);
                 manager.setMemoryBudget(0);
             };
             manager.getByID(1, true);
             EXPECT_EQ(manager.takeCalls(), "load forced ");
         }},
        {"a callback that destroys all but its own",
         [](TestMgr &manager, Resource &a, Resource &) {
             a.loadsItself = false;
             a.onStream = [&manager] {
                 manager.at(2)->loaded = true;
                 manager.Unregister(2, true);
                 manager.Unregister(1, false);
             };
             manager.getByID(1, true);
             EXPECT_EQ(manager.getByID(2, false), nullptr);
         }},
        {"unload unloads itself, loads and evicts",
         [](TestMgr &manager, Resource &a, Resource &) {
             manager.getByID(1, true);
             a.onUnload = [&manager] {
                 manager.unloadResource(1);
                 manager.getByID(1, true);
                 manager.getByID(2, true);
                 manager.setMemoryBudget(1);
             };
             manager.unloadResource(1);
             EXPECT_FALSE(a.isLoaded());
             EXPECT_EQ(manager.getMemoryUsage(), 100u);
         }},
        {"eviction in which each one takes the next along",
         [](TestMgr &manager, Resource &, Resource &) {
             fill(manager, 800, 1);
             for (unsigned int i = 3; i < 800; ++i) {
                 manager.at(i)->onUnload = [&manager, i] {
                     manager.Unregister(i % 2 == 0 ? i - 1 : i + 1, true);
                     manager.checkUsage();
                 };
             }
             ticks(3);
             manager.setMemoryBudget(100);
             EXPECT_LT(manager.getMemoryUsage(), 76u);
         }},
        {"eviction that is called off half-way",
         [](TestMgr &manager, Resource &, Resource &) {
             fill(manager, 800, 1);
             manager.at(3)->onUnload = [&manager] { manager.setMemoryBudget(0); };
             manager.at(3)->lastAccess = 1;
             ticks(3);
             manager.setMemoryBudget(100);
             EXPECT_GE(manager.getMemoryUsage(), 700u);
         }},
        {"unload that makes somebody refer to it",
         [](TestMgr &manager, Resource &a, Resource &) {
             manager.getByID(1, true);
             a.onUnload = [&a] { a.incRefCount(); };
             manager.unloadAndDestroyResource(&a);
             EXPECT_EQ(manager.getByID(1, false), &a);
         }},
        {"destroy that unregisters it again, registers and ends all",
         [](TestMgr &manager, Resource &, Resource &) {
             manager.getByID(1, true);
             manager.onDestroy = [&manager] {
                 manager.onDestroy = nullptr;
                 manager.Unregister(1, true);
                 manager.add("late", 1, PRIORITY_MOST_URGENT);
                 manager.unloadAndDestroyAll();
                 manager.add("later", 1);
             };
             manager.Unregister(1, true);
             EXPECT_EQ(manager.nameToID("later"), 1u);
             EXPECT_EQ(manager.getMemoryUsage(), 0u);
         }},
        {"destroy that calls when the resource is gone",
         [](TestMgr &manager, Resource &a, Resource &) {
             manager.getByID(1, true);
             manager.onDestroyed = [&manager] {
                 manager.onDestroyed = nullptr;
                 StringVector left;
                 EXPECT_EQ(manager.getAllResources(left), 1u);
                 EXPECT_EQ(manager.getByName("a", true), nullptr);
                 ticks(3);
                 manager.setMemoryBudget(1);
                 manager.add("a", 100, PRIORITY_MOST_URGENT);
             };
             manager.unloadAndDestroyResource(&a);
             EXPECT_EQ(manager.nameToID("a"), 3u);
             manager.add("next", 1);
             EXPECT_EQ(manager.nameToID("next"), 1u) << "the number is free after the call";
         }},
        {"destroy that registers while all is ended",
         [](TestMgr &manager, Resource &, Resource &) {
             manager.onDestroy = [&manager] {
                 manager.onDestroy = nullptr;
                 manager.add("a late one", 1, PRIORITY_MOST_URGENT);
                 manager.add("b", 1, PRIORITY_MOST_URGENT);
             };
             manager.unloadAndDestroyAll();
             StringVector left;
             EXPECT_EQ(manager.getAllResources(left), 0u);
             EXPECT_EQ(manager.getMemoryUsage(), 0u);
         }},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        TestMgr manager(0, 0);
        manager.addArchive(archive);
        Resource &a = manager.add("a", 100);
        Resource &b = manager.add("b", 100);
        row.act(manager, a, b);
        manager.onDestroy = nullptr;
    }
}

TEST_F(ResourceMgr, TakesAResourceFromAnotherManager)
{
    TestMgr first;
    TestMgr second;
    first.add("other", 1);
    Resource &a = first.add("a", 10, PRIORITY_MOST_URGENT);
    EXPECT_EQ(second.Register(&a, PRIORITY_MIDDLE), 1u);
    EXPECT_EQ(first.nameToID("a"), 0u);
    EXPECT_EQ(first.getMemoryUsage(), 0u);
    first.takeCalls();
    first.unloadAndDestroyAll();
    EXPECT_EQ(first.takeCalls(), "~other ");
    second.unloadAndDestroyAll();
    EXPECT_EQ(first.takeCalls(), "unload ~a ");
}

} // namespace
} // namespace Qel
