#include "System/Time/multiFrameProfiler.h"
#include "Support/OS/thread.h"
#include "System/System/logManager.h"
#include "Tests/Tools/inThreads.h"
#include "Tests/Tools/steeredClock.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <string>
#include <thread>

using namespace Qel;
using P = cMultiFrameProfiler;

namespace {

std::string const dashes = std::string(119, '-') + '\n';
std::string const heading = "Event" + std::string(65, ' ') + "   Thd      Start        End   Duration\n";

// A line of the report: 70 columns of name, then the thread and three times that the test writes out.
std::string line(std::string name, std::string const &thread, std::string const &times)
{
    name.resize(70, ' ');
    return name + ' ' + std::string(thread.size() < 5 ? 5 - thread.size() : 0, ' ') + thread + times + '\n';
}

class MultiFrameProfiler : public testing::Test {
protected:
    void at(std::int64_t tick) { clock.ticks = tick; }
    void begin(std::int64_t tick, char const *name)
    {
        at(tick);
        P::beginEvent(7, name);
    }
    void end(std::int64_t tick, char const *name)
    {
        at(tick);
        P::endEvent(name);
    }
    void beginFrame(std::int64_t tick)
    {
        at(tick);
        P::beginFrame();
    }
    // One frame, from 0 on.
    void record()
    {
        P::capture("report.txt", 1);
        beginFrame(0);
    }
    std::string endFrame(std::int64_t tick)
    {
        at(tick);
        P::endFrame();
        return test::readFile("report.txt");
    }

    test::TempFolder folder;
    test::SteeredClock clock; // 10 ticks are a microsecond
    std::string const self = std::to_string(os::currentThreadId());
};

// The part behind the summary.
std::string fullPart(std::string const &report)
{
    std::size_t const second = report.rfind(heading);
    return second == std::string::npos ? report : report.substr(second);
}

} // namespace

TEST_F(MultiFrameProfiler, WritesTheReportToTheByte)
{
    std::string const longName(80, 'n');
    EXPECT_FALSE(P::capture("report.txt", 1));
    begin(900, "outside"); // no frame yet
    beginFrame(1000);
    begin(1100, "physics");
    begin(1205, "solve");
    begin(1210, "inner");
    end(1220, "inner");
    std::string other;
    std::thread([&] {
        other = std::to_string(os::currentThreadId());
        begin(1250, "load");
        begin(1260, "solve"); // another thread's own
        end(1270, "solve");
        end(1280, "load");
    }).join();
    begin(1290, "lonely");
    end(1300, "solve");
    end(1400, "physics");
    begin(1400, longName.c_str()); // begins where the one before ended: beside it
    end(1500, longName.c_str());
    end(1550, "nothing began");
    std::string const report = endFrame(2000);

    std::string const top = heading + dashes + "ROOT\n Thread" + self + '\n' + dashes +
                            line("  Frame 0000", self, "       0.00     100.00     100.00") + dashes +
                            line("   physics", self, "      10.00      40.00      30.00");
    std::string const deep = line("    solve", self, "      20.50      30.00       9.50") +
                             line("     inner", self, "      21.00      22.00       1.00");
    std::string const wide = line("   " + std::string(67, 'n'), self, "      40.00      50.00      10.00") +
                             " Thread" + other + '\n' +
                             line("  load", other, "      25.00      28.00       3.00") +
                             line("   solve", other, "      26.00      27.00       1.00");
    EXPECT_EQ(report, "*** Profiling error: end event not found for lonely\n" + top + wide + dashes + dashes +
                          top + deep + wide);
}

TEST_F(MultiFrameProfiler, CountsFramesAndBeginsWithTheNextOne)
{
    beginFrame(0);
    P::capture("report.txt", 2);
    begin(10, "before the capture");
    end(20, "before the capture");
    EXPECT_EQ(endFrame(30), "");
    beginFrame(1000);
    P::capture("ignored.txt", 9); // one is going on
    P::beginFrame();              // and so is a frame
    EXPECT_EQ(endFrame(1100), "");
    P::endFrame();
    begin(1150, "between frames");
    beginFrame(1200);
    std::string const report = fullPart(endFrame(1500));
    EXPECT_EQ(report, heading + dashes + "ROOT\n Thread" + self + '\n' + dashes +
                          line("  Frame 0000", self, "       0.00      10.00      10.00") + dashes + dashes +
                          line("  Frame 0001", self, "      20.00      50.00      30.00") + dashes);

    // It is over: the next frame is not recorded, and 0 frames are one.
    beginFrame(2000);
    EXPECT_EQ(endFrame(2100).size(), test::readFile("report.txt").size());
    EXPECT_FALSE(std::filesystem::exists("ignored.txt"));
    P::capture("report.txt", 0);
    beginFrame(3000);
    EXPECT_NE(endFrame(3001).find("0.10       0.10\n"), std::string::npos);
}

