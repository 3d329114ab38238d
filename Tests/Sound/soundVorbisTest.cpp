#include "System/Sound/soundVorbis.h"
#include "Tests/Sound/soundBytes.h"
#include "Tests/Tools/logLines.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Qel {
namespace {

using test::operator+;

constexpr std::size_t framesInFile = 3000;

struct Vorbis : testing::Test {
    Vorbis() { channel.updates = 0; }

    // All that a file gives, with so many loops.
    std::size_t playAll(iSoundSource &source, int loops, int frames = 100)
    {
        source.getSoundParams().loopCount = source.getSoundParams().currentLoop =
            static_cast<std::uint8_t>(loops);
        channel.filled.clear();
        channel.refill = 15;
        EXPECT_TRUE(stream.open(&source, &channel));
        EXPECT_TRUE(stream.play());
        for (int i = 0; i < frames && !stream.isEOFReached(); ++i) {
            stream.update(0.01f);
        }
        return channel.filled.size() / 2 / source.getNumChannels();
    }

    // The amplitude of a sine in what was filled.
    double amplitude(unsigned int channels, unsigned int at) const
    {
        double sum = 0;
        std::size_t const frames = channel.filled.size() / 2 / channels;
        for (std::size_t i = 0; i < frames; ++i) {
            sum += std::pow(channel.sample(i * channels + at) / 32767.0, 2);
        }
        return std::sqrt(2 * sum / static_cast<double>(frames));
    }

    test::TestChannel channel{1, nullptr};
    iSoundVorbis stream{nullptr};
};

// Channel k of the files has the amplitude 0.1 * (k + 1), in the order of a device.
TEST_F(Vorbis, DecodesEachChannelToItsPlace)
{
    struct {
        char const *file;
        unsigned int channels;
        std::uint32_t speakersOff;
        bool silent[6];
    } const rows[] = {
        {"mono.ogg", 1, 0, {}},
        {"stereo.ogg", 2, SOUNDFLAG_FRONT_SPEAKERS | SOUNDFLAG_REAR_SPEAKERS, {}},
        {"six.ogg", 6, 0, {}},
        {"six.ogg", 6, SOUNDFLAG_REAR_SPEAKERS, {false, false, false, false, true, true}},
        {"six.ogg", 6, SOUNDFLAG_FRONT_SPEAKERS, {true, true}},
        {"six.ogg", 6, SOUNDFLAG_CENTER_LFE, {false, false, true, true}},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.file);
        test::Sound sound(3, test::soundFile(row.file), row.file);
        sound.source.getSoundParams().flags &= ~row.speakersOff;
        EXPECT_EQ(playAll(sound.source, 1), framesInFile);
        EXPECT_EQ(sound->getNumChannels(), row.channels);
        EXPECT_EQ(sound->getSamplerate(), 8000);
        EXPECT_TRUE(sound->isStream());
        for (unsigned int i = 0; i < row.channels; ++i) {
            // A subwoofer's channel is cut above its range by the encoder: it is looked at for silence alone.
            if (row.channels != 6 || i != 3 || row.silent[i]) {
                EXPECT_NEAR(amplitude(row.channels, i), row.silent[i] ? 0.0 : 0.1 * (i + 1), 0.03) << i;
            }
        }
        stream.close();
    }
}

TEST_F(Vorbis, GoesRoundAsOftenAsItsSourceSays)
{
    test::Sound sound(1, test::soundFile("mono.ogg"));
    EXPECT_EQ(playAll(sound.source, 3), 3 * framesInFile);
    EXPECT_EQ(sound->getCurrentLoop(), 1);
    stream.close();
    sound->setCurrentTimeMS(0);
    EXPECT_GT(playAll(sound.source, 0, 20), 20 * framesInFile) << "for ever";
    EXPECT_FALSE(stream.isEOFReached());
    stream.close();
    sound->setCurrentTimeMS(250);
    EXPECT_EQ(playAll(sound.source, 1), framesInFile - 2000) << "from where it was";

    test::Sound empty(2, test::soundFile("empty.ogg"));
    EXPECT_EQ(playAll(empty.source, 0), 0u) << "no sample, and no loop without end";
    EXPECT_TRUE(stream.isEOFReached());
}

TEST_F(Vorbis, FillsFourSegmentsAndThenWhatTheChannelAsksFor)
{
    test::Sound sound(1, test::soundFile("long.ogg"));
    ASSERT_TRUE(stream.open(sound, &channel));
    EXPECT_EQ(stream.stream(3, 100), 0u);
    EXPECT_EQ(stream.stream(1, 0), 0u);
    EXPECT_EQ(stream.stream(1, 0xFFFFFFFF), 24576u) << "no more than a segment";
    stream._prefill();
    EXPECT_EQ(channel.segments, "2 4 8 ");
    EXPECT_EQ(channel.updates, 0) << "not before all are filled";
    channel.refill = 4;
    stream.update(0.01f);
    EXPECT_EQ(channel.segments, "2 4 8 4 ");
    EXPECT_EQ(stream.getBytePosition(), 5 * 24576u);
    EXPECT_EQ(sound->getCurrentTimeMS(), 5 * 12288u / 8) << "at 8000 Hz";
}

