// Whole runs through the loaded library and the real engine: the settings, the start and end
// functions' outputs, failing time steps, and the run's error state and warnings.
#include <gtest/gtest.h>

#include "loaded_extension.h"

namespace tamlo_e2e {
namespace {

using tamlo_dispatch::DISPATCH_CRITICAL_ERROR;
using tamlo_dispatch::DISPATCH_NO_ERROR;
using tamlo_dispatch::SimulationParameters;
using tamlo_dispatch::SimulationState;

const std::string no_engine_dispatch =
    "The dispatch function was not called: no MATLAB engine is open. start_simulation has to succeed in opening one "
    "first.";
const std::string no_engine_end =
    "The end simulation function was not called: no MATLAB engine is open. start_simulation has to succeed in "
    "opening one first.";
const std::string not_a_struct =
    "Output variable simulation_state was not of type struct. Check that your MATLAB dispatch function returns a "
    "struct simulation_state.";

// A start stopped by its settings opens no engine: dispatch and end report that instead of
// calling MATLAB, and the dispatch's critical error is final.
TEST(Settings, EmptySettingIsCriticalTakesTheParametersAndOpensNoEngine) {
    const std::string dir = TAMLO_E2E_FIXTURE_DIR;
    const struct {
        const char* behaviour;
        std::vector<std::pair<std::string, std::string>> parameters;
        const char* message;
    } rows[] = {
        {"no parameters at all", {}, "Matlab working directory cannot be empty"},
        {"dispatch and end missing", {{"path", dir}, {"start simulation", "s"}},
         "Matlab dispatch function name cannot be empty"},
        {"start missing", {{"path", dir}, {"dispatch", "d"}, {"end simulation", "e"}},
         "Matlab start simulation function name cannot be empty"},
        {"end missing", {{"path", dir}, {"start simulation", "s"}, {"dispatch", "d"}},
         "Matlab end simulation function name cannot be empty"},
        {"key in other letter case", {{"Path", dir}, {"start simulation", "s"}, {"dispatch", "d"}, {"end simulation", "e"}},
         "Matlab working directory cannot be empty"},
        {"key with a blank", {{"path", dir}, {" start simulation", "s"}, {"dispatch", "d"}, {"end simulation", "e"}},
         "Matlab start simulation function name cannot be empty"},
        {"last occurrence wins",
         {{"path", dir}, {"start simulation", "s"}, {"dispatch", "d"}, {"dispatch", ""}, {"end simulation", "e"}},
         "Matlab dispatch function name cannot be empty"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.behaviour);
        SimulationParameters parameters;
        parameters.number_of_timesteps = 17;
        for (const auto& [name, value] : row.parameters) tamlo_samples::add_text_parameter(parameters, name, value);
        ExtensionPtr extension = create_extension();
        auto result = extension->start_simulation(parameters);
        EXPECT_EQ(result->severity, DISPATCH_CRITICAL_ERROR);
        EXPECT_EQ(result->message, row.message);
        EXPECT_EQ(extension->get_result_parameters()->number_of_timesteps, 17u);
        SimulationState state;
        state.ac_bus.load_served = 3;
        extension->dispatch(state);
        EXPECT_EQ(state.ac_bus.load_served, 3);
        EXPECT_EQ(extension->end_simulation()->simulation_errors, (Texts{no_engine_end, no_engine_dispatch}));
        EXPECT_EQ(extension->start_simulation(code_run(""))->message, no_engine_dispatch);
    }
}

TEST(EngineStart, MissingFolderIsCritical) {
    ExtensionPtr extension = create_extension();
    SimulationParameters parameters = code_run("");
    parameters.extension_parameters[0].text_value = "/nonexistent/tamlo folder";
    auto failed = extension->start_simulation(parameters);
    EXPECT_EQ(failed->severity, DISPATCH_CRITICAL_ERROR);
    EXPECT_EQ(failed->message, "MATLAB error: error: /nonexistent/tamlo folder: No such file or directory");
}

// One engine serves every row: each row is a new run on the same object.
TEST(StartFunction, InitErrorDecidesTheOutcome) {
    const std::string refused = "init_error.severity_code = 'DISPATCH_CRITICAL_ERROR'; "
                                "init_error.error_description = 'the start function refuses this run';";
    const struct {
        const char* start_function;
        std::string code;
        tamlo_dispatch::DispatchSeverity severity;
        std::string message;
    } rows[] = {
        // First, while the workspace holds no init_error of an earlier run.
        {"start_one_output", "", DISPATCH_CRITICAL_ERROR,
         "MATLAB error while executing '[init_error, custom_variables] = start_one_output(simulation_parameters);': "
         "error: start_one_output: function called with too many outputserror: called from    start_one_output"},
        {"start_code", "", DISPATCH_NO_ERROR, ""},
        {"start_code", "disp('text'); warning('a warning'); x = 42", DISPATCH_NO_ERROR, ""},
        {"start_code", refused, DISPATCH_CRITICAL_ERROR, "MATLAB error: the start function refuses this run"},
        // Failing before returning leaves the earlier run's init_error in the workspace.
        {"start_code", "error('stops on purpose');", DISPATCH_CRITICAL_ERROR,
         "MATLAB error: the start function refuses this run"},
    };
    ExtensionPtr extension = create_extension();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.code);
        SimulationParameters parameters = code_run(row.code);
        parameters.extension_parameters[1].text_value = row.start_function;
        auto result = extension->start_simulation(parameters);
        EXPECT_EQ(result->severity, row.severity);
        EXPECT_EQ(result->message, row.message);
    }
    // A critical start is the host's to act on: it is not stored, and dispatch still runs.
    SimulationState state;
    extension->dispatch(state);
    EXPECT_EQ(extension->end_simulation()->simulation_errors, Texts{});
}

