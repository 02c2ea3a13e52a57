// The user's end-simulation function: its end_sim_out becomes the run's errors and warnings,
// followed by the messages collected during the run and the stored error.
#include <gtest/gtest.h>

#include <vector>

#include "loaded_extension.h"

namespace tamlo_e2e {
namespace {

using tamlo_dispatch::DISPATCH_NO_ERROR;
using Texts = std::vector<std::string>;

struct EndCase {
    const char* function;
    Texts errors;
    Texts warnings;
};

std::string end_command(const std::string& function) {
    return "end_sim_out = " + function + "(simulation_parameters, custom_variables);";
}

// One engine, one run per case. The cases without end_sim_out come first, while the
// workspace holds no end_sim_out of an earlier run (which would be read instead).
TEST(EndFunction, EndSimOutBecomesPrefixedErrorsAndWarnings) {
    const EndCase cases[] = {
        {"end_no_output",
         {"MATLAB error: MATLAB error while executing '" + end_command("end_no_output") +
          "': error: 'end_sim_out' undefined near line 1, column 10"
          "error: called from    end_no_output at line 4 column 1"},
         {}},
        {"no_such_end_function",
         {"MATLAB error: MATLAB error while executing '" + end_command("no_such_end_function") +
          "': error: 'no_such_end_function' undefined near line 1, column 15"},
         {}},
        {"end_two_errors", {"MATLAB error: first error", "MATLAB error: second error\nwith a second line"}, {}},
        {"end_missing_field",
         {"MATLAB error: Field simulation_errors or simulation_warnings of init_error variable is missing! Check that "
          "your MATLAB EndSimulation function returns a struct with this field."},
         {}},
        // Elements that are not texts read as empty texts; so does each element of a plain
        // char array given where a cell array belongs.
        {"end_non_text",
         {"MATLAB error: ", "MATLAB error: real text", "MATLAB error: "},
         {"MATLAB warning: ", "MATLAB warning: ", "MATLAB warning: "}},
        // Printing is ignored by the end call.
        {"end_warnings", {"MATLAB error: end error"}, {"MATLAB warning: first warning", "MATLAB warning: second warning"}},
        {"end_empty_lists", {}, {}},
    };
    ExtensionPtr extension = create_extension();
    for (const EndCase& c : cases) {
        SCOPED_TRACE(c.function);
        ASSERT_EQ(extension->start_simulation(empty_system(fixture_settings("start_ok", "d", c.function)))->severity,
                  DISPATCH_NO_ERROR);
        auto messages = extension->end_simulation();
        ASSERT_NE(messages, nullptr);
        EXPECT_EQ(messages->simulation_errors, c.errors);
        EXPECT_EQ(messages->simulation_warnings, c.warnings);
    }
}

TEST(EndFunction, CollectedWarningsFollowAndTheStoredErrorComesLast) {
    ExtensionPtr extension = create_extension();
    tamlo_dispatch::SimulationParameters parameters =
        empty_system(fixture_settings("start_violations", "dispatch_sign_violations", "end_warnings"));
    tamlo_samples::add_number_parameter(parameters, "violations", 1);
    ASSERT_EQ(extension->start_simulation(parameters)->severity, DISPATCH_NO_ERROR);
    tamlo_dispatch::SimulationState state;
    extension->dispatch(state);
    auto messages = extension->end_simulation();
    EXPECT_EQ(messages->simulation_errors, Texts{"MATLAB error: end error"});
    EXPECT_EQ(messages->simulation_warnings,
              (Texts{"MATLAB warning: first warning", "MATLAB warning: second warning",
                     "Capacity shortage can't be less than zero: simulation_state.ac_bus.capacity_shortage = "
                     "-1.000000 kW. Time step: 1"}));

    // A failing time step stores its error: it is listed after the end function's errors.
    tamlo_samples::Settings failing = fixture_settings("start_violations", "dispatch_number", "end_warnings");
    tamlo_dispatch::SimulationParameters second = empty_system(failing);
    tamlo_samples::add_number_parameter(second, "violations", 1);
    ASSERT_EQ(extension->start_simulation(second)->severity, DISPATCH_NO_ERROR);
    state.current_timestep = 3;
    extension->dispatch(state);
    messages = extension->end_simulation();
    EXPECT_EQ(messages->simulation_errors,
              (Texts{"MATLAB error: end error",
                     "Output variable simulation_state was not of type struct. Check that your MATLAB dispatch "
                     "function returns a struct simulation_state."}));
    EXPECT_EQ(messages->simulation_warnings, (Texts{"MATLAB warning: first warning", "MATLAB warning: second warning"}));
}

}  // namespace
}  // namespace tamlo_e2e
