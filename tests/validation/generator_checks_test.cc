// Generator rules G1-G4, numbered as MATLAB numbers the generators.
#include "generator_checks.h"

#include <gtest/gtest.h>

#include "row_name.h"

#include "test_systems.h"

namespace tamlo_test {
namespace {

using tamlo_test::PrintTo;

struct GeneratorRow {
    const char* name;
    GeneratorState generator;
    double minimum_load;
    std::vector<std::string> expected;
};

std::vector<std::string> check(const SimulationParameters& p, const SimulationState& s) {
    std::vector<std::string> warnings;
    tamlo_validation::check_generators(p, s, warnings);
    return warnings;
}

class GeneratorChecks : public ::testing::TestWithParam<GeneratorRow> {};

// The generator under test is the third one, behind two that break no rule.
TEST_P(GeneratorChecks, ReportsWholeMessagesForThirdGenerator) {
    const GeneratorRow& r = GetParam();
    SimulationParameters p;
    p.generator_list = {generator_parameters(true, 10.0), generator_parameters(false, 0.0),
                        generator_parameters(true, r.minimum_load)};
    SimulationState s;
    s.generator_list = {{100.0, 50.0, DISPATCH_DECIDES}, {0.0, 0.0, FORCED_OFF_FOR_SCHEDULE}, r.generator};
    s.current_timestep = 0;
    EXPECT_EQ(check(p, s), r.expected) << r.name;
}

INSTANTIATE_TEST_SUITE_P(Rows, GeneratorChecks, ::testing::Values(
    GeneratorRow{"set point within availability passes", {100.0, 100.00005, DISPATCH_DECIDES}, 10.0, {}},
    GeneratorRow{"G1 set point above availability", {100.0, 120.5, DISPATCH_DECIDES}, 10.0,
        {"simulation_state.generators(3).power_setpoint (120.500000 kW) is greater than the generator's "
         "power_available (100.000000 kW) in time step: 1"}},
    GeneratorRow{"set point 0 is never held to the minimum load", {100.0, 0.0, DISPATCH_DECIDES}, 10.0, {}},
    GeneratorRow{"G2 set point below minimum load", {100.0, 0.5, DISPATCH_DECIDES}, 10.0,
        {"simulation_state.generators(3).power_setpoint (0.500000 kW) is less than the generator's minimum load "
         "(simulation_parameters_.generator_list[i].minimum_load) in time step: 1"}},
    GeneratorRow{"set point at minimum load within tolerance passes", {100.0, 9.99999, DISPATCH_DECIDES}, 10.0, {}},
    GeneratorRow{"G3 forced on for minimum runtime but nearly off", {100.0, 0.0000005, FORCED_ON_FOR_MINIMUM_RUNTIME},
        10.0,
        {"simulation_state.generators(3).current_state is FORCED_ON but the generator is not producing power in "
         "time step: 1"}},
    GeneratorRow{"G3 forced on for schedule with negative set point", {100.0, -5.0, FORCED_ON_FOR_SCHEDULE}, 0.0,
        {"simulation_state.generators(3).current_state is FORCED_ON but the generator is not producing power in "
         "time step: 1"}},
    GeneratorRow{"forced on and running passes", {100.0, 20.0, FORCED_ON_FOR_SCHEDULE}, 10.0, {}},
    GeneratorRow{"forced off with negligible set point passes", {100.0, 0.0000005, FORCED_OFF_FOR_SCHEDULE}, 10.0, {}},
    GeneratorRow{"G4 forced off out of fuel but running", {100.0, 2.0, FORCED_OFF_OUT_OF_FUEL}, 0.0,
        {"simulation_state.generators(3).current_state is FORCED_OFF but the generator is producing power "
         "(2.000000 kW) in time step: 1"}},
    GeneratorRow{"G4 forced off for maintenance but running", {100.0, 2.0, FORCED_OFF_FOR_MAINTENANCE_EVENT}, 0.0,
        {"simulation_state.generators(3).current_state is FORCED_OFF but the generator is producing power "
         "(2.000000 kW) in time step: 1"}},
    GeneratorRow{"G4 forced off for schedule but running", {100.0, 2.0, FORCED_OFF_FOR_SCHEDULE}, 0.0,
        {"simulation_state.generators(3).current_state is FORCED_OFF but the generator is producing power "
         "(2.000000 kW) in time step: 1"}},
    GeneratorRow{"dispatch decides with zero set point is not FORCED_ON", {100.0, 0.0, DISPATCH_DECIDES}, 0.0, {}},
    GeneratorRow{"unknown state is neither forced on nor off", {100.0, 0.0, static_cast<GeneratorCurrentState>(7)},
        0.0, {}},
    GeneratorRow{"state below -3 is not forced off", {100.0, 2.0, static_cast<GeneratorCurrentState>(-4)}, 0.0, {}},
    GeneratorRow{"G1 G2 and G4 together in order", {0.5, 1.0, FORCED_OFF_OUT_OF_FUEL}, 10.0,
        {"simulation_state.generators(3).power_setpoint (1.000000 kW) is greater than the generator's "
         "power_available (0.500000 kW) in time step: 1",
         "simulation_state.generators(3).power_setpoint (1.000000 kW) is less than the generator's minimum load "
         "(simulation_parameters_.generator_list[i].minimum_load) in time step: 1",
         "simulation_state.generators(3).current_state is FORCED_OFF but the generator is producing power "
         "(1.000000 kW) in time step: 1"}}),
    row_name);

TEST(GeneratorCheck, StateEntryWithoutParametersSkipsOnlyMinimumLoad) {
    SimulationParameters p;
    p.generator_list = {generator_parameters(true, 10.0)};
    SimulationState s;
    s.generator_list = {{100.0, 50.0, DISPATCH_DECIDES}, {1.0, 2.0, DISPATCH_DECIDES}};
    EXPECT_EQ(check(p, s), std::vector<std::string>{
        "simulation_state.generators(2).power_setpoint (2.000000 kW) is greater than the generator's "
        "power_available (1.000000 kW) in time step: 1"});
}

TEST(GeneratorCheck, ParametersBeyondStateAreNotRead) {
    SimulationParameters p;
    p.generator_list = {generator_parameters(true, 10.0), generator_parameters(true, 10.0)};
    SimulationState s;
    s.generator_list = {{100.0, 50.0, DISPATCH_DECIDES}};
    EXPECT_TRUE(check(p, s).empty());
}

}  // namespace
}  // namespace tamlo_test
