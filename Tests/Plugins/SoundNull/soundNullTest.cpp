#include "Plugins/SoundNull/clipMaker.h"
#include "Plugins/SoundNull/voiceLog.h"
#include "Tests/Plugins/archivePlugin.h"
#include "Tests/Sound/soundBytes.h"
#include "Tests/Tools/steeredClock.h"

#include "System/Sound/soundClip.h"
#include "System/Sound/soundSystemManager.h"

#include <gtest/gtest.h>

#include <deque>

namespace Qel {
namespace {

using test::operator+;

// 8000 frames of one channel: a second.
test::Bytes secondOfWav()
{
    return test::riff(test::wavFormat(1, 8000, 16) + test::chunk("data", 16000, test::Bytes(16000)));
}

struct SoundNull : testing::Test {
    SoundNull()
    {
        sSoundSystemParams params;
        params.soundCaps = SOUNDCAPS_51;
        params.num3DChannels = 2;
        EXPECT_TRUE(sound->initSoundSystem(params));
    }

    test::Sound &add(unsigned int id, float x = 1, unsigned int priority = PRIORITY_DEFAULT)
    {
        return sounds.emplace_back(id, secondOfWav()).at(x, priority);
    }
    void run(int steps, float dt = 0.125f)
    {
        for (int i = 0; i < steps; ++i) {
            sound->update(dt);
        }
    }
    // The log since the last call: a letter of the event, the source, and by whom and why it was robbed.
    std::string voices()
    {
        auto *const records =
            reinterpret_cast<VoiceLog *>(static_cast<std::uintptr_t>(sound->getSoundDriverHandle1()));
        std::string text;
        for (VoiceRecord const &record : *records) {
            text += "SEXRPC"[static_cast<int>(record.event)];
            text += std::to_string(record.source);
            if (record.event == VoiceEvent::robbed) {
                text +=
                    '<' + std::to_string(record.by) + (record.reason == RobReason::lowerPriority ? 'p' : 'd');
            }
            lastTime = record.time;
            text += ' ';
        }
        records->clear();
        return text;
    }

