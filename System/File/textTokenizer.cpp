#include "System/File/textTokenizer.h"

#include "System/File/fileMem.h"
#include "System/File/fileTempMem.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <typeinfo>

namespace Qel {

namespace {

enum CharClass : std::uint8_t {
    classSpace = 1,
    classDigit = 2,
    className = 4, // what an identifier goes on with
    classNameStart = 8,
};

struct CharFacts {
    std::array<std::uint8_t, 256> classes{};
    std::array<std::uint8_t, 256> types{}; // token_type of the character by itself
};

constexpr CharFacts charFacts()
{
    CharFacts facts;
    facts.types.fill(TOK_END);
    for (char const c : {'\t', '\n', '\v', '\f', '\r', ' '}) {
        facts.classes[static_cast<unsigned char>(c)] = classSpace;
    }
    for (unsigned c = '0'; c <= '9'; ++c) {
        facts.classes[c] = classDigit | className;
        facts.types[c] = TOK_INTEGER;
    }
    for (unsigned c = 'a'; c <= 'z'; ++c) {
        for (unsigned const letter : {c, c - 'a' + 'A'}) {
            facts.classes[letter] = className | classNameStart;
            facts.types[letter] = TOK_IDENTIFIER;
        }
    }
    facts.classes['_'] = className | classNameStart;
    facts.types['_'] = TOK_IDENTIFIER;
    facts.classes['\''] = className;
    facts.types['"'] = TOK_STRING;

    constexpr char punctuation[] = "+-*^!@#$%&|=><?,()[]{}\\/:;~.";
    std::uint8_t type = TOK_PLUS;
    for (char const *c = punctuation; *c != 0; ++c) {
        facts.types[static_cast<unsigned char>(*c)] = type++;
    }
    return facts;
}

constexpr CharFacts facts = charFacts();
static_assert(facts.types['+'] == TOK_PLUS && facts.types['.'] == TOK_DOT);

bool is(unsigned char c, CharClass wanted)
{
    return (facts.classes[c] & wanted) != 0;
}

cFileMem *asMemory(cFile &file)
{
    // A class derived from these may read in a way of its own.
    bool const plain = typeid(file) == typeid(cFileMem) || typeid(file) == typeid(cFileTempMem);
    return plain ? static_cast<cFileMem *>(&file) : nullptr;
}

} // namespace

/// The characters from the stream's position on, for the time of one operation: all that is left of a stream
/// in memory, a block of any other. At its end the stream is put behind the last character taken.
class TextTokenizer::Cursor {
public:
    static constexpr unsigned int blockSize = 256;

    Cursor(TextTokenizer const &tokens, unsigned int block = blockSize)
        : m_file(*tokens.m_file), m_memory(tokens.m_memory)
    {
        if (m_memory != nullptr) {
            m_start = m_memory->cFileMem::getData();
            std::uint32_t const size = m_memory->cFileMem::size();
            std::uint32_t const position = std::min(m_memory->cFileMem::tell(), size);
            at = from = m_start + position;
            end = m_start + size;
            m_block = position;
        } else {
            // The positions of bit streams count bits, and may lie inside a byte.
            eFileClass const type = m_file.getType();
            m_bits = type == FILECLASS_BIT || type == FILECLASS_BITOLD;
            m_block = m_bits ? 1 : block;
        }
    }

    ~Cursor()
    {
        if (m_memory != nullptr) {
            auto const position = static_cast<std::uint32_t>(at - m_start);
            if (position != m_block) {
                m_memory->cFileMem::seek(position);
            }
        } else if (at != end) {
            m_file.seek(m_position + static_cast<std::uint32_t>(at - m_start));
        }
    }

    Cursor(Cursor const &) = delete;
    Cursor &operator=(Cursor const &) = delete;

    bool atEnd() { return at == end && !refill(); }

