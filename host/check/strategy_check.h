// `dispatch-bench check`: lists the Octave-only constructs in a strategy folder's .m files.
#ifndef TAMLO_HOST_STRATEGY_CHECK_H
#define TAMLO_HOST_STRATEGY_CHECK_H

#include <iosfwd>
#include <string>

#include "octave_only_rules.h"

namespace tamlo_host {

// folder_or_scenario is a folder of .m files, one .m file, or a scenario file whose
// extension parameter "path" names the folder (and whose function names must have their
// .m files there).
// Writes one line per finding to out,
//   FILE:LINE:COLUMN: Octave only: CONSTRUCT; MATLAB: FORM
// then a count line. Returns the exit status: 0 no finding, 1 findings, 2 bad input
// (the reason goes to err).
int run_check_command(const std::string& folder_or_scenario, std::ostream& out, std::ostream& err);

}  // namespace tamlo_host

#endif
