// Registers `check` on the bench's command line and hands it to the strategy check.
#include "check_command.h"

#include <iostream>
#include <memory>

#include <CLI/CLI.hpp>

#include "strategy_check.h"

namespace tamlo_host {

Command add_check_command(CLI::App& app) {
    CLI::App* check = app.add_subcommand(
        "check", "Lists the constructs in a strategy's .m files that Octave accepts and MATLAB does not");
    auto target = std::make_shared<std::string>();
    // No existence check here: the strategy check names a missing file itself, as any bad input.
    check->add_option("TARGET", *target, "Strategy folder, one .m file, or a scenario file (its \"path\" folder)")
        ->required();
    check->footer("Exit status: 0 no Octave-only construct, 1 some found, 2 bad input or usage.");
    return {check, [target] { return run_check_command(*target, std::cout, std::cerr); }, nullptr, nullptr};
}

}  // namespace tamlo_host
