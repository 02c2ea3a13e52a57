// Strict reading of numbers typed by people: plain decimals only, so "0x1A", "inf" and
// "nan" are refused rather than read as something nobody meant.
#ifndef TAMLO_HOST_NUMBERS_H
#define TAMLO_HOST_NUMBERS_H

#include <cstdint>
#include <string_view>

namespace tamlo_host {

enum class NumberText { ok, not_a_number, out_of_range };

// A decimal with optional sign, point and exponent ("12", "-0.5", "1e5", ".5"); no blanks,
// no hexadecimal, no inf or nan. Out of range: beyond what a double holds.
NumberText parse_decimal(std::string_view text, double& value);

// Digits only, no sign; out of range: above max.
NumberText parse_whole(std::string_view text, std::uint64_t max, std::uint64_t& value);

}  // namespace tamlo_host

#endif
