#include "System/System/exception.h"
#include "System/System/logManager.h"

#include "Tests/Tools/inThreads.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

#include <optional>

namespace Qel {
namespace {

TEST(Exception, TheFullDescriptionIsLoggedBeforeAnyHandlerRuns)
{
    test::TempFolder const folder;
    LogManager manager;
    manager.createLog("a.log", true, false, true);

    char const *const expected =
        "An exception has been thrown!\nError #: 8\nFunction: ConfigFile::load\n"
        "Description: 'a.cfg' file not found!. \nFile: src/configFile.cpp\nLine: 70\n"
        "Stack unwinding:\n- <<callstack>>\n";
    try {
        throw Exception(8, "'a.cfg' file not found!", "ConfigFile::load", "src/configFile.cpp", 70);
    } catch (Exception const &exception) {
        EXPECT_EQ(test::readFile("a.log"), expected);
        EXPECT_STREQ(exception.getFullDescription().c_str(), expected);
        Exception const copy = exception;
        EXPECT_EQ(copy.getNumber(), 8);
        EXPECT_EQ(test::readFile("a.log"), expected) << "a copy does not log";
    }
}

TEST(Exception, OnlyTheLowHalfOfTheNumberAndAKnownLineAreShown)
{
    Exception const plain(0x1'0000'0009LL, "d", "s");
    EXPECT_EQ(plain.getNumber(), 0x1'0000'0009LL);
    EXPECT_STREQ(plain.getFullDescription().c_str(),
                 "An exception has been thrown!\nError #: 9\nFunction: s\nDescription: d. "
                 "\nStack unwinding:\n- <<callstack>>\n");

    Exception const negative(-1, "d", "s", nullptr, 0);
    EXPECT_TRUE(negative.getFullDescription().starts_with(
        "An exception has been thrown!\nError #: -1\nFunction: s\nDescription: d. \nStack"));
}

// The last exception can be shown at any later time, whatever has become of the object itself.
TEST(Exception, TheLastOneOutlivesItsCatch)
{
    {
        Exception const thrown(4, "first", "s");
        EXPECT_EQ(Exception::getLastException(), &thrown);
        Exception const copy = thrown;
        EXPECT_EQ(Exception::getLastException(), &thrown) << "a copy is not the last one";
    }
    ASSERT_NE(Exception::last, nullptr);
    EXPECT_STREQ(Exception::last->description.c_str(), "first");

    std::optional<Exception> outer(std::in_place, 4, "outer", "s");
    {
        Exception const inner(4, "inner", "s");
    }
    outer.reset();
    EXPECT_STREQ(Exception::last->description.c_str(), "inner")
        << "the one built last, not the one that died last";
}

TEST(Exception, ThreadsThrowAtOnce)
{
    test::inThreads(2, [](int) {
        for (int i = 0; i < 500; ++i) {
            try {
                throw Exception(9, "a description that is too long for the short buffer", "s");
            } catch (Exception const &exception) {
                EXPECT_EQ(exception.getNumber(), 9);
            }
        }
    });
    EXPECT_EQ(Exception::last->getNumber(), 9);
}

} // namespace
} // namespace Qel
