// The plant model's rules: wind curve, battery limits and charge, forced generator states,
// outages and reserve requests.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "books.h"
#include "plant_model.h"

namespace tamlo_host {
namespace {

using namespace tamlo_dispatch;

struct WindCase {
    double speed;
    double power;
};

class WindCurve : public ::testing::TestWithParam<WindCase> {};

TEST_P(WindCurve, InterpolatesLinearlyAndIsZeroOutsideTheCurve) {
    const PointList curve = {{3, 0}, {5, 2}, {10, 10}, {25, 10}};
    EXPECT_DOUBLE_EQ(wind_turbine_power(curve, GetParam().speed), GetParam().power);
}

INSTANTIATE_TEST_SUITE_P(Speeds, WindCurve,
                         ::testing::Values(WindCase{0, 0}, WindCase{2.9, 0}, WindCase{3, 0}, WindCase{4, 1},
                                           WindCase{5, 2}, WindCase{7.5, 6}, WindCase{10, 10}, WindCase{25, 10},
                                           WindCase{25.1, 0}));

BatteryParameters battery_with_converter() {
    BatteryParameters b;
    b.fractional_charge_efficiency = 0.9;
    b.fractional_discharge_efficiency = 0.8;
    b.battery_bank_minimum_absolute_soc = 20;
    b.battery_bank_maximum_absolute_soc = 100;
    b.has_dedicated_converter = true;
    b.dedicated_converter.rectifier_efficiency = 50;
    b.dedicated_converter.inverter_efficiency = 50;
    b.dedicated_converter.rectifier_capacity = 1000;
    b.dedicated_converter.inverter_capacity = 1000;
    return b;
}

TEST(BatteryLimits, FollowRoomEfficienciesAndStepLength) {
    const BatteryLimits limits = battery_limits(battery_with_converter(), 60, 2.0);
    EXPECT_DOUBLE_EQ(limits.max_charge_power, 40 / (2.0 * 0.9 * 0.5));
    EXPECT_DOUBLE_EQ(limits.max_discharge_power, 40 * 0.8 * 0.5 / 2.0);
}

TEST(BatteryLimits, AreCappedByTheDedicatedConverter) {
    BatteryParameters b = battery_with_converter();
    b.dedicated_converter.rectifier_capacity = 5;
    b.dedicated_converter.inverter_capacity = 3;
    const BatteryLimits limits = battery_limits(b, 60, 1.0);
    EXPECT_DOUBLE_EQ(limits.max_charge_power, 5);
    EXPECT_DOUBLE_EQ(limits.max_discharge_power, 3);
}

TEST(BatteryLimits, IgnoreConverterWithoutOne) {
    BatteryParameters b = battery_with_converter();
    b.has_dedicated_converter = false;
    const BatteryLimits limits = battery_limits(b, 60, 1.0);
    EXPECT_DOUBLE_EQ(limits.max_charge_power, 40 / 0.9);
    EXPECT_DOUBLE_EQ(limits.max_discharge_power, 40 * 0.8);
}

TEST(BatteryCharge, FullLimitsReachTheBounds) {
    const BatteryParameters b = battery_with_converter();
    const BatteryLimits limits = battery_limits(b, 60, 2.0);
    EXPECT_DOUBLE_EQ(battery_soc_after(b, 60, limits.max_charge_power, 2.0), 100);
    EXPECT_DOUBLE_EQ(battery_soc_after(b, 60, -limits.max_discharge_power, 2.0), 20);
}

TEST(BatteryCharge, AppliesEfficienciesBothWays) {
    const BatteryParameters b = battery_with_converter();
    EXPECT_DOUBLE_EQ(battery_soc_after(b, 60, 10, 1.0), 60 + 10 * 0.5 * 0.9);
    EXPECT_DOUBLE_EQ(battery_soc_after(b, 60, -4, 1.0), 60 - 4 / (0.5 * 0.8));
    EXPECT_DOUBLE_EQ(battery_soc_after(b, 60, 0, 1.0), 60);
}

struct ForcedCase {
    const char* name;
    bool limit_fuel;
    double fuel_left;
    double schedule;
    bool ran_last_step;
    double hours_since_start;
    GeneratorCurrentState expected;
};

class GeneratorForcing : public ::testing::TestWithParam<ForcedCase> {};

TEST_P(GeneratorForcing, PicksTheFirstRuleThatApplies) {
    const ForcedCase& c = GetParam();
    GeneratorParameters g;
    g.minimum_runtime = 3;
    g.fuel.limit_consumption = c.limit_fuel;
    GeneratorHistory history{c.fuel_left, c.ran_last_step, c.hours_since_start};
    EXPECT_EQ(generator_current_state(g, history, c.schedule), c.expected) << c.name;
}

INSTANTIATE_TEST_SUITE_P(
    States, GeneratorForcing,
    ::testing::Values(ForcedCase{"free", false, 0, 0, false, 0, DISPATCH_DECIDES},
                      ForcedCase{"unlimited fuel never runs out", false, -5, 0, false, 0, DISPATCH_DECIDES},
                      ForcedCase{"out of fuel", true, 0, 1, true, 1, FORCED_OFF_OUT_OF_FUEL},
                      ForcedCase{"schedule off beats min runtime", true, 10, -1, true, 1, FORCED_OFF_FOR_SCHEDULE},
                      ForcedCase{"schedule on", false, 0, 1, false, 0, FORCED_ON_FOR_SCHEDULE},
                      ForcedCase{"minimum runtime", false, 0, 0, true, 2, FORCED_ON_FOR_MINIMUM_RUNTIME},
                      ForcedCase{"minimum runtime reached", false, 0, 0, true, 3, DISPATCH_DECIDES}));

TEST(GeneratorFuel, UsesLinearOrNonlinearCurve) {
    GeneratorParameters g;
    g.rated_capacity = 100;
    g.fuel_curve_intercept = 0.1;
    g.fuel_curve_slope = 0.25;
    EXPECT_DOUBLE_EQ(generator_fuel(g, 40, 2.0), (0.1 * 100 + 0.25 * 40) * 2.0);
    EXPECT_DOUBLE_EQ(generator_fuel(g, 0, 2.0), 0);
    g.use_nonlinear_fuel_curve = true;
    g.nonlinear_x0 = 1;
    g.nonlinear_x1 = 0.2;
    g.nonlinear_x2 = 0.01;
    EXPECT_DOUBLE_EQ(generator_fuel(g, 10, 1.0), 1 + 2 + 1);
}

// A two-step scenario built in memory: one AC and one DC load, PV on DC, wind on AC, a
// generator with limited fuel and minimum runtime, a battery, a scheduled grid with an outage.
Scenario small_scenario() {
    Scenario s;
    s.steps = 2;
    SimulationParameters& p = s.parameters;
    p.timestep_size_in_seconds = 3600;
    p.number_of_timesteps = 2;
    p.operating_reserve = {10, 20, 50, 25};  // peak, timestep, wind, solar
    p.primary_load_list = {{"ac", true, 100}, {"dc", false, 10}};
    s.plant.loads = {{50, 60}, {5, 6}};
    PvParameters pv;
    pv.rated_capacity = 40;
    p.pv_list = {pv};
    s.plant.solar = {{0.5, 0.25}};
    WindTurbineParameters wind;
    wind.component.is_AC = true;
    wind.quantity = 2;
    wind.power_curve = {{0, 0}, {10, 10}};
    p.wind_turbine_list = {wind};
    s.plant.wind_speed = {{4, 8}};
    GeneratorParameters g;
    g.rated_capacity = 30;
    g.minimum_runtime = 2;
    g.fuel.limit_consumption = true;
    g.fuel.initial_fuel_available = 1;
    g.fuel_curve_slope = 1;
    p.generator_list = {g};
    s.plant.generator_schedules = {{}};
    p.battery_list = {battery_with_converter()};
    s.plant.batteries = {PlantBattery{60, 0.5}};
    auto model = std::make_shared<Scheduled>();
    model->grid_rate = {{"cheap", {}, 0.1, 0.05}, {"dear", {}, 0.3, 0.08}};
    model->grid_rate[1].grid_state.prohibit_any_grid_sales = true;
    model->grid_rate_index = {0, 1};
    GridParameters grid;
    grid.technical_model = model;
    grid.limit_net_grid_purchases = true;
    grid.max_net_grid_purchases = 70;
    p.grid_list = {grid};
    s.plant.grids = {PlantGrid{{0, 1}, 0, 25}};
    return s;
}

TEST(PlantModel, FillsLoadsRenewablesAndReserveRequests) {
    const Scenario s = small_scenario();
    PlantModel plant(s);
    SimulationState state;
    plant.fill_state(0, state);
    EXPECT_DOUBLE_EQ(state.ac_bus.load_requested, 50);
    EXPECT_DOUBLE_EQ(state.dc_bus.load_requested, 5);
    EXPECT_DOUBLE_EQ(state.pv_list[0].power_available, 20);
    EXPECT_DOUBLE_EQ(state.wind_turbine_list[0].power_available, 8);
    // load * (1 + 20 %) + 10 % of peak + 50 % of wind (AC); solar share 25 % on DC.
    EXPECT_DOUBLE_EQ(state.ac_bus.operating_capacity_requested, 50 * 1.2 + 10 + 0.5 * 8);
    EXPECT_DOUBLE_EQ(state.dc_bus.operating_capacity_requested, 5 * 1.2 + 1 + 0.25 * 20);
    EXPECT_EQ(state.current_timestep, 0u);
}

TEST(PlantModel, FillsBatteryFromItsChargeAndLimits) {
    const Scenario s = small_scenario();
    PlantModel plant(s);
    SimulationState state;
    plant.fill_state(0, state);
    const BatteryState& b = state.battery_list[0];
    EXPECT_DOUBLE_EQ(b.state_of_charge_kwh, 60);
    EXPECT_DOUBLE_EQ(b.state_of_charge_percent, 60);
    EXPECT_DOUBLE_EQ(b.max_discharge_power, 40 * 0.8 * 0.5);
    EXPECT_DOUBLE_EQ(b.energy_cost, 0.5);
    state.battery_list[0].power_setpoint = -8;
    plant.apply(state);
    plant.fill_state(1, state);
    EXPECT_DOUBLE_EQ(state.battery_list[0].state_of_charge_kwh, 60 - 8 / (0.5 * 0.8));
}

TEST(PlantModel, LimitsBatterySetPointsAndCountsThem) {
    const Scenario s = small_scenario();
    PlantModel plant(s);
    SimulationState state;
    plant.fill_state(0, state);
    state.battery_list[0].power_setpoint = -1000;
    const StepOutcome outcome = plant.apply(state);
    EXPECT_EQ(outcome.battery_setpoints_limited, 1u);
    EXPECT_DOUBLE_EQ(outcome.battery_power[0], -16);
    EXPECT_DOUBLE_EQ(plant.battery_soc(0), 20);
}

TEST(PlantModel, NonFiniteDecisionsKeepChargeFuelAndBooksFinite) {
    const Scenario s = small_scenario();
    PlantModel plant(s);
    Books books(1);
    SimulationState state;
    for (std::size_t t = 0; t < 2; ++t) {
        plant.fill_state(t, state);
        state.generator_list[0].power_setpoint = std::nan("");
        state.battery_list[0].power_setpoint = t == 0 ? -INFINITY : 4;
        state.ac_bus.load_served = t == 0 ? 50 : std::nan("");
        books.record(state, plant.apply(state), plant.hours());
    }
    EXPECT_DOUBLE_EQ(plant.battery_soc(0), 60 + 4 * 0.5 * 0.9);  // only the finite charge applied
    EXPECT_DOUBLE_EQ(books.generators[0].fuel, 0);
    EXPECT_DOUBLE_EQ(books.energy_served, 50);
    EXPECT_EQ(books.non_finite_steps, 2u);
}

TEST(PlantModel, GridPricesFollowTheScheduleAndOutagesCloseTheGrid) {
    const Scenario s = small_scenario();
    PlantModel plant(s);
    SimulationState state;
    plant.fill_state(0, state);
    EXPECT_FALSE(state.grid_list[0].grid_state.grid_is_down);
    EXPECT_DOUBLE_EQ(state.grid_list[0].max_grid_purchases, 70);
    EXPECT_DOUBLE_EQ(state.grid_list[0].max_grid_sales, 25);
    EXPECT_DOUBLE_EQ(state.grid_list[0].power_price, 0.1);
    EXPECT_DOUBLE_EQ(state.grid_list[0].sellback_rate, 0.05);
    plant.apply(state);
    plant.fill_state(1, state);
    EXPECT_TRUE(state.grid_list[0].grid_state.grid_is_down);
    EXPECT_TRUE(state.grid_list[0].grid_state.prohibit_any_grid_sales);
    EXPECT_DOUBLE_EQ(state.grid_list[0].max_grid_purchases, 0);
    EXPECT_DOUBLE_EQ(state.grid_list[0].max_grid_sales, 0);
    EXPECT_DOUBLE_EQ(state.grid_list[0].power_price, 0.3);
}

TEST(PlantModel, ForcesGeneratorOnForMinimumRuntimeThenOffWhenFuelIsSpent) {
    const Scenario s = small_scenario();
    PlantModel plant(s);
    SimulationState state;
    plant.fill_state(0, state);
    EXPECT_EQ(state.generator_list[0].current_state, DISPATCH_DECIDES);
    EXPECT_DOUBLE_EQ(state.generator_list[0].power_available, 30);
    state.generator_list[0].power_setpoint = 0.5;  // burns 0.5 of the 1 unit of fuel
    StepOutcome outcome = plant.apply(state);
    EXPECT_TRUE(outcome.generator_started[0]);
    plant.fill_state(1, state);
    EXPECT_EQ(state.generator_list[0].current_state, FORCED_ON_FOR_MINIMUM_RUNTIME);
    state.generator_list[0].power_setpoint = 2;  // wants 2, only 0.5 is left
    outcome = plant.apply(state);
    EXPECT_DOUBLE_EQ(outcome.generator_fuel[0], 0.5);
    plant.fill_state(1, state);
    EXPECT_EQ(state.generator_list[0].current_state, FORCED_OFF_OUT_OF_FUEL);
    EXPECT_DOUBLE_EQ(state.generator_list[0].power_available, 0);
}

}  // namespace
}  // namespace tamlo_host
