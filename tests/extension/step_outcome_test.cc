// How one time step's outcome changes the run's error state, and the result layout of a run.
#include <gtest/gtest.h>

#include "dispatch_extension.h"

namespace {

using tamlo_dispatch::DISPATCH_CRITICAL_ERROR;
using tamlo_dispatch::DISPATCH_NO_ERROR;
using tamlo_dispatch::DISPATCH_SIMULATION_ERROR;
using tamlo_dispatch::DispatchError;
using tamlo_dispatch::DispatchSeverity;

DispatchError error_of(DispatchSeverity severity, const char* message) {
    DispatchError error;
    error.severity = severity;
    error.message = message;
    error.host_fields[0] = 9;
    return error;
}

// In tests/e2e, a clean step is validated and leaves no error (ErrorState, LongRun), and a
// critical error of a step is stored and final (ErrorState).
TEST(StepOutcome, FoldsIntoTheErrorState) {
    constexpr DispatchSeverity none = DISPATCH_NO_ERROR, simulation = DISPATCH_SIMULATION_ERROR,
                               critical = DISPATCH_CRITICAL_ERROR;
    const struct {
        const char* behaviour;
        DispatchSeverity before, outcome, after;
        const char* message_after;
        bool validated;
    } rows[] = {
        {"simulation error is stored", none, simulation, simulation, "new", false},
        {"later simulation error replaces the message", simulation, simulation, simulation, "new", false},
        {"clean step keeps a simulation error", simulation, none, simulation, "stored", true},
        {"critical replaces a simulation error", simulation, critical, critical, "new", false},
        {"critical stays after a simulation error", critical, simulation, critical, "stored", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.behaviour);
        DispatchError state = error_of(row.before, row.before == DISPATCH_NO_ERROR ? "" : "stored");
        const DispatchError outcome = error_of(row.outcome, row.outcome == DISPATCH_NO_ERROR ? "" : "new");
        EXPECT_EQ(tamlo_extension::record_step_outcome(state, outcome), row.validated);
        EXPECT_EQ(state.severity, row.after);
        EXPECT_EQ(state.message, row.message_after);
        EXPECT_EQ(state.host_fields[0], 9u);
    }
}

// Gives `list` one component per number.
template <typename Component>
void number(std::vector<Component>& list, const std::vector<std::uint64_t>& numbers) {
    list.resize(numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) list[i].component.component_number = numbers[i];
}

std::vector<std::uint64_t> numbers(const std::vector<tamlo_dispatch::ComponentResults>& results) {
    std::vector<std::uint64_t> n;
    for (const auto& r : results) {
        EXPECT_TRUE(r.result_items.empty());
        n.push_back(r.component_number);
    }
    return n;
}

// The number of time steps is checked in tests/e2e (Settings, ErrorState).
TEST(ResultParameters, OneEntryPerComponentInListOrder) {
    tamlo_dispatch::SimulationParameters p;
    number(p.generator_list, {12, 11});
    p.primary_load_list.resize(3);
    number(p.pv_list, {7});
    number(p.battery_list, {21});
    number(p.wind_turbine_list, {31});
    number(p.converter_list, {41});
    number(p.flywheel_list, {52, 51});
    p.grid_list.resize(1);
    p.custom_component_list.resize(1);

    tamlo_dispatch::ResultParameters results;
    tamlo_extension::fill_result_parameters(results, p);
    using Numbers = std::vector<std::uint64_t>;
    EXPECT_EQ(numbers(results.generator_results), (Numbers{12, 11}));
    EXPECT_EQ(numbers(results.primary_load_results), (Numbers{0, 0, 0}));
    EXPECT_EQ(numbers(results.pv_results), Numbers{7});
    EXPECT_EQ(numbers(results.battery_results), Numbers{21});
    EXPECT_EQ(numbers(results.wind_turbine_results), Numbers{31});
    EXPECT_EQ(numbers(results.converter_results), Numbers{41});
    EXPECT_EQ(numbers(results.flywheel_results), (Numbers{52, 51}));
    EXPECT_TRUE(results.series_results.empty());
    EXPECT_TRUE(results.valid);
}

}  // namespace
