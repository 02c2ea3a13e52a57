// Writes warnings: quantities with printf's "%f", counts in plain decimal digits, and the
// pieces of a message joined in order.
#include "message_format.h"

#include <charconv>
#include <cstdio>

namespace tamlo_validation {

std::string format_number(double x) {
    std::string text;
    append_piece(text, Quantity{x});
    return text;
}

std::string format_count(std::uint32_t n) {
    std::string text;
    append_piece(text, Count{n});
    return text;
}

void append_piece(std::string& message, std::string_view text) {
    message.append(text);
}

void append_piece(std::string& message, Quantity quantity) {
    // Measured first, then written into exactly that much room: a large value is never cut.
    const int length = std::snprintf(nullptr, 0, "%f", quantity.value);
    if (length <= 0) {
        return;  // "%f" of a double raises no encoding error; nothing to write otherwise
    }
    const std::size_t start = message.size();
    message.resize(start + static_cast<std::size_t>(length));
    // The terminating zero lands on message[size()], which a std::string always holds.
    std::snprintf(message.data() + start, static_cast<std::size_t>(length) + 1, "%f", quantity.value);
}

void append_piece(std::string& message, Count count) {
    char digits[16];  // 4294967295 has ten digits
    const auto end = std::to_chars(digits, digits + sizeof digits, count.value).ptr;
    message.append(digits, end);
}

}  // namespace tamlo_validation
