// The study commands on the bench's command line: `study`, and the hidden `study-worker`.
#ifndef TAMLO_HOST_STUDY_COMMAND_LINE_H
#define TAMLO_HOST_STUDY_COMMAND_LINE_H

#include "command_line.h"

namespace tamlo_host {

Command add_study_command(CLI::App& app);
// The worker a study starts for itself (not listed in --help).
Command add_study_worker_command(CLI::App& app);

}  // namespace tamlo_host

#endif
