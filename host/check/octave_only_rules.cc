// The table of Octave-only constructs and the walk over a file's tokens that applies it.
#include "octave_only_rules.h"

#include <algorithm>
#include <iterator>

#include "matlab_lexer.h"

namespace tamlo_host {
namespace {

struct Rule {
    std::string_view construct;
    const char* matlab;
};

// Words that only Octave's parser knows. Field names (s.endif) are exempt.
constexpr Rule keyword_rules[] = {
    {"endif", "end"},
    {"endwhile", "end"},
    {"endfor", "end"},
    {"endparfor", "end"},
    {"endfunction", "end"},
    {"endswitch", "end"},
    {"end_try_catch", "end"},
    {"unwind_protect", "try ... catch, or onCleanup"},
    {"unwind_protect_cleanup", "catch (then rethrow), or onCleanup"},
    {"end_unwind_protect", "end"},
};

// Octave's own functions that MATLAB lacks.
constexpr Rule function_rules[] = {
    {"printf", "fprintf"},
    {"puts", "fprintf"},
    {"fputs", "fprintf"},
    {"fdisp", "disp, or fprintf to a file"},
};

// Octave 7 reads ++ and -- as increments wherever it accepts them (a--b is a syntax error
// there), so every one is Octave-only.
constexpr Rule symbol_rules[] = {
    {"!=", "~="},
    {"!", "~"},
    {"++", "x = x + 1"},
    {"--", "x = x - 1"},
    {"+=", "x = x + ..."},
    {"-=", "x = x - ..."},
    {"*=", "x = x * ..."},
    {"/=", "x = x / ..."},
    {"\\=", "x = x \\ ..."},
    {"^=", "x = x ^ ..."},
    {"**=", "x = x ^ ..."},
    {"|=", "x = x | ..."},
    {"&=", "x = x & ..."},
    {".*=", "x = x .* ..."},
    {"./=", "x = x ./ ..."},
    {".\\=", "x = x .\\ ..."},
    {".^=", "x = x .^ ..."},
    {".**=", "x = x .^ ..."},
    {"**", "^"},
    {".**", ".^"},
};

constexpr Rule hash_comment{"#", "%"};
constexpr Rule hash_block_open{"#{", "%{"};
constexpr Rule hash_block_close{"#}", "%}"};
constexpr Rule backslash_continuation{"\\", "..."};
// MATLAB reads "..." as a string object, not a char array: functions that want text
// (isfield, strcat with cells, the extension's own checks) then see another class.
constexpr Rule double_quoted_text{"\"...\"", "'...' (MATLAB reads \"...\" as a string object, not a char array)"};
constexpr Rule line_break_in_parentheses{"line break inside ( )", "... at the end of the line"};
constexpr Rule chained_index{"indexing a call's result: f(...)(...)", "a temporary variable: t = f(...); t(...)"};
constexpr Rule do_loop{"do", "while true ... if condition, break, end, end"};
constexpr Rule until_line{"until", "if condition, break, end (inside while true ... end)"};

template <std::size_t N>
const Rule* rule_for(const Rule (&table)[N], std::string_view construct) {
    const auto it = std::find_if(std::begin(table), std::end(table),
                                 [&](const Rule& r) { return r.construct == construct; });
    return it == std::end(table) ? nullptr : it;
}

class Walk {
public:
    explicit Walk(const std::vector<Token>& tokens) : tokens_(tokens) {}

