#include "System/File/file.h"

#include "Support/D3DX/d3dx9math.h"
#include "System/File/fileBit.h"
#include "System/File/fileBitOld.h"
#include "System/File/fileCached.h"
#include "System/File/fileDisk.h"
#include "System/File/fileMem.h"
#include "System/File/fileTempMem.h"
#include "System/System/string.h"
#include "System/System/wString.h"
#include "Tests/Tools/vectorFile.h"
#include "Tests/virtualSlot.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace Qel {
namespace {

using test::VectorFile;

std::string bytes(std::initializer_list<int> values)
{
    return {values.begin(), values.end()};
}

// The bytes that one typed operation makes, and the same operation read back.
struct Typed {
    char const *name;
    std::function<unsigned int(cFile &)> write;
    std::string layout;
    std::function<bool(cFile &)> readsBack;
};

// Reads a value as one that stood at @p before, and compares it.
template <class T>
std::function<bool(cFile &)> reads(bool (cFile::*read)(T &), T expected, T before = {})
{
    return [=](cFile &f) {
        T value = before;
        return (f.*read)(value) && value == expected;
    };
}

std::vector<Typed> typedOperations()
{
    return {
        {"read_8", [](cFile &f) { return f.write_8(static_cast<unsigned char>(0xFE)); }, bytes({0xFE}),
         reads<unsigned char>(&cFile::read_8, 0xFE)},
        {"read_16", [](cFile &f) { return f.write_16(static_cast<short>(-2)); }, bytes({0xFE, 0xFF}),
         reads<short>(&cFile::read_16, -2)},
        {"read_32", [](cFile &f) { return f.write_32(0x01020304u); }, bytes({4, 3, 2, 1}),
         reads<unsigned int>(&cFile::read_32, 0x01020304)},
        {"read_64", [](cFile &f) { return f.write_64(0x0102030405060708LL); },
         bytes({8, 7, 6, 5, 4, 3, 2, 1}), reads<long long>(&cFile::read_64, 0x0102030405060708)},
        {"read_float", [](cFile &f) { return f.write_float(-1.5f); }, bytes({0, 0, 0xC0, 0xBF}),
         reads<float>(&cFile::read_float, -1.5f)},
        {"read_vec3d", [](cFile &f) { return f.write_vec3d(D3DXVECTOR3(1.0f, 2.0f, -0.5f)); },
         bytes({0, 0, 0x80, 0x3F, 0, 0, 0, 0x40, 0, 0, 0, 0xBF}),
         reads<D3DXVECTOR3>(&cFile::read_vec3d, D3DXVECTOR3(1.0f, 2.0f, -0.5f))},
        {"read_string", [](cFile &f) { return f.write_string("ab\xC3"); },
         bytes({3, 0, 0, 0, 'a', 'b', 0xC3}), reads<String>(&cFile::read_string, "ab\xC3", "before")},
        {"read_string, empty", [](cFile &f) { return f.write_string(""); }, bytes({0, 0, 0, 0}),
         reads<String>(&cFile::read_string, "", "before")},
        {"read_wstring", // U+0041, U+20AC, U+1F600 as the pair D83D DE00
         [](cFile &f) { return f.write_wstring(WString(L"A\x20AC\x1F600")); },
         bytes({4, 0, 0, 0, 0x41, 0, 0xAC, 0x20, 0x3D, 0xD8, 0x00, 0xDE}),
         reads<WString>(&cFile::read_wstring, L"A\x20AC\x1F600", L"before")},
        {"read_wstring, empty", [](cFile &f) { return f.write_wstring(WString()); }, bytes({0, 0, 0, 0}),
         reads<WString>(&cFile::read_wstring, L"", L"before")},
        {"operators",
         [](cFile &f) {
             f << '\x7F' << static_cast<unsigned short>(0x0102) << -1 << 7LL << 0.25f;
             return 19u;
         },
         bytes({0x7F, 2, 1, 0xFF, 0xFF, 0xFF, 0xFF, 7, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0x3E}),
         [](cFile &f) {
             char c = 0;
             unsigned short s = 0;
             int i = 0;
             long long l = 0;
             float x = 0;
             f >> c >> s >> i >> l >> x;
             return c == 0x7F && s == 0x0102 && i == -1 && l == 7 && x == 0.25f;
         }},
    };
}

TEST(File, EachTypedValueHasItsBytesAndComesBack)
{
    for (Typed const &typed : typedOperations()) {
        SCOPED_TRACE(typed.name);
        VectorFile file;
        EXPECT_EQ(typed.write(file), typed.layout.size());
        EXPECT_EQ(file.content(), typed.layout);
        file.seek(0);
        EXPECT_TRUE(typed.readsBack(file));
        EXPECT_TRUE(file.eof());
    }
}

TEST(File, AMatrixGoesRowByRow)
{
    D3DXMATRIX matrix;
    for (unsigned i = 0; i < 16; ++i) {
        matrix(i / 4, i % 4) = static_cast<float>(i);
    }
    VectorFile file;
    EXPECT_EQ(file.write_mat4d(matrix), 64u);
    file.seek(16); // the second row
    float value = 0;
    EXPECT_TRUE(file.read_float(value));
    EXPECT_EQ(value, 4.0f);

    file.bytes.resize(20 + 3); // five floats and a part of one
    file.seek(0);
    D3DXMATRIX back;
    back(1, 0) = back(1, 1) = -1.0f;
    EXPECT_FALSE(file.read_mat4d(back));
    EXPECT_EQ(back(1, 0), 4.0f) << "what came before the short read is kept";
    EXPECT_EQ(back(1, 1), -1.0f);
}

TEST(File, AValueThatIsCutAnywhereIsNotRead)
{
    for (Typed const &typed : typedOperations()) {
        for (std::size_t length = 0; length < typed.layout.size(); ++length) {
            SCOPED_TRACE(std::string(typed.name) + " cut at " + std::to_string(length));
            VectorFile file(typed.layout.substr(0, length));
            EXPECT_FALSE(typed.readsBack(file));
        }
    }
    float number = 3.0f;
    String text("before");
    WString wide(L"before");
    VectorFile short1(bytes({1, 2, 3}));
    EXPECT_FALSE(short1.read_float(number));
    EXPECT_EQ(number, 3.0f);
    short1 = VectorFile(bytes({3, 0, 0, 0, 'x', 'y'}));
    EXPECT_FALSE(short1.read_string(text));
    EXPECT_EQ(text, "before");
    short1.seek(0);
    EXPECT_FALSE(short1.read_wstring(wide));
    EXPECT_EQ(wide, L"before");
}

TEST(File, AWriteThatIsCutTellsHowMuchWasStored)
{
    for (Typed const &typed : typedOperations()) {
        if (std::string(typed.name) == "operators") {
            continue; // they tell of no failure
        }
        for (std::size_t limit = 0; limit < typed.layout.size(); ++limit) {
            SCOPED_TRACE(std::string(typed.name) + " with room for " + std::to_string(limit));
            VectorFile file;
            file.writeLimit = limit;
            EXPECT_EQ(typed.write(file), limit);
            EXPECT_EQ(file.content(), typed.layout.substr(0, limit));
        }
    }
}

TEST(File, TextsOfEveryLengthComeBack)
{
    for (std::size_t const length : {1u, 1022u, 1023u, 1024u, 1025u, 70'000u}) {
        SCOPED_TRACE(length);
        std::string narrow(length, '\0');
        std::wstring wide(length, L'\0');
        for (std::size_t i = 0; i < length; ++i) {
            narrow[i] = static_cast<char>(i * 7);
            // Pairs fall on and across the pieces in which the text is moved.
            wide[i] = static_cast<wchar_t>(i % 3 == 0 ? 0x10000 + i : i % 0xD000);
        }
        cFileMem file;
        std::size_t const units = length + (length + 2) / 3;
        EXPECT_EQ(file.write_string(narrow), 4 + length);
        EXPECT_EQ(file.write_wstring(WString(wide.c_str(), length)), 4 + 2 * units);
        file.seek(0);
        String narrowBack;
        WString wideBack;
        EXPECT_TRUE(file.read_string(narrowBack));
        EXPECT_TRUE(file.read_wstring(wideBack));
        EXPECT_EQ(narrowBack, narrow);
        EXPECT_TRUE(wideBack == WString(wide.c_str(), length));
    }
}

TEST(File, HalfPairsAreKeptAndValuesBeyondUnicodeReplaced)
{
    VectorFile file;
    WString const odd =
        WString(1, wchar_t{0x110000}) + WString(1, wchar_t{0xDC00}) + WString(1, wchar_t{0xD800});
    EXPECT_EQ(file.write_wstring(odd), 10u);
    EXPECT_EQ(file.content(), bytes({3, 0, 0, 0, 0xFD, 0xFF, 0x00, 0xDC, 0x00, 0xD8}));
    file.seek(0);
    WString back;
    EXPECT_TRUE(file.read_wstring(back));
    ASSERT_EQ(back.size(), 3u);
    EXPECT_EQ(static_cast<unsigned>(back[1]), 0xDC00u);
    EXPECT_EQ(static_cast<unsigned>(back[2]), 0xD800u);
}

// A count from a stream that nothing stands behind. The memory taken is bounded by what the file holds.
TEST(File, ACountLargerThanTheStreamGivesFalseAtOnce)
{
    for (std::uint32_t const count : {200u, 1024u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
        SCOPED_TRACE(count);
        cFileMem memory;
        memory.write_32(count);
        memory.writeZeros(100);
        cFileBit bits;
        bits.write_32(count);
        bits.seek(32 + 800);
        bits.write_8('\0');
        cFileBitOld bitsOld;
        bitsOld.write_32(count);
        bitsOld.write_8('\0');

        PoolHeap::ContextCounts before;
        ASSERT_TRUE(PoolHeap::context_counts(stringMemoryContext, before));
        for (cFile *const file : std::initializer_list<cFile *>{&memory, &bits, &bitsOld}) {
            String text("before");
            WString wide(L"before");
            file->seek(0);
            EXPECT_FALSE(file->read_string(text));
            EXPECT_EQ(text, "before");
            file->seek(0);
            EXPECT_FALSE(file->read_wstring(wide));
            EXPECT_EQ(wide, L"before");
        }
        PoolHeap::ContextCounts after;
        ASSERT_TRUE(PoolHeap::context_counts(stringMemoryContext, after));
        EXPECT_LT(after.peakBytes, before.peakBytes + 1024 * 1024);
    }
}

TEST(File, ATextThatFindsNoMemoryIsNotRead)
{
    struct Exhausted : VectorFile {
        unsigned int read(void *buffer, unsigned int size) override
        {
            return reads == 0 ? VectorFile::read(buffer, size) : throw std::bad_alloc();
        }
    };
    for (unsigned int const length : {20u, 5'000u}) {
        Exhausted file;
        file.write_string(String(length, 'x'));
        file.seek(0);
        String text = "kept";
        EXPECT_FALSE(file.read_string(text)) << length;
        EXPECT_EQ(text, "kept");
    }
}

TEST(File, ATextIsReadFromAStreamThatHoldsMoreThanItsSize)
{
    struct Window : cFileCached {
        Window() : cFileCached(std::make_unique<VectorFile>().release(), 1 << 20, 0) {}
        eFileClass getType() const override { return FILECLASS_DISK; }
    } file;
    String const text(200'000, 'q');
    file.write_string(text);
    ASSERT_EQ(file.size(), 0u) << "everything still waits in the window";
    file.seek(0);
    String back;
    EXPECT_TRUE(file.read_string(back));
    EXPECT_EQ(back, text);
}

TEST(File, AnAsynchronousTransferIsDoneWhenTheCallReturns)
{
    VectorFile file("abc");
    char buffer[8] = {};
    unsigned int told = 99;
    auto const note = [](unsigned int count, void *user) { *static_cast<unsigned int *>(user) = count; };
    EXPECT_TRUE(file.cFile::async_read(buffer, 8, note, &told));
    EXPECT_EQ(told, 3u);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_TRUE(file.async_write("de", 2, note, &told));
    EXPECT_EQ(told, 2u);
    EXPECT_EQ(file.content(), "abcde");
}

TEST(File, OperationsStandInTheirOrder)
{
    using Read = unsigned int (cFile::*)(void *, unsigned int);
    EXPECT_TRUE(standInOrder(2, // behind the two entries of the destructor
                             static_cast<Read>(&cFile::read), &cFile::write, &cFile::seek, &cFile::size,
                             &cFile::tell, &cFile::reserve, &cFile::getType, &cFile::async_read,
                             &cFile::async_write));
    std::size_t const next = 11;
    EXPECT_TRUE(
        standInOrder(next, &cFileMem::close,
                     static_cast<unsigned int (cFileMem::*)(cFileMem &, unsigned int)>(&cFileMem::read),
                     static_cast<unsigned int (cFileMem::*)(cFileMem &)>(&cFileMem::write),
                     static_cast<unsigned char const *(cFileMem::*)() const>(&cFileMem::getData),
                     static_cast<unsigned char *(cFileMem::*)()>(&cFileMem::getData)));
    EXPECT_TRUE(
        standInOrder(next, static_cast<unsigned int (cFileDisk::*)(cFileMem const &)>(&cFileDisk::write)));
    using AsyncRead = bool (cFileCached::*)(void *, unsigned int, unsigned int, cFile::AsyncCallback, void *);
    EXPECT_TRUE(standInOrder(next, static_cast<AsyncRead>(&cFileCached::async_read)));
    auto const bitsStand = []<class Bits>(Bits const *) {
        return standInOrder(next, &Bits::write_bit, &Bits::read_bit, &Bits::write_bits, &Bits::read_bits,
                            &Bits::getData, &Bits::getNumBytes);
    };
    EXPECT_TRUE(bitsStand(static_cast<cFileBit const *>(nullptr)));
    EXPECT_TRUE(bitsStand(static_cast<cFileBitOld const *>(nullptr)));
}

} // namespace
} // namespace Qel
