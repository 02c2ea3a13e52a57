// The limit of ten warnings per run, seen from the host over whole runs.
#include <gtest/gtest.h>

#include <vector>

#include "loaded_extension.h"

namespace tamlo_e2e {
namespace {

using tamlo_dispatch::DISPATCH_NO_ERROR;
using Texts = std::vector<std::string>;

// The sign warnings that dispatch_sign_violations causes in one time step.
Texts violations_of_step(int violations, int step) {
    const std::string pieces[] = {
        "Capacity shortage can't be less than zero: simulation_state.ac_bus.capacity_shortage = -1.000000",
        "Excess electricity can't be less than zero: simulation_state.ac_bus.excess_electricity = -2.000000",
        "Unmet load can't be less than zero: simulation_state.ac_bus.unmet_load = -3.000000",
    };
    Texts texts;
    for (int k = 0; k < violations; ++k) {
        texts.push_back(pieces[k] + " kW. Time step: " + std::to_string(step));
    }
    return texts;
}

Texts run(IDispatchExtension& extension, int violations, int steps) {
    tamlo_dispatch::SimulationParameters parameters =
        empty_system(fixture_settings("start_violations", "dispatch_sign_violations", "end_empty_lists"));
    tamlo_samples::add_number_parameter(parameters, "violations", violations);
    EXPECT_EQ(extension.start_simulation(parameters)->severity, DISPATCH_NO_ERROR);
    for (int step = 0; step < steps; ++step) {
        tamlo_dispatch::SimulationState state;
        state.current_timestep = static_cast<std::uint32_t>(step);
        extension.dispatch(state);
    }
    auto messages = extension.end_simulation();
    EXPECT_EQ(messages->simulation_errors, Texts{});
    return messages->simulation_warnings;
}

TEST(WarningLimit, AppliesPerRunOverTheTimeSteps) {
    ExtensionPtr extension = create_extension();

    // Three per step: 3, 6, 9, then 9 -> 12 in one step, no note, and nothing after.
    Texts expected;
    for (int step = 1; step <= 4; ++step) {
        Texts step_texts = violations_of_step(3, step);
        expected.insert(expected.end(), step_texts.begin(), step_texts.end());
    }
    EXPECT_EQ(run(*extension, 3, 6), expected);

    // Two per step: exactly 10 after five steps, the note as 11th entry, then nothing more.
    expected.clear();
    for (int step = 1; step <= 5; ++step) {
        Texts step_texts = violations_of_step(2, step);
        expected.insert(expected.end(), step_texts.begin(), step_texts.end());
    }
    expected.push_back("There were additional warnings.");
    EXPECT_EQ(run(*extension, 2, 8), expected);

    // A new start empties the lists.
    EXPECT_EQ(run(*extension, 0, 3), Texts{});
    EXPECT_EQ(run(*extension, 1, 2), (Texts{violations_of_step(1, 1)[0], violations_of_step(1, 2)[0]}));
}

}  // namespace
}  // namespace tamlo_e2e
