// Builds the simulation_state struct that the dispatch function receives.
#include "simulation_state_struct.h"

#include <cstdint>

#include "struct_primitives.h"

namespace tamlo_marshal {

using namespace tamlo_dispatch;

// This struct is rebuilt every time step. Below the top level, every value is made for the
// one place it goes to and stored there itself (adopt_*); only the top level stores deep
// copies of the lists.

void fill_simulation_state_struct(mxArray* target, const SimulationState& state) {
    set_struct_field(target, 0, "generators", make_generator_states(state.generator_list));
    set_struct_field(target, 0, "pvs", make_pv_states(state.pv_list));
    set_struct_field(target, 0, "batteries", make_battery_states(state.battery_list));
    set_struct_field(target, 0, "flywheels", make_flywheel_states(state.flywheel_list));
    set_struct_field(target, 0, "converters", make_converter_states(state.converter_list));
    set_struct_field(target, 0, "grids", make_grid_states(state.grid_list));
    set_struct_field(target, 0, "custom_components", make_custom_component_states(state.custom_component_list));
    set_struct_field(target, 0, "wind_turbines", make_wind_turbine_states(state.wind_turbine_list));
    set_struct_field(target, 0, "primary_loads", make_primary_load_states(state.primary_load_list));
    set_struct_field(target, 0, "ac_bus", make_bus_state(state.ac_bus));
    set_struct_field(target, 0, "dc_bus", make_bus_state(state.dc_bus));
    // Zero-based, as the simulator counts; a u32 always fits a double exactly.
    set_number_field(target, 0, "current_timestep", static_cast<double>(state.current_timestep));
}

namespace {

constexpr const char* current_state_names[] = {
    "FORCED_OFF_OUT_OF_FUEL",            // -3
    "FORCED_OFF_FOR_MAINTENANCE_EVENT",  // -2
    "FORCED_OFF_FOR_SCHEDULE",           // -1
    "DISPATCH_DECIDES",                  //  0
    "FORCED_ON_FOR_SCHEDULE",            //  1
    "FORCED_ON_FOR_MINIMUM_RUNTIME",     //  2
};
constexpr std::int32_t first_current_state = FORCED_OFF_OUT_OF_FUEL;

// The codes that a kind of unit shows to MATLAB; other codes leave current_state unwritten.
struct CurrentStateRange {
    std::int32_t lowest;
    std::int32_t highest;
};
constexpr CurrentStateRange generator_current_states{FORCED_OFF_OUT_OF_FUEL, FORCED_ON_FOR_MINIMUM_RUNTIME};
// Wind turbines run neither out of fuel nor for a minimum time.
constexpr CurrentStateRange wind_turbine_current_states{FORCED_OFF_FOR_MAINTENANCE_EVENT, FORCED_ON_FOR_SCHEDULE};

void add_current_state_field(mxArray* s, std::size_t index, GeneratorCurrentState code, CurrentStateRange range) {
    const std::int32_t value = code;
    if (value < range.lowest || value > range.highest) return;
    adopt_string_field(s, index, "current_state", current_state_names[value - first_current_state]);
}

void add_converter_state_fields(mxArray* s, std::size_t index, const ConverterState& converter) {
    adopt_number_field(s, index, "inverter_power_input", converter.inverter_power_input);
    adopt_number_field(s, index, "inverter_power_output", converter.inverter_power_output);
    adopt_number_field(s, index, "rectifier_power_input", converter.rectifier_power_input);
    adopt_number_field(s, index, "rectifier_power_output", converter.rectifier_power_output);
}

}  // namespace

mxArray* make_generator_states(const std::vector<GeneratorState>& generators) {
    mxArray* s = make_struct_array(generators.size());
    for (std::size_t i = 0; i < generators.size(); ++i) {
        const GeneratorState& generator = generators[i];
        adopt_number_field(s, i, "power_available", generator.power_available);
        adopt_number_field(s, i, "power_setpoint", generator.power_setpoint);
        add_current_state_field(s, i, generator.current_state, generator_current_states);
    }
    return s;
}

mxArray* make_pv_states(const std::vector<PvState>& pvs) {
    mxArray* s = make_struct_array(pvs.size());
    for (std::size_t i = 0; i < pvs.size(); ++i) {
        adopt_number_field(s, i, "power_available", pvs[i].power_available);
        adopt_number_field(s, i, "power_setpoint", pvs[i].power_setpoint);
    }
    return s;
}

// Every battery carries a dedicated_converter, whether or not its parameters say it has one.
mxArray* make_battery_states(const std::vector<BatteryState>& batteries) {
    mxArray* s = make_struct_array(batteries.size());
    for (std::size_t i = 0; i < batteries.size(); ++i) {
        const BatteryState& battery = batteries[i];
        mxArray* converter = make_single_struct();
        add_converter_state_fields(converter, 0, battery.dedicated_converter);
        adopt_struct_field(s, i, "dedicated_converter", converter);
        adopt_number_field(s, i, "energy_cost", battery.energy_cost);
        adopt_number_field(s, i, "max_charge_power", battery.max_charge_power);
        adopt_number_field(s, i, "max_discharge_power", battery.max_discharge_power);
        adopt_number_field(s, i, "power_setpoint", battery.power_setpoint);
        adopt_number_field(s, i, "state_of_charge_kwh", battery.state_of_charge_kwh);
        adopt_number_field(s, i, "state_of_charge_percent", battery.state_of_charge_percent);
    }
    return s;
}

// Code 0 is the state MATLAB sees as true; every other code is false.
mxArray* make_flywheel_states(const std::vector<FlywheelState>& flywheels) {
    mxArray* s = make_struct_array(flywheels.size());
    for (std::size_t i = 0; i < flywheels.size(); ++i) {
        adopt_logical_field(s, i, "flywheel_state", flywheels[i].flywheel_state == 0);
        adopt_number_field(s, i, "load_served", flywheels[i].load_served);
    }
    return s;
}

mxArray* make_converter_states(const std::vector<ConverterState>& converters) {
    mxArray* s = make_struct_array(converters.size());
    for (std::size_t i = 0; i < converters.size(); ++i) add_converter_state_fields(s, i, converters[i]);
    return s;
}

mxArray* make_grid_states(const std::vector<GridState>& grids) {
    mxArray* s = make_struct_array(grids.size());
    for (std::size_t i = 0; i < grids.size(); ++i) {
        const GridState& grid = grids[i];
        adopt_number_field(s, i, "grid_purchases", grid.grid_purchases);
        adopt_number_field(s, i, "grid_sales", grid.grid_sales);
        adopt_struct_field(s, i, "grid_state", make_grid_state_flags(grid.grid_state));
        adopt_number_field(s, i, "max_grid_purchases", grid.max_grid_purchases);
        adopt_number_field(s, i, "max_grid_sales", grid.max_grid_sales);
        adopt_number_field(s, i, "power_price", grid.power_price);
        adopt_number_field(s, i, "sellback_rate", grid.sellback_rate);
    }
    return s;
}

mxArray* make_grid_state_flags(const GridStateFlags& flags) {
    mxArray* s = make_single_struct();
    adopt_logical_field(s, 0, "grid_is_down", flags.grid_is_down);
    adopt_logical_field(s, 0, "maintain_state_of_charge", flags.maintain_state_of_charge);
    adopt_logical_field(s, 0, "maintain_state_of_charge_has_ended", flags.maintain_state_of_charge_has_ended);
    adopt_number_field(s, 0, "maintain_state_of_charge_percent", flags.maintain_state_of_charge_percent);
    adopt_logical_field(s, 0, "prohibit_any_battery_charging", flags.prohibit_any_battery_charging);
    adopt_logical_field(s, 0, "prohibit_any_grid_sales", flags.prohibit_any_grid_sales);
    adopt_logical_field(s, 0, "prohibit_battery_from_discharging", flags.prohibit_battery_from_discharging);
    adopt_logical_field(s, 0, "prohibit_grid_from_charging_battery", flags.prohibit_grid_from_charging_battery);
    adopt_logical_field(s, 0, "prohibit_grid_sales_from_battery", flags.prohibit_grid_sales_from_battery);
    return s;
}

// The set point comes first here, the reverse of the record's order.
mxArray* make_custom_component_states(const std::vector<CustomComponentState>& components) {
    mxArray* s = make_struct_array(components.size());
    for (std::size_t i = 0; i < components.size(); ++i) {
        adopt_number_field(s, i, "power_setpoint", components[i].power_setpoint);
        adopt_number_field(s, i, "power_available", components[i].power_available);
    }
    return s;
}

mxArray* make_wind_turbine_states(const std::vector<WindTurbineState>& turbines) {
    mxArray* s = make_struct_array(turbines.size());
    for (std::size_t i = 0; i < turbines.size(); ++i) {
        const WindTurbineState& turbine = turbines[i];
        adopt_number_field(s, i, "power_setpoint", turbine.power_setpoint);
        adopt_number_field(s, i, "power_available", turbine.power_available);
        add_current_state_field(s, i, turbine.current_state, wind_turbine_current_states);
    }
    return s;
}

mxArray* make_primary_load_states(const std::vector<PrimaryLoadState>& loads) {
    mxArray* s = make_struct_array(loads.size());
    for (std::size_t i = 0; i < loads.size(); ++i) {
        adopt_number_field(s, i, "load_requested", loads[i].load_requested);
        adopt_number_field(s, i, "load_served", loads[i].load_served);
    }
    return s;
}

mxArray* make_bus_state(const BusState& bus) {
    mxArray* s = make_single_struct();
    adopt_number_field(s, 0, "capacity_shortage", bus.capacity_shortage);
    adopt_number_field(s, 0, "excess_electricity", bus.excess_electricity);
    adopt_number_field(s, 0, "load_requested", bus.load_requested);
    adopt_number_field(s, 0, "load_served", bus.load_served);
    adopt_number_field(s, 0, "operating_capacity_requested", bus.operating_capacity_requested);
    adopt_number_field(s, 0, "operating_capacity_served", bus.operating_capacity_served);
    adopt_number_field(s, 0, "unmet_load", bus.unmet_load);
    return s;
}

}  // namespace tamlo_marshal
