#include "System/System/varType.h"

#include "System/System/dummyTable.h"
#include "System/System/tableManager.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

namespace Qel {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

TEST(VarType, ConvertsBetweenNumbersAndTexts)
{
    int const somewhere = 0;
    // Numbers fall back on 99, texts on "?".
    std::tuple<char const *, varType, int, float, char const *, char const *> const rows[] = {
        {"nil", varType(), 99, 99.0f, "?", "?"},
        {"int", -5, -5, -5.0f, "?", "-5"},
        {"unsigned", 0xFFFFFFFFu, -1, -1.0f, "?", "-1"},
        {"float", 2.5f, 2, 2.5f, "?", "2.5"},
        {"float too large", 3e9f, 2147483647, 3e9f, "?", "3e+09"},
        {"float too small", -infinity, -2147483647 - 1, -infinity, "?", "-inf"},
        {"text", "12.75x", 12, 12.75f, "12.75x", "12.75x"},
        {"text without a number", "abc", 0, 0.0f, "abc", "abc"},
        {"null text", static_cast<char const *>(nullptr), 0, 0.0f, "", ""},
        {"pointer", static_cast<void const *>(&somewhere), 99, 99.0f, "?", "?"},
        {"table", DummyTable::Instance(), 99, 99.0f, "?", "?"},
    };
    for (auto const &[what, value, asInt, asFloat, asPointer, asText] : rows) {
        SCOPED_TRACE(what);
        EXPECT_EQ(value.toI32(99), asInt);
        EXPECT_EQ(value.toF32(99.0f), asFloat);
        EXPECT_STREQ(value.toStPtr("?"), asPointer);
        EXPECT_EQ(value.toString("?"), asText);
        EXPECT_EQ(value.toString(String("?")), asText);
    }
    EXPECT_EQ(varType(std::numeric_limits<float>::quiet_NaN()).toI32(99), 0);
    EXPECT_EQ(varType().toString(nullptr), "");
}

// What a script binding writes: the conversion is chosen by the type it is assigned to.
TEST(VarType, ConvertsByAssignment)
{
    int const whole = varType(2.5f);
    float const number = varType("12");
    char const *const none = varType();
    String const text = varType(7);
    IVarTable &table = varType(5);
    EXPECT_EQ(whole, 2);
    EXPECT_EQ(number, 12.0f);
    EXPECT_STREQ(none, "");
    EXPECT_EQ(text, "7");
    EXPECT_EQ(&table, &DummyTable::Instance());
}

TEST(VarType, EndsEveryFailedChainInTheDummyTable)
{
    EXPECT_TRUE(varType(5).toTable().Get("x", 7).isNil()) << "the default is ignored";
    EXPECT_TRUE(DummyTable::Instance().Get("a").isNil());
    EXPECT_EQ(&varType(5).toTable().CreateSubTable("a").CreateSubTable("b"), &DummyTable::Instance());
    varType const null(static_cast<IVarTable *>(nullptr));
    EXPECT_TRUE(null.isTable());
    null.toTable().Set("a", 1);
    EXPECT_TRUE(null.toTable().Get("a").isNil());
    EXPECT_EQ(&null.toTable().GetManager(), &DummyManager::Instance());
}

TEST(VarType, TellsTypesApart)
{
    cVarTable &table = cTableManager::Instance().Create("t");
    char text[] = "text";
    EXPECT_EQ(varType().type(), 0u);
    EXPECT_EQ(varType(1u).type(), 1u);
    EXPECT_EQ(varType(1.0f).type(), 2u);
    EXPECT_EQ(varType(text).type(), 3u);
    EXPECT_EQ(varType(static_cast<void *>(text)).type(), 4u);
    EXPECT_EQ(varType(table).type(), 5u);
    EXPECT_EQ(varType(&table).type(), 5u) << "not taken for any pointer";
    EXPECT_EQ(&varType(&table).toTable(), &table);
    table.Release();
}

} // namespace
} // namespace Qel
