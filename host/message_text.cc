// Escaping and cutting of echoed values.
#include "message_text.h"

#include <cstdio>

namespace tamlo_host {

namespace {

// Length of the well-formed UTF-8 sequence at text[i], or 0 when it is not one.
std::size_t utf8_sequence(std::string_view text, std::size_t i) {
    const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char lead = byte(i);
    std::size_t length = 0;
    unsigned char low = 0x80, high = 0xBF;  // allowed range of the second byte
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) low = 0xA0;   // no overlong forms
        if (lead == 0xED) high = 0x9F;  // no surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;  // nothing above U+10FFFF
    } else {
        return 0;
    }
    if (i + length > text.size()) return 0;
    if (byte(i + 1) < low || byte(i + 1) > high) return 0;
    for (std::size_t k = 2; k < length; ++k) {
        if (byte(i + k) < 0x80 || byte(i + k) > 0xBF) return 0;
    }
    return length;
}

}  // namespace

std::string display_text(std::string_view text, std::size_t limit) {
    std::string shown;
    std::size_t characters = 0;
    std::size_t i = 0;
    while (i < text.size()) {
        if (characters == limit) return shown + "...";
        const unsigned char c = static_cast<unsigned char>(text[i]);
        const std::size_t sequence = c < 0x80 ? 1 : utf8_sequence(text, i);
        if (sequence > 1) {
            shown.append(text.substr(i, sequence));
            i += sequence;
        } else if (c >= 0x20 && c < 0x7F) {
            shown += static_cast<char>(c);
            ++i;
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", c);
            shown += escaped;
            ++i;
        }
        ++characters;
    }
    return shown;
}

}  // namespace tamlo_host
