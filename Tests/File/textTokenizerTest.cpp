#include "System/File/textTokenizer.h"

#include "System/File/fileBit.h"
#include "System/File/fileDisk.h"
#include "System/File/fileMem.h"
#include "System/File/fileTempMem.h"
#include "Tests/Tools/tempFolder.h"
#include "Tests/Tools/vectorFile.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace Qel {

// For the failure texts of the tests.
static std::ostream &operator<<(std::ostream &out, token_type type)
{
    return out << static_cast<unsigned>(type);
}

namespace {

using Tokens = std::vector<std::pair<token_type, std::string>>;

std::unique_ptr<cFileMem> memory(std::string const &text)
{
    return std::make_unique<cFileMem>(static_cast<unsigned int>(text.size()),
                                      reinterpret_cast<unsigned char const *>(text.data()));
}

std::string exactText(TextToken const &token)
{
    return {token.getExactText().data(), token.getExactText().size()};
}

Tokens allTokens(cFile &file, bool oneLine = false, bool block = false)
{
    TextTokenizer tokens(file);
    tokens.skipComment_oneLine(oneLine);
    tokens.skipComment_block(block);
    Tokens all;
    // More than any of the texts here has: a tokenizer that never ends is a failure and no hang.
    for (TextToken token; all.size() < 5000; all.emplace_back(token.getType(), exactText(token))) {
        token = tokens.getNextToken();
        if (token.isEnd()) {
            break;
        }
    }
    return all;
}

TEST(TextTokenizer, TellsTokensApart)
{
    struct {
        std::string text;
        Tokens tokens;
    } const rows[] = {
        {"", {}},
        {"a b", {{TOK_IDENTIFIER, "a"}, {TOK_IDENTIFIER, "b"}}},
        {"_x9 it's", {{TOK_IDENTIFIER, "_x9"}, {TOK_IDENTIFIER, "it's"}}},
        {"'", {{TOK_END, "'"}}},
        {"1.5e-3", {{TOK_FLOAT, "1.5e-3"}}},
        {"1e5", {{TOK_FLOAT, "1e5"}}},
        {"1E5", {{TOK_INTEGER, "1"}, {TOK_IDENTIFIER, "E5"}}},
        {"1.2.3", {{TOK_FLOAT, "1.2"}, {TOK_FLOAT, ".3"}}},
        {"1e5e", {{TOK_FLOAT, "1e5"}, {TOK_IDENTIFIER, "e"}}},
        {"1e+5", {{TOK_FLOAT, "1e"}, {TOK_PLUS, "+"}, {TOK_INTEGER, "5"}}},
        {"1e5-2-3", {{TOK_FLOAT, "1e5-2"}, {TOK_INTEGER, "-3"}}},
        {"1e.5", {{TOK_FLOAT, "1e.5"}}},
        {"1-2", {{TOK_INTEGER, "1"}, {TOK_INTEGER, "-2"}}},
        {"- 5 -x", {{TOK_MINUS, "-"}, {TOK_INTEGER, "5"}, {TOK_MINUS, "-"}, {TOK_IDENTIFIER, "x"}}},
        {"-.5", {{TOK_MINUS, "-"}, {TOK_FLOAT, ".5"}}},
        {".5 .x .", {{TOK_FLOAT, ".5"}, {TOK_DOT, "."}, {TOK_IDENTIFIER, "x"}, {TOK_DOT, "."}}},
        {"12", {{TOK_INTEGER, "12"}}},
        {"12-", {{TOK_INTEGER, "12"}, {TOK_MINUS, "-"}}},
        {"\"a \\\"b", {{TOK_STRING, "\"a \\\""}, {TOK_IDENTIFIER, "b"}}},
        {"\"\"", {{TOK_STRING, "\"\""}}},
        {"x \"cut", {{TOK_IDENTIFIER, "x"}, {TOK_STRING, "\"cut"}}},
        {"\"", {{TOK_STRING, "\""}}},
        {std::string("a\0b", 3),
         {{TOK_IDENTIFIER, "a"}, {TOK_END, std::string(1, '\0')}, {TOK_IDENTIFIER, "b"}}},
        {"\xC3\xA4", {{TOK_END, "\xC3"}, {TOK_END, "\xA4"}}},
        {"a \n", {{TOK_IDENTIFIER, "a"}}},
        {"a/b", {{TOK_IDENTIFIER, "a"}, {TOK_SLASH, "/"}, {TOK_IDENTIFIER, "b"}}},
    };

    for (auto const &row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(allTokens(*memory(row.text)), row.tokens);
        test::VectorFile other(row.text);
        EXPECT_EQ(allTokens(other), row.tokens);
    }

    std::string const punctuation = "+-*^!@#$%&|=><?,()[]{}\\/:;~.";
    Tokens expected;
    for (std::size_t i = 0; i < punctuation.size(); ++i) {
        expected.emplace_back(static_cast<token_type>(2 + i), punctuation.substr(i, 1));
    }
    EXPECT_EQ(allTokens(*memory(punctuation)), expected);
}

TEST(TextTokenizer, PassesOverComments)
{
    struct {
        char const *text;
        bool oneLine;
        bool block;
        Tokens tokens;
    } const rows[] = {
        {"a // b\nc", true, false, {{TOK_IDENTIFIER, "a"}, {TOK_IDENTIFIER, "c"}}},
        {"// b\r\nc", true, false, {{TOK_IDENTIFIER, "c"}}},
        {"// b\n// c\n/d", true, true, {{TOK_SLASH, "/"}, {TOK_IDENTIFIER, "d"}}},
        {"a // b", true, false, {{TOK_IDENTIFIER, "a"}}},
        {"a //", true, false, {{TOK_IDENTIFIER, "a"}}},
        {"a /* b\n * c **/ d", false, true, {{TOK_IDENTIFIER, "a"}, {TOK_IDENTIFIER, "d"}}},
        {"/*/ a", false, true, {{TOK_IDENTIFIER, "a"}}},
        {"/* a *//* b */ // c\nd", true, true, {{TOK_IDENTIFIER, "d"}}},
        {"/* \" */ \" */ a", false, true, {{TOK_IDENTIFIER, "a"}}}, // the quotes are a string, as in text
        {"a /* b", false, true, {{TOK_IDENTIFIER, "a"}}},           // ends with the stream
        {"a /* \xC3 * ", false, true, {{TOK_IDENTIFIER, "a"}}},
        {"a /*", false, true, {{TOK_IDENTIFIER, "a"}}},
        {"/* a", true, false, {{TOK_SLASH, "/"}, {TOK_STAR, "*"}, {TOK_IDENTIFIER, "a"}}},
        {"// a", false, true, {{TOK_SLASH, "/"}, {TOK_SLASH, "/"}, {TOK_IDENTIFIER, "a"}}},
        {"1 / 2", true, true, {{TOK_INTEGER, "1"}, {TOK_SLASH, "/"}, {TOK_INTEGER, "2"}}},
        {"/", true, true, {{TOK_SLASH, "/"}}},
    };

    for (auto const &row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(allTokens(*memory(row.text), row.oneLine, row.block), row.tokens);
    }
}

// Whatever the stream is, the look-ahead is one token: everything that shares the stream depends on it.
TEST(TextTokenizer, TheStreamStandsBehindTheNextTokenAfterEachCall)
{
    std::string const text = "ab 12.5\"s t\"x .y\n  -7 w \"open";
    // The position behind each token of it, counted by hand.
    unsigned const ends[] = {2, 7, 12, 13, 15, 16, 21, 23, 29};

    test::TempFolder folder;
    test::writeFile("text", text);
    test::writeFile("empty", "");
    cFileDisk disk("text", OPEN_READ);
    cFileTempMem scratch;
    scratch.write(text.data(), static_cast<unsigned int>(text.size()));
    scratch.seek(0);
    auto const plain = memory(text);
    test::VectorFile slow(text);
    slow.maxRead = 2;
    cFileBit bits;
    bits.write(text.data(), static_cast<unsigned int>(text.size()));
    bits.seek(0);

    struct {
        char const *what;
        cFile *file;
        unsigned unit;
    } const rows[] = {
        {"memory", plain.get(), 1}, {"scratch", &scratch, 1}, {"disk", &disk, 1},
        {"short reads", &slow, 1},  {"bits", &bits, 8},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        TextTokenizer tokens(*row.file);
        for (unsigned const end : ends) {
            EXPECT_EQ(row.file->tell(), end * row.unit);
            tokens.nextTokenIsFollowedByWhitespace();
            EXPECT_EQ(tokens.nextTokenIsLast(), end == text.size());
            EXPECT_EQ(row.file->tell(), end * row.unit);
            tokens.getNextToken();
        }
        EXPECT_TRUE(tokens.peekAtNextToken().isEnd());
    }
}

TEST(TextTokenizer, CountsLinesAndSeesWhiteSpace)
{
    auto const file = memory("a(b  c\n\n\nd \"x\ny\" // e\nf");
    TextTokenizer tokens(*file);
    tokens.skipComment_oneLine(true);

    EXPECT_FALSE(tokens.nextTokenIsFollowedByWhitespace());
    tokens.getNextToken();
    EXPECT_TRUE(tokens.peekAtNextToken().isExactText("("));
    EXPECT_FALSE(tokens.nextTokenPreceededByWhitespace());
    tokens.getNextToken();
    EXPECT_TRUE(tokens.nextTokenIsFollowedByWhitespace());
    tokens.getNextToken();
    EXPECT_TRUE(tokens.nextTokenPreceededByWhitespace());
    EXPECT_EQ(tokens.getLine(), 0u);
    tokens.getNextToken();
    EXPECT_EQ(tokens.getLine(), 3u);
    tokens.readUntilToken(TextToken(TOK_STRING));
    EXPECT_EQ(tokens.getLine(), 3u) << "a newline in a string does not count";
    EXPECT_TRUE(tokens.getNextToken().isExactText("f"));
    EXPECT_EQ(tokens.getLine(), 3u) << "nor does the one that ends a comment";
    EXPECT_TRUE(tokens.nextTokenIsLast());
    EXPECT_TRUE(tokens.nextTokenIsFollowedByWhitespace());
}

TEST(TextTokenizer, TheWhiteSpaceAtTheEndIsALastTokenOfItsOwn)
{
    struct {
        char const *text;
        char const *last;
        bool preceded;
        unsigned line;
    } const rows[] = {{"", "", false, 0}, {"\n", "\n", false, 1}, {"\n \n\t", "\t", true, 2}};
    for (auto const &row : rows) {
        SCOPED_TRACE(row.last);
        test::VectorFile other(row.text);
        auto const inMemory = memory(row.text);
        for (cFile *const file : {static_cast<cFile *>(inMemory.get()), static_cast<cFile *>(&other)}) {
            TextTokenizer tokens(*file);
            EXPECT_TRUE(tokens.peekAtNextToken().isEnd());
            EXPECT_TRUE(tokens.nextTokenIsLast());
            EXPECT_EQ(tokens.peekAtNextToken().getType(), TOK_END);
            EXPECT_EQ(exactText(tokens.peekAtNextToken()), row.last);
            EXPECT_EQ(tokens.nextTokenPreceededByWhitespace(), row.preceded);
            EXPECT_EQ(tokens.getLine(), row.line);
            tokens.getNextToken();
            EXPECT_EQ(exactText(tokens.getNextToken()), "");
        }
    }
}

TEST(TextTokenizer, ReadsRawTextBehindTheNextToken)
{
    auto const words = memory("media/a\"b c\"d.tga\nnext rest of it ");
    TextTokenizer tokens(*words);
    tokens.readUntilNextWhitespace();
    TextToken const word = tokens.getNextToken();
    EXPECT_EQ(word.getType(), TOK_NONE);
    EXPECT_EQ(exactText(word), "media/a\"b c\"d.tga");
    EXPECT_EQ(tokens.getLine(), 0u);
    EXPECT_FALSE(tokens.nextTokenPreceededByWhitespace()) << "it went with the word";
    tokens.getNextToken();
    tokens.readUntilNextWhitespace();
    EXPECT_EQ(exactText(tokens.peekAtNextToken()), "rest") << "white space before it: as it was";
    tokens.readUntilEnd();
    EXPECT_EQ(exactText(tokens.peekAtNextToken()), "rest of it ");
    tokens.getNextToken();
    EXPECT_TRUE(tokens.peekAtNextToken().isEnd());

    auto const lines = memory("a  \n b x\nc");
    TextTokenizer rows(*lines);
    rows.readUntilEol();
    EXPECT_EQ(lines->tell(), 4u);
    EXPECT_EQ(rows.getLine(), 1u);
    rows.readUntilEol();
    EXPECT_EQ(lines->tell(), 6u) << "stops with what is no white space";
    EXPECT_EQ(rows.getLine(), 1u);
}

TEST(TextTokenizer, FindsTheTokenThatIsAskedForOrTheEnd)
{
    std::string const text = "system smoke ' 5 { emitter } end";
    auto const file = memory(text);
    TextTokenizer tokens(*file);
    tokens.readUntilToken(TextToken(TOK_LBRACE));
    EXPECT_TRUE(tokens.peekAtNextToken().isExactText("emitter"));
    auto const name = memory("end");
    TextTokenizer named(*name);
    tokens.readUntilToken(named.peekAtNextToken());
    EXPECT_TRUE(tokens.peekAtNextToken().isEnd());
    tokens.readUntilToken(TextToken(TOK_LBRACE));
    EXPECT_TRUE(tokens.peekAtNextToken().isEnd());

    file->seek(0);
    TextTokenizer again(*file);
    again.readUntilToken(TextToken(TOK_END));
    EXPECT_TRUE(again.peekAtNextToken().isEnd()) << "not at the apostrophe";
}

TEST(TextToken, ConvertsItsText)
{
    struct {
        char const *text;
        int decimal;
        int hex;
        float real;
        char const *unquoted;
    } const rows[] = {
        {"-5", -5, -5, -5.0f, "-5"},
        {"70000", 70000, 0x70000, 70000.0f, "70000"},
        {"99999999999", 2147483647, -1, 99999999999.0f, "99999999999"},
        {"1.5e-3", 1, 1, 0.0015f, "1.5e-3"},
        {"ff", 0, 255, 0.0f, "ff"},
        {"\"ff\"", 0, 255, 0.0f, "ff"},
        {"\"0x1F\"", 0, 31, 0.0f, "0x1F"},
        {"\"\"", 0, 0, 0.0f, ""},
        {"\"cut", 0, 0xC, 0.0f, "cut"},
        {"\"", 0, 0, 0.0f, ""},
        {"zz", 0, 0, 0.0f, "zz"},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.text);
        TextToken const token = TextTokenizer(*memory(row.text)).getNextToken();
        EXPECT_EQ(token.convertToInt32(), row.decimal);
        EXPECT_EQ(token.convertToU16(), static_cast<unsigned short>(row.decimal));
        EXPECT_EQ(token.convertHexToInt32(), row.hex);
        EXPECT_EQ(token.convertToFloat32(), row.real);
        EXPECT_STREQ(token.convertToString().c_str(), row.unquoted);
    }
    EXPECT_TRUE(TextToken(TOK_COMMA).isExactText(nullptr));
    EXPECT_EQ(TextToken().getType(), TOK_NONE);
}

