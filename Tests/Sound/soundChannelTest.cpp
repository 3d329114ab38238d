#include "Tests/Sound/soundBytes.h"
#include "Tests/Tools/logLines.h"

#include "System/math/rand.h"

#include <gtest/gtest.h>

namespace Qel {
namespace {

struct Channel : testing::Test {
    Channel() { EXPECT_TRUE(system.start(1, 0, 1)); }

    test::TestSound system;
    test::TestChannel channel{9, &system};
    test::Sound sound{5};
};

TEST_F(Channel, TakesOnlyWhatCanBeHeard)
{
    struct {
        float volume;
        bool onPause;
        bool taken;
    } const rows[] = {{0.005f, false, false}, {0.005f, true, true}, {0.02f, false, true}};
    for (auto const &row : rows) {
        SCOPED_TRACE(row.volume);
        sound->setPlayOnPause(row.onPause);
        sound->setVolume1(row.volume);
        sound->setVolume2(1.0f);
        EXPECT_EQ(channel.init_play(sound, 0), row.taken);
        EXPECT_EQ(channel.getSoundSource() != nullptr, row.taken);
        EXPECT_FALSE(sound->isVolChanged());
    }
}

TEST_F(Channel, NamesItsKindInTheLineAndIsPlacedIn3DOnlyForAMonoSound)
{
    test::LogLines log(3);
    struct {
        void (*set)(iSoundSource &);
        char const *kind;
    } const rows[] = {{[](iSoundSource &s) { s.setNumChannels(1), s.force2D(); }, "2D"},
                      {[](iSoundSource &s) { s.resetForce2D(); }, "3D"},
                      {[](iSoundSource &s) { s.setNumChannels(2); }, "2D"},
                      {[](iSoundSource &s) { s.set51Sound(); }, "5.1"},
                      {[](iSoundSource &s) { s.setCenterOnly(); }, "SS"},
                      {[](iSoundSource &s) { s.setLFEOnly(); }, "LFE"}};
    for (auto const &row : rows) {
        row.set(sound.source);
        ASSERT_TRUE(channel.init(sound));
        log.take();
        ASSERT_TRUE(channel.play(100));
        EXPECT_EQ(channel.getTypeDesc(), row.kind);
        EXPECT_EQ(channel.is3DChannel(), channel.getTypeDesc() == "3D");
        std::string const line =
            "iSoundChannel::play() " + std::string(row.kind) + " channel 9 (#5 'a.wav').\n";
        EXPECT_NE(log.take().find(line), std::string::npos);
        EXPECT_EQ(channel.deviceVolume, 0.0f);
        EXPECT_TRUE(channel.isFadingUp());
    }
}

TEST_F(Channel, WorksOutVolumeAndLowPass)
{
    struct {
        bool falloffOn, lowPassOn, duckingLowPass, local;
        std::uint16_t rate;
        float volume, lowPass;
    } const rows[] = {
        // group 0.5, volumes 0.8 and 0.5, falloff 0.25; ducked: 0.6, and 0.6 + 0.4 - 0.6 = 0.4
        {false, false, false, false, 44100, 0.2f, 1.0f},
        {true, false, false, false, 44100, 0.05f, 1.0f},
        {false, false, false, true, 44100, 0.12f, 1.0f},
        {false, true, false, false, 44100, 0.2f, 22000.0f / 44100},
        {false, true, false, false, 8000, 0.2f, 1.0f},
        {false, true, false, false, 0, 0.2f, 1.0f},
        {true, true, true, true, 44100, 0.03f, 0.1f},    // 0.4 * 0.25
        {false, false, true, true, 44100, 0.12f, 0.24f}, // 0.4 * 0.6
    };
    system.setGroupVolume(3, 0.5f);
    for (auto const &row : rows) {
        SCOPED_TRACE(&row - rows);
        sSoundParams params;
        params.volume1 = 0.8f;
        params.volume2 = 0.5f;
        params.falloff = 0.25f;
        params.soundGroup = 3;
        params.sampleRate = row.rate;
        params.set(SOUNDFLAG_FALLOFF_OVERRIDE, row.falloffOn);
        params.set(SOUNDFLAG_LOW_PASS, row.lowPassOn);
        params.set(SOUNDFLAG_DUCKING_LOW_PASS, row.duckingLowPass);
        params.set(SOUNDFLAG_LOCAL_DUCKING, row.local);
        sound.source.init(params);
        ASSERT_TRUE(channel.init(sound));
        EXPECT_NEAR(channel.getActualVolume(), row.volume, 1e-6f);
        EXPECT_NEAR(channel.getLowPass(), row.lowPass, 1e-6f);
    }
}

TEST_F(Channel, DucksInTwentySteps)
{
    ASSERT_TRUE(channel.init(sound));
    sound->setDuckingLowPass();
    channel.setDucking();
    auto const update = [&](int times) {
        for (int i = 0; i < times; ++i) {
            channel.update(0.01f);
        }
    };
    update(19);
    EXPECT_FALSE(channel.isDuckingComplete());
    update(1);
    EXPECT_NEAR(channel.getActualDuckingVolume(), 0.6f, 1e-6f);
    EXPECT_TRUE(sound->isVolChanged()) << "a later update sees that it is done";
    update(2);
    EXPECT_FALSE(sound->isVolChanged());
    EXPECT_EQ(channel.getActualDuckingVolume(), 0.6f);
    EXPECT_TRUE(sound->isDuckingLowPassOn());
    channel.resetDucking();
    update(23);
    EXPECT_EQ(channel.getActualDuckingVolume(), 1.0f);
    EXPECT_FALSE(sound->isDuckingLowPassOn()) << "it goes with the ducking";
}

TEST_F(Channel, VariesPitchByHalfAtTheMost)
{
    cRand::seed(1);
    sound->setPitchVariation(80);
    ASSERT_TRUE(channel.init(sound));
    float lowest = 1.0f;
    float highest = 1.0f;
    for (int i = 0; i < 2000; ++i) {
        channel.setParams();
        lowest = std::min(lowest, sound->getPitchFactor());
        highest = std::max(highest, sound->getPitchFactor());
    }
    EXPECT_TRUE(lowest >= 0.5f && lowest < 0.51f && highest <= 1.5f && highest > 1.49f) << lowest << highest;
}

TEST_F(Channel, NotesFadesAndPauses)
{
    ASSERT_TRUE(channel.init_play(sound, 0));
    channel.fadeUp(0.5f, 250);
    EXPECT_TRUE(channel.isFadingUp() && channel.getFadeSpeed() == 2.0f);
    channel.fadeDown(0.75f, 500);
    EXPECT_TRUE(channel.isFadingDown() && !channel.isFadingUp() && channel.getFadeSpeed() == 0.5f);
    channel.fadeUp(1.0f, 0);
    EXPECT_EQ(channel.getFadeSpeed(), -1.0f);

    channel.setPause(true, true);
    EXPECT_TRUE(channel.isPaused() && channel.isFadingDown() && !channel.isPlaying());
    channel.setPause(false, false);
    EXPECT_TRUE(channel.isPaused()) << "the back end ends a pause";
    channel.setPause(false, true);
    EXPECT_TRUE(channel.isFadingUp() && channel.getFadeTarget() == 1.0f);
    channel.setPlaying();
    channel.fadeUp(1.0f, 100);
    channel.setPause(true, false);
    EXPECT_FALSE(channel.isFadingUp() || channel.isFadingDown());
    channel.setFinished();
    EXPECT_TRUE(channel.isFinished() && !channel.isPaused() && channel.alreadyPlayed());
}

} // namespace
} // namespace Qel
