// The run loop: start, one dispatch per step between plant and books, end.
#include "run.h"

#include <algorithm>
#include <chrono>

#include "plant_model.h"

namespace tamlo_host {

using namespace tamlo_dispatch;

namespace {

using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Releases the object through its own destroy even when the run throws.
struct ExtensionObject {
    IDispatchExtension* extension;
    ~ExtensionObject() {
        if (extension != nullptr) extension->destroy();
    }
};

// The dispatch call reports only critical errors, and the extension lists its stored error
// unprefixed after the end function's "MATLAB error: " entries.
bool has_stored_error(const std::vector<std::string>& errors) {
    for (const std::string& e : errors) {
        if (e.rfind("MATLAB error: ", 0) != 0) return true;
    }
    return false;
}

// Whether the dispatch wrote any decision: the plant fills every decision field with 0.
bool has_decision(const SimulationState& s) {
    const auto any = [](const auto& list, auto member) {
        return std::any_of(list.begin(), list.end(), [&](const auto& e) { return e.*member != 0; });
    };
    const auto bus = [](const BusState& b) {
        return b.load_served != 0 || b.unmet_load != 0 || b.excess_electricity != 0 || b.operating_capacity_served != 0 ||
               b.capacity_shortage != 0;
    };
    const auto converter = [](const ConverterState& c) {
        return c.inverter_power_input != 0 || c.inverter_power_output != 0 || c.rectifier_power_input != 0 ||
               c.rectifier_power_output != 0;
    };
    return any(s.generator_list, &GeneratorState::power_setpoint) || any(s.pv_list, &PvState::power_setpoint) ||
           any(s.wind_turbine_list, &WindTurbineState::power_setpoint) ||
           any(s.battery_list, &BatteryState::power_setpoint) || any(s.flywheel_list, &FlywheelState::load_served) ||
           any(s.primary_load_list, &PrimaryLoadState::load_served) || any(s.grid_list, &GridState::grid_purchases) ||
           any(s.grid_list, &GridState::grid_sales) || std::any_of(s.converter_list.begin(), s.converter_list.end(), converter) ||
           std::any_of(s.battery_list.begin(), s.battery_list.end(),
                       [&](const BatteryState& b) { return converter(b.dedicated_converter); }) ||
           bus(s.ac_bus) || bus(s.dc_bus);
}

}  // namespace

RunOutcome run_scenario(const Scenario& scenario, const std::function<IDispatchExtension*()>& create,
                        const RunHooks& hooks) {
    RunOutcome outcome(scenario.parameters.generator_list.size());
    auto mark = Clock::now();
    ExtensionObject object{create()};
    IDispatchExtension& extension = *object.extension;

    const std::shared_ptr<DispatchError> started = extension.start_simulation(scenario.parameters);
    outcome.start_error = *started;
    outcome.times.start_seconds = seconds_since(mark);
    const bool can_run = started->severity != DISPATCH_CRITICAL_ERROR;

    // The books as they stood after the last step that got decisions: after a critical error
    // the later steps only carry the bench's own zeros, which would dilute every total.
    Books answered_books = outcome.books;
    if (can_run) {
        PlantModel plant(scenario);
        SimulationState state;
        for (std::size_t t = 0; t < scenario.steps; ++t) {
            mark = Clock::now();
            plant.fill_state(t, state);
            outcome.times.plant_seconds += seconds_since(mark);

            mark = Clock::now();
            extension.dispatch(state);
            outcome.times.dispatch_seconds += seconds_since(mark);
            const bool answered = has_decision(state);
            if (answered) outcome.steps_answered = t + 1;

            mark = Clock::now();
            const StepOutcome applied = plant.apply(state);
            outcome.books.record(state, applied, plant.hours());
            if (answered) answered_books = outcome.books;
            if (hooks.on_step) hooks.on_step(t, state);
            if (hooks.on_progress) hooks.on_progress(t + 1, scenario.steps);
            outcome.times.plant_seconds += seconds_since(mark);
            ++outcome.steps_run;
        }
    }

    mark = Clock::now();
    if (can_run) {
        const std::shared_ptr<SimulationErrorsAndWarnings> messages = extension.end_simulation();
        outcome.errors = messages->simulation_errors;
        outcome.warnings = messages->simulation_warnings;
    }
    const std::shared_ptr<ResultParameters> results = extension.get_result_parameters();
    for (const auto* list : {&results->generator_results, &results->primary_load_results, &results->pv_results,
                             &results->battery_results, &results->wind_turbine_results, &results->converter_results,
                             &results->flywheel_results}) {
        outcome.result_entries += list->size();
    }
    extension.close_engine();
    extension.destroy();
    object.extension = nullptr;
    outcome.times.end_seconds = seconds_since(mark);

    outcome.critical = !can_run || has_stored_error(outcome.errors);
    if (can_run && outcome.critical) outcome.books = answered_books;
    return outcome;
}

}  // namespace tamlo_host
