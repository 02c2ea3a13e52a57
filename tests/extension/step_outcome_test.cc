// How one time step's outcome changes the run's error state.
#include <gtest/gtest.h>

#include "dispatch_extension.h"

namespace {

using tamlo_dispatch::DISPATCH_CRITICAL_ERROR;
using tamlo_dispatch::DISPATCH_NO_ERROR;
using tamlo_dispatch::DISPATCH_SIMULATION_ERROR;
using tamlo_dispatch::DispatchError;
using tamlo_dispatch::DispatchSeverity;

struct StepCase {
    const char* behaviour;
    DispatchSeverity before;
    DispatchSeverity outcome;
    DispatchSeverity after;
    const char* message_after;
    bool validated;
};

void PrintTo(const StepCase& c, std::ostream* os) {
    *os << c.behaviour;
}

DispatchError error_of(DispatchSeverity severity, const char* message) {
    DispatchError error;
    error.severity = severity;
    error.message = message;
    return error;
}

class StepOutcome : public ::testing::TestWithParam<StepCase> {};

TEST_P(StepOutcome, FoldsIntoTheErrorState) {
    const StepCase& c = GetParam();
    DispatchError state = error_of(c.before, c.before == DISPATCH_NO_ERROR ? "" : "stored");
    state.host_fields[0] = 9;
    const DispatchError outcome = error_of(c.outcome, c.outcome == DISPATCH_NO_ERROR ? "" : "new");
    EXPECT_EQ(tamlo_extension::record_step_outcome(state, outcome), c.validated);
    EXPECT_EQ(state.severity, c.after);
    EXPECT_EQ(state.message, c.message_after);
    EXPECT_EQ(state.host_fields[0], 9u);
}

INSTANTIATE_TEST_SUITE_P(
    States, StepOutcome,
    ::testing::Values(
        StepCase{"CleanStepIsValidated", DISPATCH_NO_ERROR, DISPATCH_NO_ERROR, DISPATCH_NO_ERROR, "", true},
        StepCase{"SimulationErrorIsStored", DISPATCH_NO_ERROR, DISPATCH_SIMULATION_ERROR, DISPATCH_SIMULATION_ERROR, "new", false},
        StepCase{"LaterSimulationErrorReplacesMessage", DISPATCH_SIMULATION_ERROR, DISPATCH_SIMULATION_ERROR, DISPATCH_SIMULATION_ERROR, "new", false},
        StepCase{"CleanStepKeepsSimulationError", DISPATCH_SIMULATION_ERROR, DISPATCH_NO_ERROR, DISPATCH_SIMULATION_ERROR, "stored", true},
        StepCase{"CriticalReplacesSimulationError", DISPATCH_SIMULATION_ERROR, DISPATCH_CRITICAL_ERROR, DISPATCH_CRITICAL_ERROR, "new", false},
        StepCase{"CriticalIsStored", DISPATCH_NO_ERROR, DISPATCH_CRITICAL_ERROR, DISPATCH_CRITICAL_ERROR, "new", false},
        StepCase{"CriticalStaysAfterSimulationError", DISPATCH_CRITICAL_ERROR, DISPATCH_SIMULATION_ERROR, DISPATCH_CRITICAL_ERROR, "stored", false},
        StepCase{"CriticalStaysAfterCleanStep", DISPATCH_CRITICAL_ERROR, DISPATCH_NO_ERROR, DISPATCH_CRITICAL_ERROR, "stored", false}),
    [](const auto& info) { return std::string(info.param.behaviour); });

}  // namespace
