// Gathers the run summary's figures once and writes them as text (terminal, golden test) or JSON.
#include "report.h"

#include <cstdio>
#include <cstdlib>

#include "warning_rules.h"

namespace tamlo_host {

using namespace tamlo_dispatch;

namespace {

std::string fixed(double value, int decimals = 1) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
    return buffer;
}

std::string line(const std::string& label, const std::string& value) {
    std::string text = "  " + label;
    text.append(text.size() < 28 ? 28 - text.size() : 1, ' ');
    return text + value + "\n";
}

std::string severity_name(DispatchSeverity severity) {
    switch (severity) {
        case DISPATCH_NO_ERROR: return "none";
        case DISPATCH_SIMULATION_ERROR: return "simulation error";
        case DISPATCH_CRITICAL_ERROR: return "critical error";
    }
    return "unknown";
}

// What our libeng's engOpenSingleUse status codes mean (platform/eng/engine_client.cc).
// MATLAB's libeng has codes of its own, so they are explained only with ours.
std::string explain_engine_start(const std::string& message, const std::string& places) {
    const std::string lead = "Can't start MATLAB engine: code ";
    const std::string::size_type at = message.find(lead);
    if (at == std::string::npos) return "";
    const int code = std::atoi(message.c_str() + at + lead.size());
    std::string text;
    switch (code) {
        case 1: text = "code 1: no octave-engine program was found; looked in:\n"; break;
        case 2: text = "code 2: the engine's socket or process could not be created (too many processes or open files?)\n"; break;
        case 3: text = "code 3: the engine program started but did not report ready; run it by hand to see why\n"; break;
        default: return "";
    }
    if (code == 1) {
        std::string::size_type start = 0;
        while (start < places.size()) {
            const std::string::size_type end = places.find('\n', start);
            const std::string place = places.substr(start, end == std::string::npos ? std::string::npos : end - start);
            if (!place.empty()) text += "    " + place + "\n";
            if (end == std::string::npos) break;
            start = end + 1;
        }
    }
    return "  " + text;
}

}  // namespace

RunSummary summarize(const Scenario& scenario, const RunOutcome& outcome) {
    const SimulationParameters& p = scenario.parameters;
    const Books& b = outcome.books;
    RunSummary r;
    r.scenario_file = scenario.file;
    // A run that ended critically after its start stopped where the decisions stopped coming.
    const bool stopped = outcome.critical && outcome.steps_run > 0 && !outcome.errors.empty();
    r.steps_shown = stopped ? outcome.steps_answered : outcome.steps_run;
    r.steps_total = scenario.steps;
    r.timestep_seconds = p.timestep_size_in_seconds;
    r.start_severity = severity_name(outcome.start_error.severity);
    r.start_message = outcome.start_error.message;
    if (stopped) r.stopped_at_step = outcome.steps_answered + 1;
    r.energy_requested = b.energy_requested;
    r.energy_served = b.energy_served;
    r.unmet_load = b.unmet_load;
    r.excess_electricity = b.excess_electricity;
    r.capacity_shortage = b.capacity_shortage;
    for (std::size_t i = 0; i < b.generators.size(); ++i) {
        const GeneratorBook& g = b.generators[i];
        r.generators.push_back({p.generator_list[i].component.name, g.energy, g.fuel, g.runtime_hours, g.starts});
    }
    if (!p.pv_list.empty()) r.pv_energy = b.pv_energy;
    if (!p.wind_turbine_list.empty()) r.wind_energy = b.wind_energy;
    r.renewable_fraction = b.renewable_fraction();
    if (!p.battery_list.empty()) {
        r.battery = SummaryBattery{b.battery_charged, b.battery_discharged, b.battery_throughput(),
                                   b.battery_setpoints_limited};
    }
    if (!p.grid_list.empty()) r.grid = SummaryGrid{b.grid_bought, b.grid_sold, b.grid_cost};
    r.non_finite_steps = b.non_finite_steps;
    for (const auto& [rule, count] : count_warnings(outcome.warnings)) {
        r.warnings_by_rule.push_back({rule->id, rule->description, count});
    }
    r.errors = outcome.errors;
    r.warnings = outcome.warnings;
    r.critical = outcome.critical;
    return r;
}

std::string format_summary(const Scenario& scenario, const RunOutcome& outcome) {
    return format_summary(summarize(scenario, outcome), outcome.engine_search_places);
}

