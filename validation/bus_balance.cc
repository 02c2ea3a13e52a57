// Estimates what each bus receives and can hold in reserve, then checks the bus figures that
// the dispatch reported against those estimates and against each other.
#include "bus_balance.h"

#include <cstddef>

#include "comparison.h"
#include "message_format.h"
#include "setpoint_checks.h"

namespace tamlo_validation {
namespace {

using tamlo_dispatch::BusState;
using tamlo_dispatch::SimulationParameters;
using tamlo_dispatch::SimulationState;

// Set point and availability of a source add to its bus. check(i, entry) runs for every state
// entry; the sums only for entries whose parameters say which bus they feed.
template <typename StateEntry, typename ParameterEntry, typename IsAc, typename Check>
void add_sources(const std::vector<StateEntry>& states, const std::vector<ParameterEntry>& parameters, IsAc is_ac,
                 Check check, BusEstimates& estimates) {
    for (std::size_t i = 0; i < states.size(); ++i) {
        const StateEntry& source = states[i];
        check(i, source);
        if (i < parameters.size()) {
            BusSupply& bus = estimates.bus(is_ac(parameters[i]));
            bus.production += source.power_setpoint;
            bus.capacity += source.power_available;
        }
    }
}

template <typename Entry>
bool component_is_ac(const Entry& parameters) {
    return parameters.component.is_AC;
}

// Moves spare capacity of `from` (beyond its own request) to `to`, as much as the converter's
// capacity in that direction allows; `from` loses what went in, before conversion losses.
void move_capacity(BusSupply& from, double from_request, BusSupply& to, double efficiency_percent,
                   double converter_capacity) {
    // A converter that converts nothing (efficiency 0, or a negative or NaN figure) moves no
    // capacity; the loss-corrected debit would otherwise divide 0 by 0 and leave NaN in the
    // source bus.
    if (!(efficiency_percent > 0.0)) {
        return;
    }
    const double spare = ((from.capacity - from_request) * efficiency_percent) / percent_divisor;
    const double moved = converter_capacity > spare ? spare : converter_capacity;
    to.capacity += moved;
    from.capacity -= moved / (efficiency_percent / percent_divisor);
}

// The texts of the five balance families of one bus.
struct BusBalanceTexts {
    BusState SimulationState::*bus;
    BusSupply BusEstimates::*supply;
    const char* served_lead;     // B1, B3
    const char* unmet_lead;      // B2, B4
    const char* unmet_served;
    const char* capacity_lead;   // B5, B6
    const char* shortage_lead;   // B7, B8
    const char* shortage_served;
    const char* excess_lead;     // B9, B10
    const char* excess_request;
    const char* excess_value;
};

constexpr BusBalanceTexts bus_balance_texts[] = {
    {&SimulationState::ac_bus, &BusEstimates::ac,
     "The value of simulation_state.ac_bus.load_served (",
     "If there is a capacity shortage, the MATLAB dispatch must set simulation_state.ac_bus.unmet_load equal to "
     "simulation_state.ac_bus.load_requested - simulation_state.ac_bus.load_served. AC bus load requested was: ",
     " kW. AC bus load served was: ",
     "The value of simulation_state.ac_bus.operating_capacity_served (",
     "If there is a capacity shortage, the MATLAB dispatch must set simulation_state.ac_bus.capacity_shortage "
     "equal to simulation_state.ac_bus.operating_capacity_requested - "
     "simulation_state.ac_bus.operating_capacity_served. AC operating capacity requested: ",
     " kW. AC operating capacity served: ",
     "AC production exceeds the load, but excess electricity doesn't match the expected value. Estimated AC "
     "production: ",
     " kW. AC load requested: ",
     " kW. AC excess electricity: "},
    {&SimulationState::dc_bus, &BusEstimates::dc,
     "The value of simulation_state.dc_bus.load_served (",
     "If there is a capacity shortage, the MATLAB dispatch must set simulation_state.dc_bus.unmet_load equal to "
     "simulation_state.dc_bus.load_requested - simulation_state.dc_bus.load_served. DC bus load requested was: ",
     " kW. DC bus load served was: ",
     "The value of simulation_state.dc_bus.operating_capacity_served (",
     "If there is a capacity shortage, the MATLAB dispatch must set simulation_state.dc_bus.capacity_shortage "
     "equal to simulation_state.dc_bus.operating_capacity_requested - "
     "simulation_state.dc_bus.operating_capacity_served. DC operating capacity requested: ",
     " kW. DC operating capacity served: ",
     "DC production exceeds the load, but excess electricity doesn't match the expected value. Estimated DC "
     "production: ",
     " kW. DC load requested: ",
     " kW. DC excess electricity: "},
};

// B1, B3: the load counts as served although production falls short of it.
void check_served_within_production(const BusBalanceTexts& t, const BusState& b, const BusSupply& s, Count step,
                                    std::vector<std::string>& warnings) {
    if (definitely_greater(b.load_requested, s.production, validation_tolerance) &&
        !definitely_greater(b.load_requested, b.load_served, validation_tolerance)) {
        add_warning(warnings, t.served_lead, Quantity{b.load_served}, " kW) exceeds the available generation (",
                    Quantity{s.production}, " kW) in timestep: ", step);
    }
}

// B2, B4
void check_unmet_load(const BusBalanceTexts& t, const BusState& b, Count step, std::vector<std::string>& warnings) {
    if (definitely_greater(b.load_requested, b.load_served, validation_tolerance) &&
        !approximately_equal(b.unmet_load, b.load_requested - b.load_served, validation_tolerance)) {
        add_warning(warnings, t.unmet_lead, Quantity{b.load_requested}, t.unmet_served, Quantity{b.load_served},
                    " kW. Unmet load reported was: ", Quantity{b.unmet_load}, " kW. Time step: ", step);
    }
}

// B5, B6: the capacity request counts as served although the available capacity falls short.
void check_capacity_served_within_available(const BusBalanceTexts& t, const BusState& b, const BusSupply& s,
                                            Count step, std::vector<std::string>& warnings) {
    if (definitely_greater(b.operating_capacity_requested, s.capacity, validation_tolerance) &&
        not_definitely_greater(b.operating_capacity_requested, b.operating_capacity_served, validation_tolerance)) {
        add_warning(warnings, t.capacity_lead, Quantity{b.operating_capacity_served},
                    " kW) exceeds the available capacity (", Quantity{s.capacity}, " kW) in time step: ", step);
    }
}

// B7, B8
void check_capacity_shortage(const BusBalanceTexts& t, const BusState& b, Count step,
                             std::vector<std::string>& warnings) {
    if (definitely_greater(b.operating_capacity_requested, b.operating_capacity_served, validation_tolerance) &&
        !approximately_equal(b.capacity_shortage, b.operating_capacity_requested - b.operating_capacity_served,
                             validation_tolerance)) {
        add_warning(warnings, t.shortage_lead, Quantity{b.operating_capacity_requested}, t.shortage_served,
                    Quantity{b.operating_capacity_served}, " kW. Capacity shortage: ", Quantity{b.capacity_shortage},
                    " kW. Time step: ", step);
    }
}

// B9, B10
void check_excess_electricity(const BusBalanceTexts& t, const BusState& b, const BusSupply& s, Count step,
                              std::vector<std::string>& warnings) {
    if (definitely_greater(s.production, b.load_requested, validation_tolerance) &&
        !approximately_equal(b.excess_electricity, s.production - b.load_requested, validation_tolerance)) {
        add_warning(warnings, t.excess_lead, Quantity{s.production}, t.excess_request, Quantity{b.load_requested},
                    t.excess_value, Quantity{b.excess_electricity}, " kW. Time step: ", step);
    }
}

}  // namespace

BusEstimates estimate_bus_supply(const SimulationParameters& parameters, const SimulationState& state,
                                 std::vector<std::string>& warnings) {
    BusEstimates estimates;
    const Count step = time_step_number(state);
    const auto no_check = [](std::size_t, const auto&) {};
    const auto setpoint_check = [&](SetpointSource source) {
        return [&warnings, source, step](std::size_t i, const auto& c) {
            check_setpoint_within_available(source, i, c.power_setpoint, c.power_available, step, warnings);
        };
    };

    add_sources(state.generator_list, parameters.generator_list, component_is_ac<tamlo_dispatch::GeneratorParameters>,
                no_check, estimates);

    // A positive battery set point charges the battery and so draws from its bus.
    const auto& batteries = state.battery_list;
    for (std::size_t i = 0; i < batteries.size() && i < parameters.battery_list.size(); ++i) {
        BusSupply& bus = estimates.bus(parameters.battery_list[i].component.is_AC);
        bus.production -= batteries[i].power_setpoint;
        bus.capacity += batteries[i].max_discharge_power;
    }

    add_sources(state.pv_list, parameters.pv_list, component_is_ac<tamlo_dispatch::PvParameters>,
                setpoint_check(SetpointSource::pv), estimates);
    add_sources(state.wind_turbine_list, parameters.wind_turbine_list,
                component_is_ac<tamlo_dispatch::WindTurbineParameters>, setpoint_check(SetpointSource::wind_turbine),
                estimates);
    // A custom component names its bus in its own is_AC, not in its common head.
    add_sources(state.custom_component_list, parameters.custom_component_list,
                [](const tamlo_dispatch::CustomComponentParameters& c) { return c.is_AC; },
                setpoint_check(SetpointSource::custom_component), estimates);

    // Flywheels count from their parameters alone, whatever the state lists.
    for (const tamlo_dispatch::FlywheelParameters& flywheel : parameters.flywheel_list) {
        BusSupply& bus = estimates.bus(flywheel.component.is_AC);
        bus.capacity += flywheel.charge_discharge_capacity;
        bus.production -= flywheel.parasitic_load;
    }

    if (!parameters.converter_list.empty() && !state.converter_list.empty()) {
        const tamlo_dispatch::ConverterState& flows = state.converter_list.front();
        estimates.ac.production += flows.inverter_power_output - flows.rectifier_power_input;
        estimates.dc.production += flows.rectifier_power_output - flows.inverter_power_input;
        transfer_converter_capacity(parameters.converter_list.front(), state.ac_bus.operating_capacity_requested,
                                    state.dc_bus.operating_capacity_requested, estimates);
    }

    // The grid always connects to the AC bus.
    if (!parameters.grid_list.empty() && !state.grid_list.empty()) {
        const tamlo_dispatch::GridState& grid = state.grid_list.front();
        estimates.ac.capacity += grid.max_grid_purchases;
        estimates.ac.production += grid.grid_purchases - grid.grid_sales;
    }
    return estimates;
}

void transfer_converter_capacity(const tamlo_dispatch::ConverterParameters& converter, double ac_request,
                                 double dc_request, BusEstimates& estimates) {
    if (definitely_greater(ac_request, estimates.ac.capacity, validation_tolerance) &&
        definitely_greater(estimates.dc.capacity, dc_request, validation_tolerance)) {
        move_capacity(estimates.dc, dc_request, estimates.ac, converter.inverter_efficiency,
                      converter.inverter_capacity);
    } else if (definitely_greater(dc_request, estimates.dc.capacity, validation_tolerance) &&
               definitely_greater(estimates.ac.capacity, ac_request, validation_tolerance)) {
        move_capacity(estimates.ac, ac_request, estimates.dc, converter.rectifier_efficiency,
                      converter.rectifier_capacity);
    }
}

void check_bus_balance(const SimulationState& state, const BusEstimates& estimates,
                       std::vector<std::string>& warnings) {
    const Count step = time_step_number(state);
    // Order: B1 B2 (AC), B3 B4 (DC), then B5-B10 alternating AC and DC.
    for (const BusBalanceTexts& t : bus_balance_texts) {
        check_served_within_production(t, state.*t.bus, estimates.*t.supply, step, warnings);
        check_unmet_load(t, state.*t.bus, step, warnings);
    }
    for (const BusBalanceTexts& t : bus_balance_texts) {
        check_capacity_served_within_available(t, state.*t.bus, estimates.*t.supply, step, warnings);
    }
    for (const BusBalanceTexts& t : bus_balance_texts) {
        check_capacity_shortage(t, state.*t.bus, step, warnings);
    }
    for (const BusBalanceTexts& t : bus_balance_texts) {
        check_excess_electricity(t, state.*t.bus, estimates.*t.supply, step, warnings);
    }
}

}  // namespace tamlo_validation
