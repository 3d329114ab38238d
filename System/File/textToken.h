#pragma once

#include "System/System/export.h"
#include "System/System/string.h"

#include <cstddef>
#include <cstdint>

namespace Qel {

/// What a TextToken is.
enum token_type : std::uint32_t {
    TOK_NONE = 0,       ///< not classified
    TOK_IDENTIFIER = 1, ///< a letter or _, then letters, digits, _ and '
    TOK_PLUS = 2,       ///< +
    TOK_MINUS = 3,      ///< - that no digit follows
    TOK_STAR = 4,       ///< *
    TOK_CARET = 5,      ///< ^
    TOK_EXCLAIM = 6,    ///< !
    TOK_AT = 7,         ///< @
    TOK_HASH = 8,       ///< #
    TOK_DOLLAR = 9,     ///< $
    TOK_PERCENT = 10,   ///< %
    TOK_AMPERSAND = 11, ///< &
    TOK_PIPE = 12,      ///< |
    TOK_EQUAL = 13,     ///< =
    TOK_GREATER = 14,   ///< >
    TOK_LESS = 15,      ///< <
    TOK_QUESTION = 16,  ///< ?
    TOK_COMMA = 17,     ///< ,
    TOK_LPAREN = 18,    ///< (
    TOK_RPAREN = 19,    ///< )
    TOK_LBRACKET = 20,  ///< [
    TOK_RBRACKET = 21,  ///< ]
    TOK_LBRACE = 22,    ///< {
    TOK_RBRACE = 23,    ///< }
    TOK_BACKSLASH = 24, ///< a backslash
    TOK_SLASH = 25,     ///< /
    TOK_COLON = 26,     ///< :
    TOK_SEMICOLON = 27, ///< ;
    TOK_TILDE = 28,     ///< ~
    TOK_DOT = 29,       ///< . that no digit follows
    TOK_INTEGER = 30,   ///< a number without point and exponent
    TOK_FLOAT = 31,     ///< a number with a point or an exponent
    TOK_STRING = 32,    ///< a text in double quotes
    TOK_END = 33        ///< the end of the stream, or a character that fits nowhere
};

/// One token of a text: what it is, and its characters as they stood there.
class QEL_API TextToken {
public:
    TextToken() = default;
    // NOLINTNEXTLINE(google-explicit-constructor): a type alone stands for a punctuation token
    TextToken(token_type type) : m_type(type) {} ///< with an empty text

    token_type getType() const { return m_type; }

    /// Is it the end of the stream, and no character that fits nowhere?
    bool isEnd() const { return m_type == TOK_END && (m_text.empty() || isWhiteSpace(m_text[0])); }

    /// The characters as they stood in the text; those of a string with its quotes.
    String const &getExactText() const { return m_text; }
    unsigned int getLength() const { return static_cast<unsigned int>(m_text.size()); } ///< in bytes

    /// Is the text this one, to the letter? Null counts as empty.
    bool isExactText(char const *text) const { return m_text.compare(text == nullptr ? "" : text) == 0; }

    /// The decimal number at the start of the text, 0 if there is none. One out of range gives the nearest.
    int convertToInt32() const;

    unsigned short convertToU16() const; ///< the low 16 bits of convertToInt32()

    /// The hexadecimal number at the start of the text, of a string behind its quote; 0 if there is none. A
    /// number of more than 32 bits gives -1, all of them set.
    int convertHexToInt32() const;

    /// The number at the start of the text, 0 if there is none; in the "C" locale, whichever is set.
    float convertToFloat32() const;

    /// A string without its quotes, anything else as it is. A string that the end of the stream cut has only
    /// the one quote to lose.
    String convertToString() const;

private:
    friend class TextTokenizer;

    /// A text of at most shortSize characters. A copy of fixed length, cut afterwards: the lengths of tokens
    /// cannot be foreseen.
    TextToken(token_type type, char const *text, std::size_t size) : m_type(type), m_text(text, shortSize)
    {
        m_text.erase(m_text.begin() + static_cast<std::ptrdiff_t>(size), m_text.end());
    }

    static bool isWhiteSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

    static constexpr std::size_t shortSize = 15; // what a string holds in itself

    token_type m_type = TOK_NONE;
    String m_text;
};

} // namespace Qel