std::string format_summary(const RunSummary& r, const std::optional<std::string>& engine_search_places) {
    std::string s;
    s += "Scenario " + r.scenario_file + ": " + std::to_string(r.steps_shown) + " of " + std::to_string(r.steps_total) +
         " time steps of " + std::to_string(r.timestep_seconds) + " s\n";
    if (r.start_severity != "none") {
        s += "Start simulation: " + r.start_severity + ": " + r.start_message + "\n";
        if (engine_search_places) s += explain_engine_start(r.start_message, *engine_search_places);
    }
    if (r.stopped_at_step) {
        s += "Stopped at time step " + std::to_string(*r.stopped_at_step) + " of " + std::to_string(r.steps_total) +
             " (no decisions came back from it on): critical error: " + r.errors.back() + "\n";
    }
    s += "\nLoad (kWh)\n";
    s += line("requested", fixed(r.energy_requested));
    s += line("served", fixed(r.energy_served));
    s += line("unmet", fixed(r.unmet_load));
    s += line("excess electricity", fixed(r.excess_electricity));
    s += line("capacity shortage", fixed(r.capacity_shortage));
    s += "\nProduction (kWh)\n";
    for (const SummaryGenerator& g : r.generators) {
        s += line("generator " + g.name, fixed(g.energy) + ", fuel " + fixed(g.fuel) + ", " + fixed(g.runtime_hours) +
                                             " h run, " + std::to_string(g.starts) + " starts");
    }
    if (r.pv_energy) s += line("PV", fixed(*r.pv_energy));
    if (r.wind_energy) s += line("wind", fixed(*r.wind_energy));
    s += line("renewable fraction", fixed(100.0 * r.renewable_fraction) + " %");
    if (r.battery) {
        s += "\nBattery (kWh at the bus)\n";
        s += line("charged", fixed(r.battery->charged));
        s += line("discharged", fixed(r.battery->discharged));
        s += line("throughput", fixed(r.battery->throughput));
        if (r.battery->setpoints_limited > 0) {
            s += line("set points outside limits", std::to_string(r.battery->setpoints_limited));
        }
    }
    if (r.grid) {
        s += "\nGrid\n";
        s += line("bought (kWh)", fixed(r.grid->bought));
        s += line("sold (kWh)", fixed(r.grid->sold));
        s += line("net cost", fixed(r.grid->net_cost, 2));
    }
    if (r.non_finite_steps > 0) {
        s += "\nNon-finite decisions\n";
        s += "  " + std::to_string(r.non_finite_steps) + " time step" + (r.non_finite_steps == 1 ? " had" : "s had") +
             " a non-finite set point or bus value; the books count it as 0\n";
    }
    s += "\nWarnings by rule\n";
    if (r.warnings_by_rule.empty()) s += "  none\n";
    for (const SummaryRuleCount& c : r.warnings_by_rule) {
        s += line(c.rule + " " + c.description, std::to_string(c.count));
    }
    s += "\nErrors (" + std::to_string(r.errors.size()) + ")\n";
    for (const std::string& e : r.errors) s += "  " + e + "\n";
    s += "\nWarnings (" + std::to_string(r.warnings.size()) + ")\n";
    for (const std::string& w : r.warnings) s += "  " + w + "\n";
    s += "\nResult: ";
    s += r.critical ? "the run ended in a critical error\n" : "the run completed\n";
    return s;
}

nlohmann::ordered_json summary_to_json(const RunSummary& r, double wall_seconds) {
    using json = nlohmann::ordered_json;  // keys in the order of the text summary
    json j;
    j["scenario"] = r.scenario_file;
    j["steps_run"] = r.steps_shown;
    j["steps_total"] = r.steps_total;
    j["timestep_seconds"] = r.timestep_seconds;
    j["result"] = r.critical ? "critical error" : "completed";
    j["start_error"] = {{"severity", r.start_severity}, {"message", r.start_message}};
    j["stopped_at_step"] = r.stopped_at_step ? json(*r.stopped_at_step) : json(nullptr);
    j["load_kwh"] = {{"requested", r.energy_requested},
                     {"served", r.energy_served},
                     {"unmet", r.unmet_load},
                     {"excess_electricity", r.excess_electricity},
                     {"capacity_shortage", r.capacity_shortage}};
    json generators = json::array();
    for (const SummaryGenerator& g : r.generators) {
        generators.push_back({{"name", g.name},
                              {"energy_kwh", g.energy},
                              {"fuel", g.fuel},
                              {"runtime_hours", g.runtime_hours},
                              {"starts", g.starts}});
    }
    j["generators"] = generators;
    j["pv_kwh"] = r.pv_energy ? json(*r.pv_energy) : json(nullptr);
    j["wind_kwh"] = r.wind_energy ? json(*r.wind_energy) : json(nullptr);
    j["renewable_fraction"] = r.renewable_fraction;
    j["battery_kwh"] = r.battery ? json{{"charged", r.battery->charged},
                                        {"discharged", r.battery->discharged},
                                        {"throughput", r.battery->throughput},
                                        {"setpoints_outside_limits", r.battery->setpoints_limited}}
                                 : json(nullptr);
    j["grid"] = r.grid ? json{{"bought_kwh", r.grid->bought}, {"sold_kwh", r.grid->sold}, {"net_cost", r.grid->net_cost}}
                       : json(nullptr);
    j["non_finite_steps"] = r.non_finite_steps;
    json rules = json::object();
    for (const SummaryRuleCount& c : r.warnings_by_rule) rules[c.rule] = {{"description", c.description}, {"count", c.count}};
    j["warnings_by_rule"] = rules;
    j["errors"] = r.errors;
    j["warnings"] = r.warnings;
    j["wall_seconds"] = wall_seconds;
    return j;
}

}  // namespace tamlo_host
