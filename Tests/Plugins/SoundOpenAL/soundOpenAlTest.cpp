#include "Plugins/clipMaker.h"
#include "Tests/Plugins/archivePlugin.h"
#include "Tests/Sound/soundBytes.h"
#include "Tests/Tools/steeredClock.h"

#include "System/Sound/soundClip.h"
#include "System/Sound/soundSystemManager.h"
#include "System/System/consoleVar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <deque>
#include <fstream>
#include <iterator>
#include <numbers>
#include <vector>

namespace Qel {
namespace {

using test::operator+;

constexpr unsigned int rate = 48000;
constexpr float frameTime = 1 / 60.0f;

// A tone of half the full level in a WAV file of one or two channels.
test::Bytes tone(float seconds, double hz, unsigned int channels = 1)
{
    test::Bytes samples;
    auto const frames = static_cast<unsigned int>(seconds * float{rate});
    for (unsigned int i = 0; i < frames * channels; ++i) {
        double const value = 0.5 * std::sin(2 * std::numbers::pi * hz * (i / channels) / rate);
        samples = std::move(samples) +
                  test::number(static_cast<std::uint32_t>(static_cast<std::int32_t>(value * 32767)), 2);
    }
    return test::riff(test::wavFormat(channels, rate, 16) +
                      test::chunk("data", static_cast<std::uint32_t>(samples.size()), samples));
}

/// What was rendered, by channel.
class Rendered {
public:
    Rendered(char const *path, unsigned int channels) : m_channels(channels)
    {
        std::ifstream file(path, std::ios::binary);
        test::Bytes const bytes(std::istreambuf_iterator<char>(file), {});
        constexpr std::size_t headSize = 44;
        m_samples.resize(bytes.size() < headSize ? 0 : (bytes.size() - headSize) / 2);
        std::memcpy(m_samples.data(), bytes.data() + headSize, m_samples.size() * 2);
    }

    float seconds() const
    {
        return static_cast<float>(m_samples.size()) / static_cast<float>(rate * m_channels);
    }
    float at(std::size_t frame, unsigned int channel) const
    {
        std::size_t const index = frame * m_channels + channel;
        return index < m_samples.size() ? m_samples[index] / 32768.0f : 0.0f;
    }
    // Root of the mean square.
    float level(float from, float to, unsigned int channel = 0) const
    {
        double sum = 0;
        auto const first = static_cast<std::size_t>(from * rate);
        auto const last = static_cast<std::size_t>(to * rate);
        for (std::size_t i = first; i < last; ++i) {
            sum += double{at(i, channel)} * double{at(i, channel)};
        }
        return static_cast<float>(std::sqrt(sum / static_cast<double>(last - first)));
    }
    float hertz(float from, float to) const
    {
        int crossings = 0;
        for (auto i = static_cast<std::size_t>(from * rate); i < static_cast<std::size_t>(to * rate); ++i) {
            crossings += at(i, 0) < 0 && at(i + 1, 0) >= 0 ? 1 : 0;
        }
        return static_cast<float>(crossings) / (to - from);
    }
    // The largest step between two samples.
    float steepest(float from, float to) const
    {
        float most = 0;
        for (auto i = static_cast<std::size_t>(from * rate); i < static_cast<std::size_t>(to * rate); ++i) {
            most = std::max(most, std::fabs(at(i + 1, 0) - at(i, 0)));
        }
        return most;
    }

private:
    unsigned int m_channels;
    std::vector<std::int16_t> m_samples;
};

struct OpenAl : testing::Test {
    void init(eSoundCaps caps = SOUNDCAPS_STEREO)
    {
        sSoundSystemParams params;
        params.soundCaps = caps;
        params.num3DChannels = 4;
        params.num2D51Channels = 4;
        params.listenerMode = LISTENER_CAMERA;
        ConsoleVar::Instance().setConfigurable("openal.file", "out.wav");
        ASSERT_TRUE(sound->initSoundSystem(params));
        sound->setCameraListener({0, 0, 0}, {0, 0, -1}, {0, 1, 0});
    }
    // Beside full gain at the listener, so that levels can be told.
    test::Sound &add(test::Bytes bytes, char const *name = "a.wav")
    {
        test::Sound &made = sounds.emplace_back(++lastId, std::move(bytes), name);
        made.source.getSoundParams().fadeInTimeMS = 0;
        made.source.getSoundParams().volume2 = 1;
        return made;
    }
    void run(float seconds)
    {
        for (int left = static_cast<int>(seconds / frameTime + 0.5f); left > 0; --left) {
            sound->update(frameTime);
        }
    }
    Rendered finish(unsigned int channels = 2)
    {
        sound->shutdownSoundSystem();
        return {"out.wav", channels};
    }

