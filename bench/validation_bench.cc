// Cost of validate_dispatch per time step, for a typical and a large system, when every
// check passes and when many fail.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <memory>

#include "validate_dispatch.h"

namespace {

using namespace tamlo_dispatch;

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

// n of each component kind (generators twice over in the typical system), balanced so that
// every check passes. AC: generators, PV and wind; DC: the batteries discharge into the load.
System balanced_system(std::size_t generators, std::size_t others) {
    System s;
    SimulationParameters& p = s.parameters;
    SimulationState& st = s.state;
    double ac_production = 0.0;
    double dc_production = 0.0;
    for (std::size_t i = 0; i < generators; ++i) {
        GeneratorParameters g = on_bus<GeneratorParameters>(true);
        g.minimum_load = 5.0;
        p.generator_list.push_back(g);
        st.generator_list.push_back({100.0, 40.0, i % 2 ? FORCED_ON_FOR_SCHEDULE : DISPATCH_DECIDES});
        ac_production += 40.0;
    }
    for (std::size_t i = 0; i < others; ++i) {
        p.pv_list.push_back(on_bus<PvParameters>(true));
        st.pv_list.push_back({25.0, 20.0});
        p.wind_turbine_list.push_back(on_bus<WindTurbineParameters>(true));
        st.wind_turbine_list.push_back({10.0, 12.0, DISPATCH_DECIDES});
        ac_production += 30.0;
        p.battery_list.push_back(on_bus<BatteryParameters>(false));
        BatteryState b;
        b.max_discharge_power = 50.0;
        b.power_setpoint = -19.0;
        st.battery_list.push_back(b);
        dc_production += 19.0;
        ConverterParameters c;
        c.inverter_capacity = 100.0;
        c.rectifier_capacity = 100.0;
        c.inverter_efficiency = 90.0;
        c.rectifier_efficiency = 85.0;
        p.converter_list.push_back(c);
        st.converter_list.push_back({10.0, 9.0, 0.0, 0.0});
        GridParameters grid;
        grid.technical_model = std::make_shared<RealTime>();
        p.grid_list.push_back(grid);
        GridState gs;
        gs.max_grid_purchases = 50.0;
        gs.max_grid_sales = 50.0;
        st.grid_list.push_back(gs);
    }
    // Only the first converter counts: 9 kW reach AC, 10 kW leave DC.
    ac_production += 9.0;
    dc_production -= 10.0;
    for (int i = 0; i < 2; ++i) {
        p.primary_load_list.push_back({"load", i == 0, 0.0});
    }
    st.primary_load_list = {{ac_production, ac_production}, {dc_production, dc_production}};
    st.ac_bus = {ac_production, ac_production, 0.0, 0.0, 20.0, 20.0, 0.0};
    st.dc_bus = {dc_production, dc_production, 0.0, 0.0, 5.0, 5.0, 0.0};
    st.current_timestep = 100;
    return s;
}

System typical_system() { return balanced_system(2, 1); }
System large_system() { return balanced_system(50, 50); }

// Breaks many rules at once: every generator above its availability, every PV and wind turbine
// above theirs, the converter off its efficiency, a down grid with trade, and negative bus values.
System failing(System s) {
    for (GeneratorState& g : s.state.generator_list) g.power_available = 10.0;
    for (PvState& pv : s.state.pv_list) pv.power_available = 1.0;
    for (WindTurbineState& w : s.state.wind_turbine_list) w.power_available = 1.0;
    s.state.converter_list[0].inverter_power_output = 20.0;
    s.state.grid_list[0].grid_state.grid_is_down = true;
    s.state.grid_list[0].grid_purchases = 2.0;
    s.state.ac_bus.capacity_shortage = -1.0;
    s.state.dc_bus.unmet_load = -1.0;
    return s;
}

void run_passing(benchmark::State& bench, const System& s) {
    SimulationErrorsAndWarnings messages;
    for (auto _ : bench) {
        tamlo_validation::validate_dispatch(s.parameters, s.state, messages);
        benchmark::DoNotOptimize(messages.simulation_warnings.data());
    }
    if (!messages.simulation_warnings.empty()) bench.SkipWithError("the balanced system reported a warning");
}

// The list is emptied after each call so the gate stays open; the time includes freeing the
// messages (pausing the timer would cost more than what it hides).
void run_failing(benchmark::State& bench, const System& s) {
    SimulationErrorsAndWarnings messages;
    std::size_t warnings = 0;
    for (auto _ : bench) {
        tamlo_validation::validate_dispatch(s.parameters, s.state, messages);
        warnings = messages.simulation_warnings.size();
        messages.simulation_warnings.clear();
    }
    bench.counters["warnings"] = static_cast<double>(warnings);
}

void BM_ValidateTypicalPassing(benchmark::State& bench) { run_passing(bench, typical_system()); }
void BM_ValidateLargePassing(benchmark::State& bench) { run_passing(bench, large_system()); }
void BM_ValidateTypicalFailing(benchmark::State& bench) { run_failing(bench, failing(typical_system())); }
void BM_ValidateLargeFailing(benchmark::State& bench) { run_failing(bench, failing(large_system())); }

BENCHMARK(BM_ValidateTypicalPassing);
BENCHMARK(BM_ValidateLargePassing);
BENCHMARK(BM_ValidateTypicalFailing);
BENCHMARK(BM_ValidateLargeFailing);

}  // namespace

BENCHMARK_MAIN();
