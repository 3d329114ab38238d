#include "System/Sound/sound3DStereo.h"
#include "System/Sound/sound3DSubwoofer.h"
#include "System/Sound/soundVorbis.h"
#include "System/Sound/stereoCalc.h"
#include "Tests/Sound/soundSystemFixture.h"

namespace Qel {
namespace {

using test::Sound;

// By hand: right is up x at = (1, 0, 0); D is where they meet, W is 200.
TEST(StereoCalc, MovesTheVoicesFromTheSidesToTheSound)
{
    struct {
        float d;
        D3DXVECTOR3 place, left, right;
    } const rows[] = {
        {50, {0, 0, 0}, {-200, 0, 0}, {200, 0, 0}},
        {50, {0, 0, 50}, {0, 0, 50}, {0, 0, 50}}, // at the blend distance itself
        {50, {0, 0, 51}, {0, 0, 51}, {0, 0, 51}},
        // halfway: (-100, 0, 25) and (100, 0, 25), on a sphere of 150
        {100, {0, 0, 50}, {-145.521f, 0, 36.380f}, {145.521f, 0, 36.380f}},
        {0, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.place.z);
        D3DXVECTOR3 const listener{10, 20, 30};
        cStereoCalc calc(listener, {0, 0, 2}, {0, 1, 0});
        EXPECT_EQ(calc.rightVector.x, 1.0f);
        calc.setBlendDistance(row.d);
        D3DXVECTOR3 left;
        D3DXVECTOR3 right;
        calc.getPositions(row.place + listener, left, right);
        left -= listener;
        right -= listener;
        for (auto const &[is, should] : {std::pair{left, row.left}, std::pair{right, row.right}}) {
            EXPECT_NEAR(is.x, should.x, 0.01f);
            EXPECT_NEAR(is.y, should.y, 0.01f);
            EXPECT_NEAR(is.z, should.z, 0.01f);
        }
    }
}

struct Sound3D : test::SoundSystemFixture {
    Sound3D()
    {
        sound->setCompanionName("b.wav");
        sound->setCompanionData(companion.data(), static_cast<unsigned int>(companion.size()));
        sound->getSoundParams().maxDistance = 100;
        sound.at(0.5f);
    }

    // An open pair of two streams, in the lists of the system.
    iSound3DStereo &streamPair(Sound &parent)
    {
        auto *const pair = std::make_unique<iSound3DStereo>(&system).release();
        system.stereoSounds.push_back(pair);
        for (int i : {0, 1}) {
            streams[i] = system.createVorbisStream();
            voices[i] = system.getFreeChannel(true);
        }
        EXPECT_TRUE(pair->open(parent, voices[0], voices[1], nullptr, streams[0], streams[1], nullptr));
        for (iSoundChannel *const voice : voices) {
            system.channelTable[voice->getIndex()] = voice;
        }
        return *pair;
    }
    void nothingIsLeft()
    {
        EXPECT_TRUE(system.stereoSounds.empty() && system.vorbisStreams.empty());
        EXPECT_EQ(system.all().size(), 3u);
    }

