// Converter rules C1-C4 on the first system converter.
#include "converter_checks.h"

#include <gtest/gtest.h>

#include "row_name.h"

#include "test_systems.h"

namespace tamlo_test {
namespace {

using tamlo_test::PrintTo;

struct ConverterRow {
    const char* name;
    ConverterState flows;
    double inverter_efficiency;
    double rectifier_efficiency;
    double inverter_capacity;
    double rectifier_capacity;
    std::vector<std::string> expected;
};

std::vector<std::string> check(const SimulationParameters& p, const SimulationState& s) {
    std::vector<std::string> warnings;
    tamlo_validation::check_converter(p, s, warnings);
    return warnings;
}

class ConverterChecks : public ::testing::TestWithParam<ConverterRow> {};

TEST_P(ConverterChecks, ReportsWholeMessages) {
    const ConverterRow& r = GetParam();
    SimulationParameters p;
    p.converter_list = {converter_parameters(r.inverter_capacity, r.rectifier_capacity, r.inverter_efficiency,
                                             r.rectifier_efficiency)};
    SimulationState s;
    s.converter_list = {r.flows};
    s.current_timestep = 6;
    EXPECT_EQ(check(p, s), r.expected) << r.name;
}

INSTANTIATE_TEST_SUITE_P(Rows, ConverterChecks, ::testing::Values(
    ConverterRow{"exact inverter output passes", {100.0, 95.0, 0.0, 0.0}, 95.0, 90.0, 200.0, 200.0, {}},
    ConverterRow{"inverter output within tolerance passes", {100.0, 95.00005, 0.0, 0.0}, 95.0, 90.0, 200.0, 200.0, {}},
    ConverterRow{"idle converter passes whatever its efficiency", {0.0, 0.0, 0.0, 0.0}, 37.0, 0.0, 200.0, 200.0, {}},
    ConverterRow{"C1 inverter output off its efficiency", {100.0, 95.01, 0.0, 0.0}, 95.0, 90.0, 200.0, 200.0,
        {"Dispatch must set simulation_state.converter.inverter_power_output (95.010000 kW) equal to "
         "simulation_state.converter.inverter_power_input (100.000000 kW) * "
         "simulation_parameters.converter.inverter_efficiency/100. Incorrect value found in time step: 7"}},
    ConverterRow{"C2 rectifier output off its efficiency", {0.0, 0.0, 50.0, 50.0}, 95.0, 90.0, 200.0, 200.0,
        {"Dispatch must set simulation_state.converter.rectifier_power_output (50.000000 kW) equal to "
         "simulation_state.converter.rectifier_power_input (50.000000 kW) * "
         "simulation_parameters.converter.rectifier_efficiency/100. Incorrect value found in time step: 7"}},
    ConverterRow{"C3 inverter above capacity", {200.0, 180.0, 0.0, 0.0}, 90.0, 90.0, 150.0, 200.0,
        {"simulation_state.converters.inverter_power_output (180.000000 kW) exceeded "
         "simulation_parameters.converter.inverter_capacity in time step: 7"}},
    ConverterRow{"inverter at capacity within tolerance passes", {100.00005, 100.00005, 0.0, 0.0}, 100.0, 90.0,
        100.0, 200.0, {}},
    ConverterRow{"C4 rectifier above capacity", {0.0, 0.0, 100.0, 90.0}, 90.0, 90.0, 200.0, 80.0,
        {"simulation_state.converters.rectifier_power_output (90.000000 kW) exceeded "
         "simulation_parameters.converter.rectifier_capacity in time step: 7"}},
    ConverterRow{"all four in order", {10.0, 20.0, 10.0, 30.0}, 90.0, 90.0, 5.0, 5.0,
        {"Dispatch must set simulation_state.converter.inverter_power_output (20.000000 kW) equal to "
         "simulation_state.converter.inverter_power_input (10.000000 kW) * "
         "simulation_parameters.converter.inverter_efficiency/100. Incorrect value found in time step: 7",
         "Dispatch must set simulation_state.converter.rectifier_power_output (30.000000 kW) equal to "
         "simulation_state.converter.rectifier_power_input (10.000000 kW) * "
         "simulation_parameters.converter.rectifier_efficiency/100. Incorrect value found in time step: 7",
         "simulation_state.converters.inverter_power_output (20.000000 kW) exceeded "
         "simulation_parameters.converter.inverter_capacity in time step: 7",
         "simulation_state.converters.rectifier_power_output (30.000000 kW) exceeded "
         "simulation_parameters.converter.rectifier_capacity in time step: 7"}}),
    row_name);

TEST(ConverterCheck, SkippedWhenParametersListNoConverter) {
    SimulationParameters p;
    SimulationState s;
    s.converter_list = {ConverterState{10.0, 99.0, 0.0, 0.0}};
    EXPECT_TRUE(check(p, s).empty());
}

TEST(ConverterCheck, IgnoresSecondConverter) {
    SimulationParameters p;
    p.converter_list = {converter_parameters(100.0, 100.0, 90.0, 90.0), converter_parameters(1.0, 1.0, 1.0, 1.0)};
    SimulationState s;
    s.converter_list = {ConverterState{10.0, 9.0, 0.0, 0.0}, ConverterState{10.0, 99.0, 0.0, 0.0}};
    EXPECT_TRUE(check(p, s).empty());
}

TEST(ConverterCheck, SkippedWhenStateListsNoConverterBesideParameters) {
    SimulationParameters p;
    p.converter_list = {converter_parameters(1.0, 1.0, 90.0, 90.0)};
    SimulationState s;  // converter_list empty: nothing to read
    EXPECT_TRUE(check(p, s).empty());
}

}  // namespace
}  // namespace tamlo_test
