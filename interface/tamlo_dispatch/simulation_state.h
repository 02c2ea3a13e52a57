// The per-time-step state record the simulator hands the extension, completed in place with
// the dispatch decisions.
#ifndef TAMLO_DISPATCH_SIMULATION_STATE_H
#define TAMLO_DISPATCH_SIMULATION_STATE_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tamlo_dispatch/grid_models.h"

namespace tamlo_dispatch {

// Negative values force the unit off, positive values force it on.
enum GeneratorCurrentState : std::int32_t {
    FORCED_OFF_OUT_OF_FUEL = -3,
    FORCED_OFF_FOR_MAINTENANCE_EVENT = -2,
    FORCED_OFF_FOR_SCHEDULE = -1,
    DISPATCH_DECIDES = 0,
    FORCED_ON_FOR_SCHEDULE = 1,
    FORCED_ON_FOR_MINIMUM_RUNTIME = 2,
};

struct GeneratorState {
    double power_available = 0.0;
    double power_setpoint = 0.0;
    GeneratorCurrentState current_state = DISPATCH_DECIDES;
};

struct PvState {
    double power_available = 0.0;
    double power_setpoint = 0.0;
};

struct ConverterState {
    double inverter_power_input = 0.0;    // DC side of the inverter
    double inverter_power_output = 0.0;   // AC side of the inverter
    double rectifier_power_input = 0.0;   // AC side of the rectifier
    double rectifier_power_output = 0.0;  // DC side of the rectifier
};

struct BatteryState {
    ConverterState dedicated_converter;
    double max_charge_power = 0.0;
    double max_discharge_power = 0.0;
    double state_of_charge_kwh = 0.0;
    double state_of_charge_percent = 0.0;
    double power_setpoint = 0.0;  // positive charges the battery
    double energy_cost = 0.0;
};

struct PrimaryLoadState {
    double load_requested = 0.0;
    double load_served = 0.0;
};

struct FlywheelState {
    std::uint32_t flywheel_state = 0;  // 0 is what MATLAB sees as true
    double load_served = 0.0;
};

struct GridState {
    GridStateFlags grid_state;
    double max_grid_purchases = 0.0;
    double max_grid_sales = 0.0;
    double grid_purchases = 0.0;
    double grid_sales = 0.0;
    double power_price = 0.0;
    double sellback_rate = 0.0;
};

struct CustomComponentState {
    double power_available = 0.0;
    double power_setpoint = 0.0;
};

struct WindTurbineState {
    double power_setpoint = 0.0;
    double power_available = 0.0;
    GeneratorCurrentState current_state = DISPATCH_DECIDES;
};

struct BusState {
    double load_requested = 0.0;
    double load_served = 0.0;
    double unmet_load = 0.0;
    double excess_electricity = 0.0;
    double operating_capacity_requested = 0.0;
    double operating_capacity_served = 0.0;
    double capacity_shortage = 0.0;
};

struct SimulationState {
    std::vector<GeneratorState> generator_list;
    std::vector<PvState> pv_list;
    std::vector<BatteryState> battery_list;
    std::vector<PrimaryLoadState> primary_load_list;
    std::vector<ConverterState> converter_list;
    std::vector<FlywheelState> flywheel_list;
    std::vector<GridState> grid_list;
    std::vector<CustomComponentState> custom_component_list;
    std::vector<WindTurbineState> wind_turbine_list;
    BusState ac_bus;
    BusState dc_bus;
    std::uint32_t current_timestep = 0;
};

// Layout pins: these records are shared in memory with the simulator.
static_assert(sizeof(GeneratorCurrentState) == 4);
static_assert(sizeof(GeneratorState) == 24 && offsetof(GeneratorState, current_state) == 16);
static_assert(sizeof(PvState) == 16);
static_assert(sizeof(ConverterState) == 32 && offsetof(ConverterState, rectifier_power_output) == 24);
static_assert(offsetof(BatteryState, max_charge_power) == 32);
static_assert(offsetof(BatteryState, power_setpoint) == 64);
static_assert(sizeof(BatteryState) == 80);
static_assert(sizeof(PrimaryLoadState) == 16);
static_assert(offsetof(FlywheelState, load_served) == 8 && sizeof(FlywheelState) == 16);
static_assert(offsetof(GridState, max_grid_purchases) == 16);
static_assert(offsetof(GridState, sellback_rate) == 56 && sizeof(GridState) == 64);
static_assert(sizeof(CustomComponentState) == 16);
static_assert(offsetof(WindTurbineState, power_available) == 8);
static_assert(offsetof(WindTurbineState, current_state) == 16);
static_assert(sizeof(BusState) == 56 && offsetof(BusState, capacity_shortage) == 48);
static_assert(offsetof(SimulationState, ac_bus) == 9 * sizeof(std::vector<double>));
static_assert(offsetof(SimulationState, dc_bus) == 9 * sizeof(std::vector<double>) + 56);
static_assert(offsetof(SimulationState, current_timestep) == 9 * sizeof(std::vector<double>) + 112);

}  // namespace tamlo_dispatch

#endif
