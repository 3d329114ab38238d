#include "System/File/fileMem.h"

#include "System/File/fileTempMem.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>

namespace {

// When set, this file is cut to four bytes before the next read of any.
char const *shrinkNow = nullptr;

} // namespace

// Stands before the C library's own, for the library as well.
extern "C" __attribute__((visibility("default"))) std::size_t fread(void *buffer, std::size_t size,
                                                                    std::size_t count, std::FILE *file)
{
    if (shrinkNow != nullptr) {
        std::filesystem::resize_file(shrinkNow, 4);
        shrinkNow = nullptr;
    }
    return fread_unlocked(buffer, size, count, file);
}

namespace Qel {
namespace {

// The states as plugins know them.
enum { SHARED = 0, INLINE = 1, HEAP = 2 };

template <class Base>
struct Open : Base {
    using Base::Base;
    Open() = default;
    unsigned int state() const { return this->m_ownership; }
    std::uint32_t capacity() const { return this->m_capacity; }
};
using Mem = Open<cFileMem>;
using TempMem = Open<cFileTempMem>;

std::string content(cFileMem const &file)
{
    return file.size() == 0 ? std::string()
                            : std::string(reinterpret_cast<char const *>(file.getData()), file.size());
}

unsigned char const *data(std::string const &text)
{
    return reinterpret_cast<unsigned char const *>(text.data());
}

unsigned char *writable(std::string &text)
{
    return reinterpret_cast<unsigned char *>(text.data());
}

TEST(FileMem, GrowsByDoublingAndKeepsItsContents)
{
    Mem file;
    EXPECT_EQ(file.state(), HEAP);
    EXPECT_EQ(file.getData(), nullptr);
    EXPECT_EQ(file.write("abcde", 5), 5u);
    EXPECT_EQ(file.capacity(), 5u);
    EXPECT_EQ(file.write("f", 1), 1u);
    EXPECT_EQ(file.capacity(), 10u);
    EXPECT_TRUE(file.reserve(100));
    EXPECT_EQ(file.capacity(), 100u);
    EXPECT_EQ(content(file), "abcdef");
    file.seek(2);
    EXPECT_EQ(file.write("XY", 2), 2u);
    EXPECT_EQ(content(file), "abXYef");

    EXPECT_EQ(file.seek(99), 6u) << "no seek behind the end";
    EXPECT_TRUE(file.eof());
    file.clear();
    EXPECT_EQ(file.capacity(), 100u);
    EXPECT_TRUE(file.close());
    EXPECT_EQ(file.getData(), nullptr);
    EXPECT_EQ(file.capacity(), 0u);
}

TEST(FileMem, ReadsEveryWidthUpToTheEnd)
{
    std::string const text = "0123456789abcdefghijklmnopqrstuvwxyz";
    cFileMem file(static_cast<unsigned int>(text.size()), data(text));
    std::string all;
    for (unsigned int width = 1; !file.eof(); ++width) {
        char buffer[16] = {};
        all.append(buffer, file.read(buffer, width));
    }
    EXPECT_EQ(all, text);
    EXPECT_TRUE(file.resize(10));
    EXPECT_EQ(file.tell(), 36u) << "the position stays";
    char one = 0;
    EXPECT_EQ(file.read(&one, 1), 0u);
    EXPECT_EQ(file.write("!", 1), 1u);
    EXPECT_EQ(content(file), text + "!") << "what was there comes back, though the block has moved";
    EXPECT_TRUE(file.resize(2));
    EXPECT_EQ(file.write("??", 2), 2u);
    EXPECT_EQ(content(file), text + "!??");
}

TEST(FileMem, SharedBytesAreReadOnly)
{
    std::string block = "shared";
    Mem file;
    EXPECT_FALSE(file.openShared(6, nullptr));
    ASSERT_TRUE(file.openShared(6, writable(block)));
    EXPECT_EQ(file.state(), SHARED);
    EXPECT_EQ(file.getData(), writable(block));
    EXPECT_EQ(file.write("x", 1), 0u);
    EXPECT_FALSE(file.writeZeros(1));
    EXPECT_TRUE(file.writeZeros(0));
    EXPECT_TRUE(file.reserve(6));
    EXPECT_FALSE(file.reserve(7));
    EXPECT_FALSE(file.resize(7));
    Mem source(3, data("abc"));
    EXPECT_EQ(source.read(file, 3), 0u);
    EXPECT_EQ(source.tell(), 0u);
    EXPECT_EQ(content(file), "shared");

    Mem const copy(file);
    EXPECT_EQ(copy.state(), HEAP);
    EXPECT_EQ(content(copy), "shared");
    EXPECT_NE(copy.getData(), file.getData());
    EXPECT_TRUE(file.close());
    EXPECT_EQ(file.state(), HEAP);
    EXPECT_EQ(block, "shared");
}

TEST(FileMem, MovesBytesBetweenStreams)
{
    cFileMem from(6, data("abcdef"));
    cFileMem to(3, data("xyz"));
    from.seek(2);
    to.seek(1);
    EXPECT_EQ(from.read(to, 3), 3u);
    EXPECT_EQ(content(to), "xyzcde") << "appended, wherever the position stood";
    EXPECT_EQ(from.tell(), 5u);
    EXPECT_EQ(from.read(to, 9), 1u);
    EXPECT_EQ(from.read(to, 9), 0u);

    to.seek(0);
    EXPECT_EQ(to.write(from), 6u) << "the whole contents, wherever the source stands";
    EXPECT_EQ(content(to), "abcdeff");
}

TEST(FileMem, ItsOwnBytesMayBeTheSource)
{
    std::string const text = "abcdefgh";
    for (bool const onHeap : {true, false}) {
        SCOPED_TRACE(onHeap);
        cFileTempMem inlined;
        cFileMem grown;
        cFileMem &file = onHeap ? grown : inlined;
        file.set(8, data(text));
        file.seek(8);
        EXPECT_EQ(file.write(file.getData(), 8), 8u);
        EXPECT_EQ(file.write(file), 16u);
        file.seek(4);
        EXPECT_EQ(file.read(file, 4), 4u);
        EXPECT_EQ(file.tell(), 8u);
        EXPECT_EQ(content(file), text + text + text + text + "efgh");
        EXPECT_TRUE(file.set(4, file.getData() + 2));
        EXPECT_EQ(content(file), "cdef");
        file = *&file;
        EXPECT_EQ(content(file), "cdef");
    }
}

TEST(FileMem, CopiesAndSwapsContentsOfEveryState)
{
    std::string shared = "of somebody else";
    auto const make = [&shared](int state, cFileMem &heap, cFileTempMem &temp) -> cFileMem & {
        heap.set(4, data("heap"));
        heap.seek(2);
        temp.set(4, data("temp"));
        if (state == SHARED) {
            heap.openShared(16, writable(shared));
        }
        return state == INLINE ? temp : heap;
    };
    for (int a = SHARED; a <= HEAP; ++a) {
        for (int b = SHARED; b <= HEAP; ++b) {
            SCOPED_TRACE(std::to_string(a) + " and " + std::to_string(b));
            cFileMem heapA, heapB;
            cFileTempMem tempA, tempB;
            cFileMem &first = make(a, heapA, tempA);
            cFileMem &second = make(b, heapB, tempB);
            first.seek(1);
            std::string const before = content(first);
            std::string const other = content(second);
            first.swap(second);
            EXPECT_EQ(content(first), other);
            EXPECT_EQ(content(second), before);
            EXPECT_EQ(first.tell() + second.tell(), 0u);
            EXPECT_NE(first.getData(), writable(shared));
            EXPECT_NE(second.getData(), writable(shared));
            EXPECT_EQ(second.write("W", 1), 1u);
        }
    }
    EXPECT_EQ(shared, "of somebody else");
}

TEST(FileMem, OpensPlainFilesOnly)
{
    test::TempFolder const folder;
    Mem file(3, data("old"));
    EXPECT_FALSE(file.open("missing"));
    EXPECT_EQ(file.size(), 0u);

    test::writeFile("empty", "");
    EXPECT_TRUE(file.open("empty"));
    EXPECT_EQ(file.getData(), nullptr);
    std::filesystem::create_directory("folder");
    std::string const whole("\0binary\n", 8);
    test::writeFile("folder/plain", whole);
    EXPECT_TRUE(file.open("folder\\plain")) << "either separator";
    EXPECT_EQ(content(file), whole);
    EXPECT_EQ(file.tell(), 0u);

    // Longer than any stream, without a byte on the disk.
    test::writeFile("huge", "x");
    std::filesystem::resize_file("huge", std::uint64_t{1} << 32);
    ASSERT_EQ(mkfifo("fifo", 0600), 0);
    for (char const *path : {"huge", "fifo", "folder", "/dev/zero", "", static_cast<char const *>(nullptr)}) {
        SCOPED_TRACE(path == nullptr ? "null" : path);
        EXPECT_FALSE(file.open(path));
        EXPECT_EQ(file.capacity(), 0u);
    }
}

TEST(FileMem, AFileThatShrinksWhileItIsReadEndsInZeros)
{
    test::TempFolder const folder;
    test::writeFile("file", "0123456789");
    for (int i = 0; i < 4; ++i) {
        Mem(10, data("secretsecr")); // what a fresh block may hold
    }
    Mem file;
    shrinkNow = "file";
    EXPECT_FALSE(file.open("file"));
    EXPECT_EQ(content(file), std::string("0123\0\0\0\0\0\0", 10));
}

TEST(FileMem, LimitsAreRefusedAndChangeNothing)
{
    std::string block = "0123456789";
    Mem huge; // a shared block that ends at the limit; only its size is looked at
    ASSERT_TRUE(huge.openShared(std::numeric_limits<std::uint32_t>::max(), writable(block)));
    Mem file(3, data("abc"));
    file.seek(3);
    EXPECT_EQ(file.write(block.data(), 0xFFFFFFFF), 0u);
    EXPECT_FALSE(file.writeZeros(0xFFFFFFFF));
    EXPECT_EQ(huge.read(file, 0xFFFFFFFF), 0u);
    EXPECT_EQ(file.write(nullptr, 5), 0u);
    EXPECT_EQ(file.read(nullptr, 5), 0u);
    EXPECT_EQ(content(file), "abc");
    EXPECT_EQ(file.tell(), 3u);
    EXPECT_EQ(file.capacity(), 3u);
}

// Runs as a child of its own, whose address space cannot grow much more.
TEST(FileMemDeathTest, WithoutMemoryItFailsAndStaysAsItWas)
{
    auto const run = [] {
        Mem file(3, data("abc"));
        cFileTempMem temp;
        temp.write("abc", 3);
        file.seek(3);
        rlim_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        rlim_t const most = pages * static_cast<rlim_t>(getpagesize()) + (64 << 20);
        rlimit const tight{most, most};
        setrlimit(RLIMIT_AS, &tight);
        unsigned int const size = 1u << 30;
        bool good = true;
        for (cFileMem *const f : {static_cast<cFileMem *>(&file), static_cast<cFileMem *>(&temp)}) {
            good = good && !f->reserve(size) && !f->resize(size) && !f->set(size, nullptr);
            good = good && !f->writeZeros(size) && f->write(f->getData(), size) == 0;
            good = good && f->tell() == 3 && content(*f) == "abc" && f->write("d", 0) == 0;
        }
        std::exit(good ? 0 : 1);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST(FileTempMem, LivesInTheObjectUpTo8192Bytes)
{
    TempMem file;
    EXPECT_EQ(file.state(), INLINE);
    unsigned char const *const own = file.getData();
    EXPECT_GE(own, reinterpret_cast<unsigned char *>(&file));
    EXPECT_LT(own, reinterpret_cast<unsigned char *>(&file + 1));
    EXPECT_TRUE(file.writeZeros(8192));
    EXPECT_EQ(file.getData(), own);
    EXPECT_EQ(file.write("x", 1), 1u);
    EXPECT_EQ(file.state(), HEAP);
    EXPECT_EQ(file.capacity(), 16384u);
    EXPECT_EQ(content(file), std::string(8192, '\0') + "x");

    EXPECT_TRUE(file.close());
    EXPECT_EQ(file.state(), INLINE);
    EXPECT_EQ(file.getData(), own);
    EXPECT_EQ(file.size(), 0u);
    EXPECT_TRUE(file.reserve(8193));
    EXPECT_TRUE(file.set(8192, nullptr));
    EXPECT_EQ(file.getData(), own) << "set starts anew";
}

TEST(FileTempMem, ConstructedContentsStartOnTheHeapAndComeHome)
{
    TempMem file(3, data("abc"));
    EXPECT_EQ(file.state(), HEAP);
    EXPECT_TRUE(file.reserve(4));
    EXPECT_EQ(file.state(), INLINE);
    EXPECT_EQ(content(file), "abc");
    TempMem const copy(file);
    EXPECT_EQ(content(copy), "abc");
    EXPECT_NE(copy.getData(), file.getData());

    std::string block = "shared";
    EXPECT_TRUE(file.openShared(6, writable(block)));
    EXPECT_FALSE(file.reserve(7));
    EXPECT_FALSE(file.reserve(9000));
    file = copy;
    EXPECT_EQ(file.state(), INLINE);
    EXPECT_EQ(content(file), "abc");
    EXPECT_EQ(block, "shared");
}

} // namespace
} // namespace Qel
