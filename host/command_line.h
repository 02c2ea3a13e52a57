// The command line of dispatch-bench: one CLI11 app, each command adding its own subcommand.
#ifndef TAMLO_HOST_COMMAND_LINE_H
#define TAMLO_HOST_COMMAND_LINE_H

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tamlo_host {

enum ExitStatus : int {
    exit_completed = 0,  // the command did its work (a run that completed, help, version)
    exit_critical = 1,   // a run ended in a critical error
    exit_bad_input = 2,  // bad input or usage; nothing was run
};

// The exit statuses as every command's --help lists them.
extern const char* const exit_status_help;

// One command of the bench. Its add function registers the subcommand, its options and its
// help on the app, and returns what runs when the subcommand was chosen; the returned
// function reads the parsed values the add function bound, and returns the exit status.
// It may throw InputError for bad input found after parsing (exit_bad_input).
struct Command {
    CLI::App* subcommand = nullptr;
    std::function<int()> run;
    // An option after which every word belongs to another program (sbatch's options after
    // study's --slurm): they are not parsed, but handed over in rest; the option stays a flag.
    const char* rest_option = nullptr;
    std::shared_ptr<std::vector<std::string>> rest;
};
using AddCommand = Command (*)(CLI::App& app);

// The version line: project version and the commit the build came from.
std::string version_text();

// Parses arguments (argv[0] is the program) and runs the chosen command; help and version
// go to out, errors to err. Returns the exit status.
int run_command_line(int argc, const char* const* argv, std::ostream& out, std::ostream& err);

}  // namespace tamlo_host

#endif
