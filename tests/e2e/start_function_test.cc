// The user's start-simulation function: how its init_error becomes the start's outcome.
#include <gtest/gtest.h>

#include <vector>

#include "loaded_extension.h"

namespace tamlo_e2e {
namespace {

using tamlo_dispatch::DISPATCH_CRITICAL_ERROR;
using tamlo_dispatch::DISPATCH_NO_ERROR;
using tamlo_dispatch::DISPATCH_SIMULATION_ERROR;
using tamlo_dispatch::DispatchSeverity;

struct StartCase {
    const char* function;
    DispatchSeverity severity;
    std::string message;
};

std::string long_description_cut() {
    std::string text;
    for (int i = 0; i < 1023; ++i) {
        text += static_cast<char>('a' + i % 26);
    }
    return text;
}

// One engine serves every case: each case is a new run on the same object.
TEST(StartFunction, InitErrorDecidesTheOutcome) {
    const StartCase cases[] = {
        // These two come first, while the workspace holds no init_error of an earlier run.
        {"start_one_output", DISPATCH_CRITICAL_ERROR,
         "MATLAB error while executing '[init_error, custom_variables] = start_one_output(simulation_parameters);': "
         "error: start_one_output: function called with too many outputs"
         "error: called from    start_one_output"},
        // A name of blanks is not empty, so MATLAB is asked: it reads the command as
        // "[init_error, custom_variables] = (simulation_parameters)", assigns the parameters
        // struct to init_error and fails on custom_variables; init_error has no such fields.
        {"   ", DISPATCH_CRITICAL_ERROR,
         "Field error_description or severity_code of init_error variable is missing! Check that your MATLAB "
         "StartSimulation function returns a struct with this field."},
        {"start_ok", DISPATCH_NO_ERROR, ""},
        {"start_simulation_error_two_lines", DISPATCH_SIMULATION_ERROR, "MATLAB error: first linesecond line"},
        {"start_critical", DISPATCH_CRITICAL_ERROR, "MATLAB error: the start function refuses this run"},
        {"start_lower_case_critical", DISPATCH_NO_ERROR, ""},
        {"start_empty_severity", DISPATCH_NO_ERROR, ""},
        {"start_missing_description", DISPATCH_CRITICAL_ERROR,
         "Field error_description or severity_code of init_error variable is missing! Check that your MATLAB "
         "StartSimulation function returns a struct with this field."},
        {"start_long_description", DISPATCH_SIMULATION_ERROR, "MATLAB error: " + long_description_cut()},
        {"start_prints", DISPATCH_NO_ERROR, ""},
        // Texts that are not char arrays read as empty texts.
        {"start_non_text_fields", DISPATCH_NO_ERROR, ""},
        {"start_non_text_description", DISPATCH_CRITICAL_ERROR, "MATLAB error: "},
    };
    ExtensionPtr extension = create_extension();
    for (const StartCase& c : cases) {
        SCOPED_TRACE(c.function);
        auto result = extension->start_simulation(empty_system(fixture_settings(c.function, "d", "e")));
        ASSERT_NE(result, nullptr);
        EXPECT_EQ(result->severity, c.severity);
        EXPECT_EQ(result->message, c.message);
    }
}

TEST(StartFunction, FailingSecondRunReadsTheStaleInitErrorOfTheFirst) {
    ExtensionPtr extension = create_extension();
    auto first = extension->start_simulation(empty_system(fixture_settings("start_critical", "d", "e")));
    EXPECT_EQ(first->message, "MATLAB error: the start function refuses this run");
    // start_fails assigns nothing: init_error of the first run is still in the workspace.
    auto second = extension->start_simulation(empty_system(fixture_settings("start_fails", "d", "e")));
    EXPECT_EQ(second->severity, DISPATCH_CRITICAL_ERROR);
    EXPECT_EQ(second->message, "MATLAB error: the start function refuses this run");
}

TEST(StartFunction, CriticalErrorOfTheStartDoesNotStopDispatch) {
    ExtensionPtr extension = create_extension();
    tamlo_dispatch::SimulationParameters parameters = with_settings(
        tamlo_samples::typical_system(), fixture_settings("start_critical", "dispatch_set_decisions", "end_empty_lists"));
    auto result = extension->start_simulation(parameters);
    ASSERT_EQ(result->severity, DISPATCH_CRITICAL_ERROR);
    tamlo_dispatch::SimulationState state = tamlo_samples::make_state(parameters);
    extension->dispatch(state);
    EXPECT_EQ(state.generator_list[0].power_setpoint, 101.0);
    EXPECT_EQ(state.generator_list[1].power_setpoint, 102.0);
    // The start's error was handed to the host only, never stored.
    EXPECT_EQ(extension->end_simulation()->simulation_errors, std::vector<std::string>{});
}

}  // namespace
}  // namespace tamlo_e2e
