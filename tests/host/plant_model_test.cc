// The plant model's rules (wind curve, battery, forced generator states, outages, reserve
// requests), the books, the sorting of warnings by rule and the summary.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <optional>

#include "books.h"
#include "plant_model.h"
#include "report.h"
#include "run.h"
#include "warning_rules.h"

namespace tamlo_host {
namespace {

using namespace tamlo_dispatch;

TEST(WindCurve, InterpolatesLinearlyAndIsZeroOutsideTheCurve) {
    const PointList curve = {{3, 0}, {5, 2}, {10, 10}, {25, 10}};
    const std::pair<double, double> rows[] = {{0, 0},   {2.9, 0}, {3, 0},   {4, 1},   {5, 2},
                                              {7.5, 6}, {10, 10}, {25, 10}, {25.1, 0}};  // speed, power
    for (const auto& [speed, power] : rows) EXPECT_DOUBLE_EQ(wind_turbine_power(curve, speed), power) << speed;
}

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

// Limits through a converter wider than the battery, with its efficiencies and the step's length,
// are the small plant's below.
TEST(Battery, TheConverterCapsTheLimitsAndWithoutOneNeitherItsCapacityNorItsEfficiencyCounts) {
    BatteryParameters b = battery_with_converter();
    b.dedicated_converter.rectifier_capacity = 5;
    b.dedicated_converter.inverter_capacity = 3;
    BatteryLimits limits = battery_limits(b, 60, 1.0);
    EXPECT_DOUBLE_EQ(limits.max_charge_power, 5);
    EXPECT_DOUBLE_EQ(limits.max_discharge_power, 3);
    b.has_dedicated_converter = false;
    limits = battery_limits(b, 60, 1.0);
    EXPECT_DOUBLE_EQ(limits.max_charge_power, 40 / 0.9);
    EXPECT_DOUBLE_EQ(limits.max_discharge_power, 40 * 0.8);
}

TEST(GeneratorForcing, PicksTheFirstRuleThatApplies) {
    struct Row {
        const char* name;
        bool limit_fuel;
        double fuel_left, schedule;
        bool ran_last_step;
        double hours_since_start;
        GeneratorCurrentState expected;
    };
    const Row rows[] = {{"unlimited fuel never runs out", false, -5, 0, false, 0, DISPATCH_DECIDES},
                        {"out of fuel", true, 0, 1, true, 1, FORCED_OFF_OUT_OF_FUEL},
                        {"schedule off beats min runtime", true, 10, -1, true, 1, FORCED_OFF_FOR_SCHEDULE},
                        {"schedule on", false, 0, 1, false, 0, FORCED_ON_FOR_SCHEDULE},
                        {"minimum runtime", false, 0, 0, true, 2, FORCED_ON_FOR_MINIMUM_RUNTIME},
                        {"minimum runtime reached", false, 0, 0, true, 3, DISPATCH_DECIDES}};
    for (const Row& r : rows) {
        GeneratorParameters g;
        g.minimum_runtime = 3;
        g.fuel.limit_consumption = r.limit_fuel;
        GeneratorHistory history{r.fuel_left, r.ran_last_step, r.hours_since_start};
        EXPECT_EQ(generator_current_state(g, history, r.schedule), r.expected) << r.name;
    }
}

// A two-step scenario built in memory: one AC and one DC load, PV on DC, wind on AC, a
// generator with limited fuel and minimum runtime, a battery, a scheduled grid down in the first
// step and closed to sales by its rate in the second. The golden run has hour-long steps; half an
// hour here shows that limits, charge, fuel and the books follow the step's length.
Scenario small_scenario() {
    Scenario s;
    s.steps = 2;
    SimulationParameters& p = s.parameters;
    p.timestep_size_in_seconds = 1800;
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
    s.plant.grids = {PlantGrid{{1, 0}, 0, 25}};
    return s;
}

// The small scenario's plant, with its first time step filled in.
class SmallPlant : public ::testing::Test {
protected:
    void SetUp() override { plant.fill_state(0, state); }
    const Scenario s = small_scenario();
    PlantModel plant{s};
    SimulationState state;
};

// The reserves are summed from the loads, PV and wind the state holds, so they check those too.
TEST_F(SmallPlant, FillsReservesBatteryAndGridFromTheScenario) {
    // load * (1 + 20 %) + 10 % of peak + 50 % of wind (AC: 2 turbines at 4 kW); 25 % of PV on DC
    // (40 kW at 0.5).
    EXPECT_DOUBLE_EQ(state.ac_bus.operating_capacity_requested, 50 * 1.2 + 10 + 0.5 * 8);
    EXPECT_DOUBLE_EQ(state.dc_bus.operating_capacity_requested, 5 * 1.2 + 1 + 0.25 * 20);
    const BatteryState& b = state.battery_list[0];
    EXPECT_DOUBLE_EQ(b.state_of_charge_percent, 60);
    // 40 kWh of room above and of charge below, through the battery's and converter's efficiencies.
    EXPECT_DOUBLE_EQ(b.max_charge_power, 40 / (0.5 * 0.9 * 0.5));
    EXPECT_DOUBLE_EQ(b.max_discharge_power, 40 * 0.8 * 0.5 / 0.5);
    EXPECT_DOUBLE_EQ(b.energy_cost, 0.5);
    const GridState& grid = state.grid_list[0];
    EXPECT_TRUE(grid.grid_state.grid_is_down);
    EXPECT_DOUBLE_EQ(grid.max_grid_purchases, 0);
    EXPECT_DOUBLE_EQ(grid.max_grid_sales, 0);
    state.battery_list[0].power_setpoint = -8;
    plant.apply(state);
    plant.fill_state(1, state);
    EXPECT_EQ(state.current_timestep, 1u);
    EXPECT_DOUBLE_EQ(state.battery_list[0].state_of_charge_kwh, 60 - 8 / (0.5 * 0.8) * 0.5);
    // Up again, but its rate forbids sales.
    EXPECT_FALSE(state.grid_list[0].grid_state.grid_is_down);
    EXPECT_TRUE(state.grid_list[0].grid_state.prohibit_any_grid_sales);
    EXPECT_DOUBLE_EQ(state.grid_list[0].max_grid_purchases, 70);
    EXPECT_DOUBLE_EQ(state.grid_list[0].max_grid_sales, 0);
    EXPECT_DOUBLE_EQ(state.grid_list[0].power_price, 0.3);
}

TEST_F(SmallPlant, LimitsBatterySetPointsEvenSlightlyOverAndCountsThem) {
    state.battery_list[0].power_setpoint = -32.1;  // the limit is 32
    const StepOutcome outcome = plant.apply(state);
    EXPECT_EQ(outcome.battery_setpoints_limited, 1u);
    EXPECT_DOUBLE_EQ(outcome.battery_power[0], -32);
    EXPECT_DOUBLE_EQ(plant.battery_soc(0), 20);
}

TEST_F(SmallPlant, BooksFollowTheStepLengthAndCountNonFiniteDecisionsAsZero) {
    RunOutcome outcome(1);
    outcome.steps_run = 2;
    for (std::size_t t = 0; t < 2; ++t) {
        plant.fill_state(t, state);
        state.generator_list[0].power_setpoint = t == 0 ? std::nan("") : 2;
        state.battery_list[0].power_setpoint = t == 0 ? -INFINITY : 4;
        state.ac_bus.load_served = t == 0 ? 50 : std::nan("");
        state.grid_list[0].grid_purchases = 10;
        outcome.books.record(state, plant.apply(state), plant.hours());
    }
    EXPECT_DOUBLE_EQ(plant.battery_soc(0), 60 + 4 * 0.5 * 0.9 * 0.5);  // only the finite charge applied
    EXPECT_DOUBLE_EQ(outcome.books.battery_charged, 4 * 0.5);
    EXPECT_DOUBLE_EQ(outcome.books.energy_served, 50 * 0.5);
    EXPECT_DOUBLE_EQ(outcome.books.generators[0].energy, 2 * 0.5);
    EXPECT_DOUBLE_EQ(outcome.books.generators[0].runtime_hours, 0.5);
    EXPECT_DOUBLE_EQ(outcome.books.generators[0].fuel, 2 * 0.5);
    EXPECT_DOUBLE_EQ(outcome.books.grid_cost, (10 * 0.1 + 10 * 0.3) * 0.5);
    const std::string summary = format_summary(s, outcome);
    EXPECT_NE(summary.find("\nNon-finite decisions\n  2 time steps had a non-finite set point or bus value; the "
                           "books count it as 0\n"),
              std::string::npos)
        << summary;
}

TEST_F(SmallPlant, ForcesGeneratorOnForMinimumRuntimeThenOffWhenFuelIsSpent) {
    state.generator_list[0].power_setpoint = 0.5;  // burns 0.25 of the 1 unit of fuel in half an hour
    plant.apply(state);
    plant.fill_state(1, state);
    EXPECT_EQ(state.generator_list[0].current_state, FORCED_ON_FOR_MINIMUM_RUNTIME);
    state.generator_list[0].power_setpoint = 2;  // wants 1, only 0.75 is left
    EXPECT_DOUBLE_EQ(plant.apply(state).generator_fuel[0], 0.75);
    plant.fill_state(1, state);
    EXPECT_EQ(state.generator_list[0].current_state, FORCED_OFF_OUT_OF_FUEL);
    EXPECT_DOUBLE_EQ(state.generator_list[0].power_available, 0);
}

// Rules told apart by their lead text alone, or also by what follows it (G1, G2); counted in the
// rule table's order, rules without warnings left out.
TEST(WarningCounts, SortTextsByRuleInTheTablesOrder) {
    const auto counts = count_warnings({
        "Something else",
        "MATLAB warning: mine",
        "There were additional warnings.",
        "simulation_state.generators(1).power_setpoint (0.500000 kW) is less than the generator's minimum load "
        "(simulation_parameters_.generator_list[i].minimum_load) in time step: 1",
        "simulation_state.generators(2).power_setpoint (5.000000 kW) is greater than the generator's power_available "
        "(4.000000 kW) in time step: 3",
        "The value of simulation_state.pvs(1).power_setpoint (2 kW) ...",
        "The value of simulation_state.pvs(2).power_setpoint (2 kW) ...",
    });
    std::vector<std::pair<std::string, std::size_t>> ids;
    for (const auto& [rule, n] : counts) ids.emplace_back(rule->id, n);
    const std::vector<std::pair<std::string, std::size_t>> expected = {{"G1", 1},    {"G2", 1},     {"P1", 2},
                                                                       {"limit", 1}, {"MATLAB", 1}, {"other", 1}};
    EXPECT_EQ(ids, expected);
}

TEST(Summary, ExplainsTheEngineStartCodesOfOurLibengOnlyAndCountsWarningsByRule) {
    struct Row {
        const char* code;                   // in start_simulation's message
        std::optional<std::string> places;  // our libeng's search places; none with MATLAB's
        const char* explanation;            // the summary's lines after the start error
    };
    const Row rows[] = {
        {"1", "/opt/a/octave-engine\n/opt/bin/octave-engine\n",
         "  code 1: no octave-engine program was found; looked in:\n    /opt/a/octave-engine\n"
         "    /opt/bin/octave-engine\n"},
        {"3", "", "  code 3: the engine program started but did not report ready; run it by hand to see why\n"},
        {"1", std::nullopt, ""},
        {"7", "", ""}};
    for (const Row& r : rows) {
        const std::string message = "\nCan't start MATLAB engine: code " + std::string(r.code) + "\n";
        Scenario scenario;
        scenario.file = "x.json";
        scenario.steps = 3;
        scenario.parameters.timestep_size_in_seconds = 3600;
        RunOutcome outcome(0);
        outcome.start_error.severity = DISPATCH_CRITICAL_ERROR;
        outcome.start_error.message = message;
        outcome.critical = true;
        outcome.engine_search_places = r.places;
        outcome.warnings = {"There were additional warnings."};
        const std::string head =
            "Scenario x.json: 0 of 3 time steps of 3600 s\nStart simulation: critical error: " + message + "\n" +
            r.explanation + "\nLoad (kWh)\n";
        const std::string summary = format_summary(scenario, outcome);
        EXPECT_EQ(summary.substr(0, head.size()), head);
        EXPECT_NE(summary.find("\nWarnings by rule\n  limit warnings beyond the first ten not checked 1\n"),
                  std::string::npos)
            << summary;
    }
}

}  // namespace
}  // namespace tamlo_host
