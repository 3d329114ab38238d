#include "System/Codec/codecManager.h"
#include "System/Codec/codecs/codec_huffman.h"
#include "System/System/logManager.h"
#include "Tests/Tools/tempFolder.h"
#include "Tests/virtualSlot.h"

#include <gtest/gtest.h>

namespace Qel {
namespace {

int living = 0;

class CountedCodec : public iCodec {
public:
    CountedCodec() { ++living; }
    ~CountedCodec() override { --living; }
    bool encode(cFile &, cFile &, ...) override { return true; }
    bool decode(cFile &, cFile &, ...) override { return true; }
};

class CountedFactory : public CodecFactory {
public:
    String getType() const override { return name; }
    iCodec *createInstance(String const &) override { return canMake ? new CountedCodec : nullptr; }

    String name = "CODEC_COUNTED";
    bool canMake = true;
};

TEST(CodecManager, RegistersMakesAndDestroys)
{
    test::TempFolder const folder;
    CountedFactory factory;
    {
        LogManager log;
        log.createLog("codecs.log", true, false, true);
        CodecManager manager;
        factory.canMake = false;
        manager.addFactory(&factory);
        CountedFactory second;
        manager.addFactory(&second);
        manager.addFactory(nullptr);
        EXPECT_EQ(manager.getCodec("CODEC_COUNTED"), nullptr) << "the first factory, which has no memory";
        factory.canMake = true;
        iCodec *const codec = manager.getCodec("CODEC_COUNTED");
        EXPECT_NE(codec, nullptr) << "and then it has";
        EXPECT_EQ(manager.getCodec("CODEC_COUNTED"), codec);
        EXPECT_EQ(living, 1);
        factory.name = "renamed";
        manager.removeFactory(&factory);
        manager.removeFactory(&factory);
        EXPECT_EQ(living, 0) << "a factory goes with its codec";
        EXPECT_EQ(manager.getCodec("CODEC_COUNTED"), nullptr);
        auto *const huffman = dynamic_cast<cCodecHuffman *>(manager.getCodec("CODEC_HUFFMAN"));
        ASSERT_NE(huffman, nullptr);
        EXPECT_STREQ(huffman->get_type(), "CODEC_HUFFMAN");
        // A tree that the leak checker would miss.
        huffman->fixedTable_encode_init();
        huffman->fixedTable_encode_finish();
        manager.addFactory(&second);
        EXPECT_NE(manager.getCodec("CODEC_COUNTED"), nullptr);
    }
    EXPECT_EQ(living, 0);
    EXPECT_FALSE(CodecManager::InstanceActive());
    EXPECT_EQ(test::readFile("codecs.log"), "Codec type 'CODEC_MTF' registered.\n"
                                            "Codec type 'CODEC_HUFFMAN' registered.\n"
                                            "Codec type 'CODEC_LZ77' registered.\n"
                                            "Codec type 'CODEC_LZW' registered.\n"
                                            "Codec type 'CODEC_ZIP' registered.\n"
                                            "Codec type 'CODEC_COUNTED' registered.\n"
                                            "Codec type 'CODEC_COUNTED' registered.\n"
                                            "Codec type 'CODEC_COUNTED' Unknown!\n"
                                            "Codec type 'CODEC_COUNTED' registered.\n");
}

TEST(CodecManager, OperationsOfCodecsKeepTheirOrder)
{
    using Plain = bool (iCodec::*)(cFile &, cFile &);
    EXPECT_EQ(virtualSlot(reinterpret_cast<Plain>(&iCodec::encode)), 0u);
    EXPECT_EQ(virtualSlot(reinterpret_cast<Plain>(&iCodec::decode)), 1u);
    EXPECT_LT(virtualSlot(reinterpret_cast<Plain>(&iCodec::decode)), virtualSlot(&cCodecHuffman::get_type));
    EXPECT_LT(virtualSlot(&CodecFactory::getType), virtualSlot(&CodecFactory::createInstance));
}

} // namespace
} // namespace Qel
