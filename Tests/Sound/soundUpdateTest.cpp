#include "System/Sound/soundClip.h"
#include "System/Sound/soundVorbis.h"
#include "Tests/Sound/soundSystemFixture.h"

namespace Qel {
namespace {

using test::Sound;

struct SoundUpdate : test::SoundSystemFixture {
    SoundUpdate() { EXPECT_TRUE(system.start(2, 0, 3)); }

    Sound &sound(unsigned int id, unsigned int group = 0)
    {
        sounds.emplace_back(id)->getSoundParams().soundGroup = static_cast<std::uint8_t>(group);
        return sounds.back();
    }
    iSoundChannel *channelOf(unsigned int id) { return system.channelTable[system.getChannelID(id)]; }
};

TEST_F(SoundUpdate, DucksTheOthersUntilTheLastRequesterHasGone)
{
    Sound &plain = sound(1);
    Sound &local = sound(2);
    local->setLocalDucking();
    ASSERT_TRUE(system.play(plain) && system.play(local));
    EXPECT_FALSE(channelOf(1)->isDucked());
    for (unsigned int id : {3u, 4u}) {
        sound(id)->getSoundParams().set(SOUNDFLAG_DUCKING_REQUEST, true);
        ASSERT_TRUE(system.play(sounds.back()));
    }
    EXPECT_EQ(system.duckingCounter, 2u);
    EXPECT_TRUE(said("iSoundSystem::playWork(): duckingcounter++\n"));
    EXPECT_TRUE(channelOf(1)->isDucked());
    EXPECT_FALSE(channelOf(3)->isDucked());
    ASSERT_TRUE(system.play(sound(5)));
    EXPECT_EQ(channelOf(5)->getActualDuckingVolume(), 0.6f) << "at the level from its start";

    system.stop(sounds[2], 0);
    EXPECT_FALSE(sounds[2]->isVolChanged()) << "what has gone is not ducked";
    EXPECT_TRUE(channelOf(1)->isDucked());
    system.stop(sounds[3], 400);
    EXPECT_TRUE(channelOf(1)->isDucked()) << "as long as it fades";
    finish(system.getChannelID(4));
    EXPECT_TRUE(said("iSoundSystem::stopChannel(): duckingcounter--\n"));
    EXPECT_FALSE(channelOf(1)->isDucked());
    EXPECT_TRUE(channelOf(2)->isDucked()) << "its own";
}

TEST_F(SoundUpdate, HandsVolumesOnWhereTheyChangedEnough)
{
    Sound &one = sound(1, 3);
    ASSERT_TRUE(system.play(one));
    struct {
        float volume, kept;
        bool sent;
    } const rows[] = {{0.95f, 0.95f, false}, {0.8f, 0.8f, true}, {7.0f, 1.0f, true}, {-1.0f, -1.0f, true}};
    for (auto const &row : rows) {
        SCOPED_TRACE(row.volume);
        one->resetVolChanged();
        system.setGroupVolume(3, row.volume);
        EXPECT_EQ(system.getGroupVolume(3), row.kept);
        EXPECT_EQ(one->isVolChanged(), row.sent);
    }
    EXPECT_TRUE(said("iSoundSystem::setGroupVolume group 3 to vol 0.950000.\n"));
    system.setGroupVolume(32, 1.0f);
    EXPECT_EQ(system.getGroupVolume(32), 0.0f);
    system.setMasterVolume(2.0f);
    EXPECT_EQ(system.getMasterVolume(), 1.0f);
    system.setMasterVolume(-1.0f);
    EXPECT_EQ(system.getMasterVolume(), -1.0f);
    log.take();
    system.setMuteOnOff(true);
    system.setMuteOnOff(true);
    lines = log.take();
    EXPECT_EQ(lines.find("setMasterVolume() to vol -1.000000.\n"), lines.rfind("setMasterVolume() to vol"));
    one->resetVolChanged();
    system.setWetVolume(1.0f);
    EXPECT_FALSE(one->isVolChanged());
    system.setWetVolume(1.5f);
    EXPECT_TRUE(one->isVolChanged() && system.getWetVolume() == 1.0f);
}

TEST_F(SoundUpdate, StopsAGroupAndFadesAll)
{
    Sound &two = sound(1, 2);
    two->getSoundParams().set(SOUNDFLAG_DUCKING_REQUEST, true);
    ASSERT_TRUE(system.play(two) && system.play(sound(2, 5)));
    system.waitlist.push_back(sound(3, 5));
    system.waitlist.push_back(sound(4, 2));
    sounds[2]->setPlaying();
    sounds[3]->setStream(); // cannot be played, and so it stays
    EXPECT_TRUE(system.stopAll(5));
    EXPECT_TRUE(said("iSoundSystem::stopAll: stopped soundgroup 5.\n"));
    EXPECT_EQ(system.getChannelID(2), 0u);
    EXPECT_TRUE(channelOf(1)->isFadingDown());
    EXPECT_EQ(system.duckingCounter, 0u);
    EXPECT_EQ(clock.sleeps.size(), 41u);
    EXPECT_TRUE(sounds[2]->isStopped());
    EXPECT_EQ(system.waitlist.size(), 1u);
    EXPECT_TRUE(system.stopAll(0));
    EXPECT_TRUE(said("iSoundSystem::stopAll: stopped all soundgroups.\n"));
    EXPECT_FALSE(system.stopAll(0));
    EXPECT_EQ(system.all().size(), 5u);
}

TEST_F(SoundUpdate, WaitsForAFadeWithinBounds)
{
    struct {
        unsigned int ms;
        std::size_t sleeps;
    } const rows[] = {{0, 0}, {9, 1}, {10, 2}, {400, 41}, {20000, 501}};
    for (auto const &row : rows) {
        SCOPED_TRACE(row.ms);
        clock.sleeps.clear();
        system.waitForFade(row.ms);
        EXPECT_EQ(clock.sleeps, std::vector<std::uint32_t>(row.sleeps, 10));
    }
    ASSERT_TRUE(system.play(sound(1)) && system.play(sound(2)));
    auto *const channel = static_cast<test::TestChannel *>(channelOf(2));
    clock.sleeps.clear();
    EXPECT_TRUE(system.fadeOut(2, 0.25f, 50, true));
    EXPECT_EQ(clock.sleeps.size(), 6u);
    EXPECT_EQ(channel->updates, 7);
    EXPECT_EQ(channel->getFadeTarget(), 0.25f);
    EXPECT_TRUE(!channelOf(1)->isFadingDown());
    EXPECT_TRUE(system.fadeIn(0, 1.0f, 50, false));
    EXPECT_TRUE(channelOf(1)->isFadingUp());
    EXPECT_FALSE(system.fadeIn(99, 1.0f, 50, true));
}

TEST_F(SoundUpdate, PausesOnceAndStopsAtOnceMeanwhile)
{
    ASSERT_TRUE(system.play(sound(1)));
    system.setPause(true);
    system.setPause(true);
    EXPECT_TRUE(said("iSoundSystem::setPause: pause all sounds (0/0/1).\n"));
    EXPECT_TRUE(system.isSoundSourcePaused(sounds[0]));
    EXPECT_FALSE(system.play(sound(2)));
    EXPECT_TRUE(said("iSoundSystem::play(): soundsystem is paused, sound 'a.wav' will not be played.\n"));
    sounds[1]->setPlayOnPause();
    EXPECT_TRUE(system.play(sounds[1]));
    EXPECT_TRUE(channelOf(2)->isPaused()) << "it begins in the pause";
    EXPECT_TRUE(system.stop(sounds[0], 400));
    EXPECT_EQ(system.getChannelID(1), 0u) << "no fade moves in a pause";
    system.setPause(false);
    EXPECT_TRUE(said("iSoundSystem::setPause: resume all sounds (0/0/1).\n"));
}

TEST_F(SoundUpdate, PlacesTheListenerByItsMode)
{
    struct {
        eListenerMode mode;
        char const *line;
        float place, direction;
    } const rows[] = {
        {LISTENER_CAMERA, "iSoundSystem::setListenerMode to CAMERA MODE.\n", 1, 1},
        {LISTENER_MIXED, "iSoundSystem::setListenerMode to MIXED MODE.\n", 2, 1},
        {LISTENER_TARGET, "iSoundSystem::setListenerMode to TARGET MODE.\n", 2, 2},
        {static_cast<eListenerMode>(7), "iSoundSystem::setListenerMode to unknown mode.\n", 0, -1}};
    for (auto const &row : rows) {
        SCOPED_TRACE(row.mode);
        system.setDefaultListener();
        EXPECT_EQ(system.listenerAt.z, -1.0f);
        system.setListenerMode(row.mode);
        EXPECT_TRUE(said(row.line));
        system.setCameraListener({1, 1, 1}, {1, 1, 1}, {0, 0, 1});
        system.setTargetListener({2, 2, 2}, {2, 2, 2}, {0, 0, 1});
        EXPECT_EQ(system.listener.x, row.place);
        EXPECT_EQ(system.listenerAt.z, row.direction);
    }
    EXPECT_TRUE(system.setListenerRoom(ROOM_CHURCH, false));
    system.params.isRoomReverbOn = false;
    EXPECT_TRUE(system.setListenerRoom(ROOM_HOUSE, true));
    String text;
    EXPECT_EQ(system.getSoundInfo(SOUNDINFO_ROOM, 0, &text), 0);
    EXPECT_EQ(text, "Church");
    EXPECT_EQ(system.getSoundInfo(SOUNDINFO_LISTENER, 0, &text), 0);
    EXPECT_EQ(text, "LISTENER pos[0.00, 0.00, 0.00] at[0.00, 0.00, -1.00], up[0.00, 1.00, 0.00]");
    EXPECT_EQ(system.getSoundInfo(SOUNDINFO_LISTENER, 0, nullptr), 0);
    EXPECT_EQ(system.getSoundInfo(SOUNDINFO_CHANNEL, 99, &text), -1);
    EXPECT_EQ(system.getSoundInfo(SOUNDINFO_CHANNEL, 1, &text), 0);
    EXPECT_EQ(text, "(unused) ");
}

TEST_F(SoundUpdate, TellsEachSearchThatFindsNothing)
{
    iSoundSource *const source = sound(1);
    void *const nothing = source;
    char handle[20];
    std::snprintf(handle, sizeof handle, "%x)\n",
                  static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(nothing)));
    EXPECT_FALSE(system.destroySoundClip(source, 0));
    EXPECT_FALSE(system.destroySoundClip(static_cast<iSoundClip *>(nothing), 0));
    EXPECT_FALSE(system.destroyVorbis(static_cast<iSoundVorbis *>(nothing), 0));
    EXPECT_FALSE(system.destroy3DStereo(static_cast<iSound3DStereo *>(nothing), 0));
    EXPECT_FALSE(system.destroy3DSubwoofer(static_cast<iSound3DSubwoofer *>(nothing), 0));
    for (char const *line : {"destroySoundClip() #1: soundsource handle not found in vClips! (",
                             "destroySoundClip() #2: soundsource handle not found in vClips! (",
                             "destroyVorbis() #2: soundsource handle not found in vVorbis! (",
                             "destroy3DStereo() #2: soundsource handle not found in v3DStereo! (",
                             "destroy3DSubwoofer() #2: soundsource handle not found in v3DSubwoofer! ("}) {
        EXPECT_TRUE(said((std::string(line) + handle).c_str())) << line;
    }
    lines.clear();
    source->setCompanionName("b");
    source->setStream();
    source->set3DStereo();
    source->set3DSubwoofer();
    EXPECT_FALSE(system.stop(source, 0));
    for (char const *line :
         {"destroyVorbis() #1: ", "destroySoundClip() #1: ", "destroy3DStereo() #1: ",
          "destroy3DSubwoofer() #1: ", "iSoundSystem::stop - could not find soundsource #1 (a.wav)!\n"}) {
        EXPECT_TRUE(said(line)) << line;
    }
}

} // namespace
} // namespace Qel
