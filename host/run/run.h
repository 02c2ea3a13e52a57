// Drives one extension object through a whole run, as the simulator does, with the
// plant model filling each step and the books recording it.
#ifndef TAMLO_HOST_RUN_H
#define TAMLO_HOST_RUN_H

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "books.h"
#include "dispatch_extension_interface.h"
#include "scenario.h"

namespace tamlo_host {

struct RunHooks {
    // Called after each completed step, with the state as the dispatch left it.
    std::function<void(std::size_t step, const tamlo_dispatch::SimulationState& state)> on_step;
    std::function<void(std::size_t done, std::size_t total)> on_progress;
};

struct RunTimes {
    double start_seconds = 0.0;     // start_simulation: engine start, parameters, user's start function
    double plant_seconds = 0.0;     // filling states, applying decisions, books, hooks
    double dispatch_seconds = 0.0;  // dispatch calls: extension and engine together
    double end_seconds = 0.0;       // end_simulation, result parameters, close_engine, destroy
};

struct RunOutcome {
    tamlo_dispatch::DispatchError start_error;  // what start_simulation returned
    std::vector<std::string> errors;             // end_simulation's lists
    std::vector<std::string> warnings;
    bool critical = false;          // the run ended in a critical error
    std::size_t steps_run = 0;
    // Steps up to the last one whose dispatch wrote a decision. After a critical error the
    // extension leaves every later state as the bench filled it, so in a run that ended
    // critically this is where the run stopped.
    std::size_t steps_answered = 0;
    std::size_t result_entries = 0;  // component entries of get_result_parameters
    Books books;  // after a critical error, of the steps up to steps_answered
    RunTimes times;
    // Where our libeng looks for the engine program, one place a line; absent with another libeng.
    std::optional<std::string> engine_search_places;

    explicit RunOutcome(std::size_t generators) : books(generators) {}
};

// Runs the scenario on a fresh object from create and releases it with destroy.
RunOutcome run_scenario(const Scenario& scenario, const std::function<IDispatchExtension*()>& create,
                        const RunHooks& hooks = {});

}  // namespace tamlo_host

#endif
