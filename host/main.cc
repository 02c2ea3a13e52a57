// dispatch-bench: runs a MATLAB dispatch strategy over a scenario without the simulator.
// Exit status: 0 run completed, 1 run ended in a critical error, 2 bad input or usage.
#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>

#include "command_line.h"
#include "extension_library.h"
#include "input_error.h"
#include "plot.h"
#include "progress.h"
#include "report.h"
#include "results_csv.h"
#include "run.h"
#include "scenario.h"

namespace {

int run_bench(const tamlo_host::Options& options) {
    using namespace tamlo_host;
    const Scenario scenario = read_scenario(options.scenario, options.steps);
    const std::string library_path = options.extension.empty() ? find_default_extension() : options.extension;
    ExtensionLibrary library(library_path);

    std::optional<ResultsCsv> results;
    if (!options.results_file.empty()) results.emplace(options.results_file, scenario.parameters);
    std::optional<WeekPlot> plot;
    if (!options.plot_file.empty()) plot.emplace(scenario.parameters, options.week);

    ProgressBar progress(stderr, !options.quiet && stream_is_terminal(stderr));
    RunHooks hooks;
    hooks.on_step = [&](std::size_t step, const tamlo_dispatch::SimulationState& state) {
        if (results) results->write(step, state);
        if (plot) plot->record(step, state);
    };
    hooks.on_progress = [&](std::size_t done, std::size_t total) { progress.update(done, total); };

    const RunOutcome outcome = run_scenario(scenario, [&] { return library.create(); }, hooks);
    progress.finish();
    std::cout << format_summary(scenario, outcome) << std::flush;
    if (plot) plot->write_png(options.plot_file);
    return outcome.critical ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const tamlo_host::Options options =
            tamlo_host::parse_command_line(std::vector<std::string>(argv + 1, argv + argc));
        if (options.help) {
            std::cout << tamlo_host::usage_text;
            return 0;
        }
        return run_bench(options);
    } catch (const tamlo_host::InputError& e) {
        std::cerr << "dispatch-bench: " << e.what() << '\n';
        return 2;
    } catch (const std::exception& e) {
        std::cerr << "dispatch-bench: " << e.what() << '\n';
        return 2;
    }
}
