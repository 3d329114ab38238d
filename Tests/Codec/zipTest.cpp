#include "System/Codec/codecs/codec_zip.h"

#include "System/File/fileDisk.h"
#include "System/File/fileTempMem.h"
#include "System/System/exception.h"
#include "Tests/Codec/testData.h"
#include "Tests/Tools/logLines.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

namespace Qel {
namespace {

// Python: zlib.compress(b"hello hello hello", 9), behind its length; and zlib.compress(b"abc", 0).
std::string const zlibHello = test::fromHex("78DACB48CDC9C957C84090003A2E067D");
std::string const hello = test::fromHex("11000000") + zlibHello;
std::string const storedAbc = test::fromHex("7801 01 0300 FCFF 616263 024D0127");

TEST(CodecZip, StreamsAreZlibsWithTheSizeInFront)
{
    cCodecZIP zip;
    std::string const empty = test::fromHex("00000000 785E 0300 00000001");
    EXPECT_EQ(test::encoded(zip, ""), empty);
    EXPECT_EQ(test::decoded(zip, empty), "");
    EXPECT_EQ(test::decoded(zip, test::fromHex("00000000") + zlibHello), "hello hello hello")
        << "256 bytes short is forgiven";
    std::string const data = test::makeData("text", 300'000, 4);
    unsigned char const levels[] = {0, 1, 5, 9};
    for (unsigned char const level : levels) {
        cFileMem in;
        cFileTempMem packed;
        cFileTempMem back;
        test::fill(in, data);
        EXPECT_TRUE(zip.encode(in, packed, level));
        EXPECT_TRUE(level != 5 || test::content(packed) == test::encoded(zip, data));
        packed.seek(0);
        EXPECT_EQ(zip.getUncompressedSize(packed), data.size());
        EXPECT_TRUE(zip.decode(packed, back) && test::content(back) == data);
    }
}

TEST(CodecZip, WorksFromPositionToPosition)
{
    cCodecZIP zip;
    cFileMem in;
    cFileMem packed;
    cFileMem out;
    test::fill(in, "12hello hello hello");
    test::fill(packed, "abcdef");
    test::fill(out, std::string(1'000, 'o'));
    in.seek(2);
    packed.seek(3);
    out.seek(2);
    EXPECT_TRUE(zip.encode(in, packed, 9));
    EXPECT_EQ(test::content(packed), "abc" + hello) << "and nothing behind";
    packed.seek(3);
    EXPECT_TRUE(zip.decode(packed, out));
    EXPECT_EQ(test::content(out), "oohello hello hello");
    EXPECT_TRUE(in.eof() && packed.eof() && out.eof());

    // Blocks of the extended form follow one another.
    packed.clear();
    in.seek(2);
    EXPECT_TRUE(zip.encodeEx(in, packed, 9));
    test::fill(in, "abc");
    EXPECT_TRUE(zip.encodeEx(in, packed, 0));
    EXPECT_EQ(test::content(packed), test::fromHex("11000000 10000000") + zlibHello +
                                         test::fromHex("03000000 0E000000") + storedAbc);
    packed.write("tail", 4);
    packed.seek(0);
    EXPECT_TRUE(zip.decodeEx(packed, out));
    EXPECT_TRUE(zip.decodeEx(packed, out));
    EXPECT_EQ(test::content(out), "oohello hello hellohello hello helloabc");
    EXPECT_EQ(packed.size() - packed.tell(), 4u);
}

TEST(CodecZip, DamageLeavesTheOutputsBytesAndIsLogged)
{
    struct {
        char const *what;
        std::string stream;
        bool extended;
        unsigned int size;  // of the output after it
        unsigned int start; // the position in an output of 500 bytes
        char const *logged;
    } const rows[] = {
        {"no size", "", false, 500, 3, "cCodecZIP::decode(): invalid uncompressed size - memory corrupt?\n"},
        {"half a size", hello.substr(0, 3), false, 500, 3, "decode(): invalid"},
        {"no data", hello.substr(0, 4), false, 400 + 17 + 256, 400, "decode(): Error -"},
        {"cut", hello.substr(0, 15), false, 400 + 17 + 256, 400, "decode(): Error -"},
        {"cut where it has room", hello.substr(0, 15), false, 500, 10, "decode(): Error -"},
        {"64 MiB less one", test::fromHex("FFFFFF03 00"), false, 400 + 0x3FFFFFF + 256, 400, "Error -"},
        {"64 MiB", test::fromHex("00000004") + zlibHello, false, 500, 3, "decode(): invalid"},
        {"no zlib stream", test::fromHex("10000000 00112233"), false, 400 + 16 + 256, 400,
         "cCodecZIP::decode(): Error -3\n"},
        {"no compressed size", test::fromHex("11000000 1200"), true, 500, 3, "decode(): invalid"},
        {"beyond the end", test::fromHex("11000000 11000000") + zlibHello, true, 500, 3, "Error -5"},
        {"far beyond the end", test::fromHex("11000000 FFFFFFFF") + zlibHello, true, 500, 3, "Error -5"},
        {"cut inside", test::fromHex("11000000 08000000") + zlibHello, true, 400 + 17 + 256, 400, "Error -"},
    };
    test::LogLines const log;
    cCodecZIP zip;
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        cFileMem in;
        cFileMem out;
        test::fill(in, row.stream);
        test::fill(out, std::string(500, 'o'));
        out.seek(row.start);
        EXPECT_FALSE(row.extended ? zip.decodeEx(in, out) : zip.decode(in, out));
        EXPECT_NE(log.take().find(row.logged), std::string::npos);
        EXPECT_EQ(out.tell(), row.start);
        std::string const left = test::content(out);
        EXPECT_EQ(left.size(), row.size);
        EXPECT_GE(left.find_first_not_of('o'), row.start);
        EXPECT_TRUE(row.size <= 500 || left.find_last_not_of('\0') < 500) << "the new room is zeros";
    }
    cFileMem in;
    cFileMem failed;
    test::fill(in, "abc");
    EXPECT_FALSE(zip.encode(in, failed, 77)) << "a level that zlib does not have";
    EXPECT_FALSE(zip.encode(in, in, 5)) << "the same stream for both";
    EXPECT_EQ(zip.getUncompressedSize(in), 0u) << "three bytes";
    std::string const logged = log.take();
    EXPECT_NE(logged.find("cCodecZIP::encode(): Error -2\n"), std::string::npos);
    EXPECT_NE(logged.find("cCodecZIP::getUncompressedSize(): invalid uncompressed size - memory corrupt?\n"),
              std::string::npos);
    EXPECT_EQ(failed.tell(), 0u);
    EXPECT_EQ(test::content(failed), std::string(failed.size(), '\0'));
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
    EXPECT_TRUE(isRefused([&] { zip.encodeEx(memory, disk, 5); }));
    EXPECT_TRUE(isRefused([&] { zip.decode(disk, memory); }));
    EXPECT_TRUE(isRefused([&] { zip.decode(memory, disk); }));
    EXPECT_EQ(test::content(memory), "abc");
    EXPECT_TRUE(memory.tell() == 0 && disk.size() == 0);
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
    test::fill(in, hello);
    EXPECT_FALSE(zip.decode(in, shared));
    EXPECT_EQ(shared.size(), 1'000u);
    EXPECT_EQ(block, std::string(1'000, 'b'));
}

} // namespace
} // namespace Qel
