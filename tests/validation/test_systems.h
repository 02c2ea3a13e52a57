// Records for the validation tests: a small system whose dispatch breaks no rule, and the
// ways to run the checks on it.
#ifndef TAMLO_TESTS_VALIDATION_TEST_SYSTEMS_H
#define TAMLO_TESTS_VALIDATION_TEST_SYSTEMS_H

#include <string>
#include <utility>
#include <vector>

#include "tamlo_dispatch/dispatch_outcome.h"
#include "tamlo_dispatch/simulation_parameters.h"
#include "tamlo_dispatch/simulation_state.h"
#include "validate_dispatch.h"

namespace tamlo_test {

using namespace tamlo_dispatch;
using Warnings = std::vector<std::string>;

struct System {
    SimulationParameters parameters;
    SimulationState state;
};

template <typename Parameters>
Parameters on_bus(bool is_ac) {
    Parameters p;
    p.component.is_AC = is_ac;
    return p;
}

// A balanced system of each kind of component on both buses; every check passes.
// AC: generators 40 + 30, PV 20, wind 10 -> 100 kW produced of 100 requested; capacity 100 + 80
//     + 20 + 10, and 50 the grid may sell to it -> 260 kW.
// DC: battery discharging 9, custom component 1 (own flag DC) -> 10 of 10; capacity 50 + 1 -> 51.
// PV, wind and custom component are set to exactly what they have available.
// Converter: inverter 100 kW at 100 %, rectifier 100 kW at 85 %, idle. Time step 5 in messages.
inline System quiet_system() {
    System s;
    SimulationParameters& p = s.parameters;
    SimulationState& st = s.state;

    p.generator_list = {on_bus<GeneratorParameters>(true), on_bus<GeneratorParameters>(true)};
    p.generator_list[0].minimum_load = 10.0;
    p.generator_list[1].minimum_load = 5.0;
    st.generator_list = {{100.0, 40.0, DISPATCH_DECIDES}, {80.0, 30.0, FORCED_ON_FOR_SCHEDULE}};
    p.pv_list = {on_bus<PvParameters>(true)};
    st.pv_list = {{20.0, 20.0}};
    p.wind_turbine_list = {on_bus<WindTurbineParameters>(true)};
    st.wind_turbine_list = {{10.0, 10.0, DISPATCH_DECIDES}};

    p.battery_list = {on_bus<BatteryParameters>(false)};
    st.battery_list.resize(1);
    st.battery_list[0].max_discharge_power = 50.0;
    st.battery_list[0].power_setpoint = -9.0;
    CustomComponentParameters custom = on_bus<CustomComponentParameters>(true);
    custom.is_AC = false;  // the custom component's own flag decides its bus
    p.custom_component_list = {custom};
    st.custom_component_list = {{1.0, 1.0}};

    // Capacities of the inverter and the rectifier, then their efficiencies.
    p.converter_list = {ConverterParameters{{}, 100.0, 100.0, 100.0, 85.0}};
    st.converter_list = {ConverterState{}};

    p.grid_list.resize(1);
    st.grid_list = {GridState{{}, 50.0, 50.0}};  // purchase and sale limits

    // Load requested, served, unmet, excess; operating capacity requested, served, shortage.
    st.ac_bus = BusState{100.0, 100.0, 0.0, 0.0, 20.0, 20.0, 0.0};
    st.dc_bus = BusState{10.0, 10.0, 0.0, 0.0, 5.0, 5.0, 0.0};
    st.current_timestep = 4;
    return s;
}

// The warnings of one validation, after the given earlier ones.
inline Warnings validate(const System& s, Warnings earlier = {}) {
    SimulationErrorsAndWarnings messages;
    messages.simulation_warnings = std::move(earlier);
    tamlo_validation::validate_dispatch(s.parameters, s.state, messages);
    return messages.simulation_warnings;
}

}  // namespace tamlo_test

#endif
