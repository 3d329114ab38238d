#include "System/System/configurable.h"
#include "System/System/consoleVar.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>

namespace {

enum class Quality { Low, High };

} // namespace

template <>
struct Qel::ConfigurableText<Quality> {
    static String toText(Quality const &value) { return value == Quality::High ? "high" : "low"; }
    static void fromText(Quality &value, char const *text)
    {
        value = String("high") == text ? Quality::High : Quality::Low;
    }
};

// A text of any length: what is longer than the buffer must be cut.
template <>
struct Qel::ConfigurableText<std::string> {
    static String toText(std::string const &value) { return value; }
    static void fromText(std::string &value, char const *text) { value = text; }
};

namespace Qel {
namespace {

// Registers before main, in whatever order the sources are initialised.
Configurable<int> beforeMain("test.beforeMain", 7, 0x80000001u);

ConsoleVar &table()
{
    return ConsoleVar::Instance();
}

String textOf(char const *name)
{
    String text = "(unknown)";
    table().getConfigurable(name, text, nullptr);
    return text;
}

TEST(ConsoleVar, ATextThatIsNotWrittenIsEmpty)
{
    struct Silent : Storable_configurable {
        Silent() : Storable_configurable("test.silent", 0) {}
        void to_string(char *) const override {}
        void from_string(char const *) override {}
    } const silent;
    EXPECT_EQ(textOf("test.silent"), "");
}

TEST(ConsoleVar, ReadsAndSetsByNameWhatWasBuiltBeforeMain)
{
    String text;
    unsigned int flags = 0;
    ASSERT_TRUE(table().getConfigurable("test.beforeMain", text, &flags));
    EXPECT_EQ(text, "7");
    EXPECT_EQ(flags, 0x80000001u);
    EXPECT_TRUE(table().setConfigurable("test.beforeMain", " -12 and more"));
    EXPECT_EQ(beforeMain * 2, -24);
    beforeMain = 7;
    EXPECT_EQ(textOf("test.beforeMain"), "7");
}

TEST(ConsoleVar, GivesNothingForUnknownNamesAndLeavesTheOutputs)
{
    String text = "kept";
    unsigned int flags = 5;
    EXPECT_FALSE(table().getConfigurable("test.none", text, &flags));
    EXPECT_EQ(text, "kept");
    EXPECT_EQ(flags, 5u);
    EXPECT_FALSE(table().setConfigurable("test.none", "1"));
    EXPECT_FALSE(table().isRegistered("TEST.BEFOREMAIN")) << "case counts";
    EXPECT_EQ(table().getAsInt("test.none"), 0);
    EXPECT_FALSE(table().getAsBool("test.none"));
    EXPECT_EQ(table().getAsFloat("test.none"), 0.0f);
    EXPECT_EQ(table().getConsoleVar(table().size()), "");
    EXPECT_EQ(table().getConsoleVar(0xFFFFFFFFu), "");
}

TEST(ConsoleVar, ListsInOrderOfNames)
{
    Configurable<int> const c("test.order.c", 0);
    Configurable<int> const a("test.order.a", 0);
    Configurable<int> const big("test.order.B", 0);
    String found;
    StringVector const names = table().getNames();
    ASSERT_EQ(names.size(), table().size());
    for (unsigned int i = 0; i < table().size(); ++i) {
        EXPECT_EQ(names[i], table().getConsoleVar(i));
        if (String const name = table().getConsoleVar(i); name.starts_with("test.order.")) {
            found += name.substr(11);
        }
    }
    EXPECT_EQ(found, "Bac");
}

TEST(ConsoleVar, LeavesANameToTheFirstThatTookItAndFreesItWhenThatDies)
{
    unsigned int const before = table().size();
    auto first = std::make_unique<Configurable<int>>("test.twice", 1);
    Configurable<int> second("test.twice", 2);
    EXPECT_EQ(table().size(), before + 1);
    table().setConfigurable("test.twice", "10");
    EXPECT_EQ(first->get(), 10);
    EXPECT_EQ(second.get(), 2);

    {
        Configurable<int> copy = *first; // not registered: its end must not take the name
        copy = second;
        EXPECT_EQ(copy, 2);
    }
    EXPECT_EQ(textOf("test.twice"), "10");
    first.reset();
    EXPECT_EQ(table().size(), before) << "no entry without an object";
    EXPECT_FALSE(table().setConfigurable("test.twice", "11"));
    {
        Configurable<int> const third("test.twice", 3);
        EXPECT_EQ(textOf("test.twice"), "3");
    }
    EXPECT_EQ(second, 2);
}

// Expected texts are those of printf's %d and %g, the values those of atoi and atof.
TEST(Configurable, TurnsTextIntoValuesAndBack)
{
    Configurable<bool> flag("test.flag", false);
    Configurable<int> count("test.count", 0);
    Configurable<float> size("test.size", 0.0f);
    std::tuple<char const *, char const *, char const *, int, bool, float> const rows[] = {
        {"test.flag", "7", "1", 1, true, 1.0f},
        {"test.flag", "-0", "0", 0, false, 0.0f},
        {"test.count", "2", "2", 2, false, 2.0f},
        {"test.count", "", "0", 0, false, 0.0f},
        {"test.count", "-2147483648", "-2147483648", -2147483647 - 1, false, -2147483648.0f},
        {"test.count", "99999999999", "2147483647", 2147483647, false, 2147483648.0f},
        {"test.size", "2.5", "2.5", 2, false, 2.5f},
        {"test.size", "1234567.0", "1.23457e+06", 1, false, 1234570.0f},
        {"test.size", "1e-7", "1e-07", 1, false, 1e-7f},
        {"test.size", "none", "0", 0, false, 0.0f},
        {"test.size", "1x", "1", 1, true, 1.0f},
    };
    for (auto const &[name, set, text, asInt, asBool, asFloat] : rows) {
        SCOPED_TRACE(std::string(name) + " = " + set);
        ASSERT_TRUE(table().setConfigurable(name, set));
        EXPECT_EQ(textOf(name), text);
        EXPECT_EQ(table().getAsInt(name), asInt);
        EXPECT_EQ(table().getAsBool(name), asBool);
        EXPECT_EQ(table().getAsFloat(name), asFloat);
    }
    flag.from_string(nullptr);
    EXPECT_FALSE(flag);
}

TEST(Configurable, TakesTypesOfTheHostAndNeverWritesPastTheBuffer)
{
    Configurable<Quality> quality("test.quality", Quality::Low, 3);
    EXPECT_TRUE(table().setConfigurable("test.quality", "high"));
    EXPECT_EQ(quality.get(), Quality::High);
    EXPECT_EQ(textOf("test.quality"), "high");

    Configurable<std::string> motto("test.motto", std::string(63, 'x'));
    EXPECT_EQ(textOf("test.motto").size(), 63u);
    motto = std::string(1000, 'y');
    EXPECT_EQ(textOf("test.motto"), String(63, 'y'));
}

} // namespace
} // namespace Qel
