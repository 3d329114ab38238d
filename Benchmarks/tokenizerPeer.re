#include "Benchmarks/tokenizerPeer.h"

#include "System/File/textToken.h"

#include <cstring>

namespace peer {

Token Lexer::next()
{
    using namespace Qel;
    char const *YYCURSOR = cursor;
    char const *YYMARKER = nullptr;
    char const *start = nullptr;
    auto const take = [&](token_type type) {
        cursor = YYCURSOR;
        return Token{static_cast<int>(type), std::string(start, YYCURSOR)};
    };
again:
    start = YYCURSOR;
    /*!re2c
        re2c:define:YYCTYPE = "unsigned char";
        re2c:yyfill:enable = 0;

        digits   = [0-9];
        name     = [A-Za-z_][A-Za-z0-9_']*;
        integer  = "-"? digits+;
        float    = "-"? digits* "." digits+ ("e" "-"? digits*)?
                 | "-"? digits+ "." ("e" "-"? digits*)?
                 | "-"? digits+ "e" "-"? digits*;
        string   = ["] [^"\x00]* ["];

        [ \t\v\f\r]+ { goto again; }
        "\n"     { ++line; goto again; }
        "//" [^\n\r\x00]* { goto again; }
        "/*"     {
            while (YYCURSOR < end && !(YYCURSOR[0] == '*' && YYCURSOR[1] == '/')) {
                line += *YYCURSOR++ == '\n';
            }
            YYCURSOR = YYCURSOR < end ? YYCURSOR + 2 : end;
            goto again;
        }
        name     { return take(TOK_IDENTIFIER); }
        integer  { return take(TOK_INTEGER); }
        float    { return take(TOK_FLOAT); }
        string   { return take(TOK_STRING); }
        "+"      { return take(TOK_PLUS); }
        "-"      { return take(TOK_MINUS); }
        "*"      { return take(TOK_STAR); }
        "^"      { return take(TOK_CARET); }
        "!"      { return take(TOK_EXCLAIM); }
        "@"      { return take(TOK_AT); }
        "#"      { return take(TOK_HASH); }
        "$"      { return take(TOK_DOLLAR); }
        "%"      { return take(TOK_PERCENT); }
        "&"      { return take(TOK_AMPERSAND); }
        "|"      { return take(TOK_PIPE); }
        "="      { return take(TOK_EQUAL); }
        ">"      { return take(TOK_GREATER); }
        "<"      { return take(TOK_LESS); }
        "?"      { return take(TOK_QUESTION); }
        ","      { return take(TOK_COMMA); }
        "("      { return take(TOK_LPAREN); }
        ")"      { return take(TOK_RPAREN); }
        "["      { return take(TOK_LBRACKET); }
        "]"      { return take(TOK_RBRACKET); }
        "{"      { return take(TOK_LBRACE); }
        "}"      { return take(TOK_RBRACE); }
        "\\"     { return take(TOK_BACKSLASH); }
        "/"      { return take(TOK_SLASH); }
        ":"      { return take(TOK_COLON); }
        ";"      { return take(TOK_SEMICOLON); }
        "~"      { return take(TOK_TILDE); }
        "."      { return take(TOK_DOT); }
        "\x00"   {
            if (start == end) {
                cursor = start;
                return Token{TOK_END, {}};
            }
            return take(TOK_END);
        }
        *        { return take(TOK_END); }
    */
}

} // namespace peer
