#include "System/Sound/ringBufferByte.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <numeric>
#include <thread>

namespace Qel {
namespace {

TEST(RingBufferByte, TakesOnlyPowersOfTwo)
{
    struct {
        int size;
        bool taken;
    } const rows[] = {{0, false}, {-8, false}, {INT_MIN, false}, {1000, false}, {1, true}, {1024, true}};
    for (auto const &row : rows) {
        SCOPED_TRACE(row.size);
        RingBufferByte ring;
        EXPECT_EQ(ring.init(row.size), row.taken);
        EXPECT_EQ(ring.size(), row.taken ? row.size : 0);
        EXPECT_EQ(ring.write("abc", 3), row.taken ? std::min(row.size, 3) : 0);
    }
}

TEST(RingBufferByte, KeepsOrderAcrossTheWrapAndTellsFullFromEmpty)
{
    std::array<unsigned char, 8> in{};
    std::iota(in.begin(), in.end(), static_cast<unsigned char>(1));
    std::array<unsigned char, 8> out{};
    RingBufferByte ring;
    ASSERT_TRUE(ring.init(8));
    ASSERT_EQ(ring.write(in.data(), 5), 5);
    ASSERT_EQ(ring.read(out.data(), 5), 5);

    EXPECT_EQ(ring.write(in.data(), 8), 8);
    EXPECT_EQ(ring.write(in.data(), 1), 0) << "a full ring takes nothing";
    EXPECT_EQ(ring.getReadAvailable(), 8);
    void *first = nullptr;
    void *second = nullptr;
    int n1 = 0;
    int n2 = 0;
    EXPECT_EQ(ring.getReadRegions(INT_MAX, &first, &n1, &second, &n2), 8);
    EXPECT_TRUE(n1 == 3 && n2 == 5 && static_cast<char *>(first) == static_cast<char *>(second) + 5);
    EXPECT_EQ(ring.read(out.data(), -1), 0);
    EXPECT_EQ(ring.read(out.data(), 100), 8);
    EXPECT_EQ(out, in);
    EXPECT_EQ(ring.read(out.data(), 1), 0) << "an empty ring gives nothing";

    ring.advanceWriteIndex(INT_MAX); // a caller's fault leads out of no block
    EXPECT_LE(ring.getReadRegions(INT_MAX, &first, &n1, &second, &n2), 8);
    EXPECT_LE(n2, 8);
    EXPECT_GE(ring.getWriteRegions(INT_MAX, &first, &n1, &second, &n2), 0);
}

TEST(RingBufferByte, CarriesBytesFromOneThreadToAnother)
{
    constexpr int total = 50'000;
    RingBufferByte ring;
    ASSERT_TRUE(ring.init(256));
    std::thread writer([&] {
        for (int sent = 0; sent < total; ++sent) {
            auto const byte = static_cast<unsigned char>(sent % 251);
            while (ring.write(&byte, 1) == 0) {
                std::this_thread::yield();
            }
        }
    });
    int wrong = 0;
    for (int seen = 0; seen < total;) {
        unsigned char bytes[100];
        int const got = ring.read(bytes, 100);
        for (int i = 0; i < got; ++i, ++seen) {
            wrong += bytes[i] != seen % 251;
        }
        if (got == 0) {
            std::this_thread::yield();
        }
    }
    writer.join();
    EXPECT_EQ(wrong, 0);
}

} // namespace
} // namespace Qel
