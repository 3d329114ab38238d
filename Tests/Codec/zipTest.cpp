#include "System/Codec/codecs/codec_zip.h"

#include "System/File/fileDisk.h"
#include "System/File/fileTempMem.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"
#include "Tests/Codec/testData.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

namespace Qel {
namespace {

// Python: zlib.compress(b"hello hello hello", 9), behind its length.
char const *const hello = "11000000 78DACB48CDC9C957C84090003A2E067D";

TEST(CodecZip, StreamsAreZlibsWithTheSizeInFront)
{
    cCodecZIP zip;
    EXPECT_EQ(test::decoded(zip, test::fromHex(hello)), "hello hello hello");
    EXPECT_EQ(test::encoded(zip, ""), test::fromHex("00000000 785E 0300 00000001")) << "an empty zlib stream";
    EXPECT_EQ(test::decoded(zip, test::fromHex("00000000 785E 0300 00000001")), "");
    // Python: zlib.compress(b"abc", 0)
    cFileMem in;
    cFileMem out;
    test::fill(in, "abc");
    EXPECT_TRUE(zip.encode(in, out, CodecParamsZip(0)));
    EXPECT_EQ(test::content(out), test::fromHex("03000000 7801 01 0300 FCFF 616263 024D0127"));
    EXPECT_TRUE(out.eof() && in.eof());

    std::string const data = test::makeData("text", 300'000, 4);
    unsigned char const levels[] = {0, 1, 5, 9};
    for (unsigned char const level : levels) {
        test::fill(in, data);
        cFileTempMem packed;
        EXPECT_TRUE(zip.encode(in, packed, level));
        packed.seek(0);
        EXPECT_EQ(zip.getUncompressedSize(packed), data.size());
        EXPECT_EQ(packed.tell(), 0u);
        cFileTempMem back;
        EXPECT_TRUE(zip.decode(packed, back));
        EXPECT_TRUE(test::content(back) == data);
    }
}

TEST(CodecZip, WorksFromPositionToPosition)
{
    cCodecZIP zip;
    cFileMem in;
    cFileMem packed;
    test::fill(in, "12hello hello hello");
    test::fill(packed, "abcdef");
    in.seek(2);
    packed.seek(3);
    EXPECT_TRUE(zip.encode(in, packed, 9));
    EXPECT_EQ(test::content(packed), "abc" + test::fromHex(hello)) << "and nothing behind";
    packed.seek(3);
    cFileMem out;
    test::fill(out, std::string(1'000, 'o'));
    out.seek(2);
    EXPECT_TRUE(zip.decode(packed, out));
    EXPECT_EQ(test::content(out), "oohello hello hello");
    EXPECT_TRUE(out.eof() && packed.eof());
}

TEST(CodecZip, BlocksOfTheExtendedFormFollowOneAnother)
{
    cCodecZIP zip;
    cFileMem first;
    cFileMem second;
    cFileMem packed;
    test::fill(first, "hello hello hello");
    test::fill(second, "abc");
    EXPECT_TRUE(zip.encodeEx(first, packed, 9));
    EXPECT_EQ(test::content(packed), test::fromHex("11000000 10000000") + test::fromHex(hello).substr(4));
    EXPECT_TRUE(zip.encodeEx(second, packed, 0));
    packed.write("tail", 4);
    packed.seek(0);
    cFileMem out;
    EXPECT_TRUE(zip.decodeEx(packed, out));
    EXPECT_TRUE(zip.decodeEx(packed, out));
    EXPECT_EQ(test::content(out), "hello hello helloabc");
    EXPECT_EQ(packed.size() - packed.tell(), 4u);
}

TEST(CodecZip, DamageLeavesTheOutputsBytes)
{
    std::string const good = test::fromHex(hello);
    std::string const zlibStream = good.substr(4);
    struct Row {
        char const *what;
        std::string stream;
        bool extended;
        unsigned int grown; // beyond the 5 bytes that are there and the position 3
    };
    Row const rows[] = {
        {"no size", "", false, 0},
        {"half a size", good.substr(0, 3), false, 0},
        {"no data", good.substr(0, 4), false, 17 + 256},
        {"cut", good.substr(0, good.size() - 5), false, 17 + 256},
        {"64 MiB", test::fromHex("00000004") + zlibStream, false, 0},
        {"4 GiB", test::fromHex("FFFFFFFF") + zlibStream, false, 0},
        {"no zlib stream", test::fromHex("10000000 00112233"), false, 16 + 256},
        {"no compressed size", test::fromHex("11000000 1200"), true, 0},
        {"beyond the end", test::fromHex("11000000 11000000") + zlibStream, true, 0},
        {"far beyond the end", test::fromHex("11000000 FFFFFFFF") + zlibStream, true, 0},
        {"cut inside", test::fromHex("11000000 08000000") + zlibStream, true, 17 + 256},
    };
    cCodecZIP zip;
    for (Row const &row : rows) {
        SCOPED_TRACE(row.what);
        cFileMem in;
        cFileMem out;
        test::fill(in, row.stream);
        test::fill(out, "abcde");
        out.seek(3);
        EXPECT_FALSE(row.extended ? zip.decodeEx(in, out) : zip.decode(in, out));
        EXPECT_EQ(out.tell(), 3u);
        EXPECT_EQ(out.size(), row.grown == 0 ? 5 : 3 + row.grown);
        EXPECT_EQ(test::content(out).substr(0, 3), "abc");
        EXPECT_EQ(test::content(out).find_last_not_of('\0') < 3 + 17, true) << "the room is zeros";
    }
    // What stands behind the position is not cut off, and sizes short by up to 256 bytes are forgiven.
    cFileMem in;
    cFileMem out;
    test::fill(in, good.substr(0, 10));
    test::fill(out, std::string(500, 'o'));
    out.seek(400);
    EXPECT_FALSE(zip.decode(in, out));
    EXPECT_EQ(out.size(), 400u + 17 + 256);
    out.seek(10);
    in.seek(0);
    EXPECT_FALSE(zip.decode(in, out));
    EXPECT_EQ(out.size(), 400u + 17 + 256);
    EXPECT_EQ(test::decoded(zip, test::fromHex("00000000") + zlibStream), "hello hello hello");

    test::fill(in, "abc");
    cFileMem failed;
    EXPECT_FALSE(zip.encode(in, failed, 77)) << "a level that zlib does not have";
    EXPECT_EQ(failed.tell(), 0u);
    EXPECT_EQ(test::content(failed), std::string(failed.size(), '\0'));
    EXPECT_FALSE(zip.encode(in, in, 5)) << "the same stream for both";
}

TEST(CodecZip, AStreamThatIsOnlyReadIsNoOutput)
{
    cCodecZIP zip;
    std::string block(1'000, 'b');
    cFileMem shared;
    shared.openShared(1'000, reinterpret_cast<unsigned char *>(block.data()));
    cFileMem in;
    test::fill(in, "abc");
    EXPECT_FALSE(zip.encode(in, shared));
    EXPECT_FALSE(zip.encodeEx(in, shared, 5));
    test::fill(in, test::fromHex(hello));
    EXPECT_FALSE(zip.decode(in, shared));
    EXPECT_EQ(shared.size(), 1'000u);
    EXPECT_EQ(block, std::string(1'000, 'b'));
}

TEST(CodecZip, FailuresAreLogged)
{
    test::TempFolder const folder;
    cCodecZIP zip;
    {
        LogManager manager;
        manager.createLog("zip.log", true, false, true);
        cFileMem in;
        cFileMem out;
        test::fill(in, test::fromHex("00000004 00"));
        zip.decode(in, out);
        in.seek(0);
        EXPECT_EQ(zip.getUncompressedSize(in), 0u);
        test::fill(in, test::fromHex("04000000 00112233"));
        zip.decode(in, out);
        zip.encode(in, out, 77);
    }
    std::string const log = test::readFile("zip.log");
    for (char const *const text :
         {"cCodecZIP::decode(): invalid uncompressed size - memory corrupt?\n",
          "cCodecZIP::getUncompressedSize(): invalid uncompressed size - memory corrupt?\n",
          "cCodecZIP::decode(): Error -3\n", "cCodecZIP::encode(): Error -2\n"}) {
        EXPECT_NE(log.find(text), std::string::npos) << text;
    }
}

TEST(CodecZip, OnlyMemoryFiles)
{
    test::TempFolder const folder;
    cFileDisk disk("file", OPEN_WRITE);
    cFileMem memory;
    test::fill(memory, "abc");
    cCodecZIP zip;
    auto const isRefused = [](auto const &call) {
        try {
            call();
        } catch (Exception const &exception) {
            return exception.getNumber() == 0 && exception.description == "Only cFileMem supported!" &&
                   exception.source == "cCodecZIP::encode" &&
                   exception.file == "System/Codec/codecs/codec_zip";
        }
        return false;
    };
    EXPECT_TRUE(isRefused([&] { zip.encode(disk, memory); }));
    EXPECT_TRUE(isRefused([&] { zip.encode(memory, disk); }));
    EXPECT_TRUE(isRefused([&] { zip.encodeEx(memory, disk, 5); }));
    EXPECT_TRUE(isRefused([&] { zip.decode(disk, memory); }));
    EXPECT_TRUE(isRefused([&] { zip.decode(memory, disk); }));
    EXPECT_EQ(test::content(memory), "abc");
    EXPECT_EQ(memory.tell(), 0u);
    EXPECT_EQ(disk.size(), 0u);
}

} // namespace
} // namespace Qel
