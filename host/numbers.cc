// Plain decimal and whole-number reading with range checks.
#include "numbers.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <string>

namespace tamlo_host {

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Walks [sign] digits [. digits] [e [sign] digits] with at least one mantissa digit.
bool is_plain_decimal(std::string_view t) {
    std::size_t i = 0;
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
    std::size_t digits = 0;
    while (i < t.size() && is_digit(t[i])) ++i, ++digits;
    if (i < t.size() && t[i] == '.') {
        ++i;
        while (i < t.size() && is_digit(t[i])) ++i, ++digits;
    }
    if (digits == 0) return false;
    if (i < t.size() && (t[i] == 'e' || t[i] == 'E')) {
        ++i;
        if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
        std::size_t exponent = 0;
        while (i < t.size() && is_digit(t[i])) ++i, ++exponent;
        if (exponent == 0) return false;
    }
    return i == t.size();
}

}  // namespace

NumberText parse_decimal(std::string_view text, double& value) {
    if (!is_plain_decimal(text)) return NumberText::not_a_number;
    const std::string copy(text);
    errno = 0;
    const double v = std::strtod(copy.c_str(), nullptr);
    // Underflow to zero or a denormal is harmless; overflow is not.
    if (!std::isfinite(v) || (errno == ERANGE && std::abs(v) > 1.0)) return NumberText::out_of_range;
    value = v;
    return NumberText::ok;
}

NumberText parse_whole(std::string_view text, std::uint64_t max, std::uint64_t& value) {
    if (text.empty()) return NumberText::not_a_number;
    std::uint64_t v = 0;
    for (const char c : text) {
        if (!is_digit(c)) return NumberText::not_a_number;
        const auto digit = static_cast<std::uint64_t>(c - '0');
        if (v > (max - digit) / 10) return NumberText::out_of_range;
        v = v * 10 + digit;
    }
    value = v;
    return NumberText::ok;
}

}  // namespace tamlo_host
