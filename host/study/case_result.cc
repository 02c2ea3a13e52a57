// Turns a run's outcome into a case result and keeps it as JSON.
#include "case_result.h"

#include <iterator>

#include "input_error.h"
#include "warning_rules.h"

namespace tamlo_host {

namespace {

constexpr const char* status_names[] = {"completed", "critical error", "timed out", "engine died", "worker died",
                                        "not run"};

// How our libeng words the end of a call it had to cut short or that lost its engine; the
// first row that matches wins.
struct FailureSign {
    const char* text;
    CaseStatus status;
};
constexpr FailureSign failure_signs[] = {
    {"past its time limit", CaseStatus::timed_out},
    {"engine process has ended", CaseStatus::engine_died},
    {"Can't start MATLAB engine", CaseStatus::engine_died},
};

}  // namespace

const char* status_name(CaseStatus status) { return status_names[static_cast<int>(status)]; }

CaseStatus classify_failure(const std::string& message) {
    for (const FailureSign& sign : failure_signs) {
        if (message.find(sign.text) != std::string::npos) return sign.status;
    }
    // A live engine always prints why a call failed; a call that failed in silence lost it.
    const std::string::size_type tail = message.rfind("': ");
    if (message.rfind("MATLAB error while executing '", 0) == 0 && tail != std::string::npos &&
        tail + 3 == message.size()) {
        return CaseStatus::engine_died;
    }
    return CaseStatus::critical_error;
}

CaseResult case_result_from_run(const RunOutcome& outcome, double wall_seconds) {
    CaseResult r;
    const Books& b = outcome.books;
    if (outcome.critical) {
        // The stored critical error is the last unprefixed entry; a failed start has none.
        r.message = outcome.start_error.message;
        if (outcome.start_error.severity != tamlo_dispatch::DISPATCH_CRITICAL_ERROR) {
            for (const std::string& e : outcome.errors) {
                if (e.rfind("MATLAB error: ", 0) != 0) r.message = e;
            }
        }
        r.status = classify_failure(r.message);
    } else {
        r.status = CaseStatus::completed;
    }
    r.steps_run = outcome.steps_run;
    r.served = b.energy_served;
    r.unmet = b.unmet_load;
    for (const GeneratorBook& g : b.generators) r.fuel += g.fuel;
    r.renewable_percent = 100.0 * b.renewable_fraction();
    r.battery_throughput = b.battery_throughput();
    r.grid_bought = b.grid_bought;
    r.grid_sold = b.grid_sold;
    r.net_cost = b.grid_cost;
    r.warnings = outcome.warnings.size();
    for (const auto& [rule, count] : count_warnings(outcome.warnings)) r.warnings_by_rule[rule->id] = count;
    r.errors = outcome.errors.size();
    r.wall_seconds = wall_seconds;
    return r;
}

Json case_result_to_json(const CaseResult& r) {
    Json j;
    j["status"] = status_name(r.status);
    j["message"] = r.message;
    j["steps_run"] = r.steps_run;
    j["served"] = r.served;
    j["unmet"] = r.unmet;
    j["fuel"] = r.fuel;
    j["renewable_percent"] = r.renewable_percent;
    j["battery_throughput"] = r.battery_throughput;
    j["grid_bought"] = r.grid_bought;
    j["grid_sold"] = r.grid_sold;
    j["net_cost"] = r.net_cost;
    j["warnings"] = r.warnings;
    j["warnings_by_rule"] = Json::object();
    for (const auto& [rule, count] : r.warnings_by_rule) j["warnings_by_rule"][rule] = count;
    j["errors"] = r.errors;
    j["wall_seconds"] = r.wall_seconds;
    return j;
}

CaseResult case_result_from_json(const Json& json, const std::string& file) {
    CaseResult r;
    ObjectReader reader(json, "", file);
    std::string status;
    reader.require("status");
    reader.read("status", status);
    std::size_t s = 0;
    while (s < std::size(status_names) && status != status_names[s]) ++s;
    if (s == std::size(status_names)) reader.fail("status", "unknown status \"" + status + "\"");
    r.status = static_cast<CaseStatus>(s);
    reader.read("message", r.message);
    std::uint64_t count = 0;
    reader.read("steps_run", count);
    r.steps_run = count;
    reader.read("served", r.served);
    reader.read("unmet", r.unmet);
    reader.read("fuel", r.fuel);
    reader.read("renewable_percent", r.renewable_percent);
    reader.read("battery_throughput", r.battery_throughput);
    reader.read("grid_bought", r.grid_bought);
    reader.read("grid_sold", r.grid_sold);
    reader.read("net_cost", r.net_cost);
    count = 0;
    reader.read("warnings", count);
    r.warnings = count;
    reader.object("warnings_by_rule", [&](ObjectReader& rules) {
        if (const Json& all = json.at("warnings_by_rule"); all.is_object()) {
            for (const auto& [rule, n] : all.items()) {
                std::uint64_t v = 0;
                rules.read(rule.c_str(), v);
                r.warnings_by_rule[rule] = v;
            }
        }
    });
    count = 0;
    reader.read("errors", count);
    r.errors = count;
    reader.read("wall_seconds", r.wall_seconds);
    reader.finish();
    return r;
}

}  // namespace tamlo_host
