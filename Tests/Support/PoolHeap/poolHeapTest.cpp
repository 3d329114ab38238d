#include "Support/PoolHeap/poolHeap.h"

#include "Tests/Tools/inThreads.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <barrier>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

namespace {

using PoolHeap::ContextCounts;

// Every test counts under contexts of its own, since counts are never set back.
std::uint32_t freshContext()
{
    static std::atomic<std::uint32_t> next = 0x7E570000;
    return next++;
}

ContextCounts countsOf(std::uint32_t context)
{
    ContextCounts counts;
    EXPECT_TRUE(PoolHeap::context_counts(context, counts));
    return counts;
}

void expectCounts(std::uint32_t context, std::uint64_t allocations, std::uint64_t blocks, std::uint64_t bytes,
                  std::uint64_t peak)
{
    ContextCounts const counts = countsOf(context);
    EXPECT_EQ(counts.allocations, allocations);
    EXPECT_EQ(counts.liveBlocks, blocks);
    EXPECT_EQ(counts.liveBytes, bytes);
    EXPECT_EQ(counts.peakBytes, peak);
}

TEST(PoolHeap, BlocksOfAnySizeAreAlignedAndApart)
{
    std::uint32_t const context = freshContext();
    std::vector<std::pair<unsigned char *, std::size_t>> blocks;
    for (std::size_t size = 0; size <= 700; ++size) {
        for (int copies = 0; copies < 3; ++copies) {
            auto *block = static_cast<unsigned char *>(PoolHeap::fast_alloc(size, context));
            ASSERT_NE(block, nullptr);
            ASSERT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0U) << size;
            std::memset(block, static_cast<int>(size % 251), size);
            blocks.emplace_back(block, size);
        }
    }
    for (auto const &[block, size] : blocks) {
        auto const filled = std::count(block, block + size, static_cast<unsigned char>(size % 251));
        ASSERT_EQ(static_cast<std::size_t>(filled), size);
        PoolHeap::fast_free(block, size, context);
    }
    expectCounts(context, 2103, 0, 0, 3 * 700 * 701 / 2);
}

TEST(PoolHeap, ImpossibleSizesGiveNullAndCountNothing)
{
    std::uint32_t const context = freshContext();
    PoolHeap::fast_free(PoolHeap::fast_alloc(8, context), 8, context);
    std::size_t const most = std::numeric_limits<std::size_t>::max();
    for (std::size_t size : {most, most - 1, most - 15, most - 16, most / 2 + 1, most / 2, most / 4}) {
        SCOPED_TRACE(size);
        EXPECT_EQ(PoolHeap::fast_alloc(size, context), nullptr);
        EXPECT_EQ(PoolHeap::std_alloc(size), nullptr);
        EXPECT_EQ(poolheap_malloc(size), nullptr);
    }
    expectCounts(context, 1, 0, 0, 8);

    PoolHeap::fast_free(nullptr, 8, context);
    PoolHeap::std_free(nullptr);
    poolheap_free(nullptr);
    expectCounts(context, 1, 0, 0, 8);

    // Plain buffers of size zero are blocks.
    void *object = PoolHeap::std_alloc(0);
    void *buffer = poolheap_malloc(0);
    EXPECT_NE(object, nullptr);
    EXPECT_NE(buffer, nullptr);
    PoolHeap::std_free(object);
    poolheap_free(buffer);
}

// The counts against a model, over sizes on both sides of the small limit.
TEST(PoolHeap, CountsOfOneThreadAreExact)
{
    std::uint32_t const context = freshContext();
    std::mt19937 random(42);
    std::vector<std::pair<void *, std::size_t>> live;
    std::uint64_t allocations = 0, bytes = 0, peak = 0;
    for (int step = 0; step < 40000; ++step) {
        bool const grow = live.empty() || random() % 1000 < (step % 10000 < 5000 ? 600U : 400U);
        if (grow) {
            std::size_t const size = random() % 20 == 0 ? random() % 200000 : random() % 600;
            live.emplace_back(PoolHeap::fast_alloc(size, context), size);
            ++allocations;
            bytes += size;
            peak = std::max(peak, bytes);
        } else {
            std::swap(live[random() % live.size()], live.back());
            PoolHeap::fast_free(live.back().first, live.back().second, context);
            bytes -= live.back().second;
            live.pop_back();
        }
        if (step % 1009 == 0)
            expectCounts(context, allocations, live.size(), bytes, peak);
    }
    for (auto const &[block, size] : live)
        PoolHeap::fast_free(block, size, context);
    expectCounts(context, allocations, 0, 0, peak);
}

