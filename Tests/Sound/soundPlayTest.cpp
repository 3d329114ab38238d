#include "Tests/Sound/soundSystemFixture.h"

#include "System/Sound/soundVorbis.h"

#include <random>
#include <set>

namespace Qel {
namespace {

using test::Sound;
using test::operator+;

unsigned char mp3[] = {0xFF, 0xFB, 0x90};

struct Play : test::SoundSystemFixture {};

TEST_F(Play, NeedsCapsThatTheBackEndHas)
{
    sSoundSystemParams params;
    params.soundCaps = SOUNDCAPS_51;
    EXPECT_FALSE(system.initSoundSystem(params));
    EXPECT_TRUE(
        said("ERROR: iSoundSystem::initSoundSystem: requested soundCaps '5.1 Digital' not supported by "
             "sound plugin!\n"));
    EXPECT_FALSE(system.shutdownSoundSystem());
    EXPECT_TRUE(said("ERROR: iSoundSystem::shutdownSoundSystem: not loaded/inited!\n"));
    system.loaded = false;
    EXPECT_FALSE(system.start(1, 0, 1));
    EXPECT_FALSE(system.play(sounds.emplace_back(1u)));
    system.params.soundCaps = SOUNDCAPS_WINDOWS;
    system.params.current3DCaps = SOUNDCAPS_40;
    EXPECT_EQ(system.getCurrent3DCapsDesc(), "4.0 Digital (windows)");
}

TEST_F(Play, TellsTheFormatFromNameAndData)
{
    using test::chunk;
    test::Bytes const fmt = test::wavFormat(1, 22050, 16);
    test::Bytes const data = chunk("data", 8, test::Bytes(8, 7));
    struct {
        char const *name;
        test::Bytes bytes;
        char const *format; // w, a, o, m
        std::size_t offset, size;
    } const rows[] = {
        {"a.wav", test::riff(fmt + data), "w", 44, 8},
        {"a.ogg", test::riff(fmt + data), "w", 44, 8},
        {"a.wav", test::riff(chunk("LIST", 3, {1, 2, 3}) + fmt + data), "w", 55, 8},
        {"a.wav", test::riff(fmt + chunk("data", 99, {1, 2})), "w", 44, 2},
        {"a.wav", test::riff(test::wavFormat(1, 22050, 4, 2) + data), "wa", 44, 8},
        {"a.wav", test::riff(chunk("junk", 0xFFFFFFF8, {}) + fmt), "w", 0, 44},
        {"a.wav", test::riff(chunk("fmt ", 16, {1, 0})), "w", 0, 22},
        {"a.wav", test::riff({'d', 'a', 't', 'a', 0, 0}), "w", 0, 18},
        {"a.wav", {'R', 'I', 'F', 'F', 0, 0, 0, 0, 'W', 'A', 'V'}, "", 0, 11},
        {"a.wav", {'O', 'g', 'g', 'S'}, "o", 0, 4},
        {"a.ogg", {'O', 'g', 'g'}, "", 0, 3},
        {"a.mp3", {1, 2, 3}, "m", 0, 3},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(&row - rows);
        Sound sound(1, row.bytes, row.name);
        system.checkSoundfile(sound, true);
        std::string format = sound->hasWAVHeader() ? "w" : "";
        format += sound->isADPCMCompressed() ? "a" : "";
        format += sound->hasOGGHeader() ? "o" : "";
        format += sound->hasMP3Header() ? "m" : "";
        EXPECT_EQ(format, row.format);
        unsigned int size = 0;
        EXPECT_EQ(sound->getData(size), sound.data.data() + row.offset);
        EXPECT_EQ(size, row.size);
    }
}

TEST_F(Play, RefusesWhatTheDeviceOrThePolicyDoesNotAllow)
{
    ASSERT_TRUE(system.start(2, 0, 2));
    struct {
        char const *what;
        void (*change)(iSoundSource &);
        char const *line;
    } const rows[] = {
        {"5.1", [](iSoundSource &s) { s.set51Sound(); },
         "iSoundSystem::play(): multichannel file 'a.wav' does not work on 'Stereo' speaker settings!\n"},
        {"single speaker", [](iSoundSource &s) { s.setLFEOnly(); },
         "iSoundSystem::play(): single-speaker file 'a.wav' does not work on 'Stereo' speaker settings!\n"},
        {"MP3", [](iSoundSource &s) { s.setResourceName("a.mp3"), s.setData(mp3, 3); },
         "iSoundSystem::checkSoundfileAndPlay(): unable to play file 'a.mp3'!\n"},
        {"played by a stream before", [](iSoundSource &s) { s.setStream(); }, ""},
    };
    system.params.current3DCaps = SOUNDCAPS_STEREO;
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        lines.clear();
        Sound sound(1);
        row.change(sound.source);
        EXPECT_FALSE(system.play(sound));
        EXPECT_TRUE(said(row.line)) << lines;
        EXPECT_EQ(system.all().size(), 4u);
    }
}

TEST_F(Play, PlaysOncePerIdAndAgainAfterAStop)
{
    ASSERT_TRUE(system.start(1, 0, 1));
    Sound &sound = sounds.emplace_back(7u);
    ASSERT_TRUE(system.play(sound));
    EXPECT_TRUE(said("iSoundSystem::play(): playing sound 'a.wav'\n"));
    EXPECT_EQ(system.getLatestPlaying(), "a.wav");
    EXPECT_FALSE(system.play(sound));
    EXPECT_TRUE(said("iSoundSystem::play(): sound source ID #7 is already in use!\n"));
    EXPECT_TRUE(system.isSoundSourcePlaying(sound));
    EXPECT_EQ(system.getChannelID(7), 2u) << "in 2D: it has no place";
    EXPECT_TRUE(system.stop(sound, 0));
    EXPECT_EQ(system.getChannelID(7), 0u);
    EXPECT_TRUE(system.play(sound)) << "stripped of its header, it is still the same file";
    EXPECT_TRUE(system.stop(sound, 0));
    EXPECT_FALSE(system.stop(sound, 0));
    EXPECT_TRUE(said("iSoundSystem::stop - could not find soundsource #7 (a.wav)!\n"));
}

TEST_F(Play, TriesOneFallbackWhereThereAreNoData)
{
    ASSERT_TRUE(system.start(1, 0, 1));
    struct {
        char const *fallback;
        bool hasData;
        char const *nameThen;
    } const rows[] = {
        {"b.wav", false, "b.wav"}, {"a.wav", false, "a.wav"}, {"", false, "a.wav"}, {"b.wav", true, "a.wav"}};
    for (auto const &row : rows) {
        SCOPED_TRACE(row.fallback);
        Sound sound(1);
        sound->setStream(); // fails
        sound->setFallbackName(row.fallback);
        if (!row.hasData) {
            sound->setData(nullptr, 0);
        }
        EXPECT_FALSE(system.play(sound));
        EXPECT_EQ(sound->getResourceName(), row.nameThen);
    }
    EXPECT_TRUE(said("iSoundSystem::play(): try fallback sound 'b.wav'!\n"));
}

TEST_F(Play, StealsInTableOrderFromLowerPriorityFirst)
{
    ASSERT_TRUE(system.start(4, 2, 1));
    system.play(sounds.emplace_back(1u).at(50, 5)); // farther from the new one than the listener is
    system.play(sounds.emplace_back(2u).at(1, 9));
    system.play(sounds.emplace_back(3u).at(10, 5)); // near the new one
    system.play(sounds.emplace_back(4u).at(1, 8));
    sounds.emplace_back(9u).at(20, 5);
    std::vector<unsigned int> stolen;
    EXPECT_TRUE(system.checkPriority(3, stolen, sounds[4]));
    EXPECT_EQ(stolen, (std::vector<unsigned int>{2, 4, 1}));
    EXPECT_TRUE(
        said("iSoundSystem::checkPriority(): 'a.wav' steals 3D channel #2 from 'a.wav' (lower priority)\n"));
    EXPECT_TRUE(
        said("iSoundSystem::checkPriority(): 'a.wav' steals 3D channel #1 from 'a.wav' (equal priority, but "
             "higher distance)\n"));
    stolen.clear();
    EXPECT_FALSE(system.checkPriority(4, stolen, sounds[4]));
    EXPECT_TRUE(said("iSoundSystem::checkPriority(): not enough 3D channels found for #9 ('a.wav')!\n"));
    EXPECT_TRUE(stolen.empty());

    // Strictly farther: from 20, the one at 40 is as far as the listener.
    sounds[0]->setPosition({40, 0, 0});
    EXPECT_FALSE(system.checkPriority(3, stolen, sounds[4]));
    sounds[4]->force2D();
    EXPECT_TRUE(system.checkPriority(9, stolen, sounds[4]));
}

TEST_F(Play, FadesAStolenVoiceOutOnACrossfadeSlot)
{
    ASSERT_TRUE(system.start(1, 1, 1));
    for (unsigned int i = 1; i <= 4; ++i) {
        sounds.emplace_back(i).at(1, 15 - i);
    }
    ASSERT_TRUE(system.play(sounds[0]));
    ASSERT_TRUE(system.play(sounds[1]));
    test::TestChannel *const victim = system.channel(1);
    EXPECT_EQ(victim->stops.back(), 400u);
    EXPECT_TRUE(victim->isFadingDown());
    EXPECT_EQ(system.crossfadeChannels[0], victim);
    EXPECT_EQ(system.getChannelID(2), 2u) << "on what was the spare one";
    EXPECT_FALSE(system.play(sounds[2])) << "no slot is idle";
    EXPECT_TRUE(said("iSoundSystem::getFreeChannel(): no 3D voice available!\n"));
    finish(1);
    EXPECT_EQ(system.all().size(), 3u);
    ASSERT_TRUE(system.play(sounds[2]));
    EXPECT_EQ(system.getChannelID(3), 1u);
    String text;
    EXPECT_EQ(system.getSoundInfo(SOUNDINFO_CHANNEL, 2, &text), 1);
    EXPECT_EQ(text, "PLAYING [3D] [_FD_X] 'a.wav'");
    EXPECT_EQ(system.countVoices_3D(), 2u);

    system.setPause(true);
    sounds[3]->setPlayOnPause();
    finish(2);
    EXPECT_FALSE(system.play(sounds[3])) << "what is paused does not play: nothing to steal";
    EXPECT_EQ(system.all().size(), 3u);
}

TEST_F(Play, WaitsOncePerIdAndStartsTheMostUrgentFirst)
{
    ASSERT_TRUE(system.start(1, 0, 1));
    unsigned int const priorities[] = {0, 9, 3, 3};
    for (unsigned int i = 0; i < 4; ++i) {
        sounds.emplace_back(i + 1).at(static_cast<float>(i + 1), priorities[i]);
        sounds.back()->setPriorityWait();
    }
    ASSERT_TRUE(system.play(sounds[0]));
    for (unsigned int i : {1u, 2u, 3u, 1u}) {
        EXPECT_FALSE(system.play(sounds[i]));
    }
    EXPECT_EQ(system.waitlist.size(), 3u);
    EXPECT_TRUE(said("iSoundSystem::play(): soundsource #2 is on waitlist.\n"));
    EXPECT_TRUE(said("iSoundSystem::play(): sound 'a.wav' set on waitlist.\n"));
    for (unsigned int expected : {3u, 4u, 2u}) {
        system.setPause(true);
        finish(1);
        EXPECT_EQ(system.getNumPlayingChannels(), 0u) << "not in a pause";
        system.setPause(false);
        system.update(0.01f);
        EXPECT_EQ(system.getChannelID(expected), 1u);
    }
    EXPECT_TRUE(said("iSoundSystem::update: sound #2 removed from waitlist.\n"));
    EXPECT_TRUE(system.waitlist.empty());
}

TEST_F(Play, StreamsAnOggAndMakesAManyChannelledOneFivePointOne)
{
    ASSERT_TRUE(system.start(2, 0, 1, true));
    sounds.emplace_back(1u, test::soundFile("mono.ogg"), "a.ogg").at(3);
    sounds.emplace_back(2u, test::soundFile("six.ogg"), "b.ogg").at(3);
    ASSERT_TRUE(system.play(sounds[0]));
    ASSERT_TRUE(system.play(sounds[1]));
    EXPECT_EQ(system.channel(1)->getTypeDesc(), "3D");
    EXPECT_EQ(system.channel(3)->getTypeDesc(), "5.1");
    EXPECT_EQ(system.getSoundInfo(SOUNDINFO_NUM_VORBIS, 0, nullptr), 2);
    EXPECT_EQ(system.countVoices_51(), 1u);
    finish(1);
    EXPECT_TRUE(said("cFinishedDestroy: destroyed vorbis stream #1.\n"));
    EXPECT_EQ(system.vorbisStreams.size(), 1u);
    sounds[0]->resetStream();
    sounds[0]->setCurrentTimeMS(0);
    ASSERT_TRUE(system.play(sounds[0]));
    test::TestChannel *const voice = system.channel(2);
    ASSERT_TRUE(system.stopChannel(2, 0));
    for (unsigned int id : {3u, 4u}) {
        sounds.emplace_back(id).at(1);
        ASSERT_TRUE(system.play(sounds.back())); // the second on the voice that the stream had
    }
    system.update(0.01f);
    EXPECT_TRUE(voice->isPlaying() && voice->getUniqueID() == 4);
    EXPECT_EQ(system.vorbisStreams.size(), 1u);

    sounds.emplace_back(5u, test::Bytes{'O', 'g', 'g', 'S'}, "c.ogg")->force2D();
    EXPECT_FALSE(system.play(sounds.back()));
    EXPECT_EQ(system.vorbisStreams.size(), 1u);
    EXPECT_EQ(system.all().size(), 4u) << "one more 2D voice, and it is free";
}

TEST_F(Play, KeepsNumbersApartWhenVoicesAreTrimmed)
{
    ASSERT_TRUE(system.start(0, 0, 30));
    for (unsigned int i = 0; i < 40; ++i) {
        sounds.emplace_back(i + 1)->force2D();
        ASSERT_TRUE(system.play(sounds.back()));
    }
    EXPECT_TRUE(said("iSoundSystem::checkSoundfileAndPlay(): created new 2D/5.1 channel.\n"));
    for (unsigned int i = 0; i < 15; ++i) {
        if (i == 9) {
            system.update(21.0f);
            EXPECT_EQ(system.params.num2D51Channels, 40) << "not as many are free";
        }
        system.stop(sounds[i], 0);
    }
    system.update(20.0f);
    EXPECT_TRUE(said("iSoundSystem::freeSurplus2D51Channels(): deleted 10 surplus channels.\n"));
    for (unsigned int i = 0; i < 15; ++i) {
        ASSERT_TRUE(system.play(sounds[i]));
    }
    std::set<unsigned int> numbers;
    for (iSoundChannel const *const channel : system.all()) {
        EXPECT_TRUE(numbers.insert(channel->getIndex()).second);
    }
    EXPECT_EQ(numbers.size(), 40u);
}

// Free and playing voices are all there are, whatever happens in whatever order.
TEST_F(Play, LosesNoVoiceInManyRandomCalls)
{
    ASSERT_TRUE(system.start(4, 2, 3, true));
    log.take();
    for (unsigned int i = 0; i < 24; ++i) {
        bool const isOgg = i % 6 == 5;
        sounds.emplace_back(i + 1, isOgg ? test::soundFile("mono.ogg") : test::shortWav(),
                            isOgg ? "a.ogg" : "a.wav");
        Sound &sound = sounds.back().at(static_cast<float>(i % 8), i % 15);
        sound->setCompanionName(i % 4 == 1 ? "b.wav" : "");
        sound->setCompanionData(sound.data.data(), 8);
        sound->set3DStereo();
        if (i % 8 == 1) {
            sound->set3DSubwoofer();
        }
        if (i % 3 == 0) {
            sound->setPriorityWait();
        }
        sound->getSoundParams().set(SOUNDFLAG_DUCKING_REQUEST, i % 7 == 0);
        sound->getSoundParams().loopCount = static_cast<std::uint8_t>(i % 2);
    }
    LogManager::Instance().setLogDetail(0);
    std::mt19937 random(5);
    auto const below = [&](unsigned int n) { return static_cast<unsigned int>(random() % n); };
    for (int step = 0; step < 20'000; ++step) {
        Sound &sound = sounds[below(24)];
        if (unsigned int const what = below(1000); what < 400) {
            if (system.getChannelID(sound->getUniqueID()) == 0) {
                sound->resetStream();
                sound->setCurrentTimeMS(0);
            }
            system.play(sound);
        } else if (what < 500) {
            system.stop(sound, below(2) * 100);
        } else if (what < 600) {
            system.stopChannel(below(12), below(2) * 100);
        } else if (what < 700) {
            iSoundChannel *const channel =
                system.channelTable[below(static_cast<unsigned int>(system.channelTable.size()))];
            if (channel != nullptr) {
                channel->setFinished();
            }
        } else if (what < 705) {
            system.setPause(!system.isPaused());
        } else if (what < 706) {
            system.stopAll(below(2));
        } else {
            system.update(0.01f);
        }
        std::vector<iSoundChannel *> const all = system.all();
        ASSERT_EQ(std::set(all.begin(), all.end()).size(), all.size())
            << "a voice in two places, step " << step;
        ASSERT_EQ(all.size(), 6u + system.params.num2D51Channels) << "a voice lost, step " << step;
    }
    system.setPause(false);
    system.stopAll(0);
    EXPECT_EQ(system.getNumPlayingChannels(), 0u);
    EXPECT_TRUE(system.stereoSounds.empty() && system.subwooferSounds.empty() &&
                system.vorbisStreams.empty());
    EXPECT_FALSE(system.shutdownSoundSystem());
    EXPECT_TRUE(system.all().empty());
}

} // namespace
} // namespace Qel
