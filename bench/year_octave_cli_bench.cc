// A year of hourly steps (8,760) of a minimal strategy through the extension, engine start and
// end included, against octave-cli starting and calling the same dispatch function 8,760 times
// on the very structs the extension passed it; the ratio ours / octave-cli follows the table.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "dispatch_extension.h"
#include "octave_cli.h"
#include "ratio_report.h"
#include "sample_systems.h"
#include "settled_state.h"

namespace {

namespace fs = std::filesystem;
using tamlo_dispatch::SimulationParameters;
using tamlo_dispatch::SimulationState;

constexpr std::size_t year_steps = 8760;

// Where the captured inputs and octave-cli's output go; one folder per bench process.
const fs::path& work_dir() {
    static const fs::path dir = [] {
        fs::path d = fs::temp_directory_path() / ("tamlo_year_octave_cli_bench_" + std::to_string(getpid()));
        fs::create_directories(d);
        return d;
    }();
    return dir;
}

std::string inputs_file() {
    return (work_dir() / "inputs.mat").string();
}

// The typical sample system with the minimal strategy of bench/matlab. Both runs carry the
// capture file's name, so the captured simulation_parameters is the one the timed run passes.
SimulationParameters year_system(const char* dispatch) {
    SimulationParameters parameters = tamlo_samples::make_system(1);
    tamlo_samples::add_settings(parameters, {TAMLO_BENCH_MATLAB_DIR, "year_start", dispatch, "year_end"});
    tamlo_samples::add_text_parameter(parameters, "capture_file", inputs_file());
    return parameters;
}

// Where the time of a run through the extension went.
struct RunSplit {
    double start_seconds = 0.0;  // engine start, simulation_parameters, the start function
    double steps_seconds = 0.0;
};

// A run of steps time steps through the extension object, as the simulator drives it, from
// the engine's start to its end. Empty on success, else what went wrong.
std::string run_extension(const char* dispatch, std::size_t steps, RunSplit& split) {
    using clock = std::chrono::steady_clock;
    const SimulationParameters parameters = year_system(dispatch);
    const auto begin = clock::now();
    auto extension = std::make_unique<DispatchExtension>();
    auto started = extension->start_simulation(parameters);
    const auto stepping = clock::now();
    split.start_seconds = std::chrono::duration<double>(stepping - begin).count();
    if (started->severity != tamlo_dispatch::DISPATCH_NO_ERROR) {
        return "the strategy's start failed: " + started->message;
    }
    const SimulationState first = tamlo_bench::settled_state(parameters);
    SimulationState state;
    for (std::size_t step = 0; step < steps; ++step) {
        state = first;
        state.current_timestep = static_cast<std::uint32_t>(step);
        extension->dispatch(state);
    }
    split.steps_seconds = std::chrono::duration<double>(clock::now() - stepping).count();
    auto ended = extension->end_simulation();
    extension.reset();  // closes the engine, which octave-cli's exit is the counterpart of
    if (!ended->simulation_errors.empty()) {
        return "the run reported an error: " + ended->simulation_errors.front();
    }
    // The strategy's count is the one warning: any other means validation found fault, and
    // past a few of those it stops checking, which would leave it out of the time.
    const std::string count = "year_dispatch saw " + std::to_string(steps) + " time steps";
    const auto& warnings = ended->simulation_warnings;
    if (warnings.size() != 1 || warnings.front().find(count) == std::string::npos) {
        return "the run did not end with the one warning \"" + count + "\"" +
               (warnings.empty() ? std::string() : ", the first: " + warnings.front());
    }
    return "";
}

// One step with the capturing dispatch function, once per process: the inputs octave-cli
// loads. Empty on success, else what went wrong.
const std::string& capture_inputs() {
    static const std::string outcome = [] {
        std::error_code ignored;
        fs::remove(inputs_file(), ignored);
        RunSplit split;
        std::string error = run_extension("year_capture_dispatch", 1, split);
        if (error.empty() && !fs::exists(inputs_file())) error = "no inputs were saved to " + inputs_file();
        return error.empty() ? error : "capturing the inputs: " + error;
    }();
    return outcome;
}

// Our side: the whole year through the extension, cold engine start included.
void BM_Year_Extension(benchmark::State& bench) {
    setenv("TAMLO_ENG_WARM", "0", 1);
    RunSplit total;
    for (auto _ : bench) {
        RunSplit split;
        const std::string error = run_extension("year_dispatch", year_steps, split);
        if (!error.empty()) {
            bench.SkipWithError(error.c_str());
            break;
        }
        total.start_seconds += split.start_seconds;
        total.steps_seconds += split.steps_seconds;
    }
    // Means over the iterations, as the time itself is.
    bench.counters["steps"] = static_cast<double>(year_steps);
    bench.counters["start_s"] = benchmark::Counter(total.start_seconds, benchmark::Counter::kAvgIterations);
    bench.counters["steps_s"] = benchmark::Counter(total.steps_seconds, benchmark::Counter::kAvgIterations);
}

// octave-cli's side: its process from start to exit, loading the captured inputs and calling
// the dispatch function 8,760 times; loop_s is the loop alone, timed inside Octave.
void BM_Year_OctaveCli(benchmark::State& bench) {
    if (!capture_inputs().empty()) {
        bench.SkipWithError(capture_inputs().c_str());
        return;
    }
    const std::string expression = std::string("cd('") + TAMLO_BENCH_MATLAB_DIR + "'); year_octave_loop('" +
                                   inputs_file() + "', 'year_dispatch', " + std::to_string(year_steps) + ");";
    const std::string output_file = (work_dir() / "octave_cli.out").string();
    double loop_seconds = 0.0;
    for (auto _ : bench) {
        const tamlo_bench::ProcessRun run =
            tamlo_bench::run_octave_cli({"--norc", "--eval", expression}, output_file);
        if (!run.error.empty()) {
            bench.SkipWithError(run.error.c_str());
            break;
        }
        bench.SetIterationTime(run.seconds);
        const std::string count = "steps " + std::to_string(year_steps) + " loop_seconds ";
        const auto at = run.output.find(count);
        if (at == std::string::npos) {
            bench.SkipWithError(("octave-cli did not report " + std::to_string(year_steps) + " steps: " + run.output)
                                    .c_str());
            break;
        }
        loop_seconds += std::strtod(run.output.c_str() + at + count.size(), nullptr);
    }
    bench.counters["steps"] = static_cast<double>(year_steps);
    bench.counters["loop_s"] = benchmark::Counter(loop_seconds, benchmark::Counter::kAvgIterations);
}

BENCHMARK(BM_Year_Extension)->Iterations(3)->Unit(benchmark::kSecond)->UseRealTime();
BENCHMARK(BM_Year_OctaveCli)->Iterations(3)->Unit(benchmark::kSecond)->UseManualTime();

}  // namespace

int main(int argc, char** argv) {
    const int status = tamlo_bench::run_with_ratios(
        argc, argv,
        {{"year of 8,760 steps, ours / octave-cli", "BM_Year_Extension", "BM_Year_OctaveCli"},
         {"the 8,760 calls alone, ours / octave-cli's loop", "BM_Year_Extension@steps_s", "BM_Year_OctaveCli@loop_s"},
         {"our start (engine, start function) / octave-cli process", "BM_Year_Extension@start_s",
          "BM_Year_OctaveCli"}});
    std::error_code ignored;
    fs::remove_all(work_dir(), ignored);
    return status;
}
