#include "System/File/textTokenizer.h"

#include "System/File/fileMem.h"
#include "System/File/fileTempMem.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <typeinfo>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// One token is so little work that a call for each piece of it would show, and what is inlined can keep the
// place in the text in registers.
#define QEL_INLINE [[gnu::always_inline]] inline

namespace Qel {

namespace {

enum CharClass : std::uint8_t {
    classSpace = 1,
    classDigit = 2,
    className = 4, // what an identifier goes on with
    classSign = 8, // what a digit behind it makes a number
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
        facts.types[static_cast<unsigned char>(c)] = TOK_NONE;
    }
    for (unsigned c = '0'; c <= '9'; ++c) {
        facts.classes[c] = classDigit | className;
        facts.types[c] = TOK_INTEGER;
    }
    for (unsigned c = 'a'; c <= 'z'; ++c) {
        for (unsigned const letter : {c, c - 'a' + 'A'}) {
            facts.classes[letter] = className;
            facts.types[letter] = TOK_IDENTIFIER;
        }
    }
    facts.classes['_'] = className;
    facts.types['_'] = TOK_IDENTIFIER;
    facts.classes['\''] = className;
    facts.types['"'] = TOK_STRING;

    facts.classes['-'] = facts.classes['.'] = classSign;
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

#if defined(__SSE2__)

/// Sixteen characters. Each question gives a bit for each of them, the first one lowest.
class Chars16 {
public:
    static constexpr std::ptrdiff_t size = 16;

    explicit Chars16(unsigned char const *at)
        : m_chars(_mm_loadu_si128(reinterpret_cast<__m128i const *>(at)))
    {
    }

    unsigned notDigits() const { return inverse(between(m_chars, '0', '9')); }
    unsigned notNames() const
    {
        __m128i const lower = _mm_or_si128(m_chars, _mm_set1_epi8('a' - 'A'));
        return inverse(_mm_or_si128(_mm_or_si128(between(lower, 'a', 'z'), between(m_chars, '0', '9')),
                                    _mm_or_si128(equal('_'), equal('\''))));
    }

private:
    __m128i equal(char c) const { return _mm_cmpeq_epi8(m_chars, _mm_set1_epi8(c)); }
    static __m128i between(__m128i chars, char low, char high)
    {
        __m128i const above = _mm_sub_epi8(chars, _mm_set1_epi8(low));
        return _mm_cmpeq_epi8(_mm_min_epu8(above, _mm_set1_epi8(static_cast<char>(high - low))), above);
    }
    static unsigned inverse(__m128i bytes)
    {
        return static_cast<unsigned>(_mm_movemask_epi8(bytes)) ^ 0xFFFFu;
    }

    __m128i m_chars;
};

#endif

// The end of a name. Sixteen characters at once cost less than not foreseeing which is the last.
QEL_INLINE unsigned char const *endOfName(unsigned char const *at, unsigned char const *end)
{
#if defined(__SSE2__)
    for (; end - at >= Chars16::size; at += Chars16::size) {
        if (unsigned const others = Chars16(at).notNames(); others != 0) {
            return at + std::countr_zero(others);
        }
    }
#endif
    while (at != end && is(*at, className)) {
        ++at;
    }
    return at;
}

cFileMem *asMemory(cFile &file)
{
    // A class derived from these may read in a way of its own.
    bool const plain = typeid(file) == typeid(cFileMem) || typeid(file) == typeid(cFileTempMem);
    return plain ? static_cast<cFileMem *>(&file) : nullptr;
}

// Sets the position of a stream in memory to one inside it, without the call that seek() is.
struct Position : cFileMem {
    static void set(cFileMem &file, std::uint32_t position) { file.*(&Position::m_position) = position; }
};

} // namespace

// A source holds the characters from the stream's position on for the time of one operation: those between
// `at` and `end`, and in a stream that is not in memory what refill() brings. At its end the stream is put
// behind the last character taken. What a token takes lies between `from` and `at`.

/// All that is left of a stream in memory.
class TextTokenizer::MemorySource {
public:
    explicit MemorySource(cFileMem &file)
        : m_file(file), m_start(file.cFileMem::getData()), end(m_start + file.cFileMem::size())
    {
        // A stream that was made shorter may stand behind its end.
        m_came = std::min(file.cFileMem::tell(), file.cFileMem::size());
        at = from = m_start + m_came;
    }
    QEL_INLINE ~MemorySource()
    {
        if (auto const position = static_cast<std::uint32_t>(at - m_start); position != m_came) {
            Position::set(m_file, position);
        }
    }

    MemorySource(MemorySource const &) = delete;
    MemorySource &operator=(MemorySource const &) = delete;

    bool atEnd() const { return at == end; }
    bool hasMore(String &) const { return at != end; }
    void beginToken() { from = at - 1; }
    QEL_INLINE void endToken(TextTokenizer &tokens) const
    {
        std::size_t const size = textSize();
        bool const isShort =
            size < sizeof tokens.m_short && static_cast<std::size_t>(end - from) >= sizeof tokens.m_short;
        if (isShort) {
            std::memcpy(tokens.m_short, from, sizeof tokens.m_short);
            tokens.m_shortSize = static_cast<std::uint8_t>(size);
        } else {
            tokens.setLongText(reinterpret_cast<char const *>(from), size);
        }
    }
    void endText(String &text) const { text.append(reinterpret_cast<char const *>(from), textSize()); }

private:
    std::size_t textSize() const { return static_cast<std::size_t>(at - from); }

