#include "System/Sound/soundVorbis.h"
#include "Tests/Sound/soundBytes.h"
#include "Tests/Tools/logLines.h"
#include "Tests/Tools/steeredClock.h"

#include <gtest/gtest.h>

namespace Qel {
namespace {

using test::Sound;

// What a fuzzer of calls has found.
struct SoundTrouble : testing::Test {
    SoundTrouble()
    {
        EXPECT_TRUE(system.start(2, 0, 1));
        pair.at(1);
        pair->setCompanionName("b.wav");
        pair->set3DStereo();
    }

    test::SteeredClock clock;
    test::LogLines log;
    Sound pair{6};
    Sound ogg{7, test::soundFile("mono.ogg"), "a.ogg"};
    test::TestSound system;
};

TEST_F(SoundTrouble, AStreamThatFadesOutAndIsStoppedAtOnceLeavesNoVoiceBehind)
{
    ASSERT_TRUE(system.play(ogg));
    EXPECT_TRUE(system.stop(ogg, 400));
    EXPECT_TRUE(system.stop(ogg, 0));
    EXPECT_EQ(system.getNumPlayingChannels(), 0u) << "nobody would bring that to its end";
    EXPECT_EQ(system.all().size(), 3u);
}

TEST_F(SoundTrouble, APairThatPlaysAgainBeforeItsOldOneHasGoneIsTheOneThatStops)
{
    ASSERT_TRUE(system.play(pair));
    EXPECT_TRUE(system.stopChannel(1, 0) && system.stopChannel(2, 0));
    ASSERT_TRUE(system.play(pair));
    EXPECT_EQ(pair->getPlayingCounter(), 1);
    EXPECT_TRUE(system.stop(pair, 0));
    EXPECT_EQ(system.getNumPlayingChannels(), 0u);
    EXPECT_TRUE(pair->isStopped() && system.stereoSounds.empty());
}

TEST_F(SoundTrouble, HalfAPairThatStartedInAPauseIsStopped)
{
    pair->setPlayOnPause();
    system.setPause(true);
    auto *const first = static_cast<test::TestChannel *>(system.free3DChannels[0]);
    static_cast<test::TestChannel *>(system.free3DChannels[1])->acceptsPlay = false;
    first->stops.clear();
    EXPECT_FALSE(system.play(pair));
    EXPECT_EQ(first->stops.size(), 2u) << "once as it took the source, once as it gave it back";
}

} // namespace
} // namespace Qel
