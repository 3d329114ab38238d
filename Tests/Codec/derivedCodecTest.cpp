// What the author of a derived codec stands on.
#include "System/Codec/codecs/codec_lzw.h"
#include "System/Codec/codecs/codec_mtf.h"

#include <gtest/gtest.h>

#include <memory>

namespace Qel {
namespace {

TEST(DerivedCodec, LiesAsItIsAligned)
{
    struct alignas(256) Aligned : cCodecMTF {};
    for (int i = 0; i < 4; ++i) {
        std::unique_ptr<iCodec> const plain = std::make_unique<Aligned>();
        std::unique_ptr<iCodec> const orNull(new (std::nothrow) Aligned);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(plain.get()) % 256, 0u);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(orNull.get()) % 256, 0u);
    }
}

TEST(DerivedCodec, FindsAnEmptyDictionaryInLzw)
{
    struct Derived : cCodecLZW {
        void check()
        {
            InitializeStorage();
            InitializeDictionary();
            EXPECT_EQ(find_child_node('a', 'b'), find_child_node('a', 'b'));
            EXPECT_EQ(decode_string(5, 300), 5u) << "no string of that code";
        }
    };
    std::make_unique<Derived>()->check();
}

} // namespace
} // namespace Qel