    cFileMem &m_file;
    unsigned char const *m_start;
    std::uint32_t m_came;

public:
    unsigned char const *at;
    unsigned char const *end;
    unsigned char const *from;
};

/// Blocks of any other stream.
class TextTokenizer::StreamSource {
public:
    static constexpr unsigned int blockSize = 256;

    explicit StreamSource(cFile &file, unsigned int block = blockSize) : m_file(file), m_block(block)
    {
        // The positions of bit streams count bits, and may lie inside a byte.
        eFileClass const type = file.getType();
        m_bits = type == FILECLASS_BIT || type == FILECLASS_BITOLD;
        if (m_bits) {
            m_block = 1;
        }
    }
    ~StreamSource()
    {
        if (at != end) {
            m_file.seek(m_position + static_cast<std::uint32_t>(at - m_buffer));
        }
    }

    StreamSource(StreamSource const &) = delete;
    StreamSource &operator=(StreamSource const &) = delete;

    bool atEnd() { return at == end && !refill(); }
    bool hasMore(String &text)
    {
        if (at != end) {
            return true;
        }
        endText(text);
        bool const more = refill();
        from = at;
        return more;
    }
    void beginToken() { from = at - 1; }
    void endToken(TextTokenizer &tokens) { endText(tokens.m_next.m_text); }
    void endText(String &text)
    {
        text.append(reinterpret_cast<char const *>(from), static_cast<std::size_t>(at - from));
        from = at;
    }

    unsigned char const *at = m_buffer;
    unsigned char const *end = m_buffer;
    unsigned char const *from = m_buffer;

private:
    bool refill()
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
        at = m_buffer;
        end = at + count;
        return true;
    }

    cFile &m_file;
    std::uint32_t m_position = 0; // of the block in the stream
    std::uint32_t m_block;        // bytes to read at a time
    bool m_bits;
    unsigned char m_buffer[blockSize];
};

template <class Work>
QEL_INLINE auto TextTokenizer::withSource(Work work) const
{
    if (m_memory != nullptr) {
        MemorySource source(*m_memory);
        return work(source);
    }
    StreamSource source(*m_file);
    return work(source);
}

template <class Source>
QEL_INLINE void TextTokenizer::fillNextToken(Source &source)
{
    m_shortSize = notShort;
    if (source.atEnd()) {
        m_next.m_type = TOK_END;
        return;
    }

    unsigned char c = *source.at++;
    auto type = static_cast<token_type>(facts.types[c]);
    bool blanks = false;
    if (type == TOK_NONE) {
        std::uint32_t lines = 0;
        do {
            lines += c == '\n' ? 1 : 0;
            if (source.atEnd()) {
                type = TOK_END;
                break;
            }
            blanks = true;
            c = *source.at++;
            type = static_cast<token_type>(facts.types[c]);
        } while (type == TOK_NONE);
        m_line += lines;
    }
    m_precededByWhitespace = blanks;

    source.beginToken();
    if (type == TOK_IDENTIFIER) {
        readIdentifier(source);
        return;
    }
    // A sign or point is a number's if a digit follows: asked without a branch, since text shows no pattern.
    unsigned const classes = facts.classes[c];
    bool const more =
        source.at != source.end || ((classes & classSign) != 0 && source.hasMore(m_next.m_text));
    unsigned const next = more ? facts.classes[*source.at] : 0u;
    if (((classes | (classes / (classSign / classDigit) & next)) & classDigit) != 0) {
        readNumber(source, c == '.');
        return;
    }
    if (type == TOK_STRING) {
        readString(source);
        return;
    }
    source.endToken(*this);
    m_next.m_type = type;
}

template <class Source>
QEL_INLINE void TextTokenizer::readIdentifier(Source &source)
{
    do {
        source.at = endOfName(source.at, source.end);
    } while (source.at == source.end && source.hasMore(m_next.m_text));
    source.endToken(*this);
    m_next.m_type = TOK_IDENTIFIER;
}

