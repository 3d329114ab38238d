#include "System/Time/profileManager.h"
#include "System/Time/timerInit.h"
#include "Tests/Tools/steeredClock.h"

#include <gtest/gtest.h>

#include <thread>

using namespace Qel;

namespace {

class ProfileManagerTest : public testing::Test {
protected:
    ProfileManagerTest() { TimerInit::init(TIMER_MILLISECONDS); }

    ProfileNode *child() { return manager.getRoot()->getChild(); }

    test::SteeredClock clock;
    ProfileManager manager;
};

} // namespace

TEST_F(ProfileManagerTest, AddsUpCallsTimesAndPeaks)
{
    manager.reset();
    for (int const ms : {5, 12, 3}) {
        ProfileSample const sample("frame");
        clock.advanceMs(ms);
    }
    ASSERT_NE(child(), nullptr);
    EXPECT_EQ(child()->getTotalCalls(), 3u);
    EXPECT_EQ(child()->getTotalTime(), 20.0f);
    EXPECT_EQ(child()->getPeakTime(), 12.0f);
    EXPECT_EQ(manager.get_Time_Since_Reset(), 0.02f);
    manager.increment_Frame_Counter();
    EXPECT_EQ(manager.get_Frame_Count_Since_Reset(), 1);
    EXPECT_EQ(child()->getParent(), manager.getRoot());
}

TEST_F(ProfileManagerTest, ARecursionStaysOnItsNodeAndIsTimedOnce)
{
    static char const name[] = "a";
    {
        ProfileSample const outer(name);
        clock.advanceMs(4);
        {
            ProfileSample const inner(name);
            clock.advanceMs(2);
        }
        clock.advanceMs(1);
        EXPECT_EQ(child()->getTotalTime(), 0.0f);
    }
    EXPECT_EQ(child()->getTotalCalls(), 2u);
    EXPECT_EQ(child()->getTotalTime(), 7.0f);
    EXPECT_EQ(child()->getChild(), nullptr);
}

TEST_F(ProfileManagerTest, TellsNodesApartByPointerAndPutsNewOnesFirst)
{
    static char const first[] = "same";
    static char const second[] = "same";
    for (char const *const name : {first, second, first}) {
        ProfileSample const sample(name);
    }
    ASSERT_NE(child(), nullptr);
    EXPECT_EQ(child()->getName(), second);
    ASSERT_NE(child()->getSibling(), nullptr);
    EXPECT_EQ(child()->getSibling()->getName(), first);
    EXPECT_EQ(child()->getSibling()->getTotalCalls(), 2u);
    EXPECT_EQ(child()->getSibling()->getSibling(), nullptr);
}

TEST_F(ProfileManagerTest, AResetZeroesTheWholeTree)
{
    {
        ProfileSample const a("a");
        ProfileSample const b("b");
        clock.advanceMs(3);
    }
    {
        ProfileSample const c("c");
    }
    manager.increment_Frame_Counter();
    clock.advanceMs(10);
    manager.reset();
    clock.advanceMs(2);
    EXPECT_EQ(manager.get_Frame_Count_Since_Reset(), 0);
    EXPECT_EQ(manager.get_Time_Since_Reset(), 0.002f);
    for (ProfileNode const *node : {child(), child()->getSibling(), child()->getSibling()->getChild()}) {
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->getTotalCalls(), 0u);
        EXPECT_EQ(node->getTotalTime(), 0.0f);
        EXPECT_EQ(node->getPeakTime(), 0.0f);
    }
}

TEST_F(ProfileManagerTest, OtherThreadsAndStraysDoNothing)
{
    std::thread([] { ProfileSample const sample("elsewhere"); }).join();
    EXPECT_EQ(child(), nullptr);
    manager.stop_Profile(); // an end without a beginning
    manager.start_Profile(manager.getRoot()->getName());
    manager.stop_Profile(); // there is nothing above the root
    {
        ProfileSample const sample("after");
    }
    ASSERT_NE(child(), nullptr);
    EXPECT_EQ(child()->getTotalCalls(), 1u);
}

TEST(ProfileSample, WithoutAManagerDoesNothing)
{
    ProfileSample const sample("nothing");
    EXPECT_EQ(ProfileManager::InstancePtr(), nullptr);
}

TEST_F(ProfileManagerTest, ATreeMayBeDeeperAndWiderThanTheStack)
{
    static char names[200'000];
    for (char const &name : names) {
        manager.start_Profile(&name); // each below the one before
    }
    for (std::size_t index = 0; index < std::size(names); ++index) {
        manager.stop_Profile();
    }
    ProfileNode *const root = manager.getRoot();
    for (std::size_t index = 0; index < 2000; ++index) {
        root->getSubNode(&names[index]);
    }
    manager.reset();
    EXPECT_EQ(root->getSubNode(&names[0])->getTotalCalls(), 0u);
}
