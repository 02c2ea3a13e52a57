// Runs the bundled strategies through the real extension and engine on many generated systems
// and states: the extension's own validation must find nothing, and the books must balance.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <regex>
#include <string>
#include <vector>

#include "generated_systems.h"
#include "loaded_extension.h"

namespace tamlo_strategies {
namespace {

using namespace tamlo_dispatch;

constexpr std::uint32_t systems_per_strategy = 40;
constexpr std::uint32_t steps_per_system = 30;

// The zero-based step a validation message names (it counts from 1).
std::uint32_t step_of(const std::string& message) {
    std::smatch match;
    static const std::regex last_number("([0-9]+)$");
    if (std::regex_search(message, match, last_number)) {
        return static_cast<std::uint32_t>(std::stoul(match[1].str()) - 1);
    }
    return 0;
}

void expect_books_balance(const BusState& bus, const char* name, std::uint32_t system, std::uint32_t step) {
    EXPECT_NEAR(bus.load_served + bus.unmet_load, bus.load_requested, 1e-9 * (1.0 + bus.load_requested))
        << name << " of system " << system << ", step " << step;
    EXPECT_GE(bus.load_served, 0.0) << name << " of system " << system << ", step " << step;
    EXPECT_LE(bus.load_served, bus.load_requested + 1e-9) << name << " of system " << system << ", step " << step;
}

class BundledStrategy : public testing::TestWithParam<const char*> {};

TEST_P(BundledStrategy, GivesNoWarningOrErrorOnGeneratedSystems) {
    ExtensionPtr extension = create_extension();
    for (std::uint32_t system_number = 0; system_number < systems_per_strategy; ++system_number) {
        SystemGenerator generator(1000 + system_number);
        SimulationParameters system = generator.system();
        system.extension_parameters = settings(TAMLO_STRATEGY_DIR, GetParam());

        const auto started = extension->start_simulation(system);
        ASSERT_EQ(started->severity, DISPATCH_NO_ERROR) << started->message;

        std::vector<SimulationState> completed;
        for (std::uint32_t step = 0; step < steps_per_system; ++step) {
            SimulationState state = generator.state(system, step);
            extension->dispatch(state);
            expect_books_balance(state.ac_bus, "AC bus", system_number, step);
            expect_books_balance(state.dc_bus, "DC bus", system_number, step);
            for (std::size_t i = 0; i < state.battery_list.size(); ++i) {
                const BatteryState& battery = state.battery_list[i];
                EXPECT_LE(battery.power_setpoint, battery.max_charge_power) << "system " << system_number;
                EXPECT_GE(battery.power_setpoint, -battery.max_discharge_power) << "system " << system_number;
            }
            completed.push_back(state);
        }

        const auto messages = extension->end_simulation();
        ASSERT_TRUE(messages->simulation_errors.empty())
            << "system " << system_number << ": " << messages->simulation_errors.front();
        if (!messages->simulation_warnings.empty()) {
            const std::string& first = messages->simulation_warnings.front();
            const std::uint32_t step = step_of(first);
            FAIL() << "system " << system_number << ", " << messages->simulation_warnings.size()
                   << " warning(s); first: " << first << "\n"
                   << (step < completed.size() ? describe(system, completed[step]) : std::string());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Strategies, BundledStrategy, testing::Values("load_following", "cycle_charging"),
                         [](const testing::TestParamInfo<const char*>& info) {
                             return std::string(info.param) == "load_following" ? "LoadFollowing" : "CycleCharging";
                         });

// A strategy that reports nothing is the check's baseline: the same generated states with the
// decision fields left at zero must draw warnings, or the test above would prove nothing.
TEST(BundledStrategyCheck, UntouchedStatesDrawWarnings) {
    ExtensionPtr extension = create_extension();
    SystemGenerator generator(1000);
    SimulationParameters system = generator.system();
    system.extension_parameters = settings(TAMLO_FIXTURE_DIR, "return_input");
    ASSERT_EQ(extension->start_simulation(system)->severity, DISPATCH_NO_ERROR);
    for (std::uint32_t step = 0; step < 5; ++step) {
        SimulationState state = generator.state(system, step);
        extension->dispatch(state);
    }
    const auto messages = extension->end_simulation();
    EXPECT_TRUE(messages->simulation_errors.empty());
    EXPECT_FALSE(messages->simulation_warnings.empty());
}

}  // namespace
}  // namespace tamlo_strategies
