// Cost of building simulation_state (every time step) and simulation_parameters (every run).
#include <benchmark/benchmark.h>

#include <memory>

#include "simulation_parameters_struct.h"
#include "simulation_state_struct.h"
#include "struct_primitives.h"

namespace {

using namespace tamlo_dispatch;
using namespace tamlo_marshal;

// A typical hybrid system: three diesels, PV, wind, a battery with converter, two loads, a grid.
SimulationState typical_state(std::size_t generators) {
    SimulationState s;
    for (std::size_t i = 0; i < generators; ++i) s.generator_list.push_back({100.0, 40.0, DISPATCH_DECIDES});
    s.pv_list = {{30.0, 30.0}};
    s.battery_list = {BatteryState{}};
    s.primary_load_list = {{80.0, 80.0}, {20.0, 20.0}};
    s.converter_list = {ConverterState{}};
    s.grid_list = {GridState{}};
    s.wind_turbine_list = {{10.0, 12.0, DISPATCH_DECIDES}};
    s.current_timestep = 42;
    return s;
}

void FillSimulationState(benchmark::State& bench) {
    const SimulationState state = typical_state(static_cast<std::size_t>(bench.range(0)));
    mxArray* target = make_single_struct();
    for (auto _ : bench) fill_simulation_state_struct(target, state);
    mxDestroyArray(target);
}
BENCHMARK(FillSimulationState)->Arg(3)->Arg(30);

// The same values built and released without storing them: the difference to
// FillSimulationState is the cost of the top level's stored copies.
void BuildStateValuesOnly(benchmark::State& bench) {
    const SimulationState state = typical_state(static_cast<std::size_t>(bench.range(0)));
    for (auto _ : bench) {
        for (mxArray* value : {make_generator_states(state.generator_list), make_pv_states(state.pv_list),
                               make_battery_states(state.battery_list), make_flywheel_states(state.flywheel_list),
                               make_converter_states(state.converter_list), make_grid_states(state.grid_list),
                               make_custom_component_states(state.custom_component_list),
                               make_wind_turbine_states(state.wind_turbine_list),
                               make_primary_load_states(state.primary_load_list), make_bus_state(state.ac_bus),
                               make_bus_state(state.dc_bus)}) {
            mxDestroyArray(value);
        }
    }
}
BENCHMARK(BuildStateValuesOnly)->Arg(3)->Arg(30);

SimulationParameters typical_parameters() {
    SimulationParameters p;
    p.extension_parameters = {{"path", ExtensionParameterType::text, 0, false, "/work", {}},
                              {"dispatch", ExtensionParameterType::text, 0, false, "dispatch", {}}};
    p.generator_list.resize(3);
    p.primary_load_list.resize(2);
    PvParameters pv;
    pv.solar_forecast.assign(8760, 0.5);
    p.pv_list = {pv};
    p.battery_list.resize(1);
    p.converter_list.resize(1);
    auto real_time = std::make_shared<RealTime>();
    real_time->realtime_power_price.assign(8760, 0.2);
    real_time->realtime_sellback_rate.assign(8760, 0.05);
    p.grid_list = {{real_time, true, 100.0}};
    p.wind_turbine_list.resize(1);
    p.number_of_timesteps = 8760;
    return p;
}

void FillSimulationParameters(benchmark::State& bench) {
    const SimulationParameters parameters = typical_parameters();
    mxArray* target = make_single_struct();
    for (auto _ : bench) fill_simulation_parameters_struct(target, parameters);
    mxDestroyArray(target);
}
BENCHMARK(FillSimulationParameters);

// One scalar field per element of a 30-element array: a stored copy against the value itself.
void WriteScalarsStoringCopies(benchmark::State& bench) {
    for (auto _ : bench) {
        mxArray* s = make_struct_array(30);
        for (std::size_t i = 0; i < 30; ++i) set_number_field(s, i, "power_available", 1.0);
        mxDestroyArray(s);
    }
}
BENCHMARK(WriteScalarsStoringCopies);

void WriteScalarsAdopting(benchmark::State& bench) {
    for (auto _ : bench) {
        mxArray* s = make_struct_array(30);
        for (std::size_t i = 0; i < 30; ++i) adopt_number_field(s, i, "power_available", 1.0);
        mxDestroyArray(s);
    }
}
BENCHMARK(WriteScalarsAdopting);

}  // namespace

BENCHMARK_MAIN();
