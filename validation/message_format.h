// Writes warnings: quantities with printf's "%f", counts in plain decimal digits, and the
// pieces of a message joined in order.
#ifndef TAMLO_VALIDATION_MESSAGE_FORMAT_H
#define TAMLO_VALIDATION_MESSAGE_FORMAT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_validation {

// Fixed-point with six decimals, never cut, whatever the magnitude (1e300 prints in full).
std::string format_number(double x);

// Unsigned decimal digits, no sign, padding or grouping.
std::string format_count(std::uint32_t n);

// A power or other quantity inside a message.
struct Quantity {
    double value;
};

// A component number or a time step inside a message.
struct Count {
    std::uint32_t value;
};

// Components are numbered from 1 in messages, as MATLAB numbers them.
inline Count component_number(std::size_t index) {
    return Count{static_cast<std::uint32_t>(index + 1)};
}

// Counted from 1 in 32-bit unsigned arithmetic, so the last possible step wraps to 0.
inline Count time_step_number(const tamlo_dispatch::SimulationState& state) {
    return Count{static_cast<std::uint32_t>(state.current_timestep + std::uint32_t{1})};
}

void append_piece(std::string& message, std::string_view text);
void append_piece(std::string& message, Quantity quantity);
void append_piece(std::string& message, Count count);

// Joins the pieces without separators and appends the message to the warnings. Called only
// when a check fails, so nothing is formatted while every check passes.
template <typename... Pieces>
void add_warning(std::vector<std::string>& warnings, const Pieces&... pieces) {
    std::string message;
    (append_piece(message, pieces), ...);
    warnings.push_back(std::move(message));
}

}  // namespace tamlo_validation

#endif