TEST_F(Vorbis, EndsCleanlyOnDamagedFiles)
{
    struct {
        char const *what;
        test::Bytes bytes;
        std::size_t most; // frames; 0: it does not open
    } const rows[] = {
        {"nothing", {'O', 'g', 'g', 'S'}, 0},
        {"text", test::Bytes(100, 'x'), 0},
        {"cut in the midst", test::soundFile("cut.ogg"), 79999},
        {"a second link with more channels", test::soundFile("chained.ogg"), 80000},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        test::Sound sound(1, row.bytes);
        if (row.most != 0) {
            std::size_t const frames = playAll(sound.source, 1);
            EXPECT_TRUE(frames > 0 && frames <= row.most) << frames;
            EXPECT_TRUE(stream.isEOFReached());
        } else {
            EXPECT_FALSE(stream.open(sound, &channel));
            EXPECT_FALSE(sound->isStream());
        }
        stream.close();
    }
    iSoundSource file;
    test::LogLines log(3);
    file.setResourceName("no such.ogg");
    EXPECT_FALSE(stream.open(&file, &channel));
    EXPECT_NE(log.take().find("iSoundVorbis::open(): fopen failed for 'no such.ogg'!\n"), std::string::npos);
    file.setResourceName(SOUND_DATA "makeSounds.py");
    EXPECT_FALSE(stream.open(&file, &channel));
    EXPECT_NE(log.take().find("iSoundVorbis::open(): ov_open failed for '"), std::string::npos);
    file.setResourceName(SOUND_DATA "six.ogg");
    EXPECT_EQ(stream.getNumChannels(&file), 6u);
    EXPECT_EQ(playAll(file, 1), framesInFile) << "from the disk";
}

// The sweep goes by the rule in double arithmetic, which is exact here (24 bits by 15), the rest by hand.
TEST(VorbisConversion, CutsAtTheEndsAndDropsFractionsWhateverTheStride)
{
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    std::vector<float> in;
    std::vector<short> expected;
    for (int i = -70'000; i <= 70'000; ++i) {
        float const x = in.emplace_back(static_cast<float>(i) / 65'536.0f * 1.03f);
        auto const scaled = static_cast<float>(static_cast<double>(x) * 32767.0);
        expected.push_back(static_cast<short>(x >= 1 ? 32767 : x <= -1 ? -32768 : std::trunc(scaled)));
    }
    in.insert(in.end(),
              {nan, 1.0f, 1e10f, -1.0f, -1e10f, 0.5f, -0.5f, 0.99999994f, -0.99999994f, 1e-5f, nan, 0.25f});
    expected.insert(expected.end(),
                    {0, 32767, 32767, -32768, -32768, 16383, -16383, 32766, -32766, 0, 0, 8191});
    for (unsigned int stride : {1u, 2u, 6u}) {
        std::vector<short> out(in.size() * stride);
        iSoundVorbis::transform_float_I16(in.data(), out.data(), static_cast<unsigned int>(in.size()),
                                          stride);
        for (std::size_t i = 0; i < in.size(); ++i) {
            ASSERT_EQ(out[i * stride], expected[i]) << in[i] << " with stride " << stride;
        }
        EXPECT_EQ(out[1], stride == 1 ? expected[1] : 0) << "nothing between";
    }
}

TEST(VorbisConversion, ReadsTheHeadOfAWavOfSixteenBits)
{
    using test::chunk;
    test::Bytes const data = chunk("data", 4, test::Bytes(4));
    struct {
        char const *what;
        test::Bytes bytes;
        unsigned int payload; // 0: refused
    } const rows[] = {
        {"plain", test::riff(test::wavFormat(1, 8000, 16) + data), 44},
        {"another chunk first", test::riff(chunk("LIST", 2, {1, 2}) + test::wavFormat(1, 8000, 16) + data),
         54},
        {"8 bits", test::riff(test::wavFormat(1, 8000, 8) + data), 0},
        {"no data", test::riff(test::wavFormat(1, 8000, 16)), 0},
        {"a length that wraps", test::riff(chunk("junk", 0xFFFFFFF8, {})), 0},
        {"cut in the format", test::riff(chunk("fmt ", 16, {1, 0, 1})), 0},
        {"not RIFF", test::Bytes(44), 0},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        iSoundVorbis stream(nullptr);
        auto const size = static_cast<unsigned int>(row.bytes.size());
        EXPECT_EQ(stream.checkHeaderWAV(row.bytes.data(), size, "x"), row.payload != 0);
        EXPECT_EQ(stream.checkHeaderWAV(row.bytes.data(), "x"), row.payload != 0) << "as large as it says";
        EXPECT_EQ(stream.getBytePosition(), row.payload);
    }
}

} // namespace
} // namespace Qel
