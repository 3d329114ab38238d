#include "System/File/dataStore.h"

#include "Tests/Tools/logLines.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>

namespace Qel {
namespace {

std::string image(cDataStore const &store)
{
    return store.getRawSize() == 0
               ? std::string()
               : std::string(static_cast<char const *>(store.getRawData()), store.getRawSize());
}

std::string block(cDataStore const &store, std::uint32_t id)
{
    void const *data = &store;
    unsigned int size = 99;
    if (!store.getBlock(sBlockId{id}, data, size)) {
        EXPECT_EQ(data, nullptr);
        EXPECT_EQ(size, 0u);
        return "none";
    }
    return {static_cast<char const *>(data), size};
}

void put(cDataStore &store, std::uint32_t id, std::string const &data)
{
    store.writeBlock(sBlockId{id}, data.data(), static_cast<unsigned int>(data.size()));
}

std::string word(std::uint32_t value)
{
    return {reinterpret_cast<char const *>(&value), 4};
}

// Two blocks of three bytes: only the data is aligned, the second header stands at 11.
std::string const twoBlocks = word(1) + word(3) + "abc" + word(2) + word(3) + std::string(1, '\0') + "xyz";

TEST(DataStore, WritesItsImageByteForByte)
{
    cDataStore store;
    put(store, 1, "abc");
    put(store, 2, "xyz");
    EXPECT_EQ(image(store), twoBlocks);
    EXPECT_EQ(store.getMode(), MODE_OWNED);
    EXPECT_EQ(block(store, 2), "xyz");
    EXPECT_EQ(block(store, 3), "none");

    store.open(16);
    put(store, 1, "abc");
    EXPECT_EQ(image(store), word(1) + word(3) + std::string(8, '\0') + "abc");
    for (unsigned char const alignment : std::initializer_list<unsigned char>{0, 3, 12}) {
        store.open(alignment);
        EXPECT_EQ(store.getWriteAlignment(), 4u);
    }
    store.open(1);
    put(store, 7, "a");
    put(store, 8, "b");
    EXPECT_EQ(image(store), word(7) + word(1) + "a" + word(8) + word(1) + "b");
}

TEST(DataStore, WritesInPlaceOrAtTheEnd)
{
    cDataStore store;
    put(store, 1, "abc");
    put(store, 2, "xyz");
    put(store, 1, "ABC");
    EXPECT_EQ(block(store, 1), "ABC");
    EXPECT_EQ(image(store).substr(0, 4), word(1)) << "the same length keeps its place";
    put(store, 1, "longer");
    EXPECT_EQ(image(store), word(2) + word(3) + "xyz" + word(1) + word(6) + std::string(1, '\0') + "longer");
    put(store, 9, "");
    EXPECT_EQ(store.getRawSize(), 26u) << "a length of 0 makes no block";
    put(store, 2, "");
    EXPECT_EQ(image(store), word(1) + word(6) + "longer");
    put(store, 1, "");
    EXPECT_EQ(store.getRawSize(), 0u);
    EXPECT_EQ(store.getMode(), cDataStore::MODE_OWNED);
    store.writeBlock(sBlockId{1}, nullptr, 5);
    EXPECT_EQ(store.getRawSize(), 0u);
}

TEST(DataStore, DataMayComeFromItsOwnImage)
{
    cDataStore store;
    put(store, 1, "0123456789");
    put(store, 2, "abc");
    void const *data = nullptr;
    unsigned int size = 0;
    ASSERT_TRUE(store.getBlock(sBlockId{1}, data, size));
    auto const *const bytes = static_cast<char const *>(data);
    store.writeBlock(sBlockId{1}, bytes + 2, 4);
    EXPECT_EQ(block(store, 1), "2345");
    ASSERT_TRUE(store.getBlock(sBlockId{1}, data, size));
    store.writeBlock(sBlockId{3}, data, size);
    EXPECT_EQ(block(store, 3), "2345");
    EXPECT_TRUE(store.copyBlock(sBlockId{2}, store));
    EXPECT_EQ(block(store, 2), "abc");
}

TEST(DataStore, ASharedImageIsCopiedOnTheFirstWrite)
{
    std::string const original = twoBlocks;
    std::string const bytes = original;
    cDataStore store(bytes.data(), static_cast<unsigned int>(bytes.size()));
    EXPECT_EQ(block(store, 2), "xyz");
    EXPECT_EQ(store.getMode(), cDataStore::MODE_SHARED);
    put(store, 1, "ABC");
    EXPECT_EQ(store.getMode(), cDataStore::MODE_OWNED);
    EXPECT_EQ(block(store, 1), "ABC");
    EXPECT_EQ(bytes, original);

    cDataStore view;
    view.open_shared(store);
    EXPECT_EQ(view.getRawData(), store.getRawData());
    view.open_shared(view);
    EXPECT_EQ(block(view, 1), "ABC");
    cDataStore target;
    EXPECT_FALSE(target.copyBlock(sBlockId{5}, view));
    EXPECT_EQ(target.getMode(), cDataStore::MODE_CLOSED);
    EXPECT_TRUE(target.copyBlock(sBlockId{1}, view));
    target.swap(view);
    EXPECT_EQ(view.getMode(), cDataStore::MODE_OWNED);
    EXPECT_EQ(block(target, 2), "xyz");
}

TEST(DataStore, AClosedStoreLeavesTheOutputs)
{
    cDataStore store;
    void const *data = &store;
    unsigned int size = 7;
    EXPECT_FALSE(store.getBlock("name", data, size));
    EXPECT_EQ(data, &store);
    EXPECT_EQ(size, 7u);
    store.open(4);
    EXPECT_FALSE(store.getBlock("name", data, size));
    EXPECT_EQ(data, nullptr);
    store.open_shared(nullptr, 100);
    EXPECT_EQ(block(store, 1), "none");
    EXPECT_TRUE(store.fixErrors());
}

TEST(DataStore, NamesAreChecksums)
{
    EXPECT_EQ(cDataStore::calcBlockId("123456789").value, 0x340BC6D9u);
    EXPECT_EQ(cDataStore::calcBlockId(nullptr).value, 0xFFFFFFFFu);
    cDataStore store;
    store.writeBlock("Name", "abc", 3);
    void const *data = nullptr;
    unsigned int size = 0;
    EXPECT_FALSE(store.getBlock("name", data, size));
    EXPECT_TRUE(store.getBlock("Name", data, size));
}

// The order of the blocks of a copy is what writing them one by one would make.
TEST(DataStore, ACopyHoldsWhatCounts)
{
    std::string const bytes = word(1) + word(4) + "old1" + word(0) + word(4) + "zero" + word(2) + word(4) +
                              "two " + word(1) + word(4) + "new1" + word(3) + word(4) + "gone" + word(2) +
                              word(8) + "two, new" + word(3) + word(0);
    cDataStore const store(bytes.data(), static_cast<unsigned int>(bytes.size()));
    EXPECT_EQ(block(store, 1), "old1") << "the first one is found";
    cDataStore const copy(store);
    EXPECT_EQ(image(copy), word(1) + word(4) + "new1" + word(2) + word(8) + "two, new");
    EXPECT_EQ(copy.getMode(), cDataStore::MODE_OWNED);

    cDataStore wide;
    wide.open(32);
    put(wide, 5, "abc");
    cDataStore assigned(copy);
    assigned = wide;
    EXPECT_EQ(assigned.getWriteAlignment(), 32u);
    EXPECT_EQ(image(assigned), image(wide));
    assigned = *&assigned;
    EXPECT_EQ(image(assigned), image(wide));
    assigned = cDataStore();
    EXPECT_EQ(assigned.getMode(), cDataStore::MODE_OWNED);
    EXPECT_EQ(assigned.getRawSize(), 0u);
}

TEST(DataStore, AnImageCutAnywhereGivesTheWholeBlocks)
{
    std::string const three = twoBlocks + word(3) + word(5) + std::string(1, '\0') + "third";
    for (std::size_t length = 0; length <= three.size(); ++length) {
        SCOPED_TRACE(length);
        std::string const cut = three.substr(0, length); // a block of its own, so that asan sees its end
        cDataStore store(cut.data(), static_cast<unsigned int>(length));
        std::size_t const ends[] = {0, 11, 23, three.size()};
        unsigned int whole = 0;
        while (whole < 3 && length >= ends[whole + 1]) {
            ++whole;
        }
        EXPECT_EQ(block(store, 1), whole >= 1 ? "abc" : "none");
        EXPECT_EQ(block(store, 2), whole >= 2 ? "xyz" : "none");
        EXPECT_EQ(block(store, 3), whole >= 3 ? "third" : "none");
        cDataStore const copy(store);
        EXPECT_EQ(image(copy), three.substr(0, ends[whole]));

        bool const good = length - ends[whole] < 8; // a few bytes behind the last block are nothing
        EXPECT_EQ(store.fixErrors(), good);
        EXPECT_EQ(store.getRawSize(), good ? length : ends[whole]);
        put(store, 4, "more");
        EXPECT_EQ(block(store, 4), "more") << "found, whatever stood behind the last block";
        EXPECT_EQ(block(store, 1), whole >= 1 ? "abc" : "none");
    }
}

TEST(DataStore, LengthsThatWrapAreDamage)
{
    struct {
        std::uint32_t length;
        unsigned char alignment;
    } const cases[] = {{0xFFFFFFFF, 4}, {0xFFFFFFF8, 4}, {0xFFFFFFF0, 128}, {5, 4}, {0x80000000, 1}};
    for (auto const &each : cases) {
        SCOPED_TRACE(each.length);
        std::string const bytes = word(9) + word(each.length) + "four" + word(8) + word(0);
        cDataStore store;
        store.open(each.alignment);
        store.open_shared(bytes.data(), 12);
        EXPECT_EQ(block(store, 9), "none");
        EXPECT_EQ(block(store, 8), "none");
        EXPECT_FALSE(store.fixErrors());
        EXPECT_EQ(store.getRawSize(), 0u);
    }
    // With a wide alignment the data of a last, empty block lies behind the image.
    std::string const bytes = word(9) + word(0);
    cDataStore store;
    store.open(64);
    store.open_shared(bytes.data(), 8);
    EXPECT_EQ(block(store, 9), "none");

    std::string text(16, 'x');
    store.writeBlock(sBlockId{1}, text.data(), 0xFFFFFFF0);
    EXPECT_EQ(store.getMode(), cDataStore::MODE_SHARED) << "too long for any image: nothing changes";
}

TEST(DataStore, DamageIsLogged)
{
    test::LogLines const log;
    std::string const bytes = word(1) + word(100);
    cDataStore store(bytes.data(), 8);
    EXPECT_FALSE(store.fixErrors());
    EXPECT_NE(log.take().find("cDataStore::fixErrors failed\n"), std::string::npos);
    EXPECT_TRUE(store.fixErrors()) << "cut, and good now";
}

// Every distinct block is looked up in the others; a copy has to stay linear all the same.
TEST(DataStore, AnImageOfManyTinyBlocksIsCopiedInNoTime)
{
    std::string bytes;
    for (std::uint32_t i = 1; i <= 200'000; ++i) {
        bytes += word(i) + word(1) + std::string("x\0\0\0", 1);
    }
    cDataStore store;
    store.open(1);
    store.open_shared(bytes.data(), static_cast<unsigned int>(bytes.size()));
    cDataStore const copy(store);
    EXPECT_EQ(copy.getRawSize(), bytes.size());
}

} // namespace
} // namespace Qel
