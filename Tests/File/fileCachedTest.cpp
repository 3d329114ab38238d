#include "System/File/fileCached.h"

#include "System/File/fileBit.h"
#include "System/File/fileMem.h"
#include "Tests/Tools/vectorFile.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace Qel {
namespace {

using test::VectorFile;

// An inner stream whose content outlives it.
struct Inner : VectorFile {
    Inner(std::string const &text, std::string &last) : VectorFile(text), end(last) {}
    ~Inner() override { end = content(); }
    std::string &end;
};

class Cached : public cFileCached {
public:
    Cached(std::unique_ptr<VectorFile> beneath, unsigned int bufferSize, unsigned int position = 0)
        : Cached(beneath.get(), bufferSize, position)
    {
        beneath.release();
    }
    eFileClass getType() const override { return FILECLASS_DISK; }

    VectorFile &inner;

private:
    Cached(VectorFile *beneath, unsigned int bufferSize, unsigned int position)
        : cFileCached(beneath, bufferSize, position), inner(*beneath)
    {
    }
};

std::string readSome(cFile &file, unsigned int size)
{
    std::string buffer(size, '?');
    buffer.resize(file.read(buffer.data(), size));
    return buffer;
}

TEST(FileCached, ReadsThroughItsWindow)
{
    Cached file(std::make_unique<VectorFile>("0123456789abcdef"), 8, 2);
    EXPECT_EQ(readSome(file, 1), "2");
    EXPECT_EQ(readSome(file, 7), "3456789");
    EXPECT_EQ(file.inner.reads, 1);
    EXPECT_EQ(readSome(file, 99), "abcdef");
    EXPECT_EQ(readSome(file, 99), "");
    file.seek(11);
    int const before = file.inner.reads;
    EXPECT_EQ(readSome(file, 2), "bc");
    file.seek(10);
    EXPECT_EQ(readSome(file, 1), "a");
    EXPECT_EQ(file.inner.reads, before + 2);
    EXPECT_EQ(file.seek(1000), 1000u);
    EXPECT_EQ(readSome(file, 1), "");
    EXPECT_EQ(file.inner.writes, 0);
}

TEST(FileCached, SeeksOnlyToWhereTheInnerStreamDoesNotStand)
{
    Cached file(std::make_unique<VectorFile>("0123456789abcdef"), 4);
    EXPECT_EQ(readSome(file, 10), "0123456789");
    EXPECT_EQ(file.inner.seeks, 0) << "refills in a row";
    file.seek(2);
    EXPECT_EQ(readSome(file, 10), "23456789ab");
    EXPECT_EQ(file.inner.seeks, 1);
    file.seek(0);
    EXPECT_EQ(file.write("abcdefghij", 10), 10u);
    EXPECT_EQ(file.inner.seeks, 2) << "write-backs in a row";
    EXPECT_EQ(readSome(file, 3), "abc");
    EXPECT_EQ(file.inner.seeks, 2) << "the two bytes that waited went out on the way";

    // After a write that came out short it is looked after again.
    file.seek(0);
    file.inner.writeLimit = 1;
    EXPECT_EQ(file.write("xyz", 3), 3u);
    EXPECT_FALSE(file.flush());
    file.inner.writeLimit = SIZE_MAX;
    EXPECT_TRUE(file.flush());
    EXPECT_EQ(file.inner.content().substr(0, 5), "xyzde");
}

TEST(FileCached, WorksInARowOverABitStream)
{
    struct OverBits : cFileCached {
        explicit OverBits(cFileBit *beneath) : cFileCached(beneath, 4, 0) {}
        eFileClass getType() const override { return FILECLASS_BIT; }
    };
    auto beneath = std::make_unique<cFileBit>();
    beneath->write("0123456789abcdef", 16);
    beneath->seek(0);
    OverBits file(beneath.release());
    EXPECT_EQ(readSome(file, 7), "0123456");
    EXPECT_EQ(readSome(file, 9), "789abcdef");

    auto empty = std::make_unique<cFileBit>();
    cFileBit &bits = *empty;
    OverBits written(empty.release());
    EXPECT_EQ(written.write("0123456789", 10), 10u);
    EXPECT_TRUE(written.flush());
    bits.seek(0);
    EXPECT_EQ(readSome(bits, 10), "0123456789");
}

TEST(FileCached, WritesBackWhatWasWrittenAndNothingElse)
{
    std::string last;
    {
        Cached file(std::make_unique<Inner>("read only", last), 4);
        EXPECT_EQ(readSome(file, 3), "rea");
    }
    EXPECT_EQ(last, "read only") << "a window that was only read is not written back";
    {
        Cached file(std::make_unique<Inner>("0123456789", last), 4);
        EXPECT_EQ(file.write("ab", 2), 2u);
        EXPECT_EQ(file.inner.writes, 0);
        EXPECT_EQ(file.size(), 10u);
        EXPECT_EQ(file.write("cdef", 4), 4u);
        file.seek(8);
        EXPECT_EQ(file.write("XYZ", 3), 3u);
        EXPECT_EQ(file.tell(), 11u);
        EXPECT_EQ(file.inner.content(), "abcdef6789");
        EXPECT_TRUE(file.flush());
        EXPECT_EQ(file.inner.content(), "abcdef67XYZ");
    }
    EXPECT_EQ(last, "abcdef67XYZ");
}

TEST(FileCached, AnyMixOfReadsWritesAndSeeksIsThatOfAPlainStream)
{
    std::mt19937 random(7);
    auto const below = [&random](unsigned int n) { return static_cast<unsigned int>(random() % n); };
    for (unsigned int const window : {0u, 1u, 3u, 16u, 500u}) {
        for (bool const canPassTheEnd : {false, true}) {
            SCOPED_TRACE(window);
            VectorFile plain(std::string(100, '.'));
            std::string last;
            {
                Cached file(std::make_unique<Inner>(std::string(100, '.'), last), window);
                file.inner.canPassTheEnd = canPassTheEnd;
                for (int step = 0; step < 3'000; ++step) {
                    unsigned int const size = below(40);
                    if (unsigned int const what = below(3); what == 0) {
                        unsigned int const to = below(plain.size() + 1);
                        plain.seek(to);
                        file.seek(to);
                    } else if (what == 1) {
                        ASSERT_EQ(readSome(file, size), readSome(plain, size)) << step;
                    } else {
                        std::string const text(size, static_cast<char>('a' + below(26)));
                        plain.write(text.data(), size);
                        ASSERT_EQ(file.write(text.data(), size), size) << step;
                    }
                    ASSERT_EQ(file.tell(), plain.tell()) << step;
                }
            }
            EXPECT_EQ(last, plain.content());
        }
    }
}

TEST(FileCached, AFailedWriteBackLosesNothing)
{
    std::string last;
    Cached file(std::make_unique<Inner>("0123456789", last), 4);
    file.inner.writeLimit = 1;
    EXPECT_EQ(file.write("abc", 3), 3u);
    EXPECT_FALSE(file.flush());
    file.seek(8);
    EXPECT_EQ(readSome(file, 1), "") << "the window cannot move on";
    EXPECT_EQ(file.write("x", 1), 0u);
    file.seek(1);
    EXPECT_EQ(readSome(file, 2), "bc");
    file.inner.writeLimit = SIZE_MAX;
    EXPECT_TRUE(file.flush());
    EXPECT_EQ(file.inner.content(), "abc3456789");
}

TEST(FileCached, NothingLandsWhereTheInnerStreamHasNoPlace)
{
    Cached file(std::make_unique<VectorFile>("0123"), 4);
    file.inner.canPassTheEnd = false;
    file.seek(9);
    EXPECT_EQ(file.write("x", 1), 0u);
    EXPECT_EQ(file.inner.content(), "0123");
    file.seek(0xFFFFFFFF);
    EXPECT_EQ(file.write("xy", 2), 0u);
    EXPECT_EQ(readSome(file, 2), "");

    struct None : cFileCached {
        None() : cFileCached(nullptr, 16, 0) {}
        eFileClass getType() const override { return FILECLASS_DISK; }
    } none;
    EXPECT_EQ(none.write("x", 1), 0u);
    EXPECT_EQ(readSome(none, 1), "");
    char byte = 0;
    EXPECT_TRUE(none.async_read(&byte, 0, 1, nullptr, nullptr));
}

// Notes each completion.
struct Told {
    static void call(unsigned int bytes, void *user) { static_cast<Told *>(user)->counts.push_back(bytes); }
    std::vector<unsigned int> counts;
};

TEST(FileCached, ServesWhatItHasAndAsksForTheRest)
{
    Cached file(std::make_unique<VectorFile>("0123456789abcdef"), 4);
    file.inner.late = true;
    char buffer[8] = {};
    Told told;
    readSome(file, 4); // the window holds 0 to 3
    EXPECT_TRUE(file.async_read(buffer, 1, 3, &Told::call, &told));
    EXPECT_EQ(told.counts, std::vector{3u}) << "all of it in the window";
    EXPECT_TRUE(file.async_read(buffer, 2, 5, &Told::call, &told));
    EXPECT_EQ(told.counts.size(), 1u);
    file.inner.excess = 9;
    file.inner.completeNext();
    EXPECT_EQ(told.counts.back(), 5u) << "never more than was asked for";
    EXPECT_EQ(std::string(buffer, 5), "23456");
    EXPECT_EQ(file.tell(), 7u);
    EXPECT_EQ(readSome(file, 2), "78");
    EXPECT_TRUE(file.async_read(buffer, 14, 8, &Told::call, &told));
    file.inner.excess = 0;
    file.inner.completeNext();
    EXPECT_EQ(told.counts.back(), 2u) << "short at the end";
}

TEST(FileCached, WrittenBytesAreSeenByAsynchronousReads)
{
    Cached file(std::make_unique<VectorFile>("0123456789"), 4);
    file.write("abc", 3);
    char buffer[8] = {};
    Told told;
    EXPECT_TRUE(file.async_read(buffer, 1, 6, &Told::call, &told));
    EXPECT_EQ(told.counts, std::vector{6u});
    EXPECT_EQ(std::string(buffer, 6), "bc3456");
}

TEST(FileCached, FourRequestsAreUnderWayAndTheFifthIsDoneAtOnce)
{
    Cached first(std::make_unique<VectorFile>("0123456789"), 2);
    Cached second(std::make_unique<VectorFile>("abcdefghij"), 2);
    first.inner.late = second.inner.late = true;
    char buffers[6][4] = {};
    Told told[6];
    for (unsigned int i = 0; i < 4; ++i) {
        EXPECT_TRUE((i % 2 == 0 ? first : second).async_read(buffers[i], i, 3, &Told::call, &told[i]));
        EXPECT_TRUE(told[i].counts.empty());
    }
    EXPECT_TRUE(first.async_read(buffers[4], 5, 3, &Told::call, &told[4]));
    EXPECT_EQ(told[4].counts, std::vector{3u});
    EXPECT_STREQ(buffers[4], "567");

    second.inner.completeNext();
    EXPECT_TRUE(second.async_read(buffers[5], 6, 3, &Told::call, &told[5]));
    EXPECT_TRUE(told[5].counts.empty()) << "a place is free again";
    for (Cached *const file : {&first, &second}) {
        while (!file->inner.waiting.empty()) {
            file->inner.completeNext();
        }
    }
    for (Told const &each : told) {
        EXPECT_EQ(each.counts, std::vector{3u});
    }
    EXPECT_STREQ(buffers[3], "def");
    EXPECT_STREQ(buffers[5], "ghi");
}

TEST(FileCached, RequestsOfADyingStreamEndAndFreeTheirPlaces)
{
    Told told;
    char buffer[4] = {};
    for (int round = 0; round < 3; ++round) {
        Cached file(std::make_unique<VectorFile>("0123456789"), 2);
        file.inner.late = true;
        for (unsigned int i = 0; i < cFileCached::maxRequests; ++i) {
            EXPECT_TRUE(file.async_read(buffer, i, 3, &Told::call, &told));
        }
        EXPECT_EQ(told.counts.size(), static_cast<std::size_t>(4 * round));
    }
    EXPECT_EQ(told.counts, std::vector<unsigned int>(12, 0)) << "each is told once";

    Cached refused(std::make_unique<VectorFile>("0123456789"), 2);
    refused.inner.refuseAsync = true;
    for (int i = 0; i < 9; ++i) {
        EXPECT_FALSE(refused.async_read(buffer, 0, 3, &Told::call, &told))
            << "its place is free again each time";
    }
    EXPECT_EQ(told.counts.size(), 12u);
}

TEST(FileCached, ACallbackMayDestroyTheStreamOrAskAgain)
{
    struct Chain {
        std::unique_ptr<Cached> file;
        std::string seen;
        char buffer[4] = {};
        static void call(unsigned int bytes, void *user)
        {
            auto &self = *static_cast<Chain *>(user);
            self.seen.append(self.buffer, bytes);
            if (bytes == 0) {
                self.file.reset();
            } else {
                self.file->async_read(self.buffer, static_cast<unsigned int>(self.seen.size()), 3, &call,
                                      user);
            }
        }
    } chain;
    chain.file = std::make_unique<Cached>(std::make_unique<VectorFile>("0123456789"), 2);
    EXPECT_TRUE(chain.file->async_read(chain.buffer, 0, 3, &Chain::call, &chain));
    EXPECT_EQ(chain.seen, "0123456789");
    EXPECT_EQ(chain.file, nullptr);
}

} // namespace
} // namespace Qel
