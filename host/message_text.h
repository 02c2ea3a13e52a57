// Makes user-supplied text safe to echo in a message: cut to a readable length, invalid
// UTF-8 and control bytes shown as \xNN, so a message stays one readable line.
#ifndef TAMLO_HOST_MESSAGE_TEXT_H
#define TAMLO_HOST_MESSAGE_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace tamlo_host {

// Characters of a value echoed before it is cut and marked with "...".
constexpr std::size_t echo_limit = 200;

// text with every byte that is not printable UTF-8 written as \xNN, cut after echo_limit
// characters with "..." appended.
std::string display_text(std::string_view text, std::size_t limit = echo_limit);

}  // namespace tamlo_host

#endif