    test::TempFolder folder;
    test::SteeredClock clock;
    test::LogLines log;
    std::deque<test::Sound> sounds;
    unsigned int lastId = 0;
    PluginMgr plugins;
    SoundSystemManager manager;
    StartedPlugin plugin{"plugin_soundopenal.dll"};
    iSoundSystem *sound = manager.load("main", "OPENAL", PRIORITY_MOST_URGENT);
};

constexpr float toneLevel = 0.35355f; // half of full, as the root of the mean square

TEST_F(OpenAl, PlaysInPlaceWithPitchLoopsAndPairs)
{
    init();
    test::Sound &stereo = add(tone(0.5f, 1000, 2));
    ASSERT_TRUE(sound->play(&stereo.source));
    run(1); // 0 .. 1: half of it silent
    EXPECT_TRUE(stereo.source.isStopped());

    test::Sound &left = add(tone(0.25f, 1000));
    left.source.setPosition({-3, 0, 0});
    left.source.setPitchFactor(2);
    left.source.getSoundParams().loopCount = left.source.getSoundParams().currentLoop = 4;
    ASSERT_TRUE(sound->play(&left.source));
    run(1); // 1 .. 2: four passes of an eighth of a second
    EXPECT_EQ(left.source.getCurrentLoop(), 1);

    test::Sound &far = add(tone(1, 500));
    far.source.setPosition({0, 0, -15}); // half of the way from 5 to 25
    far.source.getSoundParams().loopCount = 0;
    ASSERT_TRUE(sound->play(&far.source));
    run(2); // 2 .. 4
    sound->stop(&far.source, 0);
    run(0.5f);

    // The companion is silent: all of the pair is its left side.
    test::Sound &pair = add(tone(0.3f, 700));
    test::Bytes other = tone(0.3f, 0);
    pair.source.setCompanionName("b.wav");
    pair.source.setCompanionData(other.data(), static_cast<unsigned int>(other.size()));
    pair.source.set3DStereo();
    pair.source.getSoundParams().loopCount = 0;
    pair.source.setPosition({0, 0, -30});
    pair.source.getSoundParams().minDistance = 250;
    pair.source.getSoundParams().maxDistance = 1000;
    ASSERT_TRUE(sound->play(&pair.source));
    run(1.5f); // 4.5 .. 6

    Rendered const out = finish();
    EXPECT_GE(out.seconds(), 6);
    EXPECT_NEAR(out.level(0.1f, 0.4f), toneLevel, 0.01);
    EXPECT_NEAR(out.level(0.1f, 0.4f, 1), toneLevel, 0.01);
    EXPECT_EQ(out.level(0.6f, 0.9f), 0);
    EXPECT_NEAR(out.hertz(1.1f, 1.4f), 2000, 20);
    EXPECT_GT(out.level(1.1f, 1.4f), 5 * out.level(1.1f, 1.4f, 1)) << "it is on the left";
    EXPECT_LT(out.steepest(1.05f, 1.45f), 0.2f) << "passes meet without a gap";
    EXPECT_EQ(out.level(1.6f, 1.9f), 0);
    EXPECT_NEAR(out.level(2.5f, 3.9f) / out.level(1.1f, 1.4f), 0.35, 0.08) << "half, on two speakers";
    EXPECT_EQ(out.level(4.2f, 4.4f), 0);
    EXPECT_GT(out.level(5, 5.9f), 0.2f);
    EXPECT_LT(out.level(5, 5.9f, 1), 0.1f * out.level(5, 5.9f));
}

TEST_F(OpenAl, FadesDucksFiltersAndPauses)
{
    init();
    test::Sound &music = add(tone(1, 1000));
    music.source.force2D();
    music.source.getSoundParams().loopCount = 0;
    music.source.getSoundParams().fadeInTimeMS = 500;
    ASSERT_TRUE(sound->play(&music.source));
    run(1.5f);
    test::Sound &speech = add(tone(1, 0));
    speech.source.getSoundParams().set(SOUNDFLAG_DUCKING_REQUEST, true);
    ASSERT_TRUE(sound->play(&speech.source));
    run(2); // 1.5 .. 3.5: ducked for a second, and up again
    sound->setPause(true);
    run(1); // 3.5 .. 4.5
    sound->setPause(false);
    run(1); // 4.5 .. 5.5
    music.source.setLowPassFiltering();
    music.source.getSoundParams().set(SOUNDFLAG_FALLOFF_OVERRIDE, true);
    music.source.getSoundParams().falloff = 0.05f; // of the volume, and of what is high
    music.source.setParamChanged();
    run(0.5f);
    sound->setMuteOnOff(true);
    run(0.5f); // 6 .. 6.5
    sound->setMuteOnOff(false);
    sound->setMasterVolume(0.5f);
    music.source.resetLowPassFiltering();
    music.source.getSoundParams().set(SOUNDFLAG_FALLOFF_OVERRIDE, false);
    music.source.setParamChanged();
    run(1); // 6.5 .. 7.5
    sound->stop(&music.source, 400);
    run(1);
    EXPECT_EQ(sound->getNumPlayingChannels(), 0u);
    EXPECT_TRUE(music.source.isStopped());

    Rendered const out = finish();
    float const full = out.level(1, 1.4f);
    EXPECT_NEAR(out.level(0.24f, 0.26f) / full, 0.5, 0.1);
    EXPECT_NEAR(out.level(2.1f, 2.5f) / full, 0.6, 0.02);
    EXPECT_NEAR(out.level(3.2f, 3.5f) / full, 1, 0.02);
    EXPECT_EQ(out.level(4, 4.4f), 0);
    EXPECT_NEAR(out.level(5.1f, 5.5f) / full, 1, 0.02);
    EXPECT_LT(out.level(5.7f, 5.9f) / full, 0.05f);
    EXPECT_EQ(out.level(6.2f, 6.4f), 0);
    EXPECT_NEAR(out.level(7.1f, 7.4f) / full, 0.5, 0.02);
    EXPECT_EQ(out.level(8, 8.4f), 0);
    float const ofTheTone = 0.5f * 2 * std::numbers::pi_v<float> * 1000 / rate * full / toneLevel;
    EXPECT_LT(out.steepest(0, 5.4f), 1.5f * ofTheTone) << "no click in fades and pauses";
    EXPECT_LT(out.steepest(7, 8.4f), 1.5f * ofTheTone);
}

TEST_F(OpenAl, StreamsToTheLastSampleAndFindsALostDevice)
{
    init();
    test::Sound &stream = add(test::soundFile("long.ogg"), "long.ogg");
    test::Sound &loop = add(tone(1, 1000));
    loop.source.getSoundParams().loopCount = 0;
    ASSERT_TRUE(sound->play(&loop.source));
    run(0.5f);
    sound->backendOperation1(); // the device goes, and is there again
    run(0.5f);
    EXPECT_EQ(sound->getNumPlayingChannels(), 1u);
    sound->stop(&loop.source, 0);
    run(0.1f);
    ASSERT_TRUE(sound->play(&stream.source));
    float seconds = 0;
    for (; seconds < 60 && sound->getNumPlayingChannels() != 0; seconds += frameTime) {
        sound->update(frameTime);
        if (std::fabs(seconds - 0.3f) < frameTime / 2) {
            sound->setPause(true);
            run(1);
            sound->backendOperation1();
            sound->setPause(false);
        }
    }
    EXPECT_NEAR(seconds, 10, 0.1) << "as long as the file";
    EXPECT_TRUE(stream.source.isStopped());

    Rendered const out = finish();
    EXPECT_NEAR(out.level(0.1f, 0.4f), out.level(0.6f, 0.9f), 0.01);
    EXPECT_GT(out.level(0.1f, 0.4f), 0.1f);
    EXPECT_GT(out.level(1.2f, 1.4f), 0.001f);
}

TEST_F(OpenAl, EndsWhatIsPausedStoppedOrLoopedWhenItShould)
{
    init(SOUNDCAPS_51);
    test::Sound &brief = add(tone(1, 1000, 2));
    ASSERT_TRUE(sound->play(&brief.source));
    run(0.7f);
    sound->setPause(true); // shorter than its fade: the sound goes on meanwhile
    run(0.1f);
    sound->setPause(false);
    run(0.4f);
    EXPECT_EQ(sound->getNumPlayingChannels(), 0u) << "it has not begun anew";

    test::Sound &leaving = add(tone(1, 1000, 2)); // 1.2 ..
    leaving.source.getSoundParams().loopCount = 0;
    ASSERT_TRUE(sound->play(&leaving.source));
    run(0.3f);
    sound->stop(&leaving.source, 400);
    run(0.1f);
    sound->setPause(true);
    run(0.1f);
    sound->setPause(false);
    run(0.6f);
    EXPECT_EQ(sound->getNumPlayingChannels(), 0u) << "a pause does not bring it back";

    test::Sound &loop = add(test::soundFile("segment.ogg"), "segment.ogg"); // 2.3 .., a loop of 1.536 s
    loop.source.getSoundParams().loopCount = 0;
    loop.source.setCenterOnly();
    ASSERT_TRUE(sound->play(&loop.source));
    run(6);
    EXPECT_EQ(sound->getNumPlayingChannels(), 1u);

    Rendered const out = finish(6);
    EXPECT_NEAR(out.level(0.1f, 0.6f), toneLevel, 0.01);
    EXPECT_EQ(out.level(1.05f, 1.15f), 0);
    EXPECT_EQ(out.level(2.2f, 2.3f), 0);
    EXPECT_GT(out.level(7.5f, 8.2f, 2), 0.05f);
    EXPECT_EQ(out.level(2.5f, 8.2f, 0) + out.level(2.5f, 8.2f, 1), 0);
}

TEST_F(OpenAl, PlaysClipsAsTheyAreFed)
{
    init();
    auto *const maker =
        reinterpret_cast<ClipMaker *>(static_cast<std::uintptr_t>(sound->getSoundDriverHandle3()));
    test::Bytes const wave = tone(2, 1000, 2);
    test::Bytes pcm(wave.begin() + 44, wave.end());
    test::Sound &track = add({});
    iSoundClip *const clip = maker->createClip(false);
    ASSERT_TRUE(clip->open(track, 1 << 19) && clip->play());
    run(0.2f); // nothing is there yet
    ASSERT_TRUE(clip->write(pcm.data(), static_cast<unsigned int>(pcm.size())));
    run(3); // two seconds of it, and then it starves
    EXPECT_TRUE(clip->isPlaying());
    ASSERT_TRUE(clip->write(pcm.data(), static_cast<unsigned int>(pcm.size() / 2)));
    clip->setEOFReached();
    run(1.5f); // 3.2 .. 4.7
    EXPECT_TRUE(clip->isEOFAndBufferDried());
    EXPECT_FALSE(clip->isPlaying() || clip->isOpened() || track.source.isStream());

    Rendered const out = finish();
    EXPECT_EQ(out.level(0, 0.2f), 0);
    EXPECT_NEAR(out.level(0.3f, 2.1f), toneLevel, 0.01);
    EXPECT_LT(out.steepest(0.3f, 2.1f), 0.1f) << "segments meet without a gap";
    EXPECT_EQ(out.level(2.4f, 3.1f), 0);
    EXPECT_NEAR(out.level(3.3f, 4.1f), toneLevel, 0.01);
    EXPECT_EQ(out.level(4.4f, 4.6f), 0);
}

TEST_F(OpenAl, DecodesWhatALibraryReadsAndRefusesTheRest)
{
    init(SOUNDCAPS_51);
    // A whole second in floats of 32 bits, all at half.
    test::Bytes floats;
    for (unsigned int i = 0; i < rate; ++i) {
        floats = std::move(floats) + test::number(0x3F000000, 4);
    }
    test::Sound &wide =
        add(test::riff(test::wavFormat(1, rate, 32, 3) + test::chunk("data", 4 * rate, floats)));
    wide.source.force2D();
    wide.source.setCenterOnly();
    ASSERT_TRUE(sound->play(&wide.source));
    run(1.2f);

    unsigned int const before = sound->getNumPlayingChannels();
    for (test::Bytes const &bytes :
         {test::riff(test::wavFormat(1, rate, 32, 3) + test::chunk("data", 4000, {})),
          test::riff(test::wavFormat(3, rate, 16) + test::chunk("data", 60, test::Bytes(60))),
          test::riff(test::wavFormat(1, 8000, 4, 2) + test::chunk("data", 60, test::Bytes(60, 0xFF))),
          test::riff(test::wavFormat(0, 0, 16) + test::chunk("data", 60, test::Bytes(60)))}) {
        test::Sound &bad = add(bytes);
        EXPECT_FALSE(sound->play(&bad.source));
        EXPECT_TRUE(bad.source.isStopped());
    }
    EXPECT_EQ(sound->getNumPlayingChannels(), before);

    // More sounds at once than there are voices in 3D: all are accounted for, and the device is asked for no
    // more.
    for (int i = 0; i < 200; ++i) {
        test::Sound &one = add(tone(0.05f, 300)).at(1.0f + static_cast<float>(i % 10));
        sound->play(&one.source);
        sound->update(0.01f);
    }
    run(1);
    EXPECT_EQ(sound->getNumPlayingChannels(), 0u);
    Rendered const out = finish(6);
    EXPECT_NEAR(out.level(0.2f, 0.9f, 2), 0.5, 0.01);
    for (unsigned int const speaker : {0u, 1u, 3u, 4u, 5u}) {
        EXPECT_EQ(out.level(0.2f, 0.9f, speaker), 0) << speaker;
    }
    EXPECT_EQ(log.take().find("SoundOpenAL: load"), std::string::npos);
}

TEST_F(OpenAl, PutsTheListenerIntoARoom)
{
    init();
    for (eListenerRoom const room : {ROOM_NONE, ROOM_CHURCH}) {
        sound->setListenerRoom(room, true);
        test::Sound &knock = add(tone(0.1f, 500));
        knock.source.setPosition({0, 0, -2});
        ASSERT_TRUE(sound->play(&knock.source));
        run(1);
    }
    Rendered const out = finish();
    EXPECT_EQ(out.level(0.3f, 0.9f), 0);
    EXPECT_GT(out.level(1.3f, 1.9f), 0.001f) << "it rings on";
}

} // namespace
} // namespace Qel
