// The study worker: loads the extension once, then runs case after case as the study hands
// them over its standard input.
#include "study_worker.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <memory>

#include "case_result.h"
#include "core_placement.h"
#include "extension_library.h"
#include "input_error.h"
#include "report.h"
#include "results_csv.h"
#include "run.h"
#include "scenario.h"

namespace tamlo_host {

namespace {

void write_text(const std::string& file, const std::string& text) {
    std::ofstream out(file, std::ios::binary);
    out << text;
    if (!out.flush()) throw InputError(file + ": cannot write the file");
}

void set_call_timeout(const ExtensionLibrary& library, double seconds) {
    if (seconds <= 0.0) return;
    if (library.set_call_timeout(seconds) != ExtensionLibrary::CallTimeout::set) {
        std::cerr << "dispatch-bench study-worker: this libeng has no call time limit; --call-timeout is ignored\n";
    }
}

void run_case(const std::string& folder, const ExtensionLibrary& library) {
    const auto started = std::chrono::steady_clock::now();
    const Scenario scenario = read_scenario(folder + "/scenario.json");
    ResultsCsv results(folder + "/results.csv", scenario.parameters);
    RunHooks hooks;
    hooks.on_step = [&](std::size_t step, const tamlo_dispatch::SimulationState& state) { results.write(step, state); };
    const RunOutcome outcome = run_scenario(scenario, [&] { return library.create(); }, hooks);
    const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    write_text(folder + "/summary.txt", format_summary(scenario, outcome));
    write_text(folder + "/result.json", case_result_to_json(case_result_from_run(outcome, wall)).dump(2) + "\n");
}

}  // namespace

std::vector<std::string> worker_arguments(const WorkerOptions& options) {
    std::vector<std::string> args;
    if (!options.extension.empty()) args.insert(args.end(), {"--extension", options.extension});
    if (options.call_timeout > 0.0) {
        char text[64];
        std::snprintf(text, sizeof text, "%.17g", options.call_timeout);
        args.insert(args.end(), {"--call-timeout", text});
    }
    if (options.any_core) args.push_back("--any-core");
    return args;
}

WorkerOptions parse_worker_arguments(const std::vector<std::string>& args) {
    WorkerOptions options;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const bool has_value = i + 1 < args.size();
        if (args[i] == "--extension" && has_value) {
            options.extension = args[++i];
        } else if (args[i] == "--call-timeout" && has_value) {
            char* end = nullptr;
            options.call_timeout = std::strtod(args[++i].c_str(), &end);
            if (end == args[i].c_str() || *end != '\0' || !(options.call_timeout >= 0.0)) {
                throw InputError("study-worker: --call-timeout: expected seconds, found \"" + args[i] + "\"");
            }
        } else if (args[i] == "--any-core") {
            options.any_core = true;
        } else {
            throw InputError("study-worker: unexpected argument \"" + args[i] + "\"");
        }
    }
    return options;
}

int run_study_worker(const std::vector<std::string>& args) {
    try {
        const WorkerOptions options = parse_worker_arguments(args);
        // Unless the study gave it a core already; its engines start from here and keep to it too.
        if (!options.any_core) keep_to_current_core();
        // Warm engines from our libeng unless the user turned them off (TAMLO_ENG_WARM=0).
        ::setenv("TAMLO_ENG_WARM", "1", 0);
        ExtensionLibrary library(options.extension.empty() ? find_default_extension() : options.extension);
        set_call_timeout(library, options.call_timeout);
        // The study reads our standard output; nothing else may write there.
        const int replies = ::dup(STDOUT_FILENO);
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
        std::FILE* out = ::fdopen(replies, "w");
        if (out == nullptr) throw InputError("study-worker: cannot open its reply stream");
        std::string folder;
        while (std::getline(std::cin, folder)) {
            if (folder.empty()) continue;
            try {
                run_case(folder, library);
            } catch (const InputError& e) {
                // Written before the case started: the study records it as the case's failure.
                std::ofstream(folder + "/worker_error.txt") << e.what() << '\n';
            }
            std::fputs("done\n", out);
            std::fflush(out);
        }
        std::fclose(out);
        return 0;
    } catch (const InputError& e) {
        std::cerr << "dispatch-bench study-worker: " << e.what() << '\n';
        return 2;
    }
}

}  // namespace tamlo_host
