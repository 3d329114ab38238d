#pragma once

#include "System/File/textToken.h"
#include "System/System/export.h"

#include <cstddef>
#include <cstdint>

namespace Qel {

class cFile;
class cFileMem;

/// Splits the text of a stream into tokens, with one token of look-ahead.
///
/// It knows no grammar: it tells single punctuation characters, identifiers, numbers and strings in double
/// quotes apart, counts lines, and passes over comments if it is told to.
///
/// @code
/// TextTokenizer tokens(file);
/// tokens.skipComment_oneLine(true);
/// for (TextToken token = tokens.getNextToken(); !token.isEnd(); token = tokens.getNextToken()) {
///     ...
/// }
/// @endcode
///
/// The next token has been read when an operation returns, and the stream stands right behind it. A stream in
/// memory (cFileMem, cFileTempMem) is read in place; any other costs a few of its calls for each token.
///
/// A character that fits nowhere is a TOK_END with that character as its text, so TOK_END alone is not the
/// end: TextToken::isEnd() tells it. Where a text ends with white space, the last of it comes as a TOK_END,
/// too, and is the end.
///
/// @par Limits    A `/` that begins no comment is a token like any other. Numbers: the exponent's `e` is
///                lower case, and `+` is no part of a number. A string has no escapes, and newlines in it do
///                not count as lines. What stands in a block comment is read as tokens, so that a double
///                quote there opens a string. Letters and digits are the ASCII ones.
/// @par Ownership The stream is the caller's, and must live as long as the tokenizer and its copies, which
///                read on at the one position that the stream has.
/// @par Failures  None: any bytes give tokens.
/// @par Threads   One at a time.
class QEL_API TextTokenizer {
public:
    /// Reads the first token at once, from where the stream stands. A comment there is not passed over yet:
    /// it is when the token is taken.
    explicit TextTokenizer(cFile &file);

    void skipComment_oneLine(bool skip) { m_skipOneLine = skip; } ///< from `//` to the end of the line
    void skipComment_block(bool skip) { m_skipBlock = skip; }     ///< from `/*` to `*/`, or to the end

    TextToken getNextToken();          ///< Takes the next token, behind comments
    TextToken peekAtNextToken() const; ///< The next token as it stands, comment or not

    bool nextTokenPreceededByWhitespace() const { return m_precededByWhitespace; }
    bool nextTokenIsFollowedByWhitespace() const; ///< also at the end of the stream
    bool nextTokenIsLast() const;                 ///< Does nothing, not even white space, stand behind it?

    /// Makes the next token longer, up to white space outside double quotes, which is taken and dropped; its
    /// type becomes TOK_NONE. Does nothing if white space stood before the token.
    void readUntilNextWhitespace();

    /// Takes tokens up to and with the first one that is @p token, or to the end of the stream.
    /// @param token  a type alone, or a type and a text. TOK_END alone is the end of the stream
    void readUntilToken(TextToken const &token);

    /// Drops characters up to and with the first that is no white space, or the newline.
    void readUntilEol();

    void readUntilEnd(); ///< Makes the next token longer, up to the end; its type becomes TOK_NONE

    unsigned int getLine() const { return m_line; } ///< newlines passed as white space between tokens

private:
    static constexpr std::uint8_t notShort = 0xFF;

    class MemorySource;
    class StreamSource;

    bool nextIsEnd() const { return m_next.m_type == TOK_END && peekAtNextToken().isEnd(); }
    bool inShort() const { return m_shortSize != notShort; }
    template <class Work>
    auto withSource(Work work) const;
    template <class Source>
    void fillNextToken(Source &source);
    template <class Source>
    void readIdentifier(Source &source);
    template <class Source>
    void readNumber(Source &source, bool seenDot);
    template <class Source>
    void readString(Source &source);
    template <class Source>
    TextToken takeToken(Source &source);
    template <class Source>
    void skipComment(Source &source, TextToken &result);
    TextToken takeFromMemory();
    TextToken takeFromStream();
    bool skipComment(TextToken &result);
    void setLongText(char const *text, std::size_t size);
    void wantNextText();
    bool streamPeekNextToken(unsigned char &c) const;

    std::uint32_t m_line = 0;
    TextToken m_next;
    cFile *m_file;
    bool m_precededByWhitespace = false;
    bool m_skipOneLine = false;
    bool m_skipBlock = false;
    std::uint8_t m_shortSize = notShort;    // of the text of m_next, if it is in m_short and not there
    cFileMem *m_memory;                     // the stream, if it can be read in place
    char m_short[TextToken::shortSize + 1]; // moved as one piece
};

} // namespace Qel
