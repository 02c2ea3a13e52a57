// The summary of a run: its figures once, then as readable text or as JSON.
#ifndef TAMLO_HOST_REPORT_H
#define TAMLO_HOST_REPORT_H

#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "run.h"
#include "scenario.h"

namespace tamlo_host {

struct SummaryGenerator {
    std::string name;
    double energy = 0.0;  // kWh
    double fuel = 0.0;
    double runtime_hours = 0.0;
    std::size_t starts = 0;
};

struct SummaryBattery {
    double charged = 0.0;  // kWh at the bus
    double discharged = 0.0;
    double throughput = 0.0;
    std::size_t setpoints_limited = 0;
};

struct SummaryGrid {
    double bought = 0.0;  // kWh
    double sold = 0.0;
    double net_cost = 0.0;
};

struct SummaryRuleCount {
    std::string rule;
    std::string description;
    std::size_t count = 0;
};

// Every figure the summary shows; the text and the JSON are both drawn from this.
struct RunSummary {
    std::string scenario_file;
    std::size_t steps_shown = 0;  // steps run, or answered when a critical error stopped the run
    std::size_t steps_total = 0;
    std::uint64_t timestep_seconds = 0;
    std::string start_severity;  // "none", "simulation error" or "critical error"
    std::string start_message;
    std::optional<std::size_t> stopped_at_step;  // 1-based step where decisions stopped coming
    double energy_requested = 0.0;
    double energy_served = 0.0;
    double unmet_load = 0.0;
    double excess_electricity = 0.0;
    double capacity_shortage = 0.0;
    std::vector<SummaryGenerator> generators;
    std::optional<double> pv_energy;    // absent without PV arrays
    std::optional<double> wind_energy;  // absent without wind turbines
    double renewable_fraction = 0.0;    // 0..1
    std::optional<SummaryBattery> battery;
    std::optional<SummaryGrid> grid;
    std::size_t non_finite_steps = 0;
    std::vector<SummaryRuleCount> warnings_by_rule;
    std::vector<std::string> errors;
    std::vector<std::string> warnings;
    bool critical = false;
};

RunSummary summarize(const Scenario& scenario, const RunOutcome& outcome);

std::string format_summary(const RunSummary& summary, const std::optional<std::string>& engine_search_places);
std::string format_summary(const Scenario& scenario, const RunOutcome& outcome);

// The summary's figures as JSON (docs/user_guide.md names the keys), with the run's wall time.
nlohmann::ordered_json summary_to_json(const RunSummary& summary, double wall_seconds);

}  // namespace tamlo_host

#endif