TEST(PoolHeap, ContextsWithoutEndAreCountedApart)
{
    constexpr std::uint32_t count = 2000;
    std::mt19937 random(7);
    std::unordered_set<std::uint32_t> seen;
    while (seen.size() < count) {
        seen.insert(static_cast<std::uint32_t>(random()));
    }
    std::vector<std::uint32_t> const contexts(seen.begin(), seen.end());
    std::vector<void *> blocks;
    for (std::size_t round = 1; round <= 3; ++round) {
        for (std::uint32_t i = 0; i < count; ++i)
            blocks.push_back(PoolHeap::fast_alloc(round * 10 + i % 7, contexts[i]));
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        std::uint64_t const bytes = 60 + 3 * (i % 7);
        expectCounts(contexts[i], 3, 3, bytes, bytes);
    }
    for (std::size_t at = 0; at < blocks.size(); ++at)
        PoolHeap::fast_free(blocks[at], (at / count + 1) * 10 + at % count % 7, contexts[at % count]);
    for (std::uint32_t i = 0; i < count; ++i)
        expectCounts(contexts[i], 3, 0, 0, 60 + 3 * (i % 7));

    ContextCounts untouched;
    untouched.peakBytes = 77;
    EXPECT_FALSE(PoolHeap::context_counts(freshContext(), untouched));
    EXPECT_EQ(untouched.peakBytes, 77U);
}

