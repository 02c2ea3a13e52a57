// Formats the run summary; the same text feeds the terminal and the golden test.
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

std::string format_summary(const Scenario& scenario, const RunOutcome& outcome) {
    const SimulationParameters& p = scenario.parameters;
    const Books& b = outcome.books;
    std::string s;
    // A run that ended critically after its start stopped where the decisions stopped coming.
    const bool stopped = outcome.critical && outcome.steps_run > 0 && !outcome.errors.empty();
    const std::size_t steps_shown = stopped ? outcome.steps_answered : outcome.steps_run;
    s += "Scenario " + scenario.file + ": " + std::to_string(steps_shown) + " of " + std::to_string(scenario.steps) +
         " time steps of " + std::to_string(p.timestep_size_in_seconds) + " s\n";
    if (outcome.start_error.severity != DISPATCH_NO_ERROR) {
        s += "Start simulation: " + severity_name(outcome.start_error.severity) + ": " + outcome.start_error.message +
             "\n";
        if (outcome.engine_search_places) s += explain_engine_start(outcome.start_error.message, *outcome.engine_search_places);
    }
    if (stopped) {
        s += "Stopped at time step " + std::to_string(outcome.steps_answered + 1) + " of " +
             std::to_string(scenario.steps) + " (no decisions came back from it on): critical error: " +
             outcome.errors.back() + "\n";
    }
    s += "\nLoad (kWh)\n";
    s += line("requested", fixed(b.energy_requested));
    s += line("served", fixed(b.energy_served));
    s += line("unmet", fixed(b.unmet_load));
    s += line("excess electricity", fixed(b.excess_electricity));
    s += line("capacity shortage", fixed(b.capacity_shortage));
    s += "\nProduction (kWh)\n";
    for (std::size_t i = 0; i < b.generators.size(); ++i) {
        const GeneratorBook& g = b.generators[i];
        s += line("generator " + p.generator_list[i].component.name,
                  fixed(g.energy) + ", fuel " + fixed(g.fuel) + ", " + fixed(g.runtime_hours) + " h run, " +
                      std::to_string(g.starts) + " starts");
    }
    if (!p.pv_list.empty()) s += line("PV", fixed(b.pv_energy));
    if (!p.wind_turbine_list.empty()) s += line("wind", fixed(b.wind_energy));
    s += line("renewable fraction", fixed(100.0 * b.renewable_fraction()) + " %");
    if (!p.battery_list.empty()) {
        s += "\nBattery (kWh at the bus)\n";
        s += line("charged", fixed(b.battery_charged));
        s += line("discharged", fixed(b.battery_discharged));
        s += line("throughput", fixed(b.battery_throughput()));
        if (b.battery_setpoints_limited > 0) {
            s += line("set points outside limits", std::to_string(b.battery_setpoints_limited));
        }
    }
    if (!p.grid_list.empty()) {
        s += "\nGrid\n";
        s += line("bought (kWh)", fixed(b.grid_bought));
        s += line("sold (kWh)", fixed(b.grid_sold));
        s += line("net cost", fixed(b.grid_cost, 2));
    }
    if (b.non_finite_steps > 0) {
        s += "\nNon-finite decisions\n";
        s += "  " + std::to_string(b.non_finite_steps) + " time step" + (b.non_finite_steps == 1 ? " had" : "s had") +
             " a non-finite set point or bus value; the books count it as 0\n";
    }
    s += "\nWarnings by rule\n";
    const auto counts = count_warnings(outcome.warnings);
    if (counts.empty()) s += "  none\n";
    for (const auto& [rule, count] : counts) {
        s += line(std::string(rule->id) + " " + rule->description, std::to_string(count));
    }
    s += "\nErrors (" + std::to_string(outcome.errors.size()) + ")\n";
    for (const std::string& e : outcome.errors) s += "  " + e + "\n";
    s += "\nWarnings (" + std::to_string(outcome.warnings.size()) + ")\n";
    for (const std::string& w : outcome.warnings) s += "  " + w + "\n";
    s += "\nResult: ";
    s += outcome.critical ? "the run ended in a critical error\n" : "the run completed\n";
    return s;
}

}  // namespace tamlo_host