// One engine, one run per row. The row without end_sim_out comes first, while the workspace
// holds no end_sim_out of an earlier run (which would be read instead).
TEST(EndFunction, EndSimOutBecomesPrefixedErrorsAndWarnings) {
    const struct {
        std::string code;
        Texts errors;
        Texts warnings;
    } rows[] = {
        {"x = 1;",
         {"MATLAB error: MATLAB error while executing 'end_sim_out = end_code(simulation_parameters, "
          "custom_variables);': error: 'end_sim_out' undefined near line 1, column 10"
          "error: called from    end_code at line 4 column 1"},
         {}},
        // Printing is ignored by the end call; texts keep their line feeds.
        {"disp('printed'); end_sim_out.simulation_errors = {'first', sprintf('second\\nline')}; "
         "end_sim_out.simulation_warnings = {'one', 'two'};",
         {"MATLAB error: first", "MATLAB error: second\nline"}, {"MATLAB warning: one", "MATLAB warning: two"}},
    };
    ExtensionPtr extension = create_extension();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.code);
        ASSERT_EQ(extension->start_simulation(code_run("", "", row.code))->severity, DISPATCH_NO_ERROR);
        auto messages = extension->end_simulation();
        EXPECT_EQ(messages->simulation_errors, row.errors);
        EXPECT_EQ(messages->simulation_warnings, row.warnings);
    }
}

TEST(FailingDispatch, IsCriticalWithItsMessage) {
    const auto command = [](const std::string& function) {
        return "MATLAB error while executing '[new_simulation_state, custom_variables] = " + function +
               "(simulation_parameters, simulation_state, custom_variables);': ";
    };
    const struct {
        const char* dispatch_function;
        std::string code;
        std::string message;
    } rows[] = {
        {"dispatch_code", "disp('hello from dispatch');", command("dispatch_code") + "hello from dispatch"},
        {"dispatch_code", "new_simulation_state = 42;", not_a_struct},
        {"no_such_dispatch_function", "",
         command("no_such_dispatch_function") + "error: 'no_such_dispatch_function' undefined near line 1, column 44"},
        // Errors in the user's code name the function and line.
        {"dispatch_misspelt_in_subfunction", "",
         command("dispatch_misspelt_in_subfunction") + "error: structure has no member 'power_availble'"
             "error: called from    dispatch_misspelt_in_subfunction>first_availability at line 8 column 11"
             "    dispatch_misspelt_in_subfunction at line 4 column 11"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.dispatch_function + row.code);
        ExtensionPtr extension = create_extension();
        SimulationParameters parameters = code_run("", row.code, "", tamlo_samples::make_system(1));
        parameters.extension_parameters[2].text_value = row.dispatch_function;
        ASSERT_EQ(extension->start_simulation(parameters)->severity, DISPATCH_NO_ERROR);
        SimulationState state = tamlo_samples::make_state(parameters);
        state.ac_bus.load_served = 3;
        extension->dispatch(state);
        EXPECT_EQ(state.ac_bus.load_served, 3);
        EXPECT_EQ(extension->end_simulation()->simulation_errors, Texts{row.message});
    }
}

TEST(ErrorState, WarningsAreThoseOfTheRunAndACriticalErrorIsFinalAndListedLast) {
    const auto shortage = [](int step) {
        return "Capacity shortage can't be less than zero: simulation_state.ac_bus.capacity_shortage = -1.000000 kW. "
               "Time step: " + std::to_string(step);
    };
    const std::string negative_shortage = "new_simulation_state.ac_bus.capacity_shortage = -1; ";
    ExtensionPtr extension = create_extension();
    ASSERT_EQ(extension->start_simulation(code_run("", negative_shortage))->severity, DISPATCH_NO_ERROR);
    SimulationState state;
    extension->dispatch(state);
    state.current_timestep = 1;
    extension->dispatch(state);
    EXPECT_EQ(extension->end_simulation()->simulation_warnings, (Texts{shortage(1), shortage(2)}));

    // A new start empties the lists. A clean step at time step 0, then a failing one.
    SimulationParameters parameters = code_run(
        "", negative_shortage + "if custom_variables.steps, new_simulation_state = 42; end; custom_variables.steps = 1;",
        "end_sim_out.simulation_errors = {'end error'}; end_sim_out.simulation_warnings = {'w'};");
    parameters.number_of_timesteps = 24;
    ASSERT_EQ(extension->start_simulation(parameters)->severity, DISPATCH_NO_ERROR);
    state.current_timestep = 0;
    extension->dispatch(state);
    state.current_timestep = 3;
    extension->dispatch(state);

    // Every later start returns a copy of the stored error and takes nothing over.
    SimulationParameters other = code_run("");
    other.number_of_timesteps = 99;
    auto refused = extension->start_simulation(other);
    EXPECT_EQ(refused->severity, DISPATCH_CRITICAL_ERROR);
    EXPECT_EQ(refused->message, not_a_struct);
    EXPECT_EQ(extension->get_result_parameters()->number_of_timesteps, 24u);
    // Dispatch leaves the state alone.
    state.ac_bus.capacity_shortage = 12.5;
    extension->dispatch(state);
    EXPECT_EQ(state.ac_bus.capacity_shortage, 12.5);

    // The end function of the first run still runs; the critical message comes last.
    auto messages = extension->end_simulation();
    EXPECT_EQ(messages->simulation_errors, (Texts{"MATLAB error: end error", not_a_struct}));
    EXPECT_EQ(messages->simulation_warnings, (Texts{"MATLAB warning: w", shortage(1)}));
}

}  // namespace
}  // namespace tamlo_e2e
