#include "System/Platform/renderSystem.h"
#include "System/System/Root.h"

#include "Tests/Tools/debugText.h"
#include "Tests/Tools/steeredClock.h"
#include "Tests/Tools/tempFolder.h"

#include "Support/OS/messagePump.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace Qel {
namespace {

// A pump whose messages and foreground the test sets, and which notes what is done with each message.
class SteeredPump final : public os::MessagePump {
public:
    bool peek(os::Message &message, bool remove) override
    {
        if (messages.empty()) {
            return false;
        }
        message = messages.front();
        if (remove) {
            messages.erase(messages.begin());
        }
        return true;
    }
    bool isDialogMessage(void *dialog, os::Message const &message) override
    {
        trace += "dialog" + std::to_string(*static_cast<int *>(dialog)) + " ";
        return message.window == dialog;
    }
    void translate(os::Message const &message) override
    {
        trace += "translate" + std::to_string(message.id) + " ";
    }
    void dispatch(os::Message const &message) override
    {
        trace += "dispatch" + std::to_string(message.id) + " ";
    }
    bool inForeground() override { return foreground; }

    std::vector<os::Message> messages;
    bool foreground = true;
    std::string trace;
};

struct Seen {
    char kind; // s, r, e, i
    FrameEvent event;
};

// Notes every notification. Each frame takes workMs between start and end.
class Recorder final : public FrameListener {
public:
    explicit Recorder(test::SteeredClock &clock) : m_clock(clock) {}

    bool frameStarted(FrameEvent const &event) override
    {
        seen.push_back({'s', event});
        m_clock.advanceMs(workMs);
        return onStarted ? onStarted() : true;
    }
    bool frameEnded(FrameEvent const &event) override
    {
        seen.push_back({'e', event});
        return onEnded ? onEnded() : true;
    }
    bool frameRender() override
    {
        seen.push_back({'r', {}});
        return false; // no reason to leave the loop
    }
    bool frameIdle(FrameEvent const &event) override
    {
        seen.push_back({'i', event});
        return false;
    }

    std::string kinds() const
    {
        std::string all;
        std::ranges::transform(seen, std::back_inserter(all), &Seen::kind);
        return all;
    }
    // What a member of the events says, of one kind or of several.
    std::vector<float> times(std::string const &wanted, float FrameEvent::*member) const
    {
        std::vector<float> all;
        for (Seen const &one : seen) {
            if (wanted.find(one.kind) != std::string::npos) {
                all.push_back(one.event.*member);
            }
        }
        return all;
    }
    std::vector<float> sameTimes(char kind) const { return times({kind}, &FrameEvent::sameEventTime); }

    int workMs = 0;
    std::vector<Seen> seen;
    std::function<bool()> onStarted;
    std::function<bool()> onEnded;

private:
    test::SteeredClock &m_clock;
};

class RootLoopTest : public testing::Test {
protected:
    RootLoopTest()
    {
        m_clock.ticks = 1'000'000; // the limiter takes a counter of 0 for one it has never read
        test::writeFile("plugins.cfg", "");
        testing::internal::CaptureStderr();
        root.emplace("plugins.cfg", "a.log", false);
        testing::internal::GetCapturedStderr();
        root->addFrameListener(&recorder);
    }
    ~RootLoopTest() override
    {
        testing::internal::CaptureStderr();
        root.reset();
        testing::internal::GetCapturedStderr();
    }

    void runFrames(int frames)
    {
        recorder.onEnded = [frames, done = 0]() mutable { return ++done < frames; };
        root->run();
        recorder.onEnded = nullptr;
    }

