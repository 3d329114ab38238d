#include "System/System/varTable.h"

#include "System/System/dummyTable.h"
#include "System/System/tableManager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <unordered_map>

namespace Qel {
namespace {

cTableManager &manager()
{
    return cTableManager::Instance();
}

// Every test must give back all tables and texts.
struct VarTable : testing::Test {
    ~VarTable() override
    {
        EXPECT_EQ(cVarTable::m_TableCount, tables);
        EXPECT_EQ(manager().GetTables().size(), static_cast<std::size_t>(tables));
        EXPECT_EQ(manager().GetStringCount(), texts);
    }

    int const tables = cVarTable::m_TableCount;
    std::uint32_t const texts = manager().GetStringCount();
};

TEST_F(VarTable, KeepsCopiesOfTextsAndReferencesOnTables)
{
    cVarTable &table = manager().Create("hero");
    cVarTable &pack = manager().Create("");
    {
        std::string key = "name";
        std::string value = "Ada";
        table.Set(key.c_str(), value.c_str());
        key = value = "????";
    }
    table.Set("pack", pack);
    pack.Release();
    EXPECT_STREQ(table.Get("name"), "Ada");
    EXPECT_EQ(&table.Get("pack").toTable(), &pack);
    EXPECT_STREQ(table.GetName(), "hero");
    EXPECT_EQ(manager().GetStringCount(), texts + 4) << "name of the table, two keys, one value";

    table.Set("name", 3);
    EXPECT_EQ(manager().GetStringCount(), texts + 3);
    table.Set("pack", varType());
    EXPECT_EQ(cVarTable::m_TableCount, tables + 1) << "the replaced table has gone";
    table.Release();
}

// The same 32 bits are the same key.
TEST_F(VarTable, FindsKeysByTheir32Bits)
{
    cVarTable &table = manager().Create("keys");
    table.Set("123456789", 1);
    EXPECT_EQ(table.Get(0x340BC6D9u, 5).toI32(), 1);
    EXPECT_EQ(table.Get(0x340BC6D8u, 5).toI32(), 5) << "an absent key gives the default";
    table.Set(1.0f, 2);
    EXPECT_EQ(table.Get(0x3F800000).toI32(), 2) << "a float is its bits";
    table.Set(varType(), 3);
    EXPECT_EQ(table.Get(0).toI32(), 3);
    table.Set("", 4);
    EXPECT_EQ(table.Get(-1).toI32(), 4);
    table.Release();
}

TEST_F(VarTable, SortsEachEighthNewKey)
{
    cVarTable &table = manager().Create("sorted");
    std::uint32_t sorted = 0;
    for (std::uint32_t count = 1; count <= 40; ++count) {
        table.Set(count * 2654435761u, static_cast<int>(count)); // scattered over all 32 bits
        sorted = count % 8 == 0 ? count : sorted;
        ASSERT_EQ(table.GetSortedCount(), sorted);
        auto const &items = table.GetItems();
        ASSERT_TRUE(std::is_sorted(items.begin(), items.begin() + sorted,
                                   [](auto const &a, auto const &b) { return a.key.hash < b.key.hash; }));
    }
    table.Release();
}

// Against a standard map, before and after the items have been looked at, which moves them. Keys at random,
// in a row, crowded, and of which all low or all high bits are equal.
TEST_F(VarTable, HoldsWhatAMapHolds)
{
    std::mt19937 random(8);
    for (int kind = 0; kind < 5; ++kind) {
        for (std::uint32_t const size : {1u, 7u, 8u, 15u, 16u, 17u, 33u, 200u, 5000u}) {
            SCOPED_TRACE("kind " + std::to_string(kind) + ", size " + std::to_string(size));
            cVarTable &table = manager().Create("");
            std::unordered_map<std::uint32_t, int> map;
            for (std::uint32_t i = 0; i < size; ++i) {
                auto const any = static_cast<std::uint32_t>(random());
                std::uint32_t const keys[] = {any, i * 3, any % (2 * size), i << 16, 0xFFFF0000u + i};
                map[keys[kind]] = static_cast<int>(i);
                table.Set(keys[kind], static_cast<int>(i));
            }
            for (int round = 0; round < 2; ++round) {
                for (auto const &[key, value] : map) {
                    ASSERT_EQ(table.Get(key, -1).toI32(), value);
                    std::uint32_t const other = key ^ 1u << random() % 32;
                    ASSERT_EQ(table.Get(other, -1).toI32(), map.contains(other) ? map[other] : -1);
                }
                ASSERT_EQ(table.GetItems().size(), map.size());
            }
            table.Release();
        }
    }
}

TEST_F(VarTable, MakesASubTableOnceAndInPlaceOfAnyOtherValue)
{
    cVarTable &table = manager().Create("");
    IVarTable &sub = table.CreateSubTable("sub");
    EXPECT_EQ(&table.CreateSubTable("sub"), &sub);
    EXPECT_STREQ(static_cast<cVarTable &>(sub).GetName(), "sub");
    EXPECT_STREQ(static_cast<cVarTable &>(table.CreateSubTable(12)).GetName(), "");
    table.Set("number", 1);
    table.CreateSubTable("number").Set("x", 1.5f);
    EXPECT_EQ(table.Get("number").toTable().Get("x").toF32(), 1.5f);
    EXPECT_EQ(&sub.GetManager(), static_cast<ITableManager *>(&manager()));
    table.Release();
}

// Nesting is the script's to choose: freeing must not use the stack for it.
TEST_F(VarTable, FreesTablesNestedToAnyDepth)
{
    cVarTable &table = manager().Create("");
    IVarTable *inner = &table;
    for (int depth = 0; depth < 200'000; ++depth) {
        inner = &inner->CreateSubTable(1);
    }
    table.Release();
    EXPECT_EQ(cVarTable::m_TableCount, tables);
}

TEST_F(VarTable, IsFreedFromACircleByClear)
{
    cVarTable &table = manager().Create("circle");
    table.Set("self", table);
    table.CreateSubTable("child").Set("parent", table);
    table.Release();
    EXPECT_EQ(cVarTable::m_TableCount, tables + 2) << "it keeps itself";
    table.Clear(); // the last reference goes inside
}

TEST_F(VarTable, ClearTellsNobodyAndStartsAnew)
{
    cVarTable &table = manager().Create("");
    int heard = 0;
    NotifyCallback const count = [](sMsgNotify const &message) { ++*static_cast<int *>(message.user); };
    for (int key = 0; key < 20; ++key) {
        table.Set(key, "text");
    }
    manager().AddListener(count, &heard, nullptr);
    table.Clear();
    EXPECT_EQ(heard, 0);
    EXPECT_TRUE(table.Get(3).isNil());
    EXPECT_EQ(table.GetSortedCount(), 0u);
    table.Set(3, 1);
    EXPECT_EQ(table.Get(3).toI32(), 1);
    EXPECT_EQ(heard, 1);
    manager().RemoveListener(count, &heard);
    table.Release();
}

TEST_F(VarTable, IsListedFromCreationToItsEnd)
{
    cVarTable &a = manager().Create("a");
    cVarTable &b = manager().Create("b");
    cVarTable &c = manager().Create("c");
    manager().Register(b);
    b.Release();
    auto const &list = manager().GetTables();
    ASSERT_EQ(list.size(), static_cast<std::size_t>(tables) + 2);
    EXPECT_EQ(list[list.size() - 2], &a);
    EXPECT_EQ(list.back(), &c);
    a.Release();
    c.Release();
}

} // namespace
} // namespace Qel
