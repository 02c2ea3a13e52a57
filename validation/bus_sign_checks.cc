// Checks the signs of the bus figures the dispatch reported, and load served against load
// requested on each bus.
#include "bus_sign_checks.h"

#include "comparison.h"
#include "message_format.h"

namespace tamlo_validation {
namespace {

using tamlo_dispatch::BusState;
using tamlo_dispatch::SimulationState;

struct SignCheck {
    BusState SimulationState::*bus;
    double BusState::*value;
    const char* lead;
};

constexpr SignCheck sign_checks[] = {
    {&SimulationState::ac_bus, &BusState::capacity_shortage,
     "Capacity shortage can't be less than zero: simulation_state.ac_bus.capacity_shortage = "},
    {&SimulationState::ac_bus, &BusState::excess_electricity,
     "Excess electricity can't be less than zero: simulation_state.ac_bus.excess_electricity = "},
    {&SimulationState::ac_bus, &BusState::load_served,
     "Load served can't be less than zero: simulation_state.ac_bus.load_served = "},
    {&SimulationState::ac_bus, &BusState::operating_capacity_served,
     "Operating capacity served can't be less than zero: simulation_state.ac_bus.operating_capacity_served = "},
    {&SimulationState::ac_bus, &BusState::unmet_load,
     "Unmet load can't be less than zero: simulation_state.ac_bus.unmet_load = "},
    {&SimulationState::dc_bus, &BusState::capacity_shortage,
     "Capacity shortage can't be less than zero: simulation_state.dc_bus.capacity_shortage = "},
    {&SimulationState::dc_bus, &BusState::excess_electricity,
     "Excess electricity can't be less than zero: simulation_state.dc_bus.excess_electricity = "},
    {&SimulationState::dc_bus, &BusState::load_served,
     "Load served can't be less than zero: simulation_state.dc_bus.load_served = "},
    {&SimulationState::dc_bus, &BusState::operating_capacity_served,
     "Operating capacity served can't be less than zero: simulation_state.dc_bus.operating_capacity_served = "},
    {&SimulationState::dc_bus, &BusState::unmet_load,
     "Unmet load can't be less than zero: simulation_state.dc_bus.unmet_load = "},
};

struct LoadServedCheck {
    BusState SimulationState::*bus;
    const char* served_lead;
    const char* requested_lead;
};

// The DC text has no " kW" after the served value: kept as the message has always read.
constexpr LoadServedCheck load_served_checks[] = {
    {&SimulationState::ac_bus,
     "Load served can't be greater than load requested: simulation_state.ac_bus.load_served = ",
     " kW. simulation_state.ac_bus.load_requested = "},
    {&SimulationState::dc_bus,
     "Load served can't be greater than load requested: simulation_state.dc_bus.load_served = ",
     ". simulation_state.dc_bus.load_requested = "},
};

}  // namespace

void check_bus_signs(const SimulationState& state, std::vector<std::string>& warnings) {
    const Count step = time_step_number(state);
    for (const SignCheck& c : sign_checks) {
        const double value = state.*c.bus.*c.value;
        if (definitely_less(value, 0.0, validation_tolerance)) {
            add_warning(warnings, c.lead, Quantity{value}, " kW. Time step: ", step);
        }
    }
}

void check_load_served(const SimulationState& state, std::vector<std::string>& warnings) {
    const Count step = time_step_number(state);
    for (const LoadServedCheck& c : load_served_checks) {
        const BusState& bus = state.*c.bus;
        if (definitely_greater(bus.load_served, bus.load_requested, validation_tolerance)) {
            add_warning(warnings, c.served_lead, Quantity{bus.load_served}, c.requested_lead,
                        Quantity{bus.load_requested}, " kW. Time step: ", step);
        }
    }
}

}  // namespace tamlo_validation