// The bytes of a stream in memory are taken in runs, of others in blocks; what comes out must not show it.
TEST(TextTokenizer, GivesTheSameTokensFromAnyStream)
{
    std::mt19937 random(7);
    std::string const characters = "aZ_'019.eE-+\"/*{} \n\r\t\xE4;";
    for (int round = 0; round < 400; ++round) {
        std::string text;
        for (auto length = random() % 900; length > 0; --length) {
            char const c = characters[random() % characters.size()];
            text.append(random() % 16 == 0 ? random() % 300 : 1, c);
        }
        bool const oneLine = random() % 2 == 0;
        bool const block = random() % 2 == 0;
        test::VectorFile other(text);
        other.maxRead = 1 + random() % 300;
        EXPECT_EQ(allTokens(*memory(text), oneLine, block), allTokens(other, oneLine, block)) << text;
    }
}

TEST(TextTokenizer, TakesLongTokensInLinearTime)
{
    std::string const tail = std::string(20'000'000, 'x');
    for (char const *start : {"x", "\"", "1", "/*"}) {
        SCOPED_TRACE(start);
        auto const file = memory(start + tail);
        TextTokenizer tokens(*file);
        tokens.skipComment_block(true);
        unsigned long long length = 0;
        for (TextToken token = tokens.getNextToken(); !token.isEnd(); token = tokens.getNextToken()) {
            length += token.getLength();
        }
        EXPECT_EQ(length, start[0] == '/' ? 0 : tail.size() + 1);
    }
}

} // namespace
} // namespace Qel