// The numbers at the edges: a thread that has counted nothing yet must not take one of them for its own.
TEST(PoolHeap, ContextsZeroOneAndHighestAreOrdinary)
{
    for (std::uint32_t context : {0U, 1U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(context);
        ContextCounts before;
        PoolHeap::context_counts(context, before);
        std::thread([context] {
            std::uint32_t const other = freshContext();
            PoolHeap::fast_free(PoolHeap::fast_alloc(32, other), 32, other);
            void *block = PoolHeap::fast_alloc(32, context);
            EXPECT_EQ(countsOf(context).liveBytes, 32U);
            PoolHeap::fast_free(block, 32, context);
        }).join();
        EXPECT_EQ(countsOf(context).allocations, before.allocations + 1);
        EXPECT_EQ(countsOf(context).liveBytes, before.liveBytes);
    }
}

TEST(PoolHeap, NamedContextsAreListedInTheOrderOfTheirFirstSight)
{
    std::uint32_t const first = freshContext(), second = freshContext();
    PoolHeap::ContextInfo info;
    info.name = "early name";
    info.id = first;
    PoolHeap::context_init(info);
    expectCounts(first, 0, 0, 0, 0);
    PoolHeap::fast_free(PoolHeap::fast_alloc(1, second), 1, second);
    info.name = "late name";
    PoolHeap::context_init(info);

    std::size_t const count = PoolHeap::all_context_counts(nullptr, 0);
    ASSERT_GE(count, 2U);
    std::vector<ContextCounts> all(count + 1);
    all[count].id = 0xABCDEF;
    EXPECT_EQ(PoolHeap::all_context_counts(all.data(), count), count);
    EXPECT_EQ(all[count].id, 0xABCDEFU);
    EXPECT_EQ(all[count - 2].id, first);
    EXPECT_STREQ(all[count - 2].name, "late name");
    EXPECT_EQ(all[count - 1].id, second);
    EXPECT_EQ(all[count - 1].name, nullptr);
}

TEST(PoolHeap, ShutdownLeavesLiveBlocksAndFurtherUseAlone)
{
    std::uint32_t const context = freshContext();
    std::vector<unsigned char *> blocks;
    for (int i = 0; i < 5000; ++i) {
        blocks.push_back(static_cast<unsigned char *>(PoolHeap::fast_alloc(48, context)));
        std::memset(blocks.back(), i % 256, 48);
    }
    for (std::size_t i = 0; i < blocks.size(); i += 2)
        PoolHeap::fast_free(blocks[i], 48, context);
    PoolHeap::shutdown();
    PoolHeap::shutdown();
    expectCounts(context, 5000, 2500, 2500 * 48, 5000 * 48);
    for (std::size_t i = 1; i < blocks.size(); i += 2) {
        ASSERT_EQ(blocks[i][0], i % 256);
        ASSERT_EQ(blocks[i][47], i % 256);
    }
    for (std::size_t i = 0; i < blocks.size(); i += 2) {
        blocks[i] = static_cast<unsigned char *>(PoolHeap::fast_alloc(48, context));
        std::memset(blocks[i], 1, 48);
    }
    PoolHeap::init();
    for (unsigned char *block : blocks)
        PoolHeap::fast_free(block, 48, context);
    expectCounts(context, 7500, 0, 0, 5000 * 48);
}

// An object that a thread makes before its first block dies after the thread's lists have gone.
struct DiesLast {
    std::uint32_t context = 0;
    void *block = nullptr;
    ~DiesLast()
    {
        PoolHeap::fast_free(block, 64, context);
        void *late = PoolHeap::fast_alloc(80, context);
        std::memset(late, 1, 80);
        PoolHeap::fast_free(late, 80, context);
    }
};
thread_local DiesLast diesLast;

TEST(PoolHeap, AThreadMayAllocateAndFreeAfterItsListsHaveGone)
{
    std::uint32_t const context = freshContext();
    std::thread([context] {
        diesLast.context = context;
        diesLast.block = PoolHeap::fast_alloc(64, context);
    }).join();
    expectCounts(context, 2, 0, 0, 80);
}

std::size_t residentBytes()
{
    std::size_t whole = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> whole >> resident;
    return resident * 4096;
}

// One thread allocates and another frees, two GiB in all. Memory that did not come home would show.
TEST(PoolHeap, BlocksFreedOnAnotherThreadComeHome)
{
    std::uint32_t const context = freshContext();
    constexpr int rounds = 4096, perRound = 1024;
    constexpr std::size_t size = 512;
    std::vector<void *> handed(perRound);
    std::barrier<> both(2);
    std::size_t const before = residentBytes();
    test::inThreads(2, [&](int index) {
        for (int round = 0; round < rounds; ++round) {
            for (void *&block : handed) {
                if (index == 0) {
                    block = PoolHeap::fast_alloc(size, context);
                    *static_cast<int *>(block) = round;
                }
            }
            both.arrive_and_wait();
            for (void *block : handed) {
                if (index == 1) {
                    EXPECT_EQ(*static_cast<int *>(block), round);
                    PoolHeap::fast_free(block, size, context);
                }
            }
            both.arrive_and_wait();
        }
    });
    ContextCounts const counts = countsOf(context);
    expectCounts(context, std::uint64_t{rounds} * perRound, 0, 0, counts.peakBytes);
    // Truth is one round; each of two threads may hold back up to 64 KiB and one block.
    EXPECT_GE(counts.peakBytes, perRound * size - 2 * (65536 + size));
    EXPECT_LE(counts.peakBytes, perRound * size + 2 * (65536 + size));
    // A sanitizer's own records and its quarantine of freed blocks grow up to 256 MiB.
    EXPECT_LT(residentBytes(), before + (std::size_t{512} << 20));
}

// Threads come and go with blocks of random size passing between them. Two owners of one block would show
// in its content.
TEST(PoolHeap, ThreadsThatComeAndGoNeverShareABlock)
{
    struct Block {
        std::uint32_t *words;
        std::uint32_t count;
    };
    std::uint32_t const context = freshContext();
    std::mutex lock;
    std::vector<Block> shared;
    std::atomic<std::uint32_t> stamps = 1;
    std::atomic<int> damaged = 0;
    auto const release = [&](Block const &block) {
        for (std::uint32_t i = 1; i < block.count; ++i)
            damaged += block.words[i] != block.words[0];
        PoolHeap::fast_free(block.words, block.count * 4, context);
    };
    auto const work = [&](unsigned seed) {
        std::mt19937 random(seed);
        std::vector<Block> own;
        for (int step = 0; step < 4000; ++step) {
            auto const count = static_cast<std::uint32_t>(random() % 40 + 1);
            Block block{static_cast<std::uint32_t *>(PoolHeap::fast_alloc(count * 4, context)), count};
            std::fill_n(block.words, count, stamps++);
            own.push_back(block);
            if (random() % 400 == 0) {
                std::lock_guard guard(lock);
                own.swap(shared);
            }
            if (!own.empty() && (own.size() > 300 || random() % 2)) {
                std::swap(own[random() % own.size()], own.back());
                release(own.back());
                own.pop_back();
            }
        }
        std::lock_guard guard(lock);
        shared.insert(shared.end(), own.begin(), own.end());
    };
    for (unsigned generation = 0; generation < 6; ++generation) {
        test::inThreads(5, [&](int index) {
            if (index < 4) {
                work(generation * 10 + static_cast<unsigned>(index));
            }
            for (int i = 0; i < 50; ++i) {
                ContextCounts counts;
                PoolHeap::context_counts(context, counts);
            }
        });
    }
    for (Block const &block : shared)
        release(block);
    EXPECT_EQ(damaged.load(), 0);
    expectCounts(context, 6U * 4 * 4000, 0, 0, countsOf(context).peakBytes);
}

#ifndef NDEBUG

std::vector<std::string> messages;
int breakpoints = 0;

TEST(PoolHeap, DebugBuildsNameAWrongRelease)
{
    std::uint32_t const context = freshContext();
    PoolHeap::Config const before = PoolHeap::the_config;
    PoolHeap::the_config = {[](char const *text) { messages.emplace_back(text); }, [] { ++breakpoints; }};

    void *block = PoolHeap::fast_alloc(40, context);
    PoolHeap::fast_free(block, 400, context + 1);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_NE(messages[0].find("freed as 400 bytes"), std::string::npos) << messages[0];
    EXPECT_NE(messages[0].find("taken as 40 of"), std::string::npos) << messages[0];
    EXPECT_EQ(breakpoints, 0);
    expectCounts(context, 1, 0, 0, 40);

    alignas(16) unsigned char foreign[64] = {};
    PoolHeap::fast_free(foreign + 32, 16, context);
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_NE(messages[1].find("never given out"), std::string::npos) << messages[1];
    EXPECT_EQ(breakpoints, 1);
    expectCounts(context, 1, 0, 0, 40);
    PoolHeap::the_config = before;
}

#endif

} // namespace
