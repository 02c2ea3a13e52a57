// The bench's command line: dispatch-bench run SCENARIO [options].
#ifndef TAMLO_HOST_COMMAND_LINE_H
#define TAMLO_HOST_COMMAND_LINE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tamlo_host {

struct Options {
    std::string scenario;
    std::string extension;  // empty: the default places
    std::optional<std::uint64_t> steps;
    std::string results_file;
    std::string plot_file;
    std::size_t week = 1;
    bool quiet = false;
    bool help = false;
};

extern const char* const usage_text;

// Throws InputError with a message for a malformed command line.
Options parse_command_line(const std::vector<std::string>& arguments);

}  // namespace tamlo_host

#endif
