#include "System/Sound/soundSource.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Qel {
namespace {

TEST(SoundCone, KeepsAnglesInStepsOfABytesRange)
{
    struct {
        float degrees;
        int stored;
        float back;
    } const rows[] = {{360, 255, 360}, {180, 127, 179.29f}, {0, 0, 0},
                      {-5, 0, 0},      {1000, 255, 360},    {std::nanf(""), 0, 0}};
    for (auto const &row : rows) {
        SCOPED_TRACE(row.degrees);
        sSoundCone cone;
        cone.setInnerAngle(row.degrees);
        EXPECT_EQ(cone.innerAngle, row.stored);
        EXPECT_NEAR(cone.getInnerAngle(), row.back, 0.01f);
    }
}

TEST(SoundSource, KindsAndFormatsExcludeEachOther)
{
    iSoundSource source;
    source.set3DStereo();
    EXPECT_FALSE(source.is3DStereo()) << "no companion";
    source.setCompanionName("b.wav");
    source.force2D();
    source.set3DSubwoofer();
    EXPECT_FALSE(source.is3DSubwoofer()) << "2D is forced";
    source.resetForce2D();
    source.set51Sound();
    source.set3DStereo();
    source.set3DSubwoofer();
    EXPECT_TRUE(source.is3DStereo() && source.is3DSubwoofer() && !source.is51Sound());
    source.set51Sound();
    EXPECT_TRUE(!source.is3DStereo() && !source.is3DSubwoofer() && source.is51Sound());

    source.setWAVHeader(true);
    source.setWAVHeader(false);
    EXPECT_TRUE(source.isADPCMCompressed()) << "the mark stays";
    source.setOGGHeader();
    EXPECT_FALSE(source.hasWAVHeader() || source.isADPCMCompressed());
    source.setMP3Header();
    EXPECT_FALSE(source.hasOGGHeader());
    source.setWAVHeader(false);
    EXPECT_TRUE(source.isADPCMCompressed() && !source.hasMP3Header());
    source.resetFormats();
    EXPECT_FALSE(source.isAnyKnownFormat());
}

TEST(SoundSource, CountsPlaysAndLoopsWithinTheirLimits)
{
    sSoundParams params;
    EXPECT_EQ(params.flags, 0x207u);
    params.loopCount = 3;
    params.currentLoop = 1;
    iSoundSource source(params);
    EXPECT_EQ(source.getCurrentLoop(), 3) << "all loops lie ahead";
    source.setSoundParams(params, true);
    EXPECT_EQ(source.getCurrentLoop(), 1) << "as it stands in the record";
    EXPECT_TRUE(source.isParamChanged());
    source.decCurrentLoop();
    source.decCurrentLoop();
    EXPECT_EQ(source.getCurrentLoop(), 0);
    source.setStopped();
    EXPECT_TRUE(source.isStopped());
    source.setPlaying();
    source.setStopped();
    EXPECT_TRUE(source.isStopped() && source.hasPlayedOnce());

    source.setPosition({0, 0, 0.5f});
    EXPECT_TRUE(source.has3DInformation());
    source.setRearLeftOnly();
    EXPECT_FALSE(source.has3DInformation()) << "a single speaker has no place";
    EXPECT_TRUE(source.isRearLeftOnly() && !source.isRearRightOnly());
}

TEST(SoundSource, OwnsAnExclusiveCopyAndFreesItAtItsStart)
{
    unsigned char bytes[] = {1, 2, 3, 4};
    unsigned int size = 0;
    iSoundSource source;
    source.setDataExclusive(bytes, 4);
    unsigned char *const block = source.getData(size);
    EXPECT_NE(block, bytes);
    source._stripData(block + 2, 2);
    iSoundSource copy(source); // shares, and frees nothing
    EXPECT_EQ(copy.getData(size), block + 2);
    source._restoreData();
    EXPECT_EQ(source.getData(size), block);
    EXPECT_EQ(size, 4u);
    source.setDataExclusive(block + 1, 3); // out of the block that goes
    EXPECT_EQ(source.getData(size)[0], 2);
    source.setDataExclusive(nullptr, 0);
    EXPECT_EQ(source.getData(size), nullptr);
    EXPECT_EQ(size, 3u) << "the size stays as it was";

    source.setData(bytes, 4);
    source._stripData(bytes + 2, 2);
    source.setData(bytes + 1, 3);
    source._restoreData();
    EXPECT_EQ(source.getData(size), bytes + 1) << "another image has come since";
}

} // namespace
} // namespace Qel
