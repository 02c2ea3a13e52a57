// The value rules of scenario numbers and series.
#include "value_rules.h"

#include <cmath>

namespace tamlo_host {

namespace {

ValueRule from_zero_to(double most, const std::string& needs) {
    return {needs, [most](double v) { return v >= 0 && v <= most; }};
}

}  // namespace

const ValueRule any_number{"a number", [](double) { return true; }};
const ValueRule non_negative{"a number of 0 or more", [](double v) { return v >= 0; }};
const ValueRule schedule_code{"-1 (forced off), 0 (dispatch decides) or 1 (forced on)",
                              [](double v) { return v == -1 || v == 0 || v == 1; }};
const ValueRule zero_or_one{"0 or 1", [](double v) { return v == 0 || v == 1; }};
const ValueRule whole_non_negative{"a whole number of 0 or more",
                                   [](double v) { return v >= 0 && std::floor(v) == v; }};
const ValueRule power_kw = from_zero_to(largest_quantity, "a power from 0 to 1e10 kW");
const ValueRule energy_kwh = from_zero_to(largest_quantity, "an energy from 0 to 1e10 kWh");
const ValueRule amount = from_zero_to(largest_quantity, "a number from 0 to 1e10");
const ValueRule solar_per_kw = from_zero_to(largest_solar_per_rated_kw, "kW per kW of rated capacity, from 0 to 2");
const ValueRule wind_speed_m_s = from_zero_to(largest_wind_speed, "a wind speed from 0 to 120 m/s");

const ValueRule price{"a price from -1e9 to 1e9 per kWh",
                      [](double v) { return v >= -largest_price && v <= largest_price; }};

ValueRule index_into(std::size_t count, const std::string& list) {
    const std::string needs =
        count == 0 ? "an index into " + list + ", which is empty"
                   : "a whole number from 0 to " + std::to_string(count - 1) + " (a zero-based index into " + list + ")";
    return {needs,
            [count](double v) { return v >= 0 && std::floor(v) == v && v < static_cast<double>(count); }};
}

}  // namespace tamlo_host
