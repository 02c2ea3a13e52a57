// The check command: dispatch-bench check STRATEGY_FOLDER_OR_SCENARIO.
#ifndef TAMLO_HOST_CHECK_COMMAND_H
#define TAMLO_HOST_CHECK_COMMAND_H

#include "command_line.h"

namespace tamlo_host {

Command add_check_command(CLI::App& app);

}  // namespace tamlo_host

#endif
