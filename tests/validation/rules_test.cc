// Every rule of a time step's validation, at and around its boundary, with its whole message:
// each row changes the quiet system and runs one group of checks on it.
#include <gtest/gtest.h>

#include <limits>

#include "bus_sign_checks.h"
#include "converter_checks.h"
#include "generator_checks.h"
#include "grid_checks.h"
#include "test_systems.h"

namespace tamlo_test {
namespace {

template <void (*check)(const SimulationParameters&, const SimulationState&, Warnings&)>
Warnings group(const System& s) {
    Warnings w;
    check(s.parameters, s.state, w);
    return w;
}

Warnings signs(const System& s) {
    Warnings w;
    tamlo_validation::check_bus_signs(s.state, w);
    return w;
}

// Emptied lists get a new vector: no old buffer is left for a stray read of front() to find.
// The groups a row can run. The set-point, balance and load-served rules run in the whole
// step: the quiet system keeps every other group silent there.
constexpr auto converter = group<tamlo_validation::check_converter>;
constexpr auto generators = group<tamlo_validation::check_generators>;
constexpr auto grid = group<tamlo_validation::check_grid>;
Warnings step(const System& s) { return validate(s); }

GridState trade(bool down, double max_purchases, double max_sales, double purchases, double sales) {
    GridState g{{}, max_purchases, max_sales, purchases, sales};
    g.grid_state.grid_is_down = down;
    return g;
}

struct Rule {
    const char* name;
    Warnings (*check)(const System&);
    void (*change)(System&);
    Warnings expected;
};

const Rule rules[] = {
    // Converter
    Rule{"C1 to C4 in order, C3 C4 at 1e-5 above capacity", converter, [](System& s) {
        s.state.converter_list[0] = {10.0, 20.0, 10.0, 30.0};
        s.parameters.converter_list[0].inverter_capacity = 19.9998;
        s.parameters.converter_list[0].rectifier_capacity = 29.9997;
    }, {"Dispatch must set simulation_state.converter.inverter_power_output (20.000000 kW) equal to "
        "simulation_state.converter.inverter_power_input (10.000000 kW) * "
        "simulation_parameters.converter.inverter_efficiency/100. Incorrect value found in time step: 5",
        "Dispatch must set simulation_state.converter.rectifier_power_output (30.000000 kW) equal to "
        "simulation_state.converter.rectifier_power_input (10.000000 kW) * "
        "simulation_parameters.converter.rectifier_efficiency/100. Incorrect value found in time step: 5",
        "simulation_state.converters.inverter_power_output (20.000000 kW) exceeded "
        "simulation_parameters.converter.inverter_capacity in time step: 5",
        "simulation_state.converters.rectifier_power_output (30.000000 kW) exceeded "
        "simulation_parameters.converter.rectifier_capacity in time step: 5"}},
    Rule{"C1 C2 at their own efficiencies and C3 at capacity, within tolerance, pass; a second converter is ignored",
        converter, [](System& s) {
            s.state.converter_list[0] = {100.0, 100.00005, 100.0, 85.00005};
            s.parameters.converter_list.resize(2);
            s.state.converter_list.push_back({10.0, 99.0, 0.0, 0.0});
        }, {}},
    Rule{"state without converter is skipped", converter,
        [](System& s) { s.state.converter_list = std::vector<ConverterState>(); }, {}},
    Rule{"parameters without converter skip the state's", converter,
        [](System& s) { s.parameters.converter_list = std::vector<ConverterParameters>(); }, {}},

    // Generators
    Rule{"G1 G2 G4 in order, numbered from 1; a state entry without parameters skips only G2", generators,
        [](System& s) {
            s.state.generator_list[1] = {0.5, 1.0, FORCED_OFF_OUT_OF_FUEL};
            s.state.generator_list.push_back({1.0, 2.0, DISPATCH_DECIDES});
        },
        {"simulation_state.generators(2).power_setpoint (1.000000 kW) is greater than the generator's "
         "power_available (0.500000 kW) in time step: 5",
         "simulation_state.generators(2).power_setpoint (1.000000 kW) is less than the generator's minimum load "
         "(simulation_parameters_.generator_list[i].minimum_load) in time step: 5",
         "simulation_state.generators(2).current_state is FORCED_OFF but the generator is producing power "
         "(1.000000 kW) in time step: 5",
         "simulation_state.generators(3).power_setpoint (2.000000 kW) is greater than the generator's "
         "power_available (1.000000 kW) in time step: 5"}},
    Rule{"G1 G2 within tolerance, G4 below 1e-6 kW and states outside -3..2 pass", generators, [](System& s) {
        s.state.generator_list[0] = {100.0, 100.00005, DISPATCH_DECIDES};
        s.state.generator_list[1] = {80.0, 4.999999, static_cast<GeneratorCurrentState>(-4)};
        s.state.generator_list.push_back({1.0, 0.0, static_cast<GeneratorCurrentState>(3)});
        s.state.generator_list.push_back({1.0, 0.0000005, FORCED_OFF_FOR_SCHEDULE});
    }, {}},
    Rule{"G3 forced on for schedule below 1e-6 kW, for minimum runtime at exactly 0 kW (G2 silent)", generators,
        [](System& s) {
            s.state.generator_list[0] = {100.0, 0.0000005, FORCED_ON_FOR_SCHEDULE};
            s.state.generator_list[1] = {80.0, 0.0, FORCED_ON_FOR_MINIMUM_RUNTIME};
        },
        {"simulation_state.generators(1).current_state is FORCED_ON but the generator is not producing power in "
         "time step: 5",
         "simulation_state.generators(2).current_state is FORCED_ON but the generator is not producing power in "
         "time step: 5"}},
    Rule{"G4 forced off for maintenance and for schedule", generators, [](System& s) {
        s.state.generator_list[0].current_state = FORCED_OFF_FOR_MAINTENANCE_EVENT;
        s.state.generator_list[1].current_state = FORCED_OFF_FOR_SCHEDULE;
    }, {"simulation_state.generators(1).current_state is FORCED_OFF but the generator is producing power "
        "(40.000000 kW) in time step: 5",
        "simulation_state.generators(2).current_state is FORCED_OFF but the generator is producing power "
        "(30.000000 kW) in time step: 5"}},

    // Grid
    Rule{"R1 to R4 in order, trade under 1 kW", grid,
        [](System& s) { s.state.grid_list[0] = trade(true, 0.25, 0.125, 0.5, 0.25); },
        {"simulation_state.grids(0).grid_is_down is TRUE but power is being purchased (0.500000 kW) in time step: 5",
         "simulation_state.grids(0).grid_is_down is TRUE but power is being sold (0.250000 kW) in time step: 5",
         "simulation_state.grids[0].grid_purchases (0.500000 kW) exceeds "
         "simulation_state.grids[0].max_grid_purchases in time step: 5",
         "simulation_state.grids[0].grid_sales (0.250000 kW) exceeds simulation_state.grids[0].max_grid_sales in "
         "time step: 5"}},
    Rule{"R1 R2 trade of exactly 1e-6 kW with a down grid, R3 R4 exactly at the limits, second grid ignored", grid,
        [](System& s) {
            s.state.grid_list[0] = trade(true, 0.000001, 0.000001, 0.000001, 0.000001);
            s.parameters.grid_list.resize(2);
            s.state.grid_list.push_back(trade(true, 0.0, 0.0, 70.0, 60.0));
        },
        {}},
    Rule{"R3 compares without tolerance", grid, [](System& s) { s.state.grid_list[0].grid_purchases = 50.00005; },
        {"simulation_state.grids[0].grid_purchases (50.000050 kW) exceeds "
         "simulation_state.grids[0].max_grid_purchases in time step: 5"}},
    Rule{"state without grid is skipped", grid, [](System& s) { s.state.grid_list = std::vector<GridState>(); }, {}},
    Rule{"parameters without grid skip the state's", grid, [](System& s) {
        s.parameters.grid_list.clear();
        s.state.grid_list[0] = trade(true, 0.0, 0.0, 70.0, 60.0);
    }, {}},

    // Set points; P1 compares without tolerance and checks a state entry without parameters.
    Rule{"P1 W1 U1 in order", step, [](System& s) {
        s.state.pv_list[0].power_available = 19.99999999;
        s.state.pv_list.push_back({5.0, 6.0});
        s.state.wind_turbine_list[0].power_available = 9.5;
        s.state.custom_component_list[0].power_available = 0.75;
    }, {"The value of simulation_state.pvs(1).power_setpoint (20.000000 kW) can't be larger than the "
        "power_available (20.000000 kW) in timestep: 5",
        "The value of simulation_state.pvs(2).power_setpoint (6.000000 kW) can't be larger than the "
        "power_available (5.000000 kW) in timestep: 5",
        "The value of simulation_state.wind_turbines(1).power_setpoint (10.000000 kW) can't be larger than the "
        "power_available (9.500000 kW) in timestep: 5",
        "The value of simulation_state.custom_components(1).power_setpoint (1.000000 kW) can't be larger than the "
        "power_available (0.750000 kW) in timestep: 5"}},

    // Balance
    Rule{"quiet system passes, set points equal to what is available included", step, [](System&) {}, {}},
    Rule{"B1 B4 B6 B7 in order", step, [](System& s) {
        s.parameters.converter_list.clear();  // no capacity moves between the buses
        s.state.generator_list[0].power_setpoint = 30.0;
        s.state.ac_bus.operating_capacity_served = 10.0;
        s.state.dc_bus = BusState{10.0, 6.0, 1.0, 0.0, 60.0, 60.0, 0.0};
    }, {"The value of simulation_state.ac_bus.load_served (100.000000 kW) exceeds the available generation "
        "(90.000000 kW) in timestep: 5",
        "If there is a capacity shortage, the MATLAB dispatch must set simulation_state.dc_bus.unmet_load equal to "
        "simulation_state.dc_bus.load_requested - simulation_state.dc_bus.load_served. DC bus load requested was: "
        "10.000000 kW. DC bus load served was: 6.000000 kW. Unmet load reported was: 1.000000 kW. Time step: 5",
        "The value of simulation_state.dc_bus.operating_capacity_served (60.000000 kW) exceeds the available "
        "capacity (51.000000 kW) in time step: 5",
        "If there is a capacity shortage, the MATLAB dispatch must set simulation_state.ac_bus.capacity_shortage "
        "equal to simulation_state.ac_bus.operating_capacity_requested - "
        "simulation_state.ac_bus.operating_capacity_served. AC operating capacity requested: 20.000000 kW. AC "
        "operating capacity served: 10.000000 kW. Capacity shortage: 0.000000 kW. Time step: 5"}},
    Rule{"B2 B3 B5 B8 in order", step, [](System& s) {
        s.parameters.converter_list.clear();  // no capacity moves between the buses
        s.state.ac_bus = BusState{100.0, 80.0, 0.0, 0.0, 300.0, 300.0, 0.0};
        s.state.battery_list[0].power_setpoint = -4.0;
        s.state.dc_bus.operating_capacity_served = 2.0;
    }, {"If there is a capacity shortage, the MATLAB dispatch must set simulation_state.ac_bus.unmet_load equal to "
        "simulation_state.ac_bus.load_requested - simulation_state.ac_bus.load_served. AC bus load requested was: "
        "100.000000 kW. AC bus load served was: 80.000000 kW. Unmet load reported was: 0.000000 kW. Time step: 5",
        "The value of simulation_state.dc_bus.load_served (10.000000 kW) exceeds the available generation "
        "(5.000000 kW) in timestep: 5",
        "The value of simulation_state.ac_bus.operating_capacity_served (300.000000 kW) exceeds the available "
        "capacity (260.000000 kW) in time step: 5",
        "If there is a capacity shortage, the MATLAB dispatch must set simulation_state.dc_bus.capacity_shortage "
        "equal to simulation_state.dc_bus.operating_capacity_requested - "
        "simulation_state.dc_bus.operating_capacity_served. DC operating capacity requested: 5.000000 kW. DC "
        "operating capacity served: 2.000000 kW. Capacity shortage: 0.000000 kW. Time step: 5"}},
    // AC: the shortfall unserved and reported, the shortage reported. DC: served equal to requested
    // within tolerance (so B4 never asks for the unmet load), the excess reported, unmet load just
    // above -1e-6 kW (S10).
    Rule{"B1 B2 B4 B7 B10 and S10 silent when the figures match", step, [](System& s) {
        s.state.generator_list[0].power_setpoint = 30.0;
        s.state.ac_bus = BusState{100.0, 90.0, 10.0, 0.0, 20.0, 10.0, 10.0};
        s.state.battery_list[0].power_setpoint = -12.0;
        s.state.dc_bus = BusState{10.0, 9.999995, -0.0000009, 3.0, 5.0, 5.0, 0.0};
    }, {}},
    Rule{"B9 B10 excess electricity does not match", step, [](System& s) {
        s.state.generator_list[0].power_setpoint = 50.0;
        s.state.battery_list[0].power_setpoint = -12.0;
        s.state.dc_bus.excess_electricity = 1.0;
    }, {"AC production exceeds the load, but excess electricity doesn't match the expected value. Estimated AC "
        "production: 110.000000 kW. AC load requested: 100.000000 kW. AC excess electricity: 0.000000 kW. Time "
        "step: 5",
        "DC production exceeds the load, but excess electricity doesn't match the expected value. Estimated DC "
        "production: 13.000000 kW. DC load requested: 10.000000 kW. DC excess electricity: 1.000000 kW. Time "
        "step: 5"}},

    // Signs
    Rule{"S1 to S10 in order, S5 at exactly -1e-6 kW, requests unchecked", signs, [](System& s) {
        s.state.ac_bus = BusState{-11.0, -3.0, -0.000001, -2.0, -12.0, -4.0, -1.0};
        s.state.dc_bus = BusState{-13.0, -8.0, -10.0, -7.0, -14.0, -9.0, -6.0};
    }, {"Capacity shortage can't be less than zero: simulation_state.ac_bus.capacity_shortage = -1.000000 kW. "
        "Time step: 5",
        "Excess electricity can't be less than zero: simulation_state.ac_bus.excess_electricity = -2.000000 kW. "
        "Time step: 5",
        "Load served can't be less than zero: simulation_state.ac_bus.load_served = -3.000000 kW. Time step: 5",
        "Operating capacity served can't be less than zero: simulation_state.ac_bus.operating_capacity_served = "
        "-4.000000 kW. Time step: 5",
        "Unmet load can't be less than zero: simulation_state.ac_bus.unmet_load = -0.000001 kW. Time step: 5",
        "Capacity shortage can't be less than zero: simulation_state.dc_bus.capacity_shortage = -6.000000 kW. "
        "Time step: 5",
        "Excess electricity can't be less than zero: simulation_state.dc_bus.excess_electricity = -7.000000 kW. "
        "Time step: 5",
        "Load served can't be less than zero: simulation_state.dc_bus.load_served = -8.000000 kW. Time step: 5",
        "Operating capacity served can't be less than zero: simulation_state.dc_bus.operating_capacity_served = "
        "-9.000000 kW. Time step: 5",
        "Unmet load can't be less than zero: simulation_state.dc_bus.unmet_load = -10.000000 kW. Time step: 5"}},

    // Load served; the last time step wraps to 0.
    Rule{"L1 L2 served above requested, L2 without unit after served, in the last time step", step,
        [](System& s) {
            s.state.ac_bus.load_served = 120.0;
            s.state.dc_bus.load_served = 12.5;
            s.state.current_timestep = std::numeric_limits<std::uint32_t>::max();
        },
        {"Load served can't be greater than load requested: simulation_state.ac_bus.load_served = 120.000000 kW. "
         "simulation_state.ac_bus.load_requested = 100.000000 kW. Time step: 0",
         "Load served can't be greater than load requested: simulation_state.dc_bus.load_served = 12.500000. "
         "simulation_state.dc_bus.load_requested = 10.000000 kW. Time step: 0"}},
    Rule{"L1 L2 served above requested within tolerance passes", step, [](System& s) {
        s.state.ac_bus.load_served = 100.00005;
        s.state.dc_bus.load_served = 10.000005;
    }, {}},
};

TEST(Rules, ReportWholeMessages) {
    for (const Rule& rule : rules) {
        SCOPED_TRACE(rule.name);
        System s = quiet_system();
        rule.change(s);
        EXPECT_EQ(rule.check(s), rule.expected);
    }
}

}  // namespace
}  // namespace tamlo_test
