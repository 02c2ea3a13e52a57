// The four settings from the extension parameters, and the engine start in the working folder.
#include <gtest/gtest.h>

#include <vector>

#include "loaded_extension.h"

namespace tamlo_e2e {
namespace {

using tamlo_dispatch::DISPATCH_CRITICAL_ERROR;
using tamlo_dispatch::DISPATCH_NO_ERROR;
using tamlo_dispatch::DispatchError;
using tamlo_dispatch::ExtensionParameterType;
using tamlo_dispatch::SimulationParameters;

struct NamedValue {
    std::string name;
    std::string value;
};

struct EmptySettingCase {
    const char* behaviour;
    std::vector<NamedValue> parameters;
    const char* message;
};

void PrintTo(const EmptySettingCase& c, std::ostream* os) {
    *os << c.behaviour;
}

const std::string dir = TAMLO_E2E_FIXTURE_DIR;

const EmptySettingCase empty_setting_cases[] = {
    {"NoParametersAtAll", {}, "Matlab working directory cannot be empty"},
    {"DispatchAndEndMissing", {{"path", dir}, {"start simulation", "start_ok"}},
     "Matlab dispatch function name cannot be empty"},
    {"StartMissing", {{"path", dir}, {"dispatch", "dispatch_identity"}, {"end simulation", "end_two_errors"}},
     "Matlab start simulation function name cannot be empty"},
    {"EndMissing", {{"path", dir}, {"start simulation", "start_ok"}, {"dispatch", "dispatch_identity"}},
     "Matlab end simulation function name cannot be empty"},
    {"PathGivenEmpty",
     {{"path", ""}, {"start simulation", "start_ok"}, {"dispatch", "d"}, {"end simulation", "e"}},
     "Matlab working directory cannot be empty"},
    {"KeyInOtherLetterCaseIsIgnored",
     {{"Path", dir}, {"start simulation", "start_ok"}, {"dispatch", "d"}, {"end simulation", "e"}},
     "Matlab working directory cannot be empty"},
    {"KeyWithLeadingBlankIsIgnored",
     {{"path", dir}, {" start simulation", "start_ok"}, {"dispatch", "d"}, {"end simulation", "e"}},
     "Matlab start simulation function name cannot be empty"},
    {"KeyWithTrailingBlankIsIgnored",
     {{"path", dir}, {"start simulation", "s"}, {"dispatch ", "d"}, {"end simulation", "e"}},
     "Matlab dispatch function name cannot be empty"},
    {"LastOccurrenceWins",
     {{"path", dir}, {"start simulation", "s"}, {"dispatch", "d"}, {"dispatch", ""}, {"end simulation", "e"}},
     "Matlab dispatch function name cannot be empty"},
    {"LastOccurrenceWinsOverEmpty",
     {{"path", dir}, {"start simulation", "s"}, {"dispatch", "d"}, {"end simulation", ""}, {"Dispatch", ""}},
     "Matlab end simulation function name cannot be empty"},
};

class EmptySetting : public ::testing::TestWithParam<EmptySettingCase> {};

TEST_P(EmptySetting, IsCriticalWithItsMessageAndStartsNoEngine) {
    const EmptySettingCase& c = GetParam();
    SimulationParameters parameters;
    parameters.number_of_timesteps = 17;
    for (const NamedValue& p : c.parameters) {
        tamlo_samples::add_text_parameter(parameters, p.name, p.value);
    }
    ExtensionPtr extension = create_extension();
    std::shared_ptr<DispatchError> result = extension->start_simulation(parameters);
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(result->severity, DISPATCH_CRITICAL_ERROR);
    EXPECT_EQ(result->message, c.message);
    for (std::uint32_t field : result->host_fields) {
        EXPECT_EQ(field, 0u);
    }
    // The parameters were taken before the check failed.
    EXPECT_EQ(extension->get_result_parameters()->number_of_timesteps, 17u);
    // No engine was opened: the end call says so instead of calling MATLAB.
    auto messages = extension->end_simulation();
    ASSERT_EQ(messages->simulation_errors.size(), 1u);
    EXPECT_EQ(messages->simulation_errors[0],
              "The end simulation function was not called: no MATLAB engine is open. start_simulation has to "
              "succeed in opening one first.");
}

INSTANTIATE_TEST_SUITE_P(Settings, EmptySetting, ::testing::ValuesIn(empty_setting_cases),
                         [](const auto& info) { return std::string(info.param.behaviour); });

TEST(Settings, TypeOfTheParameterDoesNotMatterOnlyItsText) {
    SimulationParameters parameters;
    tamlo_samples::add_text_parameter(parameters, "path", dir);
    tamlo_samples::add_text_parameter(parameters, "start simulation", "s");
    tamlo_samples::add_number_parameter(parameters, "dispatch", 5.0);  // text_value stays empty
    tamlo_samples::add_text_parameter(parameters, "end simulation", "e");
    ExtensionPtr extension = create_extension();
    auto result = extension->start_simulation(parameters);
    EXPECT_EQ(result->message, "Matlab dispatch function name cannot be empty");
}

TEST(Settings, LastOccurrenceIsUsedAndASecondRunKeepsTheEarlierPath) {
    ExtensionPtr extension = create_extension();
    SimulationParameters first = empty_system(fixture_settings("start_ok", "no_such_dispatch", "end_report_steps"));
    tamlo_samples::add_text_parameter(first, "dispatch", "dispatch_count_steps");
    ASSERT_EQ(extension->start_simulation(first)->message, "");
    tamlo_dispatch::SimulationState state;
    extension->dispatch(state);
    auto messages = extension->end_simulation();
    EXPECT_EQ(messages->simulation_errors, std::vector<std::string>{});
    EXPECT_EQ(messages->simulation_warnings, std::vector<std::string>{"MATLAB warning: dispatch ran 1 times"});

    // The second run names no path: the first run's folder still counts as given.
    SimulationParameters second;
    tamlo_samples::add_text_parameter(second, "start simulation", "start_ok");
    auto result = extension->start_simulation(second);
    EXPECT_EQ(result->severity, DISPATCH_NO_ERROR);
    EXPECT_EQ(result->message, "");
    extension->dispatch(state);
    extension->dispatch(state);
    EXPECT_EQ(extension->end_simulation()->simulation_warnings,
              std::vector<std::string>{"MATLAB warning: dispatch ran 2 times"});
}

TEST(EngineStart, MissingFolderIsCriticalLeavesEngineOpenAndIsNotRetried) {
    ExtensionPtr extension = create_extension();
    auto failed = extension->start_simulation(
        empty_system({"/nonexistent/tamlo folder", "start_ok", "dispatch_identity", "end_two_errors"}));
    EXPECT_EQ(failed->severity, DISPATCH_CRITICAL_ERROR);
    EXPECT_EQ(failed->message, "MATLAB error: error: /nonexistent/tamlo folder: No such file or directory");

    // The engine stayed open: a start with a good folder does not change folder again, so
    // the start function in the fixture folder is not found.
    auto second = extension->start_simulation(empty_system(fixture_settings("start_ok", "d", "e")));
    EXPECT_EQ(second->severity, DISPATCH_CRITICAL_ERROR);
    EXPECT_EQ(second->message,
              "MATLAB error while executing '[init_error, custom_variables] = start_ok(simulation_parameters);': "
              "error: 'start_ok' undefined near line 1, column 34");
}

TEST(EngineStart, FolderWithSingleQuoteBreaksTheCommandAndIsCritical) {
    ExtensionPtr extension = create_extension();
    auto failed = extension->start_simulation(
        empty_system({"/tmp/it's", "start_ok", "dispatch_identity", "end_two_errors"}));
    EXPECT_EQ(failed->severity, DISPATCH_CRITICAL_ERROR);
    EXPECT_EQ(failed->message, "MATLAB error: error: parse error:  syntax error>>> clear; cd('/tmp/it's');                       ^");
    // The engine is open all the same: the end call reaches MATLAB, where end_sim_out is unknown.
    auto messages = extension->end_simulation();
    ASSERT_EQ(messages->simulation_errors.size(), 1u);
    EXPECT_EQ(messages->simulation_errors[0].rfind(
                  "MATLAB error: MATLAB error while executing 'end_sim_out = end_two_errors(simulation_parameters, "
                  "custom_variables);': ",
                  0),
              0u);
}

}  // namespace
}  // namespace tamlo_e2e
