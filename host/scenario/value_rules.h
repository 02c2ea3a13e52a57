// What values a scenario number may hold, with the words that say so in a message.
#ifndef TAMLO_HOST_VALUE_RULES_H
#define TAMLO_HOST_VALUE_RULES_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace tamlo_host {

struct ValueRule {
    std::string needs;  // completes "it needs ...", e.g. "a number of 0 or more"
    std::function<bool(double)> accepts;
};

// Counts reach MATLAB as doubles, which hold every whole number only up to 2^53.
constexpr std::uint64_t largest_exact_count = std::uint64_t{1} << 53;

// Powers and energies above 1e10 kW or kWh (10 TW, more than all the world's power plants
// together) are a slip of units or a typo, and such values times a year of hours and a price
// would leave the books' range.
constexpr double largest_quantity = 1e10;
// Sunshine above twice the rating's standard 1 kW/m² does not reach the ground; a larger
// value is usually W/m² given where kW per kW is asked.
constexpr double largest_solar_per_rated_kw = 2.0;
// Prices may be negative; a billion per kWh is beyond any tariff in any currency, and keeps
// a year of grid money finite.
constexpr double largest_price = 1e9;
// Above the strongest gust ever measured (113 m/s).
constexpr double largest_wind_speed = 120.0;

// Whole numbers from 0 to count - 1: an index into a list of count entries named list.
ValueRule index_into(std::size_t count, const std::string& list);

extern const ValueRule any_number;
extern const ValueRule non_negative;
extern const ValueRule schedule_code;  // -1, 0 or 1
extern const ValueRule zero_or_one;
extern const ValueRule whole_non_negative;
extern const ValueRule power_kw;        // 0 to largest_quantity kW
extern const ValueRule energy_kwh;      // 0 to largest_quantity kWh
extern const ValueRule amount;          // 0 to largest_quantity, in the field's own unit
extern const ValueRule solar_per_kw;    // 0 to largest_solar_per_rated_kw
extern const ValueRule wind_speed_m_s;  // 0 to largest_wind_speed
extern const ValueRule price;           // -largest_price to largest_price

}  // namespace tamlo_host

#endif
