#include "System/Time/system.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Qel;

TEST(System, MemcmpAsksWhetherAllBytesAreOneValue)
{
    std::vector<unsigned char> block(100, 7);
    EXPECT_TRUE(cSystem::memcmp(block.data(), 7, 100));
    EXPECT_FALSE(cSystem::memcmp(block.data(), 8, 100));
    EXPECT_TRUE(cSystem::memcmp(block.data(), 8, 0));
    EXPECT_TRUE(cSystem::memcmp(nullptr, 8, 0));
    EXPECT_TRUE(cSystem::memcmp(block.data(), 7, 1));
    for (std::size_t const at : {0u, 1u, 50u, 99u}) {
        std::vector<unsigned char> odd = block;
        odd[at] = 6;
        EXPECT_FALSE(cSystem::memcmp(odd.data(), 7, 100)) << at;
        EXPECT_EQ(cSystem::memcmp(odd.data(), 7, 99), at == 99) << at;
    }
}
