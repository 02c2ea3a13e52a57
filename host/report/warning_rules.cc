// The validation's warning families, told apart by their fixed leading text.
#include "warning_rules.h"

#include <iterator>

namespace tamlo_host {

namespace {

constexpr WarningRule rules[] = {
    {"C1", "converter inverter output = input * efficiency",
     "Dispatch must set simulation_state.converter.inverter_power_output (", nullptr},
    {"C2", "converter rectifier output = input * efficiency",
     "Dispatch must set simulation_state.converter.rectifier_power_output (", nullptr},
    {"C3", "converter inverter output within capacity", "simulation_state.converters.inverter_power_output (", nullptr},
    {"C4", "converter rectifier output within capacity", "simulation_state.converters.rectifier_power_output (", nullptr},
    {"G1", "generator set point within power available", "simulation_state.generators(",
     " is greater than the generator's power_available ("},
    {"G2", "generator set point at least minimum load", "simulation_state.generators(",
     " is less than the generator's minimum load "},
    {"G3", "forced-on generator produces", "simulation_state.generators(", ").current_state is FORCED_ON but "},
    {"G4", "forced-off generator does not produce", "simulation_state.generators(", ").current_state is FORCED_OFF but "},
    {"R1", "no purchases while the grid is down",
     "simulation_state.grids(0).grid_is_down is TRUE but power is being purchased (", nullptr},
    {"R2", "no sales while the grid is down", "simulation_state.grids(0).grid_is_down is TRUE but power is being sold (",
     nullptr},
    {"R3", "grid purchases within max_grid_purchases", "simulation_state.grids[0].grid_purchases (", nullptr},
    {"R4", "grid sales within max_grid_sales", "simulation_state.grids[0].grid_sales (", nullptr},
    {"P1", "PV set point within power available", "The value of simulation_state.pvs(", nullptr},
    {"W1", "wind set point within power available", "The value of simulation_state.wind_turbines(", nullptr},
    {"U1", "custom component set point within power available", "The value of simulation_state.custom_components(",
     nullptr},
    {"B1", "AC load served within production", "The value of simulation_state.ac_bus.load_served (", nullptr},
    {"B2", "AC unmet load = requested - served",
     "If there is a capacity shortage, the MATLAB dispatch must set simulation_state.ac_bus.unmet_load ", nullptr},
    {"B3", "DC load served within production", "The value of simulation_state.dc_bus.load_served (", nullptr},
    {"B4", "DC unmet load = requested - served",
     "If there is a capacity shortage, the MATLAB dispatch must set simulation_state.dc_bus.unmet_load ", nullptr},
    {"B5", "AC operating capacity served within capacity",
     "The value of simulation_state.ac_bus.operating_capacity_served (", nullptr},
    {"B6", "DC operating capacity served within capacity",
     "The value of simulation_state.dc_bus.operating_capacity_served (", nullptr},
    {"B7", "AC capacity shortage = requested - served",
     "If there is a capacity shortage, the MATLAB dispatch must set simulation_state.ac_bus.capacity_shortage ", nullptr},
    {"B8", "DC capacity shortage = requested - served",
     "If there is a capacity shortage, the MATLAB dispatch must set simulation_state.dc_bus.capacity_shortage ", nullptr},
    {"B9", "AC excess = production - load", "AC production exceeds the load, but excess electricity ", nullptr},
    {"B10", "DC excess = production - load", "DC production exceeds the load, but excess electricity ", nullptr},
    {"S1", "AC capacity shortage not negative", "Capacity shortage can't be less than zero: simulation_state.ac_bus.",
     nullptr},
    {"S2", "AC excess not negative", "Excess electricity can't be less than zero: simulation_state.ac_bus.", nullptr},
    {"S3", "AC load served not negative", "Load served can't be less than zero: simulation_state.ac_bus.", nullptr},
    {"S4", "AC operating capacity served not negative",
     "Operating capacity served can't be less than zero: simulation_state.ac_bus.", nullptr},
    {"S5", "AC unmet load not negative", "Unmet load can't be less than zero: simulation_state.ac_bus.", nullptr},
    {"S6", "DC capacity shortage not negative", "Capacity shortage can't be less than zero: simulation_state.dc_bus.",
     nullptr},
    {"S7", "DC excess not negative", "Excess electricity can't be less than zero: simulation_state.dc_bus.", nullptr},
    {"S8", "DC load served not negative", "Load served can't be less than zero: simulation_state.dc_bus.", nullptr},
    {"S9", "DC operating capacity served not negative",
     "Operating capacity served can't be less than zero: simulation_state.dc_bus.", nullptr},
    {"S10", "DC unmet load not negative", "Unmet load can't be less than zero: simulation_state.dc_bus.", nullptr},
    {"L1", "AC load served within load requested",
     "Load served can't be greater than load requested: simulation_state.ac_bus.", nullptr},
    {"L2", "DC load served within load requested",
     "Load served can't be greater than load requested: simulation_state.dc_bus.", nullptr},
    {"limit", "warnings beyond the first ten not checked", "There were additional warnings.", nullptr},
    {"MATLAB", "warnings from the end-simulation function", "MATLAB warning: ", nullptr},
};

constexpr WarningRule other_rule{"other", "not recognised", "", nullptr};

bool matches(const WarningRule& rule, const std::string& text) {
    if (text.rfind(rule.lead, 0) != 0) return false;
    return rule.contains == nullptr || text.find(rule.contains) != std::string::npos;
}

}  // namespace

const WarningRule& classify_warning(const std::string& text) {
    for (const WarningRule& rule : rules) {
        if (matches(rule, text)) return rule;
    }
    return other_rule;
}

std::vector<std::pair<const WarningRule*, std::size_t>> count_warnings(const std::vector<std::string>& warnings) {
    constexpr std::size_t rule_count = std::size(rules);
    std::vector<std::size_t> counts(rule_count + 1, 0);
    for (const std::string& text : warnings) {
        const WarningRule& rule = classify_warning(text);
        counts[&rule == &other_rule ? rule_count : static_cast<std::size_t>(&rule - rules)]++;
    }
    std::vector<std::pair<const WarningRule*, std::size_t>> result;
    for (std::size_t i = 0; i < rule_count; ++i) {
        if (counts[i] > 0) result.emplace_back(&rules[i], counts[i]);
    }
    if (counts[rule_count] > 0) result.emplace_back(&other_rule, counts[rule_count]);
    return result;
}

}  // namespace tamlo_host
