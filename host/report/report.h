// The readable summary of a run: books, warnings by rule, all errors and warnings.
#ifndef TAMLO_HOST_REPORT_H
#define TAMLO_HOST_REPORT_H

#include <string>

#include "run.h"
#include "scenario.h"

namespace tamlo_host {

std::string format_summary(const Scenario& scenario, const RunOutcome& outcome);

}  // namespace tamlo_host

#endif
