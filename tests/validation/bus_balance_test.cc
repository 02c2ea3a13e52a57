// Estimates of production and capacity per bus, the capacity moved across the converter, the
// set-point checks made during the summation, and the balance rules B1-B10.
#include "bus_balance.h"

#include <gtest/gtest.h>

#include "row_name.h"

#include <cmath>
#include <limits>

#include "message_format.h"
#include "test_systems.h"

namespace tamlo_test {
namespace {

using tamlo_test::PrintTo;

using tamlo_validation::BusEstimates;
using tamlo_validation::check_bus_balance;
using tamlo_validation::estimate_bus_supply;
using tamlo_validation::transfer_converter_capacity;

BusEstimates estimate(const System& s, std::vector<std::string>* warnings = nullptr) {
    std::vector<std::string> local;
    return estimate_bus_supply(s.parameters, s.state, warnings ? *warnings : local);
}

// Generators, batteries, PV, wind, a custom component and a flywheel on both buses, no
// converter and no grid.
System mixed_sources() {
    System s;
    SimulationParameters& p = s.parameters;
    SimulationState& st = s.state;
    p.generator_list = {generator_parameters(true, 0.0), generator_parameters(false, 0.0)};
    st.generator_list = {{100.0, 40.0, DISPATCH_DECIDES}, {20.0, 5.0, DISPATCH_DECIDES}};
    p.battery_list = {on_bus<BatteryParameters>(true), on_bus<BatteryParameters>(false)};
    st.battery_list.resize(2);
    st.battery_list[0].power_setpoint = 10.0;  // charging: draws from the AC bus
    st.battery_list[0].max_discharge_power = 30.0;
    st.battery_list[1].power_setpoint = -10.0;  // discharging: feeds the DC bus
    st.battery_list[1].max_discharge_power = 15.0;
    p.pv_list = {on_bus<PvParameters>(false)};
    st.pv_list = {{25.0, 20.0}};
    p.wind_turbine_list = {on_bus<WindTurbineParameters>(true)};
    st.wind_turbine_list = {{10.0, 12.0, DISPATCH_DECIDES}};
    CustomComponentParameters custom = on_bus<CustomComponentParameters>(true);
    custom.is_AC = false;
    p.custom_component_list = {custom};
    st.custom_component_list = {{2.0, 1.0}};
    FlywheelParameters flywheel = on_bus<FlywheelParameters>(true);
    flywheel.charge_discharge_capacity = 7.0;
    flywheel.parasitic_load = 0.5;
    p.flywheel_list = {flywheel};  // the state lists no flywheel
    return s;
}

TEST(BusSupply, SumsEachSourceOnItsOwnBus) {
    const BusEstimates e = estimate(mixed_sources());
    EXPECT_DOUBLE_EQ(e.ac.production, 40.0 - 10.0 + 10.0 - 0.5);
    EXPECT_DOUBLE_EQ(e.ac.capacity, 100.0 + 30.0 + 12.0 + 7.0);
    EXPECT_DOUBLE_EQ(e.dc.production, 5.0 + 10.0 + 20.0 + 1.0);
    EXPECT_DOUBLE_EQ(e.dc.capacity, 20.0 + 15.0 + 25.0 + 2.0);
}

TEST(BusSupply, CustomComponentBusComesFromItsOwnFlag) {
    System s;
    CustomComponentParameters custom = on_bus<CustomComponentParameters>(false);
    custom.is_AC = true;
    s.parameters.custom_component_list = {custom};
    s.state.custom_component_list = {{2.0, 1.0}};
    const BusEstimates e = estimate(s);
    EXPECT_DOUBLE_EQ(e.ac.production, 1.0);
    EXPECT_DOUBLE_EQ(e.dc.production, 0.0);
}

TEST(BusSupply, BatterySetPointSignMovesProduction) {
    System s;
    s.parameters.battery_list = {on_bus<BatteryParameters>(true)};
    s.state.battery_list.resize(1);
    s.state.battery_list[0].power_setpoint = 10.0;
    EXPECT_DOUBLE_EQ(estimate(s).ac.production, -10.0);
    s.state.battery_list[0].power_setpoint = -10.0;
    EXPECT_DOUBLE_EQ(estimate(s).ac.production, 10.0);
}

TEST(BusSupply, ConverterFlowsAndGridAddToBuses) {
    System s = mixed_sources();
    s.parameters.converter_list = {converter_parameters(100.0, 100.0, 90.0, 85.0)};
    s.state.converter_list = {ConverterState{10.0, 9.0, 20.0, 17.0}};
    s.parameters.grid_list = {grid_parameters()};
    GridState grid;
    grid.max_grid_purchases = 50.0;
    grid.grid_purchases = 5.0;
    grid.grid_sales = 2.0;
    s.state.grid_list = {grid};
    const BusEstimates e = estimate(s);
    EXPECT_DOUBLE_EQ(e.ac.production, 39.5 + 9.0 - 20.0 + 5.0 - 2.0);
    EXPECT_DOUBLE_EQ(e.ac.capacity, 149.0 + 50.0);
    EXPECT_DOUBLE_EQ(e.dc.production, 36.0 + 17.0 - 10.0);
    EXPECT_DOUBLE_EQ(e.dc.capacity, 62.0);
}

TEST(BusSupply, StateEntriesWithoutParametersAddToNeitherBus) {
    System s = mixed_sources();
    s.state.generator_list.push_back({500.0, 500.0, DISPATCH_DECIDES});
    s.state.battery_list.push_back(BatteryState{});
    s.state.battery_list.back().power_setpoint = -500.0;
    s.state.wind_turbine_list.push_back({1.0, 1.0, DISPATCH_DECIDES});
    s.state.custom_component_list.push_back({1.0, 1.0});
    const BusEstimates e = estimate(s);
    EXPECT_DOUBLE_EQ(e.ac.production, 39.5);
    EXPECT_DOUBLE_EQ(e.ac.capacity, 149.0);
    EXPECT_DOUBLE_EQ(e.dc.production, 36.0);
    EXPECT_DOUBLE_EQ(e.dc.capacity, 62.0);
}

TEST(BusSupply, SetPointCheckStillRunsForStateEntryWithoutParameters) {
    System s = mixed_sources();
    s.state.pv_list.push_back({5.0, 6.0});
    std::vector<std::string> warnings;
    const BusEstimates e = estimate(s, &warnings);
    EXPECT_DOUBLE_EQ(e.dc.production, 36.0);
    EXPECT_EQ(warnings, std::vector<std::string>{
        "The value of simulation_state.pvs(2).power_setpoint (6.000000 kW) can't be larger than the power_available "
        "(5.000000 kW) in timestep: 1"});
}

TEST(BusSupply, ConverterSkippedWhenStateListsNoConverter) {
    System s = mixed_sources();
    s.parameters.converter_list = {converter_parameters(100.0, 100.0, 90.0, 90.0)};
    s.state.ac_bus.operating_capacity_requested = 500.0;  // would pull capacity from DC if paired
    const BusEstimates e = estimate(s);
    EXPECT_DOUBLE_EQ(e.ac.capacity, 149.0);
    EXPECT_DOUBLE_EQ(e.dc.capacity, 62.0);
    EXPECT_DOUBLE_EQ(e.ac.production, 39.5);
}

TEST(BusSupply, GridSkippedWhenEitherListIsEmpty) {
    System s = mixed_sources();
    s.parameters.grid_list = {grid_parameters()};  // state lists no grid
    EXPECT_DOUBLE_EQ(estimate(s).ac.capacity, 149.0);
    s.parameters.grid_list.clear();
    GridState grid;
    grid.max_grid_purchases = 50.0;
    grid.grid_purchases = 5.0;
    s.state.grid_list = {grid};  // parameters list no grid
    EXPECT_DOUBLE_EQ(estimate(s).ac.capacity, 149.0);
    EXPECT_DOUBLE_EQ(estimate(s).ac.production, 39.5);
}

// ---- Set-point checks made during the summation (P1, W1, U1) ----

TEST(SetpointChecks, ReportEachSourceKindInSummationOrder) {
    System s;
    s.parameters.pv_list = {on_bus<PvParameters>(true), on_bus<PvParameters>(true)};
    s.state.pv_list = {{10.0, 10.0}, {50.0, 50.000000001}};
    s.parameters.wind_turbine_list = {on_bus<WindTurbineParameters>(true)};
    s.state.wind_turbine_list = {{12.5, 12.0, DISPATCH_DECIDES}};
    s.parameters.custom_component_list = {on_bus<CustomComponentParameters>(true)};
    s.state.custom_component_list = {{1.0, 1.25}};
    s.state.current_timestep = 9;
    std::vector<std::string> warnings;
    estimate(s, &warnings);
    EXPECT_EQ(warnings, (std::vector<std::string>{
        "The value of simulation_state.pvs(2).power_setpoint (50.000000 kW) can't be larger than the power_available "
        "(50.000000 kW) in timestep: 10",
        "The value of simulation_state.wind_turbines(1).power_setpoint (12.500000 kW) can't be larger than the "
        "power_available (12.000000 kW) in timestep: 10",
        "The value of simulation_state.custom_components(1).power_setpoint (1.250000 kW) can't be larger than the "
        "power_available (1.000000 kW) in timestep: 10"}));
}

TEST(SetpointChecks, SetPointEqualToAvailablePasses) {
    System s;
    s.parameters.pv_list = {on_bus<PvParameters>(true)};
    s.state.pv_list = {{50.0, 50.0}};
    s.parameters.wind_turbine_list = {on_bus<WindTurbineParameters>(true)};
    s.state.wind_turbine_list = {{12.0, 12.0, DISPATCH_DECIDES}};
    s.parameters.custom_component_list = {on_bus<CustomComponentParameters>(true)};
    s.state.custom_component_list = {{1.0, 1.0}};
    std::vector<std::string> warnings;
    estimate(s, &warnings);
    EXPECT_TRUE(warnings.empty());
}

// ---- Capacity moved across the converter ----

BusEstimates capacities(double ac, double dc) {
    BusEstimates e;
    e.ac.capacity = ac;
    e.dc.capacity = dc;
    return e;
}

TEST(ConverterTransfer, InverterMovesAllSpareWithinCapacity) {
    BusEstimates e = capacities(30.0, 40.0);
    transfer_converter_capacity(converter_parameters(100.0, 100.0, 90.0, 90.0), 50.0, 10.0, e);
    EXPECT_NEAR(e.ac.capacity, 57.0, 1e-9);
    EXPECT_NEAR(e.dc.capacity, 10.0, 1e-9);
}

TEST(ConverterTransfer, InverterCapacityLimitsTheMove) {
    BusEstimates e = capacities(30.0, 40.0);
    transfer_converter_capacity(converter_parameters(10.0, 100.0, 90.0, 90.0), 50.0, 10.0, e);
    EXPECT_NEAR(e.ac.capacity, 40.0, 1e-9);
    EXPECT_NEAR(e.dc.capacity, 40.0 - 10.0 / 0.9, 1e-9);
    EXPECT_EQ(tamlo_validation::format_number(e.dc.capacity), "28.888889");
}

TEST(ConverterTransfer, RectifierMovesSpareToDcBus) {
    BusEstimates e = capacities(40.0, 30.0);
    transfer_converter_capacity(converter_parameters(100.0, 100.0, 90.0, 80.0), 10.0, 50.0, e);
    EXPECT_NEAR(e.dc.capacity, 54.0, 1e-9);
    EXPECT_NEAR(e.ac.capacity, 10.0, 1e-9);
}

TEST(ConverterTransfer, NothingMovesWhenNeitherBusLacks) {
    BusEstimates e = capacities(30.0, 40.0);
    transfer_converter_capacity(converter_parameters(100.0, 100.0, 90.0, 90.0), 30.0, 10.0, e);
    EXPECT_DOUBLE_EQ(e.ac.capacity, 30.0);
    EXPECT_DOUBLE_EQ(e.dc.capacity, 40.0);
}

TEST(ConverterTransfer, NothingMovesWhenBothBusesLack) {
    BusEstimates e = capacities(30.0, 40.0);
    transfer_converter_capacity(converter_parameters(100.0, 100.0, 90.0, 90.0), 50.0, 50.0, e);
    EXPECT_DOUBLE_EQ(e.ac.capacity, 30.0);
    EXPECT_DOUBLE_EQ(e.dc.capacity, 40.0);
}

struct EfficiencyRow {
    const char* name;
    double efficiency;
};

class NonPositiveEfficiency : public ::testing::TestWithParam<EfficiencyRow> {};

TEST_P(NonPositiveEfficiency, InverterMovesNothing) {
    BusEstimates e = capacities(30.0, 40.0);
    transfer_converter_capacity(converter_parameters(100.0, 100.0, GetParam().efficiency, 90.0), 50.0, 10.0, e);
    EXPECT_EQ(e.ac.capacity, 30.0) << GetParam().name;
    EXPECT_EQ(e.dc.capacity, 40.0) << GetParam().name;
}

TEST_P(NonPositiveEfficiency, RectifierMovesNothing) {
    BusEstimates e = capacities(40.0, 30.0);
    transfer_converter_capacity(converter_parameters(100.0, 100.0, 90.0, GetParam().efficiency), 10.0, 50.0, e);
    EXPECT_EQ(e.ac.capacity, 40.0) << GetParam().name;
    EXPECT_EQ(e.dc.capacity, 30.0) << GetParam().name;
}

INSTANTIATE_TEST_SUITE_P(Rows, NonPositiveEfficiency, ::testing::Values(
    EfficiencyRow{"zero", 0.0}, EfficiencyRow{"negative zero", -0.0}, EfficiencyRow{"negative", -50.0},
    EfficiencyRow{"NaN", std::numeric_limits<double>::quiet_NaN()}),
    row_name);

// ---- Balance rules B1-B10 ----

struct BalanceRow {
    const char* name;
    BusState ac;
    BusState dc;
    double ac_production;
    double ac_capacity;
    double dc_production;
    double dc_capacity;
    std::vector<std::string> expected;
};

class BalanceChecks : public ::testing::TestWithParam<BalanceRow> {};

TEST_P(BalanceChecks, ReportsWholeMessages) {
    const BalanceRow& r = GetParam();
    SimulationState s;
    s.ac_bus = r.ac;
    s.dc_bus = r.dc;
    s.current_timestep = 2;
    BusEstimates e;
    e.ac = {r.ac_production, r.ac_capacity};
    e.dc = {r.dc_production, r.dc_capacity};
    std::vector<std::string> warnings;
    check_bus_balance(s, e, warnings);
    EXPECT_EQ(warnings, r.expected) << r.name;
}

const BusState ac_ok = bus(100.0, 100.0, 0.0, 0.0, 20.0, 20.0, 0.0);
const BusState dc_ok = bus(10.0, 10.0, 0.0, 0.0, 5.0, 5.0, 0.0);

INSTANTIATE_TEST_SUITE_P(Rows, BalanceChecks, ::testing::Values(
    BalanceRow{"balanced buses pass", ac_ok, dc_ok, 100.0, 200.0, 10.0, 50.0, {}},
    BalanceRow{"B1 load served beyond AC generation", ac_ok, dc_ok, 90.0, 200.0, 10.0, 50.0,
        {"The value of simulation_state.ac_bus.load_served (100.000000 kW) exceeds the available generation "
         "(90.000000 kW) in timestep: 3"}},
    BalanceRow{"B1 silent when the shortfall is left unserved", bus(100.0, 90.0, 10.0, 0.0, 20.0, 20.0, 0.0), dc_ok,
        90.0, 200.0, 10.0, 50.0, {}},
    BalanceRow{"B2 silent when unmet load matches", bus(100.0, 80.0, 20.0, 0.0, 20.0, 20.0, 0.0), dc_ok, 80.0, 200.0,
        10.0, 50.0, {}},
    BalanceRow{"B2 unmet load does not match", bus(100.0, 80.0, 0.0, 0.0, 20.0, 20.0, 0.0), dc_ok, 80.0, 200.0, 10.0,
        50.0,
        {"If there is a capacity shortage, the MATLAB dispatch must set simulation_state.ac_bus.unmet_load equal to "
         "simulation_state.ac_bus.load_requested - simulation_state.ac_bus.load_served. AC bus load requested was: "
         "100.000000 kW. AC bus load served was: 80.000000 kW. Unmet load reported was: 0.000000 kW. Time step: 3"}},
    BalanceRow{"B2 never when served equals requested within tolerance",
        bus(100.0, 99.99995, 55.0, 0.0, 20.0, 20.0, 0.0), dc_ok, 100.0, 200.0, 10.0, 50.0, {}},
    BalanceRow{"B3 load served beyond DC generation", ac_ok, dc_ok, 100.0, 200.0, 4.0, 50.0,
        {"The value of simulation_state.dc_bus.load_served (10.000000 kW) exceeds the available generation "
         "(4.000000 kW) in timestep: 3"}},
    BalanceRow{"B4 DC unmet load does not match", ac_ok, bus(10.0, 6.0, 1.0, 0.0, 5.0, 5.0, 0.0), 100.0, 200.0, 6.0,
        50.0,
        {"If there is a capacity shortage, the MATLAB dispatch must set simulation_state.dc_bus.unmet_load equal to "
         "simulation_state.dc_bus.load_requested - simulation_state.dc_bus.load_served. DC bus load requested was: "
         "10.000000 kW. DC bus load served was: 6.000000 kW. Unmet load reported was: 1.000000 kW. Time step: 3"}},
    BalanceRow{"B5 capacity served beyond AC capacity", bus(100.0, 100.0, 0.0, 0.0, 50.0, 50.0, 0.0), dc_ok, 100.0,
        40.0, 10.0, 50.0,
        {"The value of simulation_state.ac_bus.operating_capacity_served (50.000000 kW) exceeds the available "
         "capacity (40.000000 kW) in time step: 3"}},
    BalanceRow{"B6 capacity served beyond DC capacity", ac_ok, bus(10.0, 10.0, 0.0, 0.0, 5.0, 5.0, 0.0), 100.0, 200.0,
        10.0, 2.5,
        {"The value of simulation_state.dc_bus.operating_capacity_served (5.000000 kW) exceeds the available "
         "capacity (2.500000 kW) in time step: 3"}},
    BalanceRow{"B7 AC shortage does not match", bus(100.0, 100.0, 0.0, 0.0, 50.0, 30.0, 0.0), dc_ok, 100.0, 200.0,
        10.0, 50.0,
        {"If there is a capacity shortage, the MATLAB dispatch must set simulation_state.ac_bus.capacity_shortage "
         "equal to simulation_state.ac_bus.operating_capacity_requested - "
         "simulation_state.ac_bus.operating_capacity_served. AC operating capacity requested: 50.000000 kW. AC "
         "operating capacity served: 30.000000 kW. Capacity shortage: 0.000000 kW. Time step: 3"}},
    BalanceRow{"B7 silent when shortage matches", bus(100.0, 100.0, 0.0, 0.0, 50.0, 30.0, 20.0), dc_ok, 100.0, 200.0,
        10.0, 50.0, {}},
    BalanceRow{"B8 DC shortage does not match", ac_ok, bus(10.0, 10.0, 0.0, 0.0, 5.0, 2.0, 1.0), 100.0, 200.0, 10.0,
        50.0,
        {"If there is a capacity shortage, the MATLAB dispatch must set simulation_state.dc_bus.capacity_shortage "
         "equal to simulation_state.dc_bus.operating_capacity_requested - "
         "simulation_state.dc_bus.operating_capacity_served. DC operating capacity requested: 5.000000 kW. DC "
         "operating capacity served: 2.000000 kW. Capacity shortage: 1.000000 kW. Time step: 3"}},
    BalanceRow{"B9 silent when excess matches", bus(100.0, 100.0, 0.0, 20.0, 20.0, 20.0, 0.0), dc_ok, 120.0, 200.0,
        10.0, 50.0, {}},
    BalanceRow{"B9 AC excess does not match", ac_ok, dc_ok, 120.0, 200.0, 10.0, 50.0,
        {"AC production exceeds the load, but excess electricity doesn't match the expected value. Estimated AC "
         "production: 120.000000 kW. AC load requested: 100.000000 kW. AC excess electricity: 0.000000 kW. Time "
         "step: 3"}},
    BalanceRow{"B10 DC excess does not match", ac_ok, bus(10.0, 10.0, 0.0, 1.0, 5.0, 5.0, 0.0), 100.0, 200.0, 12.5,
        50.0,
        {"DC production exceeds the load, but excess electricity doesn't match the expected value. Estimated DC "
         "production: 12.500000 kW. DC load requested: 10.000000 kW. DC excess electricity: 1.000000 kW. Time "
         "step: 3"}},
    BalanceRow{"rules interleave the buses in their fixed order", bus(100.0, 80.0, 0.0, 0.0, 50.0, 50.0, 0.0),
        bus(10.0, 10.0, 0.0, 0.0, 5.0, 2.0, 0.0), 120.0, 30.0, 5.0, 50.0,
        {"If there is a capacity shortage, the MATLAB dispatch must set simulation_state.ac_bus.unmet_load equal to "
         "simulation_state.ac_bus.load_requested - simulation_state.ac_bus.load_served. AC bus load requested was: "
         "100.000000 kW. AC bus load served was: 80.000000 kW. Unmet load reported was: 0.000000 kW. Time step: 3",
         "The value of simulation_state.dc_bus.load_served (10.000000 kW) exceeds the available generation "
         "(5.000000 kW) in timestep: 3",
         "The value of simulation_state.ac_bus.operating_capacity_served (50.000000 kW) exceeds the available "
         "capacity (30.000000 kW) in time step: 3",
         "If there is a capacity shortage, the MATLAB dispatch must set simulation_state.dc_bus.capacity_shortage "
         "equal to simulation_state.dc_bus.operating_capacity_requested - "
         "simulation_state.dc_bus.operating_capacity_served. DC operating capacity requested: 5.000000 kW. DC "
         "operating capacity served: 2.000000 kW. Capacity shortage: 0.000000 kW. Time step: 3",
         "AC production exceeds the load, but excess electricity doesn't match the expected value. Estimated AC "
         "production: 120.000000 kW. AC load requested: 100.000000 kW. AC excess electricity: 0.000000 kW. Time "
         "step: 3"}}),
    row_name);

}  // namespace
}  // namespace tamlo_test
