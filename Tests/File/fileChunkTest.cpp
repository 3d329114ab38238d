#include "System/File/fileChunk.h"

#include "System/File/fileMem.h"
#include "Tests/Tools/vectorFile.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace Qel {
namespace {

TEST(FileChunk, ItsSixteenBytesAreTheRecord)
{
    _sFile_chunk const chunk(0x12345678, 0x0A0B0C0D, 7);
    test::VectorFile file;
    EXPECT_EQ(chunk.save(file), 16u);
    EXPECT_EQ(file.content(), std::string("\x78\x56\0\0" // the number cut to 16 bits, nothing
                                          "\x0D\x0C\x0B\x0A"
                                          "\x07\0\0\0"
                                          "\0\0\0\0",
                                          16));
    file.seek(0);
    _sFile_chunk back;
    EXPECT_EQ(back.load(file), 16u);
    EXPECT_EQ(std::memcmp(&back, &chunk, sizeof(back)), 0);
}

TEST(FileHeader, Its128BytesAreTheRecordAndAShortOneKeepsTheRest)
{
    std::string bytes(128, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i + 1);
    }
    test::VectorFile file(bytes);
    _sHeader header;
    EXPECT_EQ(header.load(file), 128u);
    EXPECT_EQ(std::string(header.magic, 4), "\x01\x02\x03\x04");
    EXPECT_EQ(header.kind, 5);
    EXPECT_EQ(header.value, 0x0C0B0A09u);
    EXPECT_EQ(header.reserved[28], 0x807F7E7Du);
    cFileMem copy;
    EXPECT_EQ(header.save(copy), 128u);
    EXPECT_EQ(std::memcmp(copy.getData(), bytes.data(), 128), 0);

    test::VectorFile cut(std::string("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 10)); // ends in `value`
    EXPECT_EQ(header.load(cut), 10u);
    EXPECT_EQ(header.extra[2], 0xFF);
    EXPECT_EQ(header.value, 0x0C0B0A09u);
    EXPECT_EQ(header.reserved[0], 0x100F0E0Du);
}

} // namespace
} // namespace Qel