    // What a token takes lies between `from` and `at`, and goes into its text when the window moves on and
    // when the token is complete.
    void beginText() { from = at - 1; }
    void endText(String &text)
    {
        text.append(reinterpret_cast<char const *>(from), static_cast<std::size_t>(at - from));
        from = at;
    }
    bool hasMore(String &text)
    {
        if (at != end) {
            return true;
        }
        if (m_memory != nullptr) {
            return false;
        }
        endText(text);
        bool const more = refill();
        from = at;
        return more;
    }

    unsigned char const *at = nullptr;
    unsigned char const *end = nullptr;
    unsigned char const *from = nullptr;

private:
    bool refill() { return m_memory == nullptr && readBlock(); }

    bool readBlock()
    {
        std::uint32_t const position = m_file.tell();
        // Behind its end a bit stream goes on with zeros.
        if (m_bits && position >= m_file.size()) {
            return false;
        }
        std::uint32_t const count = std::min(m_file.read(m_buffer, m_block), m_block);
        if (count == 0) {
            return false;
        }
        m_position = position;
        at = m_start = m_buffer;
        end = at + count;
        return true;
    }

    cFile &m_file;
    cFileMem *m_memory;
    unsigned char const *m_start = nullptr; // of the window
    std::uint32_t m_position = 0;           // of the window in the stream, which is not in memory
    std::uint32_t m_block = 0; // of a stream in memory the position it came with, else bytes to read
    bool m_bits = false;
    unsigned char m_buffer[blockSize];
};

TextTokenizer::TextTokenizer(cFile &file) : m_file(&file), m_memory(asMemory(file))
{
    Cursor cursor(*this);
    fillNextToken(cursor);
}

inline void TextTokenizer::fillNextToken(Cursor &cursor)
{
    m_next.m_type = TOK_NONE;
    m_next.m_text.clear();
    if (cursor.atEnd()) {
        m_next.m_type = TOK_END;
        return;
    }

    unsigned char c = *cursor.at++;
    bool blanks = false;
    while (is(c, classSpace)) {
        m_line += c == '\n';
        if (cursor.atEnd()) {
            break;
        }
        c = *cursor.at++;
        blanks = true;
    }
    m_precededByWhitespace = blanks;

    cursor.beginText();
    auto const type = static_cast<token_type>(facts.types[c]);
    switch (type) {
    case TOK_IDENTIFIER:
        readIdentifier(cursor);
        return;
    case TOK_INTEGER:
        readNumber(cursor, false);
        return;
    case TOK_STRING:
        readString(cursor);
        return;
    case TOK_MINUS:
    case TOK_DOT:
        if (cursor.hasMore(m_next.m_text) && is(*cursor.at, classDigit)) {
            readNumber(cursor, type == TOK_DOT);
            return;
        }
        break;
    default:
        break;
    }
    cursor.endText(m_next.m_text);
    m_next.m_type = type;
}

inline void TextTokenizer::readIdentifier(Cursor &cursor)
{
    do {
        unsigned char const *at = cursor.at;
        while (at != cursor.end && is(*at, className)) {
            ++at;
        }
        cursor.at = at;
    } while (cursor.at == cursor.end && cursor.hasMore(m_next.m_text));
    cursor.endText(m_next.m_text);
    m_next.m_type = TOK_IDENTIFIER;
}

void TextTokenizer::readNumber(Cursor &cursor, bool seenDot)
{
    bool dot = seenDot;
    bool exponent = false;
    bool minus = false;
    for (; cursor.hasMore(m_next.m_text); ++cursor.at) {
        unsigned char const c = *cursor.at;
        if (is(c, classDigit)) {
            continue;
        }
        if (c == '.' && !dot) {
            dot = true;
        } else if (c == 'e' && !exponent) {
            exponent = true;
        } else if (c == '-' && exponent && !minus) {
            minus = true;
        } else {
            break;
        }
    }
    cursor.endText(m_next.m_text);
    m_next.m_type = dot || exponent ? TOK_FLOAT : TOK_INTEGER;
}

void TextTokenizer::readString(Cursor &cursor)
{
    while (cursor.hasMore(m_next.m_text)) {
        auto const left = static_cast<std::size_t>(cursor.end - cursor.at);
        void const *const quote = std::memchr(cursor.at, '"', left);
        if (quote != nullptr) {
            cursor.at = static_cast<unsigned char const *>(quote) + 1;
            break;
        }
        cursor.at = cursor.end;
    }
    cursor.endText(m_next.m_text);
    m_next.m_type = TOK_STRING;
}

bool TextTokenizer::streamPeekNextToken(unsigned char &c) const
{
    Cursor cursor(*this, 1);
    if (cursor.atEnd()) {
        return false;
    }
    c = *cursor.at;
    return true;
}

inline TextToken TextTokenizer::takeToken(Cursor &cursor)
{
    TextToken token(std::move(m_next));
    fillNextToken(cursor);
    return token;
}

TextToken TextTokenizer::getNextToken()
{
    Cursor cursor(*this);
    TextToken token = takeToken(cursor);
    if (token.m_type == TOK_SLASH) {
        skipComments(cursor, token);
    }
    return token;
}

void TextTokenizer::skipComments(Cursor &cursor, TextToken &result)
{
    while (result.m_type == TOK_SLASH) {
        if (m_skipOneLine && m_next.m_type == TOK_SLASH) {
            while (!cursor.atEnd()) {
                unsigned char const c = *cursor.at++;
                if (c == '\n' || c == '\r') {
                    break;
                }
            }
        } else if (m_skipBlock && m_next.m_type == TOK_STAR) {
            do {
                result = takeToken(cursor);
            } while (!(result.m_type == TOK_STAR && m_next.m_type == TOK_SLASH) && !nextTokenIsEnd());
        } else {
            return;
        }
        fillNextToken(cursor);
        result = takeToken(cursor);
    }
}

bool TextTokenizer::nextTokenIsFollowedByWhitespace() const
{
    unsigned char c = 0;
    return !streamPeekNextToken(c) || is(c, classSpace);
}

bool TextTokenizer::nextTokenIsLast() const
{
    unsigned char c = 0;
    return !streamPeekNextToken(c);
}

void TextTokenizer::readUntilNextWhitespace()
{
    if (m_precededByWhitespace) {
        return;
    }
    m_next.m_type = TOK_NONE;
    Cursor cursor(*this);
    bool quoted = false;
    for (; cursor.hasMore(m_next.m_text); ++cursor.at) {
        unsigned char const c = *cursor.at;
        if (c == '"') {
            quoted = !quoted;
        } else if (!quoted && is(c, classSpace)) {
            cursor.endText(m_next.m_text);
            ++cursor.at;
            return;
        }
    }
    cursor.endText(m_next.m_text);
}

void TextTokenizer::readUntilToken(TextToken const &token)
{
    bool const byTypeAlone = token.m_text.empty() && token.m_type != TOK_END;
    for (;;) {
        TextToken const taken = getNextToken();
        if (taken.m_type == token.m_type && (byTypeAlone || taken.m_text == token.m_text)) {
            return;
        }
        if (taken.m_type == TOK_END && taken.m_text.empty()) {
            return;
        }
    }
}

void TextTokenizer::readUntilEol()
{
    Cursor cursor(*this);
    while (!cursor.atEnd()) {
        unsigned char const c = *cursor.at++;
        if (c == '\n') {
            ++m_line;
            return;
        }
        if (!is(c, classSpace)) {
            return;
        }
    }
}

void TextTokenizer::readUntilEnd()
{
    m_next.m_type = TOK_NONE;
    Cursor cursor(*this);
    while (cursor.hasMore(m_next.m_text)) {
        cursor.at = cursor.end;
    }
    cursor.endText(m_next.m_text);
}

} // namespace Qel
