// Sign rules S1-S10 on the bus figures, and load served against load requested (L1, L2).
#include "bus_sign_checks.h"

#include <gtest/gtest.h>

#include "row_name.h"

#include "test_systems.h"

namespace tamlo_test {
namespace {

using tamlo_test::PrintTo;

using tamlo_validation::check_bus_signs;
using tamlo_validation::check_load_served;

struct SignRow {
    BusState SimulationState::*bus;
    double BusState::*value;
    const char* expected_for_minus_2_5;
};

class SignChecks : public ::testing::TestWithParam<SignRow> {};

SimulationState state_with(const SignRow& r, double value) {
    SimulationState s;
    s.current_timestep = 11;
    s.*r.bus.*r.value = value;
    return s;
}

TEST_P(SignChecks, ReportsNegativeValue) {
    std::vector<std::string> warnings;
    check_bus_signs(state_with(GetParam(), -2.5), warnings);
    EXPECT_EQ(warnings, std::vector<std::string>{GetParam().expected_for_minus_2_5});
}

TEST_P(SignChecks, ReportsMinusToleranceExactly) {
    std::vector<std::string> warnings;
    check_bus_signs(state_with(GetParam(), -0.000001), warnings);
    ASSERT_EQ(warnings.size(), 1u);
    const std::string expected = GetParam().expected_for_minus_2_5;
    EXPECT_EQ(warnings[0], expected.substr(0, expected.find("-2.500000")) + "-0.000001 kW. Time step: 12");
}

TEST_P(SignChecks, PassesJustAboveMinusTolerance) {
    std::vector<std::string> warnings;
    check_bus_signs(state_with(GetParam(), -0.0000009), warnings);
    EXPECT_TRUE(warnings.empty());
}

INSTANTIATE_TEST_SUITE_P(Rows, SignChecks, ::testing::Values(
    SignRow{&SimulationState::ac_bus, &BusState::capacity_shortage,
            "Capacity shortage can't be less than zero: simulation_state.ac_bus.capacity_shortage = -2.500000 kW. "
            "Time step: 12"},
    SignRow{&SimulationState::ac_bus, &BusState::excess_electricity,
            "Excess electricity can't be less than zero: simulation_state.ac_bus.excess_electricity = -2.500000 kW. "
            "Time step: 12"},
    SignRow{&SimulationState::ac_bus, &BusState::load_served,
            "Load served can't be less than zero: simulation_state.ac_bus.load_served = -2.500000 kW. Time step: 12"},
    SignRow{&SimulationState::ac_bus, &BusState::operating_capacity_served,
            "Operating capacity served can't be less than zero: simulation_state.ac_bus.operating_capacity_served = "
            "-2.500000 kW. Time step: 12"},
    SignRow{&SimulationState::ac_bus, &BusState::unmet_load,
            "Unmet load can't be less than zero: simulation_state.ac_bus.unmet_load = -2.500000 kW. Time step: 12"},
    SignRow{&SimulationState::dc_bus, &BusState::capacity_shortage,
            "Capacity shortage can't be less than zero: simulation_state.dc_bus.capacity_shortage = -2.500000 kW. "
            "Time step: 12"},
    SignRow{&SimulationState::dc_bus, &BusState::excess_electricity,
            "Excess electricity can't be less than zero: simulation_state.dc_bus.excess_electricity = -2.500000 kW. "
            "Time step: 12"},
    SignRow{&SimulationState::dc_bus, &BusState::load_served,
            "Load served can't be less than zero: simulation_state.dc_bus.load_served = -2.500000 kW. Time step: 12"},
    SignRow{&SimulationState::dc_bus, &BusState::operating_capacity_served,
            "Operating capacity served can't be less than zero: simulation_state.dc_bus.operating_capacity_served = "
            "-2.500000 kW. Time step: 12"},
    SignRow{&SimulationState::dc_bus, &BusState::unmet_load,
            "Unmet load can't be less than zero: simulation_state.dc_bus.unmet_load = -2.500000 kW. Time step: 12"}),
    row_name);

TEST(SignCheck, ReportsAllTenInOrder) {
    SimulationState s;
    s.current_timestep = 11;
    s.ac_bus = bus(0.0, -3.0, -5.0, -2.0, 0.0, -4.0, -1.0);
    s.dc_bus = bus(0.0, -8.0, -10.0, -7.0, 0.0, -9.0, -6.0);
    std::vector<std::string> warnings;
    check_bus_signs(s, warnings);
    EXPECT_EQ(warnings, (std::vector<std::string>{
        "Capacity shortage can't be less than zero: simulation_state.ac_bus.capacity_shortage = -1.000000 kW. Time "
        "step: 12",
        "Excess electricity can't be less than zero: simulation_state.ac_bus.excess_electricity = -2.000000 kW. Time "
        "step: 12",
        "Load served can't be less than zero: simulation_state.ac_bus.load_served = -3.000000 kW. Time step: 12",
        "Operating capacity served can't be less than zero: simulation_state.ac_bus.operating_capacity_served = "
        "-4.000000 kW. Time step: 12",
        "Unmet load can't be less than zero: simulation_state.ac_bus.unmet_load = -5.000000 kW. Time step: 12",
        "Capacity shortage can't be less than zero: simulation_state.dc_bus.capacity_shortage = -6.000000 kW. Time "
        "step: 12",
        "Excess electricity can't be less than zero: simulation_state.dc_bus.excess_electricity = -7.000000 kW. Time "
        "step: 12",
        "Load served can't be less than zero: simulation_state.dc_bus.load_served = -8.000000 kW. Time step: 12",
        "Operating capacity served can't be less than zero: simulation_state.dc_bus.operating_capacity_served = "
        "-9.000000 kW. Time step: 12",
        "Unmet load can't be less than zero: simulation_state.dc_bus.unmet_load = -10.000000 kW. Time step: 12"}));
}

TEST(SignCheck, RequestedValuesAreNotChecked) {
    SimulationState s;
    s.ac_bus = bus(-5.0, 0.0, 0.0, 0.0, -5.0, 0.0, 0.0);
    s.dc_bus = bus(-5.0, 0.0, 0.0, 0.0, -5.0, 0.0, 0.0);
    std::vector<std::string> warnings;
    check_bus_signs(s, warnings);
    EXPECT_TRUE(warnings.empty());
}

struct LoadServedRow {
    const char* name;
    BusState ac;
    BusState dc;
    std::vector<std::string> expected;
};

class LoadServedChecks : public ::testing::TestWithParam<LoadServedRow> {};

TEST_P(LoadServedChecks, ReportsWholeMessages) {
    SimulationState s;
    s.ac_bus = GetParam().ac;
    s.dc_bus = GetParam().dc;
    s.current_timestep = 99;
    std::vector<std::string> warnings;
    check_load_served(s, warnings);
    EXPECT_EQ(warnings, GetParam().expected) << GetParam().name;
}

INSTANTIATE_TEST_SUITE_P(Rows, LoadServedChecks, ::testing::Values(
    LoadServedRow{"served equal to requested passes", bus(100.0, 100.0, 0, 0, 0, 0, 0), bus(10.0, 10.0, 0, 0, 0, 0, 0),
        {}},
    LoadServedRow{"served above requested within tolerance passes", bus(100.0, 100.00005, 0, 0, 0, 0, 0),
        bus(10.0, 10.000005, 0, 0, 0, 0, 0), {}},
    LoadServedRow{"L1 AC served above requested", bus(100.0, 120.0, 0, 0, 0, 0, 0), bus(10.0, 10.0, 0, 0, 0, 0, 0),
        {"Load served can't be greater than load requested: simulation_state.ac_bus.load_served = 120.000000 kW. "
         "simulation_state.ac_bus.load_requested = 100.000000 kW. Time step: 100"}},
    LoadServedRow{"L2 DC served above requested has no unit after the served value", bus(100.0, 100.0, 0, 0, 0, 0, 0),
        bus(10.0, 12.5, 0, 0, 0, 0, 0),
        {"Load served can't be greater than load requested: simulation_state.dc_bus.load_served = 12.500000. "
         "simulation_state.dc_bus.load_requested = 10.000000 kW. Time step: 100"}},
    LoadServedRow{"L1 before L2", bus(1.0, 2.0, 0, 0, 0, 0, 0), bus(3.0, 4.0, 0, 0, 0, 0, 0),
        {"Load served can't be greater than load requested: simulation_state.ac_bus.load_served = 2.000000 kW. "
         "simulation_state.ac_bus.load_requested = 1.000000 kW. Time step: 100",
         "Load served can't be greater than load requested: simulation_state.dc_bus.load_served = 4.000000. "
         "simulation_state.dc_bus.load_requested = 3.000000 kW. Time step: 100"}}),
    row_name);

}  // namespace
}  // namespace tamlo_test
