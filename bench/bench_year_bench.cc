// The example year (8760 hourly steps) end to end, engine start included, split per step
// into plant (series, books), extension (marshalling, validation, waiting) and engine CPU; the
// minimal strategy's year also with the run and its engine kept to one core, as dispatch-bench
// run keeps them, and the speed-up that gives.
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <sched.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "core_placement.h"
#include "extension_library.h"
#include "ratio_report.h"
#include "run.h"
#include "scenario.h"

namespace {

using namespace tamlo_host;

// CPU seconds used so far by this process's children (the engine runs as one).
double children_cpu_seconds() {
    const pid_t self = getpid();
    double total = 0.0;
    DIR* proc = opendir("/proc");
    if (proc == nullptr) return 0.0;
    while (dirent* entry = readdir(proc)) {
        const std::string name = entry->d_name;
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        std::ifstream in("/proc/" + name + "/stat");
        std::string text;
        std::getline(in, text);
        const auto close = text.rfind(')');
        if (close == std::string::npos) continue;
        std::istringstream fields(text.substr(close + 2));
        std::string state;
        long ppid = 0;
        fields >> state >> ppid;
        if (ppid != self) continue;
        std::string skip;
        for (int i = 0; i < 9; ++i) fields >> skip;  // fields 6 to 13
        unsigned long long user = 0, system = 0;
        fields >> user >> system;
        total += static_cast<double>(user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
    }
    closedir(proc);
    return total;
}

void run_year(benchmark::State& state, const char* scenario_file, bool one_core) {
    const Scenario scenario = read_scenario(std::string(TAMLO_SOURCE_DIR) + "/" + scenario_file);
    cpu_set_t allowed;
    sched_getaffinity(0, sizeof allowed, &allowed);
    // The engine starts with the first run and keeps the mask it started with.
    if (one_core) keep_to_current_core();
    ExtensionLibrary library(TAMLO_EXTENSION_LIBRARY);
    RunOutcome last(0);
    double engine_cpu = 0.0;
    for (auto _ : state) {
        double engine_at_first = 0.0;
        RunHooks hooks;
        hooks.on_step = [&](std::size_t step, const tamlo_dispatch::SimulationState&) {
            if (step == 0) engine_at_first = children_cpu_seconds();
            if (step + 1 == scenario.steps) engine_cpu = children_cpu_seconds() - engine_at_first;
        };
        last = run_scenario(scenario, [&] { return library.create(); }, hooks);
    }
    const double steps = static_cast<double>(last.steps_run);
    const double per_step = 1e6 / steps;
    state.counters["steps"] = steps;
    state.counters["warnings"] = static_cast<double>(last.warnings.size());
    state.counters["start_s"] = last.times.start_seconds;
    state.counters["end_s"] = last.times.end_seconds;
    state.counters["plant_us_per_step"] = last.times.plant_seconds * per_step;
    state.counters["dispatch_us_per_step"] = last.times.dispatch_seconds * per_step;
    state.counters["engine_cpu_us_per_step"] = engine_cpu * per_step;
    state.counters["extension_and_wait_us_per_step"] = (last.times.dispatch_seconds - engine_cpu) * per_step;
    if (one_core) sched_setaffinity(0, sizeof allowed, &allowed);
}

BENCHMARK_CAPTURE(run_year, load_following, "examples/hybrid_load_following.json", false)
    ->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
BENCHMARK_CAPTURE(run_year, cycle_charging, "examples/hybrid_cycle_charging.json", false)
    ->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
BENCHMARK_CAPTURE(run_year, minimal_fixture_strategy, "bench/fixture_scenario.json", false)
    ->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();
BENCHMARK_CAPTURE(run_year, minimal_fixture_strategy_one_core, "bench/fixture_scenario.json", true)
    ->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    return tamlo_bench::run_with_ratios(argc, argv,
                                        {{"speed-up of one core for the run and its engine, minimal strategy",
                                          "run_year/minimal_fixture_strategy", "run_year/minimal_fixture_strategy_one_core"}});
}