    test::TempFolder m_folder;
    test::SteeredClock m_clock;
    SteeredPump m_pump;
    os::MessagePumpScope m_pumpScope{m_pump};
    Recorder recorder{m_clock};
    std::optional<Root> root;
};

TEST_F(RootLoopTest, AFrameIsStartedRenderedEndedAndIdle)
{
    runFrames(3);
    EXPECT_EQ(recorder.kinds(), "sreisreisre") << "a false from frameEnded skips the rest of the frame";
    EXPECT_EQ(root->getFrameCount(), 5u) << "3 renders and 2 idles";

    recorder.seen.clear();
    recorder.onStarted = [] { return false; };
    root->run();
    EXPECT_EQ(recorder.kinds(), "s");

    recorder.onStarted = nullptr;
    recorder.seen.clear();
    recorder.onEnded = [this] {
        root->endMessageLoop();
        return true;
    };
    root->run();
    EXPECT_EQ(recorder.kinds(), "srei") << "the frame in progress ends";
    root->run();
    EXPECT_EQ(recorder.kinds(), "srei") << "and no other begins";
    EXPECT_EQ(recorder.seen[0].event.eventTag, 1u);
}

TEST_F(RootLoopTest, TimesAreSpansBetweenStampsOfTheirKind)
{
    recorder.workMs = 10;
    recorder.onStarted = [this] {
        EXPECT_FLOAT_EQ(root->getFrameRate(), 1.0f / recorder.seen.back().event.sameEventTime);
        return true;
    };
    runFrames(3);
    EXPECT_EQ(recorder.sameTimes('s'), (std::vector<float>{0.0f, 0.01f, 0.01f}));
    EXPECT_EQ(recorder.sameTimes('e'), (std::vector<float>{0.0f, 0.01f, 0.01f}));
    // The stamps of any kind: 0 10 | 10 20 | 20 30, so a started event follows its ended one at once.
    EXPECT_EQ(recorder.times("se", &FrameEvent::anyEventTime),
              (std::vector<float>{0.0f, 0.01f, 0.0f, 0.01f, 0.0f, 0.01f}));
    EXPECT_FLOAT_EQ(root->getFrameRateAvg(), 256.0f / 0.02f);

    root->clearEventTimes();
    recorder.seen.clear();
    runFrames(1);
    EXPECT_EQ(recorder.sameTimes('s'), std::vector<float>{0.0f}) << "no stamps are left";
    EXPECT_TRUE(std::isinf(root->getFrameRate()));
}

TEST_F(RootLoopTest, SmoothingAveragesOverItsPeriod)
{
    root->setFrameSmoothingPeriod(0.05f);
    int const works[] = {10, 20, 30, 40, 10, 10};
    std::size_t frame = 0;
    recorder.onStarted = [&] {
        m_clock.advanceMs(works[frame++]);
        return true;
    };
    runFrames(6);
    // Starts at 0 10 30 60 100 110. Of these, older ones than 50 ms go, but two always stay:
    // 30 keeps 0 10 30; 60 keeps 10 30 60; 100 keeps 60 100; 110 keeps 60 100 110.
    std::vector<float> const expected{0.0f, 0.010f, 0.015f, 0.025f, 0.040f, 0.025f};
    std::vector<float> const times = recorder.sameTimes('s');
    ASSERT_EQ(times.size(), expected.size());
    for (std::size_t i = 0; i < times.size(); ++i) {
        EXPECT_FLOAT_EQ(times[i], expected[i]) << i;
    }

    // A period that no count can hold keeps all stamps; one that is no time keeps two.
    for (float const period : {1e30f, -1.0f, std::nanf("")}) {
        root->setFrameSmoothingPeriod(period);
        root->clearEventTimes();
        recorder.seen.clear();
        frame = 0;
        runFrames(4);
        EXPECT_FLOAT_EQ(recorder.sameTimes('s').back(), period > 0 ? 0.02f : 0.03f);
    }
}

TEST_F(RootLoopTest, TheClampHoldsTimesAndAConstantReplacesThem)
{
    std::tuple<float, float, int, float> const rows[] = {
        {0.0f, 1.0f, 5000, 1.0f},
        {0.02f, 1.0f, 5, 0.02f},
        {0.004f, 0.004f, 100, 0.004f},
        {0.5f, 0.1f, 200, 0.5f},
    };
    for (auto const &[min, max, workMs, expected] : rows) {
        SCOPED_TRACE(expected);
        if (min == max) {
            root->setTimeConst(min);
        } else {
            root->setTimeClamp(min, max);
        }
        recorder.workMs = workMs;
        recorder.seen.clear();
        runFrames(2);
        EXPECT_EQ(recorder.sameTimes('s').back(), expected);
        EXPECT_EQ(recorder.sameTimes('e').back(), expected);
    }
}

TEST_F(RootLoopTest, TheMillisecondCountMayWrap)
{
    m_clock.startMs = 0xFFFFFFFFu - 120u; // the counter stands at 100 ms
    recorder.workMs = 8;
    runFrames(4);
    EXPECT_EQ(recorder.sameTimes('s'), (std::vector<float>{0.0f, 0.008f, 0.008f, 0.008f}));
    EXPECT_EQ(recorder.sameTimes('e'), (std::vector<float>{0.0f, 0.008f, 0.008f, 0.008f}));
}

TEST_F(RootLoopTest, IdleEventsAndSleepsOfALimitedFrame)
{
    root->setMaxFrameRate(100);
    m_clock.ticksPerYield = 5'000;
    std::int64_t ended = 0;
    std::int64_t before = 0;
    int frames = 0;
    recorder.onStarted = [&] {
        if (++frames == 2) { // the first limited frame of the process has nothing to wait for
            before = m_clock.ticks;
            m_clock.sleeps.clear();
            recorder.seen.clear();
            recorder.seen.push_back({'s', {}});
        } else if (frames == 3) {
            ended = m_clock.ticks;
            return false;
        }
        return true;
    };
    root->run();
    // 10 ms: seven sleeps of 1 ms while more than 3 ms remain, then six yields of half a millisecond.
    EXPECT_EQ(ended - before, 100'000);
    EXPECT_EQ(m_clock.sleeps, (std::vector<std::uint32_t>{1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(recorder.kinds(), "sre" + std::string(13, 'i') + "s");
    EXPECT_EQ(recorder.seen[4].event.idleSeconds, 0.0f) << "less than a whole second";
}

TEST_F(RootLoopTest, ARateGoesThroughWholeMilliseconds)
{
    // The ticks, of 100 ns, are those from one frame to the next.
    std::tuple<unsigned, std::int64_t> const rows[] = {
        {1000, 10'000}, {60, 161'290}, {999, 10'000}, {7, 1'428'571}, {1, 10'000'000}};
    m_clock.ticksPerYield = 1;
    for (auto const &[fps, ticks] : rows) {
        SCOPED_TRACE(fps);
        root->setMaxFrameRate(fps);
        std::vector<std::int64_t> starts;
        recorder.onStarted = [&] {
            starts.push_back(m_clock.ticks);
            return starts.size() < 3;
        };
        root->run();
        EXPECT_EQ(starts[2] - starts[1], ticks);
    }
}

TEST_F(RootLoopTest, ARateOfOneTellsWholeSecondsAndACounterThatGoesBackEndsTheWait)
{
    root->setMaxFrameRate(1);
    int frames = 0;
    std::size_t sleepsBefore = 0;
    recorder.onStarted = [&] {
        ++frames;
        if (frames == 2) {
            recorder.seen.clear();
            recorder.seen.push_back({'s', {}});
        } else if (frames == 3) {
            sleepsBefore = m_clock.sleeps.size();
            m_clock.ticks -= 5'000'000;
        } else if (frames == 4) {
            EXPECT_EQ(m_clock.sleeps.size(), sleepsBefore);
            // Minutes of standstill, beyond what 32 bits of ticks hold: no wait either.
            m_clock.ticks += std::int64_t{3} * 1'000'000'000;
        } else if (frames == 5) {
            EXPECT_EQ(m_clock.sleeps.size(), sleepsBefore);
            return false;
        }
        return true;
    };
    root->run();
    EXPECT_EQ(recorder.seen[3].event.idleSeconds, 1.0f);
    EXPECT_EQ(recorder.seen[4].event.idleSeconds, 0.0f);
}

TEST_F(RootLoopTest, WithoutALimitEachLoopIsIdleOnce)
{
    for (unsigned const fps : {0u, 1001u, 0xFFFFFFFFu}) {
        SCOPED_TRACE(fps);
        root->setMaxFrameRate(fps);
        m_clock.sleeps.clear();
        recorder.seen.clear();
        runFrames(3);
        EXPECT_EQ(recorder.kinds(), "sreisreisre");
        EXPECT_EQ(recorder.seen[3].event.anyEventTime, 0.0f);
        EXPECT_TRUE(m_clock.sleeps.empty());
    }
}

TEST_F(RootLoopTest, TheBackgroundIsThrottledBeforeTheFrame)
{
    std::string order;
    int frames = 0;
    root->setSleepTime(7);
    recorder.onStarted = [&] {
        order += std::to_string(m_clock.sleeps.size());
        ++frames;
        m_pump.foreground = frames < 2 || frames >= 4;
        root->setBackgroundBehave(frames < 5);
        if (frames == 5) {
            m_pump.foreground = false;
        }
        return frames < 7;
    };
    root->run();
    EXPECT_EQ(order, "0012222") << "frames 3 and 4 were slept before; with the behaviour off none is";
    EXPECT_EQ(m_clock.sleeps, (std::vector<std::uint32_t>{7, 7}));
}

TEST_F(RootLoopTest, MessagesGoToDialogsFromTheLastToTheFirst)
{
    int one = 1;
    int two = 2;
    root->addDialog(&one);
    root->addDialog(&two);
    root->addDialog(&one);
    m_pump.messages = {{nullptr, 5, 0, 0}, {&two, 6, 0, 0}};
    runFrames(1);
    EXPECT_EQ(m_pump.trace, "dialog1 dialog2 dialog1 translate5 dispatch5 dialog1 dialog2 ");

    root->removeDialog(&one);      // the first entry
    root->removeDialog(&recorder); // none of them
    m_pump.trace.clear();
    m_pump.messages = {{nullptr, 7, 0, 0}};
    runFrames(1);
    EXPECT_EQ(m_pump.trace, "dialog1 dialog2 translate7 dispatch7 ");
}

TEST_F(RootLoopTest, ListenersAreToldOnceInOrderOfAddress)
{
    Recorder all[] = {Recorder(m_clock), Recorder(m_clock), Recorder(m_clock)};
    for (std::size_t const index : {2u, 0u, 2u, 1u}) {
        root->addFrameListener(&all[index]);
    }
    root->removeFrameListener(&recorder);
    root->removeFrameListener(&recorder); // not there

    all[1].onStarted = [] { return false; };
    FrameEvent event;
    EXPECT_FALSE(root->_fireFrameStarted(event));
    EXPECT_EQ(all[0].kinds() + all[1].kinds() + all[2].kinds(), "ss") << "a false ends the walk";
    EXPECT_FALSE(root->_fireFrameRender());
    EXPECT_EQ(all[0].kinds() + all[1].kinds() + all[2].kinds(), "srs");

    for (Recorder &one : all) {
        root->removeFrameListener(&one);
    }
    struct Silent final : FrameListener {
    } silent;
    root->addFrameListener(&silent);
    EXPECT_TRUE(root->_fireFrameStarted(event) && root->_fireFrameEnded(event) && root->_fireFrameRender() &&
                root->_fireFrameIdle(event));
    root->removeFrameListener(&silent);
}

TEST_F(RootLoopTest, TheListMayChangeInsideANotification)
{
    test::DebugText const debug;
    root->removeFrameListener(&recorder);
    std::array<std::optional<Recorder>, 4> all{};
    for (auto &one : all) {
        one.emplace(m_clock);
    }
    root->addFrameListener(&*all[1]);
    root->addFrameListener(&*all[2]);
    all[1]->onStarted = [&] {
        root->removeFrameListener(&*all[1]);
        all[1].reset();
        root->removeFrameListener(&*all[2]);
        root->addFrameListener(&*all[0]);
        root->addFrameListener(&*all[3]);
        return true;
    };
    FrameEvent event;
    EXPECT_TRUE(root->_fireFrameStarted(event));
    EXPECT_EQ(all[0]->kinds(), "") << "behind the walk";
    EXPECT_EQ(all[2]->kinds(), "") << "removed";
    EXPECT_EQ(all[3]->kinds(), "s") << "ahead of the walk";
    EXPECT_NE(debug.text().find("inside a notification"), std::string::npos);
    root->removeFrameListener(&*all[0]);
    root->removeFrameListener(&*all[3]);
}

TEST_F(RootLoopTest, TheHistoryMovesWithTheWordsOfItsUsers)
{
    FrameEvent event;
    event.sameEventTime = 0.5f;
    root->_fireFrameStarted(event);
    root->getCurrentFrameStats()->words[7] = 77;
    event.sameEventTime = 0.25f;
    root->_fireFrameStarted(event);
    EXPECT_EQ(root->getStats().history[254].frameTime, 0.5f);
    EXPECT_EQ(root->getStats().history[254].words[7], 77u);
    EXPECT_EQ(root->getCurrentFrameStats()->frameTime, 0.25f);
    EXPECT_EQ(root->getCurrentFrameStats()->words[7], 77u) << "the newest record keeps its contents";
    EXPECT_EQ(root->getFrameRate(), 4.0f);
    EXPECT_EQ(sizeof(Root::QelStats::sHistory), 36u);
}

TEST_F(RootLoopTest, GlobalStringsHaveOnePointerEach)
{
    std::string const name = "name";
    char const *const first = root->makeGlobalString(name.c_str());
    EXPECT_NE(first, name.c_str());
    EXPECT_NE(first, root->makeGlobalString("nam"));
    EXPECT_STREQ(root->makeGlobalString(""), "");
    EXPECT_EQ(root->makeGlobalString(""), root->makeGlobalString(nullptr));
    for (int i = 0; i < 3000; ++i) {
        root->makeGlobalString(std::to_string(i).c_str());
    }
    EXPECT_STREQ(first, "name");
    EXPECT_EQ(first, root->makeGlobalString("name"));
}

class TestRenderSystem final : public RenderSystem {
public:
    void shutdown() override
    {
        ++shutdowns;
        if (next != nullptr) {
            Root::Instance().setRenderSystem(next);
        }
        if (fails) {
            throw 1;
        }
    }

    int shutdowns = 0;
    bool fails = false;
    RenderSystem *next = nullptr;
};

TEST_F(RootLoopTest, AnotherRenderSystemShutsTheActiveOneDown)
{
    TestRenderSystem first;
    TestRenderSystem second;
    root->addRenderSystem(&first);
    root->addRenderSystem(&second);
    EXPECT_EQ(*root->getAvailableRenderers(), (std::vector<RenderSystem *>{&first, &second}));
    root->setRenderSystem(&first);
    root->setRenderSystem(&first);
    EXPECT_EQ(first.shutdowns, 0);
    first.next = &second;
    root->setRenderSystem(nullptr);
    EXPECT_EQ(first.shutdowns, 1) << "once, although it picks another while it shuts down";
    EXPECT_EQ(root->getRenderSystem(), nullptr);
    EXPECT_EQ(second.shutdowns, 0);

    first.next = nullptr;
    first.fails = true;
    root->setRenderSystem(&first);
    EXPECT_THROW(root->setRenderSystem(&second), int);
    EXPECT_EQ(root->getRenderSystem(), &first);
    first.fails = false;
    root->setRenderSystem(&second);
    EXPECT_EQ(first.shutdowns, 3) << "told again, since the first time it failed";
}

} // namespace
} // namespace Qel
