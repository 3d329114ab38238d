#include "System/System/logManager.h"
#include "System/System/timeStepCollect.h"
#include "System/System/timerHelper.h"
#include "System/Time/timerInit.h"

#include "Tests/Tools/inThreads.h"
#include "Tests/Tools/steeredClock.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

namespace Qel {
namespace {

std::vector<std::string> told;

void tell(String const &text)
{
    told.emplace_back(text.c_str());
}

class LogManagerTest : public testing::Test {
protected:
    LogManagerTest()
    {
        told.clear();
        LogManager::defaultLogLevel = 2;
        TimerInit::init(TIMER_MILLISECONDS);
        m_log = m_manager.createLog("a.log", true, false, true);
    }

    std::string file() const { return test::readFile("a.log"); }

    test::TempFolder m_folder;
    test::SteeredClock m_clock;
    LogManager m_manager;
    Log *m_log = nullptr;
};

TEST_F(LogManagerTest, AMessagePassesWhenDetailPlusLevelIsFour)
{
    std::tuple<int, char const *> const rows[] = {{0, "4"},    {1, "34"},    {2, "234"},
                                                  {3, "1234"}, {4, "01234"}, {-1, ""}};
    for (auto const &[detail, levels] : rows) {
        SCOPED_TRACE(detail);
        m_manager.setLogDetail(detail);
        std::string passed;
        for (int level = 0; level <= 4; ++level) {
            if (m_log->isWithinThreshold(level)) {
                passed += std::to_string(level);
            }
            EXPECT_EQ(LogManager::checkDefLogLevel(level), m_log->isWithinThreshold(level));
        }
        EXPECT_EQ(passed, levels);
    }
    EXPECT_TRUE(m_manager.createLog("b.log", false, false, false)->isWithinThreshold(2))
        << "another log keeps its own detail";
    EXPECT_FALSE(m_log->isWithinThreshold(INT32_MIN)) << "the sum does not wrap";
}

TEST(LogManager, TheFirstLogIsTheDefaultAndANameIsOpenedOnce)
{
    test::TempFolder const folder;
    LogManager manager;
    Log *const first = manager.createLog("a.log", false, false, true);
    Log *const second = manager.createLog("b.log", false, false, true);
    manager.logMessage("one\n", 2);
    EXPECT_EQ(manager.createLog("b.log", true, false, false), second);
    EXPECT_EQ(manager.createLog("a.log", true, true, true), first);
    manager.logMessage("two\n", 2);
    EXPECT_EQ(test::readFile("a.log"), "one\ntwo\n") << "neither reopened nor no longer the default";

    manager.createLog("c.log", true, false, true);
    manager.logMessage("three\n", 2);
    EXPECT_EQ(test::readFile("c.log"), "three\n");
    EXPECT_EQ(manager.getLog("b.log"), second);
    EXPECT_EQ(manager.getLog("none"), nullptr);
}

TEST_F(LogManagerTest, LevelFourIsStampedAndTheIndentIsATextOfItsOwn)
{
    m_manager.logMessage("plain\n", 2);
    m_manager.logMessage("stamped\n", 4);
    {
        LogIndent const outer;
        LogIndent const inner(2);
        m_manager.logMessage("in\n", 2);
        m_manager.logMessage("in\n", 4);
        LogManager::defLevelMessage("%s", "def\n");
        m_manager.logMessage("", 3);
    }
    m_manager.logMessage(WString(L"w\xE9\n"), 3);
    m_manager.logMessage(1, "%d never formatted\n", 1);
    EXPECT_EQ(file(), "plain\n"
                      "09:05:07.042 - stamped\n"
                      "    in\n"
                      "09:05:07.042 -     09:05:07.042 - in\n"
                      "09:05:07.042 -     09:05:07.042 - def\n"
                      "    "
                      "w\xC3\xA9\n");
}

TEST_F(LogManagerTest, TheCallbackSeesWhatItsFilterLetsThrough)
{
    m_manager.setDefaultCallback(&tell);
    std::tuple<char const *, std::vector<std::string>> const rows[] = {
        {"", {"a Sound b", "a Timer b", "neither"}},
        {"*Sound*|*Timer*", {"a Sound b", "a Timer b"}},
        {"|", {}},
        {"||neither|", {"neither"}},
        {"*sound*", {}},
    };
    for (auto const &[filter, passed] : rows) {
        SCOPED_TRACE(filter);
        told.clear();
        m_manager.setCallbackFilter(filter);
        for (char const *text : {"a Sound b", "a Timer b", "neither"}) {
            m_manager.logMessage(text, 2);
        }
        EXPECT_EQ(told, passed);
    }

    told.clear();
    m_manager.setCallbackFilter("");
    {
        LogIndent const indent(3);
        m_manager.logMessage("x", 4);
    }
    EXPECT_EQ(told, (std::vector<std::string>{"   ", "x"})) << "no stamp, and the indent by itself";

    // A pattern is cut to 4095 bytes: its last character no longer counts.
    told.clear();
    m_log->setCallbackFilter(String((std::string(4095, 'a') + "b").c_str()));
    m_log->logMessage(String(std::string(4095, 'a').c_str()), 2);
    EXPECT_EQ(told.size(), 1u);
}

TEST_F(LogManagerTest, WhatACallbackLogsIsNotToldToCallbacks)
{
    m_manager.setDefaultCallback([](String const &text) {
        told.emplace_back(text.c_str());
        logMessage("from the callback\n", 2);
    });
    m_manager.logMessage("one\n", 2);
    m_manager.logMessage("two\n", 2);
    EXPECT_EQ(told, (std::vector<std::string>{"one\n", "two\n"}));
    EXPECT_EQ(file(), "from the callback\none\nfrom the callback\ntwo\n");
}

TEST_F(LogManagerTest, WhatCannotBeWrittenIsSilentAndLaterTextsAreTriedAnew)
{
    for (char const *const name : {"/dev/full", "no/such/folder/x.log"}) {
        SCOPED_TRACE(name);
        told.clear();
        m_manager.createLog(name, true, false, true)->setCallback(&tell);
        m_manager.logMessage("lost", 4);
        m_manager.logMessage("lost", 4);
        EXPECT_EQ(told.size(), 2u);
    }
}

TEST_F(LogManagerTest, TheErrorStreamIsToldWithoutStampAndWithoutFile)
{
    m_manager.createLog("err.log", true, true, false);
    testing::internal::CaptureStderr();
    m_manager.logMessage("100%s\n", 4);
    m_manager.logMessage("below\n", 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "100%s\n");
    EXPECT_FALSE(std::filesystem::exists("err.log"));
}

TEST_F(LogManagerTest, FormattedTextsAreCutAt4095Bytes)
{
    std::string const longText(5000, 'x');
    m_manager.logMessage(2, "%s", longText.c_str());
    m_log->logMessage(2, "%s", longText.c_str());
    logMessage(2, "%s", longText.c_str());
    EXPECT_EQ(file(), std::string(3 * 4095, 'x'));
    LogManager::defLevelMessage("%s", longText.c_str());
    EXPECT_EQ(file().size(), 4u * 4095 + 15);
    m_manager.logMessage(String(longText.c_str()), 2);
    EXPECT_EQ(file().size(), 4u * 4095 + 15 + 5000) << "a text that needs no format is whole";
}

TEST_F(LogManagerTest, ThreadsLogAtOnceWithoutTornTexts)
{
    auto const work = [](char letter) {
        std::string const line = std::string(200, letter) + "\n";
        for (int i = 0; i < 200; ++i) {
            LogIndent const indent(1);
            logMessage(2, "%s", line.c_str());
        }
    };
    test::inThreads(2, [&](int index) { work(index == 0 ? 'a' : 'b'); });

    std::string const all = file();
    std::size_t lines = 0;
    for (std::size_t at = 0; at < all.size(); ++lines) {
        std::size_t const end = all.find('\n', at);
        ASSERT_NE(end, std::string::npos);
        std::size_t const first = all.find_first_not_of(' ', at);
        EXPECT_LE(first - at, 2u);
        EXPECT_EQ(all.substr(first, end - first), std::string(200, all[first]));
        at = end + 1;
    }
    EXPECT_EQ(lines, 400u);
    m_manager.createLog("b.log", true, false, true);
    logMessage("no indent is left\n", 2);
    EXPECT_EQ(test::readFile("b.log"), "no indent is left\n");
}

TEST_F(LogManagerTest, ScopeTimersReportSeconds)
{
    m_clock.advanceMs(1000);
    {
        TimerHelper const helper("load level");
        EXPECT_FLOAT_EQ(helper.getTiming(), 1.0f) << "the start reading";
        m_clock.advanceMs(1250);
    }
    {
        TimerHelper const helper(nullptr);
    }
    {
        TimerHelper const helper(std::string(300, 'n').c_str());
    }
    EXPECT_EQ(file(), "load level 1.25sec\nTimerHelper 0sec\n" + std::string(256, 'n') + " 0sec\n");
}

TEST_F(LogManagerTest, StepsAreListedOnlyAboveTheLimit)
{
    TimeStepCollect steps(50, "level");
    m_clock.advanceMs(20);
    steps.step("geometry");
    m_clock.advanceMs(30);
    steps.step("sounds");
    steps.dumpStats(2);
    EXPECT_EQ(file(), "") << "exactly at the limit";
    m_clock.advanceMs(1);
    steps.dumpStats(1);
    EXPECT_EQ(file(), "") << "below the threshold";
    steps.dumpStats(2);
    EXPECT_EQ(file(), "Timer Warning! Name: level\n"
                      "  Step 0 Time: 20 Delta 20 Name: geometry\n"
                      "  Step 1 Time: 50 Delta 30 Name: sounds\n");

    TimeStepCollect many(0, "many");
    for (int i = 0; i < 40; ++i) {
        many.step("s");
    }
    m_clock.advanceMs(1);
    m_manager.createLog("many.log", true, false, true);
    many.dumpStats(2);
    std::string const all = test::readFile("many.log");
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), 33) << "the head and 32 steps";
}

TEST(LogManager, WithoutAManagerNothingHappens)
{
    ASSERT_FALSE(LogManager::InstanceActive());
    logMessage("x", 2);
    logMessage(2, "%d", 1);
    LogManager::defLevelMessage("%d", 1);
    LogIndent const indent;
    TimerHelper const helper("x");

    LogManager manager;
    manager.logMessage("no log yet", 2);
    manager.setDefaultCallback(&tell);
    manager.setCallbackFilter("x");
    manager.setLogDetail(2);
}

TEST(LogManager, LevelZeroIsNoLoggingThroughTheFreeFunctions)
{
    test::TempFolder const folder;
    LogManager manager;
    manager.createLog("a.log", true, false, true);
    manager.setLogDetail(4);
    logMessage("text", 0);
    logMessage(0, "%d", 1);
    EXPECT_EQ(test::readFile("a.log"), "");
    manager.logMessage("through the manager", 0);
    EXPECT_EQ(test::readFile("a.log"), "through the manager");
    manager.setLogDetail(2);
}

} // namespace
} // namespace Qel
