#include "System/Sound/soundClip.h"
#include "Tests/Sound/soundSystemFixture.h"

#include <memory>

namespace Qel {
namespace {

struct Clip : iSoundClip {
    using iSoundClip::chunkSize;
    using iSoundClip::dataReady;
    using iSoundClip::iSoundClip;
};

struct ClipTest : test::SoundSystemFixture {
    ClipTest()
    {
        EXPECT_TRUE(system.start(0, 0, 2));
        channel = static_cast<test::TestChannel *>(system.getFreeChannel(false));
        system.channelTable[channel->getIndex()] = channel;
        clip = std::make_unique<Clip>(&system, channel, true).release();
        system.clips.push_back(clip);
    }

    test::TestChannel *channel;
    test::Sound &sound = sounds.emplace_back(4u);
    Clip *clip;
};

TEST_F(ClipTest, WaitsForDataAndGoesWhenItHasPlayed)
{
    ASSERT_TRUE(clip->open(sound, 1024));
    EXPECT_TRUE(said("iSoundClip::open() successfully opened clip #4.\n"));
    EXPECT_TRUE(sound->is51Sound() && sound->isStream());
    EXPECT_EQ(clip->chunkSize, 2 * 49152u);
    EXPECT_FALSE(clip->open(sound, 1024)) << "open already";
    unsigned char bytes[2000] = {};
    EXPECT_FALSE(clip->write(bytes, 2000)) << "not all of it";
    EXPECT_EQ(clip->getReadable(), 1024u);
    EXPECT_FALSE(clip->write(nullptr, 3));

    EXPECT_TRUE(clip->play());
    EXPECT_TRUE(clip->isPlayRequested() && !clip->isPlaying());
    clip->dataReady = true;
    system.update(0.25f);
    EXPECT_TRUE(clip->isPlaying());
    EXPECT_FALSE(clip->play()) << "it plays";
    system.update(0.25f);
    EXPECT_FALSE(clip->isPlayRequested());
    EXPECT_EQ(clip->getTime(), 0.25f) << "from its start";
    EXPECT_TRUE(system.setSpeakerSettings(4, true, false, true));
    EXPECT_FALSE(system.setSpeakerSettings(5, true, false, true));

    finish(channel->getIndex());
    EXPECT_FALSE(clip->isOpened() || sound->isStream());
    EXPECT_EQ(system.getNumPlayingChannels(), 0u);
    EXPECT_EQ(system.all().size(), 2u) << "its voice is free again";
}

TEST_F(ClipTest, LeavesNothingBehindWhenItCannotOpen)
{
    EXPECT_FALSE(clip->open(sound, 1000));
    EXPECT_TRUE(said("iSoundClip::open(\"a.wav\") ringbuffer init failed!\n"));
    sound->setVolume1(0.0f);
    EXPECT_FALSE(clip->open(sound, 1024));
    EXPECT_TRUE(said("iSoundClip::open() clip #4 has failed!\n"));
    EXPECT_EQ(clip->getSoundSource(), nullptr);
    EXPECT_EQ(clip->getWriteable(), 0u);
}

TEST_F(ClipTest, LosesItsVoiceWhenThatIsStopped)
{
    ASSERT_TRUE(clip->open(sound, 1024));
    clip->dataReady = true;
    ASSERT_TRUE(clip->play());
    ASSERT_TRUE(system.stopChannel(channel->getIndex(), 0));
    EXPECT_EQ(clip->getChannel(), nullptr) << "another may have it now";
    system.update(0.0f);
    EXPECT_FALSE(clip->isOpened());
    EXPECT_TRUE(system.destroySoundClip(clip, 0));
    EXPECT_FALSE(system.destroySoundClip(clip, 0));
}

} // namespace
} // namespace Qel
