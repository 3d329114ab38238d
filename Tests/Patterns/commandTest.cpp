#include "System/Patterns/macroCommand.h"

#include "Tests/virtualSlot.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <string>

namespace Qel {
namespace {

struct Recorder : cCommand {
    Recorder(std::string &sharedTrace, char ownMark) : trace(sharedTrace), mark(ownMark) {}
    void execute() override
    {
        trace += mark;
        if (also) {
            also();
        }
    }

    std::string &trace;
    char mark;
    std::function<void()> also;
};

struct MacroCommand : testing::Test {
    MacroCommand()
    {
        for (cCommand *command : {&a, &b, &a, &c}) {
            macro.add(command);
        }
    }

    std::string trace;
    Recorder a{trace, 'a'};
    Recorder b{trace, 'b'};
    Recorder c{trace, 'c'};
    cMacroCommand macro{4};
};

TEST_F(MacroCommand, RunsFromAnyPlaceInsideAndIgnoresTheOthers)
{
    struct {
        int from;
        char const *trace;
    } const rows[] = {{0, "abac"}, {2, "ac"}, {3, "c"},
                      {4, ""},     {-1, ""},  {std::numeric_limits<int>::min(), ""}};

    for (auto const &row : rows) {
        SCOPED_TRACE(row.from);
        trace.clear();
        macro.executeFrom(row.from);
        EXPECT_EQ(trace, row.trace);
    }
}

TEST_F(MacroCommand, TakesACommandOutOfAllItsPlaces)
{
    macro.remove(4);
    macro.remove(-1);
    macro.remove(static_cast<cCommand *>(nullptr));
    EXPECT_EQ(macro.numSubCommands(), 4);

    macro.remove(2);
    macro.execute();
    EXPECT_EQ(trace, "bc");
}

TEST_F(MacroCommand, RunsASingleCommandAlsoWhenItIsTakenOutFirst)
{
    macro.executeSingle(1, 0);
    macro.executeSingle(1, 1);
    macro.executeSingle(3, 1);
    macro.executeSingle(-1, 1);
    EXPECT_EQ(trace, "bb");
}

TEST_F(MacroCommand, EndsWhenACommandEmptiesTheListItRunsFrom)
{
    b.also = [this] { macro.removeAll(); };
    macro.execute();
    EXPECT_EQ(trace, "ab");
}

TEST_F(MacroCommand, KeepsTheOrderOfItsOperations)
{
    using M = cMacroCommand;
    EXPECT_TRUE(standInOrder(virtualSlot(&cCommand::execute), &cCommand::execute, &M::add,
                             static_cast<void (M::*)(int)>(&M::remove),
                             static_cast<void (M::*)(cCommand *)>(&M::remove), &M::removeAll, &M::executeFrom,
                             &M::executeSingle, &M::numSubCommands));
}

} // namespace
} // namespace Qel
