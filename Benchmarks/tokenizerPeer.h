#pragma once

#include <string>

namespace peer {

/// A token of the lexer that re2c makes: what TextTokenizer gives, with a standard string.
struct Token {
    int type = 0; // as token_type
    std::string text;
};

/// Reads tokens from a text that ends with a zero byte. Counts lines, and passes over both kinds of comment.
struct Lexer {
    char const *cursor;
    char const *end; // of the text: its zero byte
    unsigned line = 0;

    Token next();
};

} // namespace peer
