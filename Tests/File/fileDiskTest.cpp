#include "System/File/fileDisk.h"

#include "System/File/fileMem.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <random>
#include <string>
#include <utility>

namespace Qel {
namespace {

std::string readSome(cFileDisk &file, unsigned int size)
{
    std::string buffer(size, '?');
    buffer.resize(file.read(buffer.data(), size));
    return buffer;
}

TEST(FileDisk, OpensInItsThreeModes)
{
    test::TempFolder const folder;
    cFileDisk file;
    EXPECT_FALSE(file.open("new", OPEN_READ));
    EXPECT_FALSE(std::filesystem::exists("new"));
    EXPECT_FALSE(file.open("new", static_cast<eOpenMode>(3)));
    EXPECT_TRUE(file.open("new", OPEN_READWRITE));
    EXPECT_EQ(file.write("abc", 3), 3u);
    EXPECT_TRUE(file.open("new", OPEN_READWRITE));
    EXPECT_EQ(readSome(file, 9), "abc") << "what is there stays";
    EXPECT_TRUE(file.open("new", OPEN_READ));
    EXPECT_EQ(file.write("x", 1), 0u);
    EXPECT_EQ(readSome(file, 9), "abc");
    EXPECT_TRUE(file.open("new", OPEN_WRITE));
    EXPECT_EQ(file.size(), 0u);
    EXPECT_TRUE(file.close());

    ASSERT_EQ(mkfifo("fifo", 0600), 0);
    for (char const *path : {".", "fifo", "no/such/folder", ""}) {
        for (eOpenMode const mode : {OPEN_READ, OPEN_READWRITE, OPEN_WRITE}) {
            SCOPED_TRACE(path);
            EXPECT_FALSE(file.open(path, mode));
        }
    }
}

TEST(FileDisk, ReadsAndWritesAlternate)
{
    test::TempFolder const folder;
    test::writeFile("file", "0123456789");
    cFileDisk file("file", OPEN_READWRITE);
    EXPECT_EQ(readSome(file, 2), "01");
    EXPECT_EQ(file.write("AB", 2), 2u);
    EXPECT_EQ(test::readFile("file"), "01AB456789") << "a write has reached the system";
    EXPECT_EQ(readSome(file, 2), "45");
    EXPECT_EQ(file.tell(), 6u);
    EXPECT_EQ(file.seek(1), 0u) << "0 is success here";
    EXPECT_EQ(file.write("Z", 1), 1u);
    EXPECT_EQ(readSome(file, 99), "AB456789");
    EXPECT_TRUE(file.eof());
    EXPECT_EQ(file.write("end", 3), 3u);
    EXPECT_EQ(file.size(), 13u);
    EXPECT_EQ(readSome(file, 9), "");
    std::ofstream("file", std::ios::app | std::ios::binary) << "new";
    EXPECT_EQ(readSome(file, 9), "new") << "a file may grow behind its end";

    EXPECT_EQ(file.seek(18), 0u);
    EXPECT_EQ(file.write("!", 1), 1u);
    EXPECT_EQ(test::readFile("file"), std::string("0ZAB456789endnew\0\0!", 19));
    EXPECT_FALSE(file.reserve(1));
}

TEST(FileDisk, AClosedStreamGivesNothing)
{
    cFileDisk file("/no/such/file", OPEN_READ);
    char buffer[4] = {};
    EXPECT_EQ(file.read(buffer, 4), 0u);
    EXPECT_EQ(file.write(buffer, 4), 0u);
    EXPECT_EQ(file.seek(3), 0u);
    EXPECT_TRUE(file.close());

    test::TempFolder const folder;
    cFileDisk open("file", OPEN_READWRITE);
    EXPECT_EQ(open.write(nullptr, 4), 0u);
    EXPECT_EQ(open.read(nullptr, 4), 0u);
    EXPECT_EQ(open.size(), 0u);
    cFileDisk moved(std::move(open));
    EXPECT_EQ(moved.write("x", 1), 1u);
    file = std::move(moved);
    EXPECT_EQ(file.write("y", 1), 1u);
    EXPECT_EQ(moved.write("z", 1), 0u);
    EXPECT_EQ(test::readFile("file"), "xy");
}

TEST(FileDisk, AFullDiskShowsInTheWriteItself)
{
    cFileDisk full("/dev/full", OPEN_WRITE);
    EXPECT_EQ(full.write("abc", 3), 0u);
    EXPECT_EQ(full.write_32(7), 0u);

    // A limit on the length of files stands for a disk that fills up on the way.
    test::TempFolder const folder;
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    auto const oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit const tight{10'000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &tight), 0);
    cFileDisk file("file", OPEN_READWRITE);
    std::string const block(9'990, 'b');
    EXPECT_EQ(file.write(block.data(), 9'990), 9'990u);
    EXPECT_EQ(file.write(block.data(), 11), 0u);
    EXPECT_EQ(file.tell(), 9'990u);
    EXPECT_EQ(file.write("ok", 2), 2u)
        << "what fits is still taken, and nothing of the refused write with it";
    file.seek(9'990);
    EXPECT_EQ(readSome(file, 2), "ok");
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, oldHandler);
}

TEST(FileDisk, ARefusedWriteDoesNotDisturbReads)
{
    test::TempFolder const folder;
    constexpr std::uint32_t length = 100'000;
    {
        cFileMem places; // each word is its own position
        for (std::uint32_t at = 0; at < length; at += 4) {
            places << at;
        }
        EXPECT_EQ(cFileDisk("file", OPEN_WRITE).write(places), length);
    }
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    auto const oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit const none{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &none), 0);
    for (eOpenMode const mode : {OPEN_READ, OPEN_READWRITE}) {
        SCOPED_TRACE(mode);
        cFileDisk file("file", mode);
        std::mt19937 random(3);
        auto const below = [&random](std::uint32_t n) { return static_cast<std::uint32_t>(random() % n); };
        for (int i = 0; i < 200; ++i) {
            std::uint32_t const at = below(length / 4 - 4) * 4;
            file.seek(at);
            for (std::uint32_t step = 0; step < 16; step += 4) {
                for (std::uint32_t writes = below(3); writes > 0; --writes) {
                    EXPECT_EQ(file.write("abcde", 5), 0u);
                }
                std::uint32_t there = 0;
                EXPECT_TRUE(file.read_32(there));
                EXPECT_EQ(there, at + step);
            }
        }
    }
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, oldHandler);
}

TEST(FileDisk, EndsAt4GiB)
{
    test::TempFolder const folder;
    unsigned int const last = std::numeric_limits<std::uint32_t>::max();
    test::writeFile("huge", "x");
    std::filesystem::resize_file("huge", (std::uint64_t{1} << 32) + 5);
    cFileDisk file("huge", OPEN_READWRITE);
    EXPECT_EQ(file.size(), last);
    EXPECT_EQ(file.seek(last - 2), 0u);
    EXPECT_EQ(readSome(file, 10).size(), 2u);
    EXPECT_TRUE(file.eof());
    EXPECT_EQ(readSome(file, 10), "");
    EXPECT_EQ(file.write("x", 1), 0u);
    file.seek(last - 1);
    EXPECT_EQ(file.write("xy", 2), 0u);
    EXPECT_EQ(file.write("z", 1), 1u);
}

} // namespace
} // namespace Qel
