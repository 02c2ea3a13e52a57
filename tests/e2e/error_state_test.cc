// The error state of the extension across time steps and runs, calls without an engine,
// closing and reopening the engine, and the result parameters.
#include <gtest/gtest.h>

#include <dirent.h>

#include <fstream>
#include <vector>

#include "loaded_extension.h"
#include "state_values.h"

namespace tamlo_e2e {
namespace {

using tamlo_dispatch::DISPATCH_CRITICAL_ERROR;
using tamlo_dispatch::DISPATCH_NO_ERROR;
using tamlo_dispatch::DISPATCH_SIMULATION_ERROR;
using tamlo_dispatch::SimulationParameters;
using tamlo_dispatch::SimulationState;
using Texts = std::vector<std::string>;

const std::string not_a_struct =
    "Output variable simulation_state was not of type struct. Check that your MATLAB dispatch function returns a "
    "struct simulation_state.";
const std::string no_engine_dispatch =
    "The dispatch function was not called: no MATLAB engine is open. start_simulation has to succeed in opening one "
    "first.";
const std::string no_engine_end =
    "The end simulation function was not called: no MATLAB engine is open. start_simulation has to succeed in "
    "opening one first.";

// Child processes of this test process that are still there (running or unreaped).
std::size_t child_process_count() {
    std::size_t count = 0;
    DIR* tasks = opendir("/proc/self/task");
    if (tasks == nullptr) return 0;
    while (dirent* entry = readdir(tasks)) {
        if (entry->d_name[0] == '.') continue;
        std::ifstream children(std::string("/proc/self/task/") + entry->d_name + "/children");
        int pid = 0;
        while (children >> pid) ++count;
    }
    closedir(tasks);
    return count;
}

TEST(ErrorState, CriticalErrorOfADispatchIsFinalForTheObject) {
    ExtensionPtr extension = create_extension();
    SimulationParameters parameters = with_settings(tamlo_samples::typical_system(),
                                                    fixture_settings("start_ok", "dispatch_number", "end_warnings"));
    parameters.number_of_timesteps = 24;
    ASSERT_EQ(extension->start_simulation(parameters)->severity, DISPATCH_NO_ERROR);
    SimulationState state = tamlo_samples::make_state(parameters);
    extension->dispatch(state);

    // Every later start returns a copy of the stored error and takes nothing over.
    SimulationParameters other = with_settings(tamlo_samples::make_system(2),
                                               fixture_settings("start_ok", "dispatch_identity", "end_two_errors"));
    other.number_of_timesteps = 99;
    for (int i = 0; i < 2; ++i) {
        auto result = extension->start_simulation(other);
        EXPECT_EQ(result->severity, DISPATCH_CRITICAL_ERROR);
        EXPECT_EQ(result->message, not_a_struct);
        for (std::uint32_t field : result->host_fields) EXPECT_EQ(field, 0u);
    }
    EXPECT_EQ(extension->get_result_parameters()->number_of_timesteps, 24u);

    // Dispatch leaves the state alone.
    SimulationState untouched = tamlo_samples::make_state(parameters);
    untouched.generator_list[0].power_setpoint = 12.5;
    SimulationState copy = untouched;
    extension->dispatch(copy);
    EXPECT_EQ(state_values(copy), state_values(untouched));

    // The end function of the first run still runs; the critical message comes last.
    auto messages = extension->end_simulation();
    EXPECT_EQ(messages->simulation_errors, (Texts{"MATLAB error: end error", not_a_struct}));
    EXPECT_EQ(messages->simulation_warnings,
              (Texts{"MATLAB warning: first warning", "MATLAB warning: second warning"}));
    // end_simulation changes nothing: asking twice gives the same.
    EXPECT_EQ(extension->end_simulation()->simulation_errors, messages->simulation_errors);
}

TEST(ErrorState, DispatchWithoutEngineIsACriticalErrorAndTouchesNothing) {
    SimulationParameters parameters = tamlo_samples::typical_system();
    SimulationState state = tamlo_samples::make_state(parameters);
    const SimulationState original = state;
    SimulationParameters good =
        with_settings(parameters, fixture_settings("start_ok", "dispatch_set_decisions", "end_empty_lists"));

    // Never started.
    {
        ExtensionPtr extension = create_extension();
        extension->dispatch(state);
        EXPECT_EQ(state_values(state), state_values(original));
        EXPECT_EQ(extension->end_simulation()->simulation_errors, (Texts{no_engine_end, no_engine_dispatch}));
        // Critical is final: even a good start returns the stored error.
        auto refused = extension->start_simulation(good);
        EXPECT_EQ(refused->severity, DISPATCH_CRITICAL_ERROR);
        EXPECT_EQ(refused->message, no_engine_dispatch);
    }
    // A start that stopped at the settings check.
    {
        ExtensionPtr extension = create_extension();
        auto stopped = extension->start_simulation(parameters);
        EXPECT_EQ(stopped->message, "Matlab working directory cannot be empty");
        extension->dispatch(state);
        extension->dispatch(state);
        EXPECT_EQ(state_values(state), state_values(original));
        EXPECT_EQ(extension->end_simulation()->simulation_errors, (Texts{no_engine_end, no_engine_dispatch}));
    }
}

TEST(ErrorState, ClosedEngineIsNeverUsedAndAStartOpensAFreshOne) {
    const std::size_t children_before = child_process_count();
    ExtensionPtr extension = create_extension();
    SimulationParameters parameters = with_settings(
        tamlo_samples::typical_system(), fixture_settings("start_mark_workspace", "dispatch_identity", "end_empty_lists"));
    ASSERT_EQ(extension->start_simulation(parameters)->severity, DISPATCH_NO_ERROR);
    EXPECT_EQ(child_process_count(), children_before + 1);

    // Same engine: the marker is there.
    SimulationParameters report = with_settings(
        tamlo_samples::typical_system(), fixture_settings("start_report_marker", "dispatch_identity", "end_empty_lists"));
    auto reused = extension->start_simulation(report);
    EXPECT_EQ(reused->severity, DISPATCH_SIMULATION_ERROR);
    EXPECT_EQ(reused->message, "MATLAB error: marker present: 1");

    extension->close_engine();
    EXPECT_EQ(child_process_count(), children_before);
    extension->close_engine();  // closing twice is harmless

    EXPECT_EQ(extension->end_simulation()->simulation_errors, Texts{no_engine_end});

    // A fresh engine: empty workspace, working folder set again.
    auto fresh = extension->start_simulation(report);
    EXPECT_EQ(fresh->severity, DISPATCH_SIMULATION_ERROR);
    EXPECT_EQ(fresh->message, "MATLAB error: marker present: 0");
    EXPECT_EQ(child_process_count(), children_before + 1);
    SimulationState state = tamlo_samples::make_state(parameters);
    extension->dispatch(state);
    EXPECT_EQ(extension->end_simulation()->simulation_errors, Texts{});

    // After close_engine a dispatch touches no engine; it is a critical error.
    extension->close_engine();
    const SimulationState before = state;
    extension->dispatch(state);
    EXPECT_EQ(state_values(state), state_values(before));
    EXPECT_EQ(extension->end_simulation()->simulation_errors, (Texts{no_engine_end, no_engine_dispatch}));

    extension->close_engine();
    extension.reset();  // destroy after close_engine closes nothing twice
    EXPECT_EQ(child_process_count(), children_before);
}

TEST(ErrorState, DestroyClosesAnOpenEngine) {
    const std::size_t children_before = child_process_count();
    ExtensionPtr extension = create_extension();
    ASSERT_EQ(extension->start_simulation(empty_system(fixture_settings("start_ok", "d", "e")))->severity,
              DISPATCH_NO_ERROR);
    EXPECT_EQ(child_process_count(), children_before + 1);
    extension.reset();
    EXPECT_EQ(child_process_count(), children_before);
}

TEST(ResultParameters, BeforeAnyStartAllListsAreEmpty) {
    ExtensionPtr extension = create_extension();
    auto results = extension->get_result_parameters();
    ASSERT_NE(results, nullptr);
    EXPECT_TRUE(results->generator_results.empty());
    EXPECT_TRUE(results->primary_load_results.empty());
    EXPECT_TRUE(results->pv_results.empty());
    EXPECT_TRUE(results->battery_results.empty());
    EXPECT_TRUE(results->wind_turbine_results.empty());
    EXPECT_TRUE(results->converter_results.empty());
    EXPECT_TRUE(results->flywheel_results.empty());
    EXPECT_TRUE(results->series_results.empty());
    EXPECT_EQ(results->number_of_timesteps, 0u);
    EXPECT_TRUE(results->valid);
}

std::vector<std::uint64_t> numbers(const std::vector<tamlo_dispatch::ComponentResults>& results) {
    std::vector<std::uint64_t> n;
    for (const auto& r : results) {
        EXPECT_TRUE(r.result_items.empty());
        n.push_back(r.component_number);
    }
    return n;
}

TEST(ResultParameters, FollowTheParametersOfTheLastStart) {
    SimulationParameters p;
    auto add_pv = [&p](std::uint64_t number) {
        tamlo_dispatch::PvParameters pv;
        pv.component.component_number = number;
        p.pv_list.push_back(pv);
    };
    add_pv(7);
    add_pv(3);
    p.primary_load_list.resize(3);
    p.generator_list.resize(2);
    p.generator_list[0].component.component_number = 11;
    p.generator_list[1].component.component_number = 12;
    p.battery_list.resize(1);
    p.battery_list[0].component.component_number = 21;
    p.wind_turbine_list.resize(1);
    p.wind_turbine_list[0].component.component_number = 31;
    p.converter_list.resize(1);
    p.converter_list[0].component.component_number = 41;
    p.flywheel_list.resize(2);
    p.flywheel_list[0].component.component_number = 52;
    p.flywheel_list[1].component.component_number = 51;
    p.grid_list.resize(1);
    p.custom_component_list.resize(1);
    p.number_of_timesteps = 8760;

    ExtensionPtr extension = create_extension();
    extension->start_simulation(p);  // stops at the settings check, after taking the parameters
    auto results = extension->get_result_parameters();
    EXPECT_EQ(numbers(results->generator_results), (std::vector<std::uint64_t>{11, 12}));
    EXPECT_EQ(numbers(results->primary_load_results), (std::vector<std::uint64_t>{0, 0, 0}));
    EXPECT_EQ(numbers(results->pv_results), (std::vector<std::uint64_t>{7, 3}));
    EXPECT_EQ(numbers(results->battery_results), (std::vector<std::uint64_t>{21}));
    EXPECT_EQ(numbers(results->wind_turbine_results), (std::vector<std::uint64_t>{31}));
    EXPECT_EQ(numbers(results->converter_results), (std::vector<std::uint64_t>{41}));
    EXPECT_EQ(numbers(results->flywheel_results), (std::vector<std::uint64_t>{52, 51}));
    EXPECT_TRUE(results->series_results.empty());
    EXPECT_EQ(results->number_of_timesteps, 8760u);
    EXPECT_TRUE(results->valid);
    // Each call hands out a new record.
    EXPECT_NE(extension->get_result_parameters(), results);
}

}  // namespace
}  // namespace tamlo_e2e
