// The whole validation of a time step: the entry gate with its limit, the order of the check
// groups, and systems whose lists or converter figures are unusual.
#include "validate_dispatch.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "test_systems.h"

namespace tamlo_test {
namespace {

const char* const note = "There were additional warnings.";

std::vector<std::string> earlier_warnings(int count) {
    std::vector<std::string> warnings;
    for (int i = 1; i <= count; ++i) {
        warnings.push_back("earlier " + std::to_string(i));
    }
    return warnings;
}

// Three sign violations in one step.
System system_with_three_violations() {
    System s = quiet_system();
    s.state.ac_bus.capacity_shortage = -1.0;
    s.state.ac_bus.excess_electricity = -2.0;
    s.state.dc_bus.capacity_shortage = -3.0;
    return s;
}

TEST(ValidateDispatch, QuietSystemGivesNoWarning) {
    EXPECT_TRUE(validate(quiet_system()).empty());
}

TEST(ValidateDispatch, NineWarningsGrowToTwelveWithoutNoteThenNothingMore) {
    const System s = system_with_three_violations();
    std::vector<std::string> expected = earlier_warnings(9);
    expected.push_back("Capacity shortage can't be less than zero: simulation_state.ac_bus.capacity_shortage = "
                       "-1.000000 kW. Time step: 5");
    expected.push_back("Excess electricity can't be less than zero: simulation_state.ac_bus.excess_electricity = "
                       "-2.000000 kW. Time step: 5");
    expected.push_back("Capacity shortage can't be less than zero: simulation_state.dc_bus.capacity_shortage = "
                       "-3.000000 kW. Time step: 5");
    const std::vector<std::string> after_first = validate(s, earlier_warnings(9));
    EXPECT_EQ(after_first, expected);
    EXPECT_EQ(validate(s, after_first), expected);
    EXPECT_EQ(validate(quiet_system(), after_first), expected);
}

TEST(ValidateDispatch, TenWarningsGetNoteAsEleventhThenNothingMore) {
    const System s = system_with_three_violations();
    std::vector<std::string> expected = earlier_warnings(10);
    expected.push_back(note);
    const std::vector<std::string> after_first = validate(s, earlier_warnings(10));
    EXPECT_EQ(after_first, expected);
    EXPECT_EQ(validate(s, after_first), expected);
}

TEST(ValidateDispatch, TenWarningsGetNoteEvenWhenNothingFails) {
    std::vector<std::string> expected = earlier_warnings(10);
    expected.push_back(note);
    EXPECT_EQ(validate(quiet_system(), earlier_warnings(10)), expected);
}

TEST(ValidateDispatch, MoreThanTenWarningsAddNothing) {
    EXPECT_EQ(validate(system_with_three_violations(), earlier_warnings(15)), earlier_warnings(15));
}

TEST(ValidateDispatch, EmptiedListIsCheckedAgain) {
    EXPECT_EQ(validate(system_with_three_violations(), {}).size(), 3u);
}

TEST(ValidateDispatch, GroupsReportInFixedOrder) {
    System s = quiet_system();
    SimulationState& st = s.state;
    st.converter_list[0] = ConverterState{10.0, 10.0, 0.0, 0.0};  // C1: 10 is not 10 * 90 / 100
    st.generator_list[0].power_setpoint = 30.0;  // keeps AC production at 100 beside the inverter's 10
    st.generator_list[0].power_available = 25.0;  // G1
    st.battery_list[0].power_setpoint = -19.0;  // keeps DC production at 10 beside the inverter's input
    st.grid_list[0].max_grid_sales = -1.0;  // R4
    st.pv_list[0].power_available = 19.0;  // P1
    st.dc_bus.operating_capacity_served = 2.0;  // B8
    st.ac_bus.unmet_load = -1.0;  // S5
    st.dc_bus.load_served = 10.5;  // L2
    EXPECT_EQ(validate(s), (std::vector<std::string>{
        "Dispatch must set simulation_state.converter.inverter_power_output (10.000000 kW) equal to "
        "simulation_state.converter.inverter_power_input (10.000000 kW) * "
        "simulation_parameters.converter.inverter_efficiency/100. Incorrect value found in time step: 5",
        "simulation_state.generators(1).power_setpoint (30.000000 kW) is greater than the generator's "
        "power_available (25.000000 kW) in time step: 5",
        "simulation_state.grids[0].grid_sales (0.000000 kW) exceeds simulation_state.grids[0].max_grid_sales in "
        "time step: 5",
        "The value of simulation_state.pvs(1).power_setpoint (20.000000 kW) can't be larger than the "
        "power_available (19.000000 kW) in timestep: 5",
        "If there is a capacity shortage, the MATLAB dispatch must set simulation_state.dc_bus.capacity_shortage "
        "equal to simulation_state.dc_bus.operating_capacity_requested - "
        "simulation_state.dc_bus.operating_capacity_served. DC operating capacity requested: 5.000000 kW. DC "
        "operating capacity served: 2.000000 kW. Capacity shortage: 0.000000 kW. Time step: 5",
        "Unmet load can't be less than zero: simulation_state.ac_bus.unmet_load = -1.000000 kW. Time step: 5",
        "Load served can't be greater than load requested: simulation_state.dc_bus.load_served = 10.500000. "
        "simulation_state.dc_bus.load_requested = 10.000000 kW. Time step: 5"}));
}

TEST(ValidateDispatch, LastTimeStepNumberWrapsToZero) {
    System s = quiet_system();
    s.state.current_timestep = 4294967295u;
    s.state.dc_bus.unmet_load = -1.0;
    EXPECT_EQ(validate(s), std::vector<std::string>{
        "Unmet load can't be less than zero: simulation_state.dc_bus.unmet_load = -1.000000 kW. Time step: 0"});
}

// AC generator of 30 kW available, DC battery of 40 kW, AC asks 50 kW of capacity, DC 10 kW.
System capacity_transfer_system(double inverter_capacity, double inverter_efficiency, double ac_capacity_served) {
    System s;
    s.parameters.generator_list = {generator_parameters(true, 0.0)};
    s.state.generator_list = {{30.0, 0.0, DISPATCH_DECIDES}};
    s.parameters.battery_list = {on_bus<BatteryParameters>(false)};
    s.state.battery_list.resize(1);
    s.state.battery_list[0].max_discharge_power = 40.0;
    s.parameters.converter_list = {converter_parameters(inverter_capacity, 100.0, inverter_efficiency, 90.0)};
    s.state.converter_list = {ConverterState{}};
    s.state.ac_bus = bus(0.0, 0.0, 0.0, 0.0, 50.0, ac_capacity_served, 50.0 - ac_capacity_served);
    s.state.dc_bus = bus(0.0, 0.0, 0.0, 0.0, 10.0, 10.0, 0.0);
    return s;
}

TEST(ValidateDispatch, SpareDcCapacityCoversAcRequest) {
    EXPECT_TRUE(validate(capacity_transfer_system(100.0, 90.0, 50.0)).empty());
}

TEST(ValidateDispatch, InverterCapacityLimitsCapacityMovedToAc) {
    EXPECT_EQ(validate(capacity_transfer_system(10.0, 90.0, 50.0)), std::vector<std::string>{
        "The value of simulation_state.ac_bus.operating_capacity_served (50.000000 kW) exceeds the available "
        "capacity (40.000000 kW) in time step: 1"});
    EXPECT_TRUE(validate(capacity_transfer_system(10.0, 90.0, 45.0)).empty());
}

TEST(ValidateDispatch, ZeroInverterEfficiencyMovesNoCapacity) {
    EXPECT_EQ(validate(capacity_transfer_system(100.0, 0.0, 50.0)), std::vector<std::string>{
        "The value of simulation_state.ac_bus.operating_capacity_served (50.000000 kW) exceeds the available "
        "capacity (30.000000 kW) in time step: 1"});
}

TEST(ValidateDispatch, ZeroRectifierEfficiencyMovesNoCapacity) {
    System s = capacity_transfer_system(100.0, 90.0, 50.0);
    s.parameters.converter_list[0].rectifier_efficiency = 0.0;
    std::swap(s.parameters.generator_list[0].component.is_AC, s.parameters.battery_list[0].component.is_AC);
    std::swap(s.state.ac_bus, s.state.dc_bus);  // now DC lacks and AC has spare
    EXPECT_EQ(validate(s), std::vector<std::string>{
        "The value of simulation_state.dc_bus.operating_capacity_served (50.000000 kW) exceeds the available "
        "capacity (30.000000 kW) in time step: 1"});
}

TEST(ValidateDispatch, DcLoadServedByAcGeneratorsAloneIsReported) {
    System s;
    s.parameters.generator_list = {generator_parameters(true, 0.0)};
    s.state.generator_list = {{50.0, 10.0, DISPATCH_DECIDES}};
    s.state.ac_bus = bus(0.0, 0.0, 0.0, 10.0, 0.0, 0.0, 0.0);
    s.state.dc_bus = bus(10.0, 10.0, 0.0, 0.0, 0.0, 0.0, 0.0);
    EXPECT_EQ(validate(s), std::vector<std::string>{
        "The value of simulation_state.dc_bus.load_served (10.000000 kW) exceeds the available generation "
        "(0.000000 kW) in timestep: 1"});
}

System grid_supplied_system(double purchases) {
    System s;
    s.parameters.generator_list = {generator_parameters(true, 0.0), generator_parameters(true, 0.0)};
    s.state.generator_list = {{50.0, 35.0, DISPATCH_DECIDES}, {50.0, 25.0, DISPATCH_DECIDES}};
    s.parameters.grid_list = {grid_parameters()};
    GridState grid;
    grid.max_grid_purchases = 50.0;
    grid.grid_purchases = purchases;
    s.state.grid_list = {grid};
    s.state.ac_bus = bus(100.0, 100.0, 0.0, 0.0, 0.0, 0.0, 0.0);
    return s;
}

TEST(ValidateDispatch, GridPurchasesCountAsAcProduction) {
    EXPECT_TRUE(validate(grid_supplied_system(40.0)).empty());
    EXPECT_EQ(validate(grid_supplied_system(30.0)), std::vector<std::string>{
        "The value of simulation_state.ac_bus.load_served (100.000000 kW) exceeds the available generation "
        "(90.000000 kW) in timestep: 1"});
}

TEST(ValidateDispatch, ConverterAndGridInParametersButNotInStateAreSkipped) {
    System s = quiet_system();
    s.state.converter_list.clear();
    s.state.grid_list.clear();
    EXPECT_TRUE(validate(s).empty());
}

TEST(ValidateDispatch, StateEntriesWithoutParametersCountOnNoBus) {
    System s = quiet_system();
    SimulationParameters& p = s.parameters;
    p.generator_list.clear();
    p.pv_list.clear();
    p.battery_list.clear();
    p.wind_turbine_list.clear();
    p.custom_component_list.clear();
    p.converter_list.clear();
    p.grid_list.clear();
    EXPECT_EQ(validate(s), (std::vector<std::string>{
        "The value of simulation_state.ac_bus.load_served (100.000000 kW) exceeds the available generation "
        "(0.000000 kW) in timestep: 5",
        "The value of simulation_state.dc_bus.load_served (10.000000 kW) exceeds the available generation "
        "(0.000000 kW) in timestep: 5",
        "The value of simulation_state.ac_bus.operating_capacity_served (20.000000 kW) exceeds the available "
        "capacity (0.000000 kW) in time step: 5",
        "The value of simulation_state.dc_bus.operating_capacity_served (5.000000 kW) exceeds the available "
        "capacity (0.000000 kW) in time step: 5"}));
}

TEST(ValidateDispatch, ParameterEntriesWithoutStateAreNotRead) {
    System s = quiet_system();
    s.state.generator_list.clear();
    s.state.pv_list.clear();
    s.state.battery_list.clear();
    s.state.wind_turbine_list.clear();
    s.state.custom_component_list.clear();
    s.state.ac_bus = bus(0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0);
    s.state.dc_bus = bus(0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0);
    EXPECT_TRUE(validate(s).empty());
}

}  // namespace
}  // namespace tamlo_test