    std::vector<Finding> run() {
        for (i_ = 0; i_ < tokens_.size(); ++i_) {
            const Token& t = tokens_[i_];
            switch (t.kind) {
            case TokenKind::word: word(t); break;
            case TokenKind::symbol: symbol(t); break;
            case TokenKind::double_text: add(t, double_quoted_text); break;
            case TokenKind::comment:
                if (t.text.front() == '#') add(t, hash_comment);
                break;
            case TokenKind::block_comment_open:
                if (t.text.front() == '#') add(t, hash_block_open);
                break;
            case TokenKind::block_comment_close:
                if (t.text.front() == '#') add(t, hash_block_close);
                break;
            case TokenKind::continuation:
                if (t.text == "\\") add(t, backslash_continuation);
                break;
            case TokenKind::line_break:
                if (!brackets_.empty() && brackets_.back() != '[' && brackets_.back() != '{') {
                    add(t, line_break_in_parentheses);
                }
                break;
            case TokenKind::number:
            case TokenKind::char_text: break;
            }
            if (t.kind != TokenKind::comment) previous_ = &t;
        }
        return std::move(findings_);
    }

private:
    void word(const Token& t) {
        if (previous_is(".")) return;  // a field name such as s.end or s.endif
        if (const Rule* r = rule_for(keyword_rules, t.text)) {
            add(t, *r);
        } else if (const Rule* r = rule_for(function_rules, t.text)) {
            if (!next_is("=")) add(t, *r);
        } else if (t.text == "do" && starts_statement() && ends_statement(i_ + 1)) {
            add(t, do_loop);
            ++open_do_loops_;
        } else if (t.text == "until" && starts_statement() && open_do_loops_ > 0) {
            add(t, until_line);
            --open_do_loops_;
        }
    }

    void symbol(const Token& t) {
        if (const Rule* r = rule_for(symbol_rules, t.text)) add(t, *r);
        if ((t.text == "(" || t.text == "{") && !t.space_before && closed_call_or_matrix()) {
            add(t, chained_index);
        }
        if (t.text == "(" || t.text == "[" || t.text == "{") {
            brackets_.push_back(t.text[0]);
            // @(x)(x + 1) and s.(name){1}: an anonymous function's parameters and a
            // dynamic field name are not calls, and MATLAB indexes after them.
            not_a_call_.push_back(t.text == "(" && (previous_is("@") || previous_is(".")));
        } else if ((t.text == ")" || t.text == "]" || t.text == "}") && !brackets_.empty()) {
            last_closed_not_a_call_ = not_a_call_.back();
            brackets_.pop_back();
            not_a_call_.pop_back();
        }
    }

    bool closed_call_or_matrix() const {
        if (previous_ == nullptr || previous_->kind != TokenKind::symbol) return false;
        return (previous_->text == ")" && !last_closed_not_a_call_) || previous_->text == "]";
    }

    bool previous_is(std::string_view s) const {
        return previous_ != nullptr && previous_->kind == TokenKind::symbol && previous_->text == s;
    }

    bool next_is(std::string_view s) const {
        return i_ + 1 < tokens_.size() && tokens_[i_ + 1].kind == TokenKind::symbol && tokens_[i_ + 1].text == s;
    }

    bool starts_statement() const {
        return previous_ == nullptr || previous_->kind == TokenKind::line_break ||
               previous_->kind == TokenKind::block_comment_close || previous_is(";") || previous_is(",");
    }

    bool ends_statement(std::size_t j) const {
        if (j >= tokens_.size()) return true;
        const Token& t = tokens_[j];
        return t.kind == TokenKind::line_break || t.kind == TokenKind::comment ||
               (t.kind == TokenKind::symbol && (t.text == ";" || t.text == ","));
    }

    void add(const Token& t, const Rule& r) {
        findings_.push_back({t.line, t.column, std::string(r.construct), r.matlab});
    }

    const std::vector<Token>& tokens_;
    std::size_t i_ = 0;
    const Token* previous_ = nullptr;
    std::string brackets_;
    std::vector<bool> not_a_call_;
    bool last_closed_not_a_call_ = false;
    int open_do_loops_ = 0;
    std::vector<Finding> findings_;
};

}  // namespace

std::vector<Finding> find_octave_only(std::string_view source) {
    const std::vector<Token> tokens = lex_matlab(source);
    return Walk(tokens).run();
}

}  // namespace tamlo_host
