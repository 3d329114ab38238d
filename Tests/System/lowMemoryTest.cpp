#include "System/System/string.h"
#include "System/System/tableManager.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <new>

// Not inline, or the compiler takes the pair apart and finds malloc beside delete.
namespace {
int allocationsLeft = INT_MAX;
}

__attribute__((noinline)) void *operator new(std::size_t size)
{
    void *const block = allocationsLeft > 0 ? std::malloc(size) : nullptr;
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    --allocationsLeft;
    return block;
}

__attribute__((noinline)) void operator delete(void *block) noexcept
{
    std::free(block);
}

__attribute__((noinline)) void operator delete(void *block, std::size_t) noexcept
{
    std::free(block);
}

namespace Qel {
namespace {

// Lets so many more allocations succeed, for a scope.
struct Allocations {
    explicit Allocations(int count) { allocationsLeft = count; }
    ~Allocations() { allocationsLeft = INT_MAX; }
};

TEST(LowMemory, ATableIsClearedAsAWholeOrNotAtAll)
{
    cTableManager &manager = cTableManager::Instance();
    std::uint32_t const strings = manager.GetStringCount();
    int const tables = cVarTable::m_TableCount;
    cVarTable &table = manager.Create("table");
    for (char const *const key : {"a", "b", "c", "d", "e"}) {
        table.Set(key, "text");
        table.CreateSubTable(String(key) + "s");
    }
    int failures = 0;
    for (bool cleared = false; !cleared;) {
        try {
            Allocations const some(failures);
            table.Clear();
            cleared = true;
        } catch (std::bad_alloc const &) {
            ++failures;
            EXPECT_EQ(table.GetItems().size(), 10u);
            EXPECT_EQ(manager.GetStringCount(), strings + 21) << "names of six tables, ten keys, five values";
            EXPECT_EQ(cVarTable::m_TableCount, tables + 6);
        }
    }
    EXPECT_GT(failures, 0);
    EXPECT_TRUE(table.Get("a").isNil());
    table.Release();
    EXPECT_EQ(manager.GetStringCount(), strings);
    EXPECT_EQ(cVarTable::m_TableCount, tables);
}

} // namespace
} // namespace Qel
