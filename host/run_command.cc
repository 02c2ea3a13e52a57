// The run command: one scenario through one extension object, as the simulator would.
#include "run_command.h"

#include <dlfcn.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>

#include "core_placement.h"
#include "extension_library.h"
#include "input_error.h"
#include "message_text.h"
#include "numbers.h"
#include "plot.h"
#include "progress.h"
#include "report.h"
#include "results_csv.h"
#include "run.h"
#include "value_rules.h"

namespace tamlo_host {

namespace {

struct RunOptions {
    std::string scenario;
    std::string extension;  // empty: the default places
    std::string steps;      // empty: the scenario's number_of_timesteps
    std::string results_file;
    std::string plot_file;
    std::string week = "1";
    std::string year_plot_file;
    std::string summary_file;
    std::string call_timeout;
    bool quiet = false;
    bool any_core = false;  // let the system move the run and its engine between cores
};

std::uint64_t whole(const std::string& text) {
    std::uint64_t value = 0;
    parse_whole(text, std::numeric_limits<std::uint64_t>::max(), value);
    return value;
}

// An extra of our libeng, looked up at run time so that the bench also runs against MATLAB's
// libeng, which has none (declared in platform/include/tamlo_eng_ext.h).
using ServerCandidates = const char* (*)();

void apply_call_timeout(const ExtensionLibrary& library, double seconds) {
    const ExtensionLibrary::CallTimeout outcome = library.set_call_timeout(seconds);
    if (outcome == ExtensionLibrary::CallTimeout::unavailable) {
        if (seconds > 0) {
            std::cerr << "dispatch-bench: this engine library has no call time limit; "
                         "a MATLAB call that never returns will hold the run\n";
        }
        return;
    }
    if (outcome == ExtensionLibrary::CallTimeout::refused) throw InputError("--call-timeout: the engine library refused " + std::to_string(seconds));
}

std::optional<std::string> engine_search_places(const ExtensionLibrary& library) {
    const auto candidates = reinterpret_cast<ServerCandidates>(library.engine_symbol("tamlo_engServerCandidates"));
    if (candidates == nullptr) return std::nullopt;
    const char* text = candidates();
    return std::string(text != nullptr ? text : "");
}

void write_summary_json(const std::string& file, const nlohmann::ordered_json& summary) {
    std::ofstream out(file);
    out << summary.dump(2) << '\n';
    out.close();
    if (!out) throw InputError("--summary-json " + display_text(file) + ": cannot write the file");
}

int run(const RunOptions& options) {
    std::optional<std::uint64_t> steps;
    if (!options.steps.empty()) steps = whole(options.steps);
    const Scenario scenario = read_scenario(options.scenario, steps);
    // Each output is checked against the inputs and the outputs named before it.
    std::vector<InputFile> taken = scenario.input_files;
    for (const auto& [option, file] : {std::pair<const char*, const std::string&>{"--out", options.results_file},
                                       {"--plot", options.plot_file},
                                       {"--plot-year", options.year_plot_file},
                                       {"--summary-json", options.summary_file}}) {
        check_output_file(option, file, taken);
        if (!file.empty()) taken.push_back({file, std::string("the ") + option + " file"});
    }

    // Before the engine starts, which keeps to the same core.
    if (!options.any_core) keep_to_current_core();
    const std::string library_path = options.extension.empty() ? find_default_extension() : options.extension;
    ExtensionLibrary library(library_path);
    double timeout = 0;
    parse_decimal(options.call_timeout, timeout);
    apply_call_timeout(library, timeout);

    std::optional<ResultsCsv> results;
    if (!options.results_file.empty()) results.emplace(options.results_file, scenario.parameters);
    std::optional<WeekPlot> plot;
    if (!options.plot_file.empty()) plot.emplace(scenario.parameters, whole(options.week));
    std::optional<YearPlot> year_plot;
    if (!options.year_plot_file.empty()) year_plot.emplace(scenario.parameters);

    ProgressBar progress(stderr, !options.quiet && stream_is_terminal(stderr));
    RunHooks hooks;
    hooks.on_step = [&](std::size_t step, const tamlo_dispatch::SimulationState& state) {
        if (results) results->write(step, state);
        if (plot) plot->record(step, state);
        if (year_plot) year_plot->record(step, state);
    };
    hooks.on_progress = [&](std::size_t done, std::size_t total) { progress.update(done, total); };

    const auto started = std::chrono::steady_clock::now();
    RunOutcome outcome = run_scenario(scenario, [&] { return library.create(); }, hooks);
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - started;
    progress.finish();
    outcome.engine_search_places = engine_search_places(library);
    const RunSummary summary = summarize(scenario, outcome);
    std::cout << format_summary(summary, outcome.engine_search_places) << std::flush;
    if (!options.summary_file.empty()) write_summary_json(options.summary_file, summary_to_json(summary, wall.count()));
    if (plot) plot->write_png(options.plot_file);
    if (year_plot) year_plot->write_png(options.year_plot_file);
    return outcome.critical ? exit_critical : exit_completed;
}

}  // namespace

void check_output_file(const std::string& option, const std::string& file, const std::vector<InputFile>& inputs) {
    if (file.empty()) return;
    namespace fs = std::filesystem;
    const std::string shown = option + " " + display_text(file);
    std::error_code error;
    if (fs::is_directory(file, error)) throw InputError(shown + ": is a folder; name a file in it");
    const fs::path folder = fs::path(file).parent_path();
    const fs::path checked = folder.empty() ? fs::path(".") : folder;
    if (!fs::is_directory(checked, error)) {
        throw InputError(shown + ": the folder " + display_text(checked.string()) + " does not exist; create it first");
    }
    if (::access(checked.c_str(), W_OK) != 0) {
        throw InputError(shown + ": the folder " + display_text(checked.string()) + " is not writable");
    }
    // weakly_canonical also compares an output that does not exist yet with --out's file.
    const fs::path target = fs::weakly_canonical(file, error);
    for (const InputFile& input : inputs) {
        if (target == fs::weakly_canonical(input.path, error)) {
            throw InputError(shown + ": this is " + input.role + " of the run (" + display_text(input.path) +
                             "); writing to it would overwrite it; choose another file");
        }
    }
}

// Options are read as text and checked here, because CLI11's own conversion accepts
// hexadecimal and octal and clamps values that overflow.
CLI::Validator whole_number(std::uint64_t least, std::uint64_t most) {
    return CLI::Validator(
        [least, most](std::string& text) -> std::string {
            std::uint64_t value = 0;
            const NumberText read = parse_whole(text, std::numeric_limits<std::uint64_t>::max(), value);
            if (read == NumberText::not_a_number) return "expected a whole number, found \"" + display_text(text) + "\"";
            if (read == NumberText::out_of_range || value < least || value > most) {
                return display_text(text) + " is out of range; expected " + std::to_string(least) + " to " +
                       std::to_string(most);
            }
            return "";
        },
        std::to_string(least) + ".." + std::to_string(most));
}

const CLI::Validator call_timeout_seconds(
    [](std::string& text) -> std::string {
        double value = 0;
        const NumberText read = parse_decimal(text, value);
        if (read == NumberText::not_a_number) {
            return "expected a number of seconds, found \"" + display_text(text) + "\"";
        }
        if (read == NumberText::out_of_range || !(value >= 0 && value <= largest_call_timeout_seconds)) {
            return display_text(text) + " is out of range; expected 0 (no limit) to 604800 seconds (a week)";
        }
        return "";
    },
    "");

Command add_run_command(CLI::App& app) {
    auto options = std::make_shared<RunOptions>();
    CLI::App* run_app = app.add_subcommand(
        "run", "Runs a MATLAB dispatch strategy over a scenario's time steps, as the simulator would, and prints "
               "the books, errors and warnings.");
    run_app->add_option("SCENARIO", options->scenario, "Scenario JSON file (docs/scenario.md)")->required();
    run_app->add_option("--extension", options->extension,
                        "Extension library; default: libtamlo_matlab_dispatch.so beside the program, in ../lib or "
                        "the installed library folder");
    run_app->add_option("--steps", options->steps, "Run only the first N time steps")
        ->type_name("N")
        ->check(whole_number(1, largest_exact_count));
    run_app->add_option("--out", options->results_file, "Write one CSV line of results per time step")
        ->type_name("FILE");
    CLI::Option* plot = run_app->add_option("--plot", options->plot_file, "Draw one week as a PNG with gnuplot")
                            ->type_name("FILE");
    run_app->add_option("--week", options->week, "The week that --plot draws, counted from 1 (default 1)")
        ->type_name("K")
        ->check(whole_number(1, largest_exact_count))
        ->needs(plot);
    run_app->add_option("--plot-year", options->year_plot_file,
                        "Draw the run at a glance as a PNG with gnuplot: energy by source and unmet load per month, "
                        "battery state of charge")
        ->type_name("FILE");
    run_app->add_option("--summary-json", options->summary_file,
                        "Write the summary's figures, errors and warnings as JSON (docs/user_guide.md names the keys)")
        ->type_name("FILE");
    options->call_timeout = std::to_string(static_cast<int>(default_call_timeout_seconds));
    run_app->add_option("--call-timeout", options->call_timeout,
                        "Longest time one MATLAB call may take before the engine is stopped and the run ends in a "
                        "critical error; 0: no limit (default 600)")
        ->type_name("SECONDS")
        ->check(call_timeout_seconds);
    run_app->add_flag("--quiet", options->quiet, "No progress bar");
    run_app->add_flag("--any-core", options->any_core,
                      "Let the system move the run and its engine between cores (by default both keep to the core "
                      "the run starts on)");
    return {run_app, [options] { return run(*options); }, nullptr, nullptr};
}

}  // namespace tamlo_host
