// Splits MATLAB/Octave source into tokens, so texts and comments never pass for code.
#ifndef TAMLO_HOST_MATLAB_LEXER_H
#define TAMLO_HOST_MATLAB_LEXER_H

#include <string_view>
#include <vector>

namespace tamlo_host {

enum class TokenKind {
    word,                 // identifier or keyword
    number,
    char_text,            // '...'
    double_text,          // "..." (Octave: a char array; MATLAB: a string object)
    symbol,               // operator or bracket, longest match: "!=", ".**", "+=", "(", ...
    comment,              // from % or # to the end of the line
    block_comment_open,   // a line holding only %{ or #{
    block_comment_close,  // a line holding only %} or #}
    continuation,         // ... or a trailing backslash; the rest of the line is skipped
    line_break,
};

struct Token {
    TokenKind kind;
    std::string_view text;  // a view into the source given to lex_matlab
    int line;               // from 1
    int column;             // from 1, in bytes
    bool space_before;      // blank (or nothing but a continuation) right before it
};

// Never fails: unterminated texts end at the line's end, unknown bytes become symbols.
std::vector<Token> lex_matlab(std::string_view source);

}  // namespace tamlo_host

#endif