    test::SteeredClock clock;
    test::LogLines log;
    std::deque<test::Sound> sounds;
    PluginMgr plugins;
    SoundSystemManager manager;
    StartedPlugin plugin{"plugin_soundnull.dll"};
    iSoundSystem *sound = manager.load("main", "NULL", PRIORITY_MOST_URGENT);
    double lastTime = 0;
};

TEST_F(SoundNull, PlaysLoopsAndEndsByTheClock)
{
    struct {
        unsigned int loops;
        float pitch;
        int updates;
    } const rows[] = {{1, 1.0f, 8}, {3, 1.0f, 24}, {1, 2.0f, 4}, {2, 0.5f, 32}};
    for (auto const &row : rows) {
        SCOPED_TRACE(row.updates);
        test::Sound &one = add(1);
        one->getSoundParams().loopCount = one->getSoundParams().currentLoop =
            static_cast<std::uint8_t>(row.loops);
        one->setPitchFactor(row.pitch);
        ASSERT_TRUE(sound->play(one));
        run(row.updates - 1);
        EXPECT_TRUE(sound->isSoundSourcePlaying(one));
        EXPECT_EQ(one->getCurrentTimeMS(), 125u * static_cast<unsigned int>(row.updates - 1));
        EXPECT_EQ(one->getPlayingCounter(), 1);
        run(1);
        EXPECT_FALSE(sound->isSoundSourcePlaying(one));
        EXPECT_TRUE(one->isStopped());
        EXPECT_EQ(voices(), "S1 E1 ");
    }
    test::Sound &forever = add(2);
    forever->getSoundParams().loopCount = 0;
    ASSERT_TRUE(sound->play(forever));
    run(1000);
    EXPECT_TRUE(sound->isSoundSourcePlaying(forever));
}

TEST_F(SoundNull, StreamsForAsLongAsTheFileLasts)
{
    test::Sound &ogg = sounds.emplace_back(5u, test::soundFile("long.ogg"), "a.ogg"); // 10 s
    ASSERT_TRUE(sound->play(ogg));
    run(79);
    EXPECT_TRUE(sound->isSoundSourcePlaying(ogg));
    run(3);
    EXPECT_FALSE(sound->isSoundSourcePlaying(ogg));
    EXPECT_EQ(voices(), "S5 E5 ");
    EXPECT_EQ(sound->getSoundInfo(SOUNDINFO_NUM_VORBIS, 0, nullptr), 0);
}

TEST_F(SoundNull, TellsWhoWasRobbedByWhomAndWhy)
{
    ASSERT_TRUE(sound->play(add(1, 1, 14)));
    ASSERT_TRUE(sound->play(add(2, -50, 5)));
    run(1);
    ASSERT_TRUE(sound->play(add(3, 1, 9)));
    EXPECT_EQ(voices(), "S1 S2 R1<3p S3 ");
    run(1);
    ASSERT_TRUE(sound->play(add(4, 1, 5)));
    EXPECT_EQ(voices(), "R3<4p S4 ");
    run(1);
    ASSERT_TRUE(sound->play(add(5, 1, 5)));
    EXPECT_EQ(voices(), "R2<5d S5 ");
    EXPECT_FALSE(sound->play(add(6, 1, 5)));
    run(4);
    EXPECT_EQ(voices(), "E1 E3 E2 ") << "each 400 ms after its robbery, in whole updates";
    EXPECT_EQ(lastTime, 0.875);
    sound->stop(sounds[3], 0);
    EXPECT_EQ(voices(), "X4 ");
}

TEST_F(SoundNull, StandsStillInAPauseAndGoesOnWhereItWas)
{
    test::Sound &one = add(1);
    ASSERT_TRUE(sound->play(one));
    run(4);
    sound->setPause(true);
    run(40);
    EXPECT_TRUE(sound->isSoundSourcePaused(one));
    sound->setPause(false);
    run(3);
    EXPECT_TRUE(sound->isSoundSourcePlaying(one));
    run(1);
    EXPECT_TRUE(one->isStopped());
    EXPECT_EQ(voices(), "S1 P1 C1 E1 ");

    test::Sound &kept = add(2);
    kept->getSoundParams().soundGroup = 4;
    kept->getSoundParams().loopCount = 0;
    test::Sound &gone = add(3);
    gone->getSoundParams().soundGroup = 5;
    gone->getSoundParams().loopCount = 0;
    ASSERT_TRUE(sound->play(kept) && sound->play(gone));
    EXPECT_TRUE(sound->stopAll(5));
    EXPECT_TRUE(sound->isSoundSourcePlaying(kept));
    EXPECT_EQ(voices(), "S2 S3 X3 ");
}

// 8000 frames a second of two bytes; a ring of a second and a bit, which begins at half.
TEST_F(SoundNull, PlaysClipsByTheClockAsTheyAreFed)
{
    auto *const maker =
        reinterpret_cast<ClipMaker *>(static_cast<std::uintptr_t>(sound->getSoundDriverHandle2()));
    test::Bytes pcm(16384);
    test::Sound &plain = add(1);
    plain->getSoundParams().loopCount = 0;
    ASSERT_TRUE(sound->play(plain));
    struct {
        unsigned char loops, rounds;
    } const rows[] = {{1, 1}, {3, 3}};
    for (auto const &row : rows) {
        SCOPED_TRACE(int{row.rounds});
        test::Sound &track = add(9);
        track->setSamplerate(8000);
        track->getSoundParams().loopCount = track->getSoundParams().currentLoop = row.loops;
        track->getSoundParams().set(SOUNDFLAG_DUCKING_REQUEST, true);
        voices();
        iSoundClip *const clip = maker->createClip(false);
        ASSERT_TRUE(clip->open(track, 16384) && clip->play());
        EXPECT_TRUE(sound->isDuckingRequested());
        ASSERT_TRUE(clip->write(pcm.data(), 8000)); // half a second is not enough yet
        run(8);
        EXPECT_EQ(voices(), "") << "it waits for data";
        ASSERT_TRUE(clip->write(pcm.data(), 4000));
        run(1); // begins
        run(3); // 0.375 s
        EXPECT_EQ(clip->getReadable(), 6000u);
        EXPECT_EQ(track->getCurrentTimeMS(), 375u);
        sound->setPause(true);
        run(8);
        sound->setPause(false);
        run(6);
        EXPECT_TRUE(clip->isPlaying()) << "starved, and not at its end";
        EXPECT_EQ(clip->getReadable(), 0u);
        for (int round = 1; round <= row.rounds; ++round) {
            ASSERT_TRUE(clip->write(pcm.data(), 4000));
            clip->setEOFReached();
            run(1);
            EXPECT_TRUE(clip->isPlaying() && !clip->isEOFAndBufferDried());
            run(1);
            EXPECT_TRUE(clip->isEOFAndBufferDried());
            EXPECT_EQ(clip->isPlaying(), round < row.rounds);
            clip->resetEOFAndBufferDried();
        }
        EXPECT_FALSE(clip->isOpened() || track->isStream() || sound->isDuckingRequested());
        EXPECT_TRUE(track->isStopped());
        EXPECT_EQ(voices(), "S9 P9 P1 C9 C1 E9 ");
        EXPECT_TRUE(sound->destroySoundClip(clip, 0));
    }
    test::Sound &track = add(9);
    track->setSamplerate(8000);
    iSoundClip *const clip = maker->createClip(false);
    ASSERT_TRUE(clip->open(track, 16384) && clip->play());
    clip->write(pcm.data(), 16384);
    clip->setEOFReached();
    run(2);
    EXPECT_TRUE(sound->stop(track, 250));
    run(1);
    EXPECT_TRUE(clip->isPlaying()) << "half faded";
    run(1);
    EXPECT_FALSE(clip->isOpened());
    EXPECT_EQ(sound->getSoundInfo(SOUNDINFO_NUM_CLIPS, 0, nullptr), 1) << "closed, and the game's to destroy";
    EXPECT_TRUE(sound->stopAll(0));
    EXPECT_EQ(sound->getSoundInfo(SOUNDINFO_NUM_CLIPS, 0, nullptr), 0);
}

TEST(SoundNullPlugin, TakesItsSystemsWithItAndComesBack)
{
    test::LogLines log;
    PluginMgr plugins;
    SoundSystemManager manager;
    for (int round = 0; round < 2; ++round) {
        StartedPlugin plugin("plugin_soundnull.dll");
        iSoundSystem *const sound = manager.load("main", "NULL", PRIORITY_MOST_URGENT);
        ASSERT_NE(sound, nullptr);
        EXPECT_TRUE(sound->initSoundSystem({})) << "and no shutdown";
    }
    EXPECT_EQ(manager.load("main", "NULL", PRIORITY_MOST_URGENT), nullptr);
}

} // namespace
} // namespace Qel
