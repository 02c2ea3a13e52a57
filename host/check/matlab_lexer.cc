// A lexer for MATLAB/Octave source that knows where texts, comments and transposes are.
#include "matlab_lexer.h"

#include <algorithm>
#include <iterator>
#include <cctype>
#include <string>

namespace tamlo_host {
namespace {

// Longest first, so "!=" wins over "!" and ".**" over ".*".
constexpr std::string_view multi_char_symbols[] = {
    ".**=", ".*=", "./=", ".\\=", ".^=", ".**", "**=",
    ".*",  "./",  ".\\",  ".^",  ".'",  "==",  "~=",  "!=",  "<=", ">=", "&&", "||",
    "++",  "--",  "+=",  "-=",  "*=",  "/=",  "\\=", "^=",  "|=", "&=", "**",
};

// After these words a quote opens a text: `case 'a'`, `if 'x'`. `end` is one of them only
// outside an index, where it is a keyword.
constexpr std::string_view words_before_text[] = {
    "if",     "elseif",   "else",   "while", "for",     "switch", "case",     "otherwise", "try",
    "catch",  "return",   "until",  "do",    "function", "global", "persistent", "break",   "continue",
};

bool is_word_start(char c) { return std::isalpha(static_cast<unsigned char>(c)) || c == '_'; }
bool is_word_char(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }
bool is_digit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }
bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }

std::string_view trimmed(std::string_view s) {
    while (!s.empty() && is_blank(s.front())) s.remove_prefix(1);
    while (!s.empty() && is_blank(s.back())) s.remove_suffix(1);
    return s;
}

class Lexer {
public:
    explicit Lexer(std::string_view source) : src_(source) {}

    std::vector<Token> run() {
        while (pos_ < src_.size()) {
            if (at_line_start_ && block_comment()) continue;
            at_line_start_ = false;
            const char c = src_[pos_];
            if (is_blank(c)) {
                advance(1);
                space_ = true;
            } else if (c == '\n') {
                emit(TokenKind::line_break, 1);
                at_line_start_ = true;
                statement_start_ = true;
            } else if (c == '%' || c == '#') {
                emit(TokenKind::comment, line_rest());
            } else if (src_.substr(pos_, 3) == "...") {
                continuation(3);
            } else if (c == '\\' && only_blank_or_comment_after(pos_ + 1)) {
                continuation(1);
            } else if (is_digit(c) || (c == '.' && pos_ + 1 < src_.size() && is_digit(src_[pos_ + 1]))) {
                emit(TokenKind::number, number_length());
            } else if (is_word_start(c)) {
                std::size_t n = 1;
                while (pos_ + n < src_.size() && is_word_char(src_[pos_ + n])) ++n;
                emit(TokenKind::word, n);
            } else if (c == '\'' && quote_is_transpose()) {
                emit(TokenKind::symbol, 1);
            } else if (c == '\'') {
                emit(TokenKind::char_text, text_length('\''));
            } else if (c == '"') {
                emit(TokenKind::double_text, text_length('"'));
            } else {
                emit(TokenKind::symbol, symbol_length());
            }
        }
        return std::move(tokens_);
    }

private:
    // A line of its own holding %{ or #{ opens a block comment, nested blocks included.
    bool block_comment() {
        const std::string_view line = current_line();
        const std::string_view t = trimmed(line);
        if (t != "%{" && t != "#{") return false;
        const int open_column = column_ + static_cast<int>(t.data() - line.data());
        tokens_.push_back({TokenKind::block_comment_open, t, line_, open_column, space_});
        int depth = 0;
        while (pos_ < src_.size()) {
            const std::string_view l = current_line();
            const std::string_view lt = trimmed(l);
            if (lt == "%{" || lt == "#{") ++depth;
            if (lt == "%}" || lt == "#}") --depth;
            if (depth == 0) {
                const int close_column = 1 + static_cast<int>(lt.data() - l.data());
                tokens_.push_back({TokenKind::block_comment_close, lt, line_, close_column, true});
            }
            skip_line(l.size());
            if (depth == 0) break;
        }
        statement_start_ = true;
        space_ = false;
        return true;
    }

    std::string_view current_line() const {
        const std::size_t end = src_.find('\n', pos_);
        return src_.substr(pos_, end == std::string_view::npos ? std::string_view::npos : end - pos_);
    }

    void skip_line(std::size_t length) {
        pos_ += length;
        if (pos_ < src_.size()) {
            ++pos_;  // the line break
            ++line_;
            column_ = 1;
        }
    }

    std::size_t line_rest() const { return current_line().size(); }

    bool only_blank_or_comment_after(std::size_t from) const {
        for (std::size_t i = from; i < src_.size(); ++i) {
            if (src_[i] == '\n' || src_[i] == '%' || src_[i] == '#') return true;
            if (!is_blank(src_[i])) return false;
        }
        return true;
    }

    // The marker is a token; what follows it up to the line's end is a comment MATLAB ignores.
    void continuation(std::size_t marker) {
        tokens_.push_back({TokenKind::continuation, src_.substr(pos_, marker), line_, column_, space_});
        skip_line(line_rest());
        space_ = true;
    }

