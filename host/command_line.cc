// Builds the bench's CLI11 app from its commands, parses, and runs the chosen command.
#include "command_line.h"

#include <string_view>

#include <CLI/CLI.hpp>

#include "build_version.h"
#include "check_command.h"
#include "input_error.h"
#include "run_command.h"
#include "study_command_line.h"

namespace tamlo_host {

const char* const exit_status_help =
    "Exit status: 0 completed, 1 the run ended in a critical error, 2 bad input or usage (nothing was run).";

namespace {

// Every command of the bench; a new one adds its add function here.
constexpr AddCommand commands[] = {add_run_command, add_check_command, add_study_command, add_study_worker_command};

}  // namespace

std::string version_text() {
    return std::string("dispatch-bench ") + TAMLO_BENCH_VERSION + " (commit " + TAMLO_BENCH_COMMIT + ")";
}

int run_command_line(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
    CLI::App app("Tries MATLAB dispatch strategies through the tamlo extension without the simulator.",
                 "dispatch-bench");
    app.set_version_flag("--version", version_text(), "Print the version and the commit of this build");
    app.require_subcommand(1);
    app.footer(exit_status_help);
    std::vector<Command> added;
    for (const AddCommand add : commands) {
        added.push_back(add(app));
        // A command whose statuses mean something else says so in its own footer.
        if (added.back().subcommand->get_footer().empty()) added.back().subcommand->footer(exit_status_help);
    }
    for (const Command& command : added) {
        if (command.rest_option == nullptr || argc < 2 || command.subcommand->get_name() != argv[1]) continue;
        for (int k = 2; k < argc; ++k) {
            if (std::string_view(argv[k]) != command.rest_option) continue;
            command.rest->assign(argv + k + 1, argv + argc);
            argc = k + 1;
            break;
        }
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        const int status = app.exit(e, out, err);
        return status == 0 ? exit_completed : exit_bad_input;
    }
    for (const Command& command : added) {
        if (!command.subcommand->parsed()) continue;
        try {
            return command.run();
        } catch (const InputError& e) {
            err << "dispatch-bench: " << e.what() << '\n';
            return exit_bad_input;
        }
    }
    return exit_bad_input;
}

}  // namespace tamlo_host
