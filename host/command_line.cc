// Parses the bench's arguments; every mistake gets one message saying what is wrong.
#include "command_line.h"

#include <cstdlib>

#include "input_error.h"

namespace tamlo_host {

const char* const usage_text =
    "usage: dispatch-bench run SCENARIO [--extension PATH] [--steps N] [--out results.csv]\n"
    "                          [--plot week.png --week K] [--quiet]\n"
    "Runs a MATLAB dispatch strategy over the scenario's time steps, as the simulator would.\n";

namespace {

std::uint64_t positive_number(const std::string& option, const std::string& text) {
    char* end = nullptr;
    const unsigned long long value = std::strtoull(text.c_str(), &end, 10);
    if (text.empty() || text[0] == '-' || *end != '\0' || value == 0) {
        throw InputError(option + ": expected a whole number above 0, found \"" + text + "\"");
    }
    return value;
}

}  // namespace

Options parse_command_line(const std::vector<std::string>& arguments) {
    Options options;
    if (arguments.empty()) throw InputError("missing command\n" + std::string(usage_text));
    if (arguments[0] == "--help" || arguments[0] == "-h" || arguments[0] == "help") {
        options.help = true;
        return options;
    }
    if (arguments[0] != "run") throw InputError("unknown command \"" + arguments[0] + "\"\n" + usage_text);
    bool week_given = false;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string& a = arguments[i];
        const auto value = [&]() -> const std::string& {
            if (i + 1 >= arguments.size()) throw InputError(a + ": missing value");
            return arguments[++i];
        };
        if (a == "--extension") {
            options.extension = value();
        } else if (a == "--steps") {
            options.steps = positive_number(a, value());
        } else if (a == "--out") {
            options.results_file = value();
        } else if (a == "--plot") {
            options.plot_file = value();
        } else if (a == "--week") {
            options.week = positive_number(a, value());
            week_given = true;
        } else if (a == "--quiet") {
            options.quiet = true;
        } else if (a == "--help" || a == "-h") {
            options.help = true;
        } else if (!a.empty() && a[0] == '-') {
            throw InputError("unknown option \"" + a + "\"\n" + usage_text);
        } else if (options.scenario.empty()) {
            options.scenario = a;
        } else {
            throw InputError("unexpected argument \"" + a + "\"; give one scenario file");
        }
    }
    if (options.help) return options;
    if (options.scenario.empty()) throw InputError("missing SCENARIO file\n" + std::string(usage_text));
    if (week_given && options.plot_file.empty()) throw InputError("--week: only meaningful with --plot FILE");
    return options;
}

}  // namespace tamlo_host
