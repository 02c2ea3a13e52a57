// The run command: dispatch-bench run SCENARIO [options].
#ifndef TAMLO_HOST_RUN_COMMAND_H
#define TAMLO_HOST_RUN_COMMAND_H

#include <cstdint>
#include <string>
#include <vector>

#include "command_line.h"
#include "scenario.h"

namespace CLI {
class Validator;
}

namespace tamlo_host {

// Generous: a dispatch call that takes ten minutes has hung, not thought hard.
constexpr double default_call_timeout_seconds = 600;
// One call allowed to take longer than a week is better run with no limit (0).
constexpr double largest_call_timeout_seconds = 604800;

Command add_run_command(CLI::App& app);

// Checks of option values that CLI11 would convert too loosely (hexadecimal, octal, clamping).
CLI::Validator whole_number(std::uint64_t least, std::uint64_t most);
extern const CLI::Validator call_timeout_seconds;

// Refuses an output file that the run would only find bad after the whole run (a missing
// folder), or that would overwrite one of the run's inputs. option names it in the message.
void check_output_file(const std::string& option, const std::string& file, const std::vector<InputFile>& inputs);

}  // namespace tamlo_host

#endif