TEST_F(MultiFrameProfiler, ARecursionEndsTheReport)
{
    static char const sameText[] = "again"; // at another address
    P::capture(nullptr, 1);
    record();
    begin(1, "lonely");
    begin(2, "again");
    begin(3, sameText);
    end(4, "again");
    end(5, "again");
    EXPECT_EQ(endFrame(6), "*** Profiling error: end event not found for lonely\n"
                           "*** Profiling error: recursion detected for event again\n"
                           "Error encountered, no output created!\n");
}

TEST_F(MultiFrameProfiler, TellsErrorsToTheLogAsWell)
{
    static std::string caught;
    caught.clear();
    LogManager logs;
    logs.createLog("none", true, false, false);
    logs.setDefaultCallback([](String const &text) { caught += text.c_str(); });
    record();
    begin(1, "lonely 100%s");
    endFrame(2);
    EXPECT_EQ(caught, "*** Profiling error: end event not found for lonely 100%s\n");
}

// Events that overlap without one containing the other go where the first one leaves room.
TEST_F(MultiFrameProfiler, PlacesEventsThatOverlap)
{
    record();
    begin(10, "a");
    begin(20, "b");
    end(30, "a");
    begin(40, "c"); // after a, though b still runs
    end(50, "b");
    end(60, "c");
    std::string const report = fullPart(endFrame(100));
    EXPECT_NE(report.find(line("   a", self, "       1.00       3.00       2.00") +
                          line("    b", self, "       2.00       5.00       3.00") +
                          line("   c", self, "       4.00       6.00       2.00")),
              std::string::npos)
        << report;
}

TEST_F(MultiFrameProfiler, DeepLinesKeepTheirColumnsAndTheStack)
{
    constexpr std::size_t depth = 10'000;
    std::deque<std::string> names;
    record();
    for (std::size_t index = 0; index < depth; ++index) {
        names.push_back(std::string("e").append(std::to_string(index)));
        begin(static_cast<std::int64_t>(index) + 1, names.back().c_str());
    }
    for (std::size_t index = depth; index-- > 0;) {
        end(30'000 - static_cast<std::int64_t>(index), names[index].c_str());
    }
    std::string const report = endFrame(40'000);
    // The first event is at depth 3.
    EXPECT_NE(report.find('\n' + std::string(20, ' ') + "e17  "), std::string::npos);
    EXPECT_NE(report.find('\n' + std::string(16, ' ') + "   *e18  "), std::string::npos);
    EXPECT_NE(report.find('\n' + std::string(16, ' ') + "   *e9999 "), std::string::npos);
    EXPECT_EQ(std::ranges::count(report, '\n'), long{2 + 5 + 1} + 2 + 2 + 5 + 10'000);
}

TEST_F(MultiFrameProfiler, AFullTableGivesAReportAsFarAsItGoes)
{
    record();
    for (int index = 0; index < 130'000; ++index) {
        begin(index, "e");
        end(index, "e");
    }
    std::string const report = endFrame(130'000);
    // 250000 events: the frame's beginning, 124999 whole pairs, and a beginning that lost its end.
    EXPECT_TRUE(report.starts_with("*** Profiling error: end event not found for FRAME\n"
                                   "*** Profiling error: end event not found for e\n"));
    EXPECT_EQ(std::ranges::count(report, '\n'), 2 + 2 * (2 + 2 + 124'999) + 2);
}

TEST_F(MultiFrameProfiler, AFileThatCanNotBeWrittenOnlyCostsTheReport)
{
    for (std::string const &name :
         {std::string("no/such/folder.txt"), std::string("."), std::string(9000, 'x')}) {
        P::capture(name.c_str(), 1);
        beginFrame(0);
        endFrame(10);
    }
    record();
    EXPECT_NE(endFrame(10), "");
}

TEST_F(MultiFrameProfiler, TakesEventsOfManyThreads)
{
    record();
    test::inThreads(4, [](int) {
        for (int round = 0; round < 500; ++round) {
            P::beginEvent(0, "work");
            P::endEvent("work");
        }
    });
    std::string const report = fullPart(endFrame(10));
    std::size_t found = 0;
    for (std::size_t at = report.find("work"); at != std::string::npos; at = report.find("work", at + 1)) {
        ++found;
    }
    EXPECT_EQ(found, 2000u);
}
