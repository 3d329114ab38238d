#include "Support/PoolHeap/internPool.h"
#include "Support/PoolHeap/poolBlk.h"
#include "Support/PoolHeap/poolHeap.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

std::uint64_t liveBytes(std::uint32_t context)
{
    PoolHeap::ContextCounts counts;
    PoolHeap::context_counts(context, counts);
    return counts.liveBytes;
}

TEST(PoolBlk, OwnershipMovesAndEndsOnce)
{
    constexpr std::uint32_t context = 0x7E58B10C;
    static_assert(!std::is_copy_constructible_v<PoolBlk> && !std::is_copy_assignable_v<PoolBlk>);
    {
        PoolBlk first;
        EXPECT_EQ(first.data(), nullptr);
        ASSERT_TRUE(first.alloc(1000, context));
        std::memset(first.data(), 7, 1000);
        void *const data = first.data();

        PoolBlk second(std::move(first));
        EXPECT_EQ(second.data(), data);
        EXPECT_EQ(second.size(), 1000U);
        EXPECT_EQ(first.data(), nullptr);

        PoolBlk third;
        ASSERT_TRUE(third.alloc(50, context));
        EXPECT_EQ(liveBytes(context), 1050U);
        third = std::move(second);
        EXPECT_EQ(third.data(), data);
        EXPECT_EQ(liveBytes(context), 1000U);

        PoolBlk &same = third;
        third = std::move(same);
        EXPECT_EQ(third.data(), data);

        ASSERT_TRUE(third.alloc(200000, context));
        EXPECT_EQ(liveBytes(context), 200000U);
        ASSERT_TRUE(third.alloc(0, context));
        EXPECT_NE(third.data(), nullptr);
        third.free();
        third.free();
        EXPECT_EQ(third.data(), nullptr);
        ASSERT_TRUE(first.alloc(33, context));
        EXPECT_EQ(liveBytes(context), 33U);
    }
    EXPECT_EQ(liveBytes(context), 0U);
}

TEST(InternPool, TextsStayWhereTheyAre)
{
    constexpr unsigned context = 0x7E59B10C;
    {
        InternPool pool(0, 4096, context);
        std::vector<std::pair<char const *, std::string>> texts;
        for (unsigned i = 0; i < 100000; ++i) {
            std::string text = std::to_string(i * 2654435761U);
            if (i % 97 == 0)
                text.append(i % 9000, 'x');
            char const *copy = pool.str_add(text.c_str());
            ASSERT_NE(copy, nullptr);
            texts.emplace_back(copy, std::move(text));
        }
        for (auto const &[copy, text] : texts)
            ASSERT_EQ(copy, text);
        EXPECT_GT(liveBytes(context), 100000U * 10);

        char const *const empty = pool.str_add(nullptr);
        pool.clear();
        EXPECT_STREQ(empty, "");
        EXPECT_EQ(liveBytes(context), 0U);
        EXPECT_STREQ(pool.str_add("again"), "again");
        pool.clear();
        pool.clear();
        EXPECT_STREQ(pool.str_add("and again"), "and again");
    }
    EXPECT_EQ(liveBytes(context), 0U);
}

// Chunks are the cost that a user can see: how much memory stands behind so much text.
TEST(InternPool, MemoryFollowsTheChunksAskedFor)
{
    constexpr std::uint64_t head = 64; // more than a chunk's own bookkeeping
    unsigned context = 0x7E5A0000;
    std::string const longText(5000, 'l');
    std::tuple<unsigned, unsigned, std::vector<std::string>, std::uint64_t> const rows[] = {
        {0, 4096, {"a", "b", std::string(4000, 'c')}, 4096},
        {0, 0, {"a"}, 4096},
        {100000, 4096, {"a"}, 100000},
        {0, 4096, {"a", longText, "b"}, 4096 + 5001},
        {0, 4096, {longText, "a"}, 5001 + 4096},
        {0, 1, {"a", "b"}, 4},
    };
    for (auto const &[expected, chunk, texts, bytes] : rows) {
        ++context;
        SCOPED_TRACE(context);
        InternPool pool(expected, chunk, context);
        for (std::string const &text : texts)
            EXPECT_EQ(pool.str_add(text.c_str()), text);
        EXPECT_GE(liveBytes(context), bytes);
        EXPECT_LE(liveBytes(context), bytes + texts.size() * head);
    }
}

} // namespace