template <class Source>
QEL_INLINE void TextTokenizer::readNumber(Source &source, bool seenDot)
{
    bool dot = seenDot;
#if defined(__SSE2__)
    // Digits, perhaps a point and digits: found without a branch for each.
    if (source.end - source.at >= Chars16::size) {
        unsigned others = Chars16(source.at).notDigits();
        bool const point = others != 0 && source.at[std::countr_zero(others)] == '.' && !seenDot;
        others &= point ? others - 1 : others;
        if (others != 0 && source.at[std::countr_zero(others)] != 'e') {
            source.at += std::countr_zero(others);
            source.endToken(*this);
            m_next.m_type = point || seenDot ? TOK_FLOAT : TOK_INTEGER;
            return;
        }
    }
#endif
    bool exponent = false;
    bool minus = false;
    for (; source.hasMore(m_next.m_text); ++source.at) {
        unsigned char const c = *source.at;
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
    source.endToken(*this);
    m_next.m_type = dot || exponent ? TOK_FLOAT : TOK_INTEGER;
}

template <class Source>
QEL_INLINE void TextTokenizer::readString(Source &source)
{
    while (source.hasMore(m_next.m_text)) {
        auto const left = static_cast<std::size_t>(source.end - source.at);
        void const *const quote = std::memchr(source.at, '"', left);
        if (quote != nullptr) {
            source.at = static_cast<unsigned char const *>(quote) + 1;
            break;
        }
        source.at = source.end;
    }
    source.endToken(*this);
    m_next.m_type = TOK_STRING;
}

template <class Source>
QEL_INLINE TextToken TextTokenizer::takeToken(Source &source)
{
    TextToken token(inShort() ? TextToken(m_next.m_type, m_short, m_shortSize) : std::move(m_next));
    fillNextToken(source);
    return token;
}

// Behind the look-ahead of a comment's second character.
template <class Source>
void TextTokenizer::skipComment(Source &source, TextToken &result)
{
    if (m_next.m_type == TOK_SLASH) {
        while (!source.atEnd()) {
            unsigned char const c = *source.at++;
            if (c == '\n' || c == '\r') {
                break;
            }
        }
    } else {
        do {
            result = takeToken(source);
        } while (!(result.m_type == TOK_STAR && m_next.m_type == TOK_SLASH) && !nextIsEnd());
    }
    m_next.m_text.clear();
    fillNextToken(source);
    result = takeToken(source);
}

TextTokenizer::TextTokenizer(cFile &file) : m_file(&file), m_memory(asMemory(file))
{
    withSource([this](auto &source) { fillNextToken(source); });
}

QEL_INLINE TextToken TextTokenizer::takeFromMemory()
{
    MemorySource source(*m_memory);
    return takeToken(source);
}

[[gnu::noinline]] TextToken TextTokenizer::takeFromStream()
{
    StreamSource source(*m_file);
    return takeToken(source);
}

bool TextTokenizer::skipComment(TextToken &result)
{
    bool const skip =
        (m_skipOneLine && m_next.m_type == TOK_SLASH) || (m_skipBlock && m_next.m_type == TOK_STAR);
    if (skip) {
        withSource([&](auto &source) { skipComment(source, result); });
    }
    return skip;
}

TextToken TextTokenizer::getNextToken()
{
    TextToken token = m_memory != nullptr ? takeFromMemory() : takeFromStream();
    while (token.m_type == TOK_SLASH && skipComment(token)) {
    }
    return token;
}

TextToken TextTokenizer::peekAtNextToken() const
{
    return inShort() ? TextToken(m_next.m_type, m_short, m_shortSize) : m_next;
}

[[gnu::noinline]] void TextTokenizer::setLongText(char const *text, std::size_t size)
{
    m_next.m_text.assign(text, size);
}

// Before more is added to the text of the next token.
void TextTokenizer::wantNextText()
{
    if (inShort()) {
        m_next.m_text.assign(m_short, m_shortSize);
        m_shortSize = notShort;
    }
    m_next.m_type = TOK_NONE;
}

bool TextTokenizer::streamPeekNextToken(unsigned char &c) const
{
    auto const peek = [&c](auto &&source) {
        bool const more = !source.atEnd();
        if (more) {
            c = *source.at;
        }
        return more;
    };
    return m_memory != nullptr ? peek(MemorySource(*m_memory)) : peek(StreamSource(*m_file, 1));
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
    wantNextText();
    withSource([this](auto &source) {
        bool quoted = false;
        bool blank = false;
        for (; source.hasMore(m_next.m_text); ++source.at) {
            unsigned char const c = *source.at;
            if (c == '"') {
                quoted = !quoted;
            } else if (!quoted && is(c, classSpace)) {
                blank = true;
                break;
            }
        }
        source.endText(m_next.m_text);
        source.at += blank ? 1 : 0;
    });
}

void TextTokenizer::readUntilToken(TextToken const &token)
{
    bool const byTypeAlone = token.m_text.empty() && token.m_type != TOK_END;
    for (;;) {
        TextToken const taken = getNextToken();
        if (taken.m_type == token.m_type && (byTypeAlone || taken.m_text == token.m_text)) {
            return;
        }
        if (taken.isEnd()) {
            return;
        }
    }
}

void TextTokenizer::readUntilEol()
{
    withSource([this](auto &source) {
        while (!source.atEnd()) {
            unsigned char const c = *source.at++;
            if (c == '\n') {
                ++m_line;
                return;
            }
            if (!is(c, classSpace)) {
                return;
            }
        }
    });
}

void TextTokenizer::readUntilEnd()
{
    wantNextText();
    withSource([this](auto &source) {
        while (source.hasMore(m_next.m_text)) {
            source.at = source.end;
        }
        source.endText(m_next.m_text);
    });
}

} // namespace Qel