    std::size_t number_length() const {
        std::size_t n = 0;
        auto at = [&](std::size_t i) { return pos_ + i < src_.size() ? src_[pos_ + i] : '\0'; };
        if (at(0) == '0' && (at(1) == 'x' || at(1) == 'X')) {
            n = 2;
            while (is_word_char(at(n))) ++n;
            return n;
        }
        while (is_digit(at(n))) ++n;
        // `1./x` is 1 ./ x, and `1.'` a transpose, so the dot stays an operator there.
        if (at(n) == '.' && std::string_view("*/\\^'.").find(at(n + 1)) == std::string_view::npos) {
            ++n;
            while (is_digit(at(n))) ++n;
        }
        if (std::string_view("eEdD").find(at(n)) != std::string_view::npos && at(n) != '\0') {
            const std::size_t sign = (at(n + 1) == '+' || at(n + 1) == '-') ? 1 : 0;
            if (is_digit(at(n + 1 + sign))) {
                n += 1 + sign;
                while (is_digit(at(n))) ++n;
            }
        }
        if (std::string_view("ijIJ").find(at(n)) != std::string_view::npos && at(n) != '\0') ++n;
        return n;
    }

    // Ends after the closing quote; a doubled quote (or, in "...", a backslash) escapes it.
    // Octave continues a "..." text on the next line after a backslash at the line's end.
    std::size_t text_length(char quote) const {
        std::size_t n = 1;
        while (pos_ + n < src_.size() && src_[pos_ + n] != '\n') {
            const char c = src_[pos_ + n];
            if (quote == '"' && c == '\\' && pos_ + n + 1 < src_.size()) {
                n += 2;
                continue;
            }
            ++n;
            if (c == quote) {
                if (pos_ + n < src_.size() && src_[pos_ + n] == quote) {
                    ++n;
                    continue;
                }
                break;
            }
        }
        return n;
    }

    std::size_t symbol_length() const {
        for (std::string_view s : multi_char_symbols) {
            if (src_.substr(pos_, s.size()) == s) return s.size();
        }
        return 1;
    }

    bool inside_brackets() const { return !brackets_.empty() && brackets_.back() != '('; }
    bool inside_index() const { return !brackets_.empty() && brackets_.back() != '['; }

    // A quote right after a value transposes it (a', x(1)', [1 2]', 3', a'' , a.');
    // after a blank inside [ ] or { } it starts an element, and after a statement's first
    // word and a blank it is command syntax (disp 'hello').
    bool quote_is_transpose() const {
        if (tokens_.empty()) return false;
        const Token& prev = tokens_.back();
        bool value = false;
        if (prev.kind == TokenKind::number) {
            value = true;
        } else if (prev.kind == TokenKind::word) {
            const bool keyword = std::find(std::begin(words_before_text), std::end(words_before_text), prev.text) !=
                                     std::end(words_before_text) ||
                                 (prev.text == "end" && !inside_index());
            value = !keyword;
        } else if (prev.kind == TokenKind::symbol) {
            value = prev.text == ")" || prev.text == "]" || prev.text == "}" || prev.text == "'" || prev.text == ".'";
        }
        if (!value) return false;
        if (!space_) return true;
        if (inside_brackets()) return false;
        return !(prev.kind == TokenKind::word && word_began_statement_);
    }

    void emit(TokenKind kind, std::size_t length) {
        const Token token{kind, src_.substr(pos_, length), line_, column_, space_};
        if (kind == TokenKind::symbol) track_brackets(token.text);
        tokens_.push_back(token);
        if (kind == TokenKind::line_break) {
            ++line_;
            column_ = 1;
            ++pos_;
        } else {
            advance(length);
            // Only a continued "..." text spans lines.
            if (const std::size_t last = token.text.rfind('\n'); last != std::string_view::npos) {
                line_ += static_cast<int>(std::count(token.text.begin(), token.text.end(), '\n'));
                column_ = static_cast<int>(length - last);
            }
        }
        space_ = false;
        if (kind != TokenKind::comment) {
            word_began_statement_ = statement_start_ && kind == TokenKind::word;
            const bool separator = kind == TokenKind::line_break ||
                                   (kind == TokenKind::symbol && brackets_.empty() &&
                                    (token.text == ";" || token.text == ","));
            statement_start_ = separator;
        }
    }

    void track_brackets(std::string_view s) {
        if (s == "(" || s == "[" || s == "{") {
            brackets_.push_back(s[0]);
        } else if ((s == ")" || s == "]" || s == "}") && !brackets_.empty()) {
            brackets_.pop_back();
        }
    }

    void advance(std::size_t n) {
        pos_ += n;
        column_ += static_cast<int>(n);
    }

    std::string_view src_;
    std::size_t pos_ = 0;
    int line_ = 1;
    int column_ = 1;
    bool space_ = false;
    bool at_line_start_ = true;
    bool statement_start_ = true;
    bool word_began_statement_ = false;
    std::string brackets_;
    std::vector<Token> tokens_;
};

}  // namespace

std::vector<Token> lex_matlab(std::string_view source) { return Lexer(source).run(); }

}  // namespace tamlo_host
