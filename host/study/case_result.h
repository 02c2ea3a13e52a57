// What one case of a study ended with: its status and the figures of the run summary, kept in
// the case folder as result.json.
#ifndef TAMLO_HOST_CASE_RESULT_H
#define TAMLO_HOST_CASE_RESULT_H

#include <cstddef>
#include <map>
#include <string>

#include "json_reader.h"
#include "run.h"

namespace tamlo_host {

enum class CaseStatus { completed, critical_error, timed_out, engine_died, worker_died, not_run };

const char* status_name(CaseStatus status);

struct CaseResult {
    CaseStatus status = CaseStatus::not_run;
    std::string message;  // the error that ended the run, if any
    std::size_t steps_run = 0;
    double served = 0.0;  // kWh
    double unmet = 0.0;
    double fuel = 0.0;
    double renewable_percent = 0.0;
    double battery_throughput = 0.0;
    double grid_bought = 0.0;
    double grid_sold = 0.0;
    double net_cost = 0.0;
    std::size_t warnings = 0;
    std::map<std::string, std::size_t> warnings_by_rule;  // rule id -> count
    std::size_t errors = 0;
    double wall_seconds = 0.0;
};

// The status tells a time limit and a lost engine apart from the strategy's own critical error.
CaseResult case_result_from_run(const RunOutcome& outcome, double wall_seconds);
CaseStatus classify_failure(const std::string& message);

Json case_result_to_json(const CaseResult& result);
// Throws InputError naming file for a result that does not read back.
CaseResult case_result_from_json(const Json& json, const std::string& file);

}  // namespace tamlo_host

#endif