    test::Bytes companion = test::shortWav();
    Sound &sound = sounds.emplace_back(6u);
    iSoundVorbis *streams[2];
    iSoundChannel *voices[2];
};

TEST_F(Sound3D, APairFollowsItsParentAndEndsTogether)
{
    ASSERT_TRUE(system.start(2, 0, 1));
    sound->set3DStereo();
    ASSERT_TRUE(system.play(sound));
    EXPECT_TRUE(said("iSoundSystem::play(): playing sounds 'a.wav' & 'b.wav'\n"));
    EXPECT_EQ(sound->getPlayingCounter(), 1) << "once for both voices";
    test::TestChannel *const left = system.channel(1);
    test::TestChannel *const right = system.channel(2);
    EXPECT_EQ(right->getResourceName(), "b.wav");
    sound->setPosition({0, 0, 49});
    sound->setVolume1(0.5f);
    system.update(0.01f);
    EXPECT_LT(left->getSoundParams().position.x, right->getSoundParams().position.x);
    EXPECT_EQ(right->getSoundParams().volume1, 0.5f);
    EXPECT_FLOAT_EQ(left->getActualVolume(), 0.5f * 0.75f);
    sound->setPosition({0, 0, 60});
    system.update(0.01f);
    EXPECT_EQ(left->getSoundParams().position.z, 60.0f);
    EXPECT_EQ(right->getSoundParams().volume1, 0.0f) << "one point: the left voice alone";

    EXPECT_TRUE(system.stop(sound, 100));
    EXPECT_TRUE(left->isFadingDown() && right->isFadingDown());
    finish(2);            // the voice goes,
    system.update(0.01f); // and the pair with it
    EXPECT_TRUE(said("cFinishedDestroy: destroyed 3DStereo #6.\n"));
    EXPECT_TRUE(system.stereoSounds.empty() && sound->isStopped());
    EXPECT_EQ(system.all().size(), 3u);
}

// Two channels in a file are no place: the voice is not one in 3D, but the list that it came from is.
TEST_F(Sound3D, VoicesKeepTheirLoopsTheirListAndOneRequestOfAPair)
{
    ASSERT_TRUE(system.start(3, 0, 1));
    sound->getSoundParams().set(SOUNDFLAG_DUCKING_REQUEST, true);
    Sound requester(7);
    requester.at(1);
    requester->getSoundParams().set(SOUNDFLAG_DUCKING_REQUEST, true);
    ASSERT_TRUE(system.play(requester));
    sound->set3DStereo();
    sound.data[22] = 2; // channels, in the head of the file
    sound->getSoundParams().loopCount = sound->getSoundParams().currentLoop = 3;
    ASSERT_TRUE(system.play(sound));
    ASSERT_FALSE(system.channel(2)->is3DChannel());
    system.channel(2)->getSoundSource()->decCurrentLoop();
    system.update(0.01f);
    EXPECT_EQ(system.channel(2)->getSoundSource()->getCurrentLoop(), 2);
    EXPECT_EQ(system.channel(3)->getSoundSource()->getCurrentLoop(), 3);
    system.stop(sound, 0);
    EXPECT_TRUE(system.isDuckingRequested()) << "one sound that asks is left";
    EXPECT_EQ(system.free3DChannels.size(), 2u);
    system.stop(requester, 0);
    EXPECT_FALSE(system.isDuckingRequested());
}

TEST_F(Sound3D, APairIn2DKeepsToTheFrontSpeakers)
{
    ASSERT_TRUE(system.start(2, 0, 2, true));
    sound->set3DStereo();
    sound->setPosition({0, 0, 0});
    ASSERT_TRUE(system.play(sound));
    EXPECT_TRUE(sound->is2DForced());
    EXPECT_TRUE(system.channel(3)->getSoundSource()->isFrontLeftOnly());
    EXPECT_TRUE(system.channel(4)->getSoundSource()->isFrontRightOnly());
}

TEST_F(Sound3D, VoicesGoBackWhenAPairCannotStart)
{
    struct {
        unsigned int num3D, num2D;
        bool subwoofer, multichannel, secondFails;
        unsigned int voices; // that play: all of the pair's, or none
    } const rows[] = {
        {2, 1, false, true, false, 2}, {2, 1, false, true, true, 0},
        {1, 1, false, true, false, 0}, {2, 1, true, true, false, 0}, // three 3D voices are asked for
        {3, 1, true, true, false, 3},  {2, 1, true, false, false, 2},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(&row - rows);
        test::TestSound other;
        ASSERT_TRUE(other.start(row.num3D, 0, row.num2D, row.multichannel));
        Sound pair(1);
        pair.at(1);
        pair->setCompanionName("b.wav");
        pair->set3DStereo();
        if (row.subwoofer) {
            pair->set3DSubwoofer();
        }
        if (row.secondFails) {
            static_cast<test::TestChannel *>(other.free3DChannels[1])->acceptsPlay = false;
        }
        bool const plays = row.voices != 0;
        EXPECT_EQ(other.play(pair), plays);
        EXPECT_EQ(other.getNumPlayingChannels(), row.voices);
        EXPECT_EQ(pair->getPlayingCounter(), plays);
        EXPECT_EQ(other.stereoSounds.size(), plays);
        EXPECT_EQ(other.all().size(), row.num3D + row.num2D);
        for (iSoundChannel const *const channel : other.free3DChannels) {
            EXPECT_FALSE(channel->isPlaying());
        }
        other.stopAll(0);
        EXPECT_TRUE(pair->isStopped());
    }
}

TEST_F(Sound3D, ASubwooferSoundHasOneVoiceThere)
{
    ASSERT_TRUE(system.start(2, 0, 1, true));
    sound->set3DSubwoofer();
    ASSERT_TRUE(system.play(sound));
    EXPECT_EQ(system.channel(1)->getSoundSource(), &sound.source) << "the main voice plays the parent";
    EXPECT_EQ(system.channel(3)->getTypeDesc(), "LFE");
    EXPECT_EQ(system.channel(3)->getSoundParams().position.x, 0.0f);
    EXPECT_EQ(system.getSoundInfo(SOUNDINFO_NUM_3DSUBWOOFER, 0, nullptr), 1);
    finish(1);
    system.update(0.01f);
    EXPECT_TRUE(said("cFinishedDestroy: destroyed 3DSubwoofer #6.\n"));
    EXPECT_TRUE(sound->isStopped());
    EXPECT_EQ(system.getNumPlayingChannels(), 0u) << "either voice's end is the end of both";

    test::TestSound stereo;
    ASSERT_TRUE(stereo.start(2, 0, 1, false));
    ASSERT_TRUE(stereo.play(sound));
    EXPECT_FALSE(sound->is3DSubwoofer()) << "a plain sound, where there is no subwoofer";
    stereo.stopAll(0);
}

// Streams are a back end's choice; those of a pair are no longer its own once it has ended.
TEST_F(Sound3D, StreamsOfAPairGoInTheSameUpdate)
{
    ASSERT_TRUE(system.start(2, 0, 1));
    test::Bytes const ogg = test::soundFile("mono.ogg");
    Sound parent(8, ogg, "a.ogg");
    parent.at(1);
    parent->setCompanionName("b.ogg");
    parent->setCompanionData(parent.data.data(), static_cast<unsigned int>(parent.data.size()));
    iSound3DStereo &pair = streamPair(parent);
    EXPECT_FALSE(streams[0]->isStandAlone());
    ASSERT_TRUE(pair.play());
    system.update(0.01f);
    EXPECT_EQ(system.vorbisStreams.size(), 2u);
    finish(voices[1]->getIndex());
    nothingIsLeft();

    streamPair(parent);
    EXPECT_TRUE(system.destroyVorbis(streams[1], 0)) << "under the pair's feet";
    system.update(0.01f);
    nothingIsLeft();
}

} // namespace
} // namespace Qel
