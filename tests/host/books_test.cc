// The books and the sorting of warnings by rule.
#include <gtest/gtest.h>

#include <cmath>
#include <optional>

#include "books.h"
#include "report.h"
#include "run.h"
#include "warning_rules.h"

namespace tamlo_host {
namespace {

using namespace tamlo_dispatch;

TEST(Books, SumEnergiesFuelStartsAndMoney) {
    Books books(1);
    SimulationState s;
    s.ac_bus.load_requested = 10;
    s.ac_bus.load_served = 8;
    s.ac_bus.unmet_load = 2;
    s.dc_bus.load_requested = 4;
    s.dc_bus.load_served = 4;
    s.dc_bus.excess_electricity = 1;
    s.generator_list = {GeneratorState{20, 6, DISPATCH_DECIDES}};
    s.pv_list = {PvState{5, 3}};
    GridState grid;
    grid.grid_purchases = 5;
    grid.grid_sales = 1;
    grid.power_price = 0.2;
    grid.sellback_rate = 0.1;
    s.grid_list = {grid};
    StepOutcome outcome{{1.5}, {true}, {-2.0}, 0};
    books.record(s, outcome, 0.5);
    outcome.generator_started = {false};
    outcome.battery_power = {3.0};
    books.record(s, outcome, 0.5);

    EXPECT_EQ(books.steps, 2u);
    EXPECT_DOUBLE_EQ(books.energy_requested, 14.0);
    EXPECT_DOUBLE_EQ(books.energy_served + books.unmet_load, books.energy_requested);
    EXPECT_DOUBLE_EQ(books.excess_electricity, 1.0);
    EXPECT_DOUBLE_EQ(books.generators[0].energy, 6.0);
    EXPECT_DOUBLE_EQ(books.generators[0].fuel, 3.0);
    EXPECT_DOUBLE_EQ(books.generators[0].runtime_hours, 1.0);
    EXPECT_EQ(books.generators[0].starts, 1u);
    EXPECT_DOUBLE_EQ(books.battery_discharged, 1.0);
    EXPECT_DOUBLE_EQ(books.battery_charged, 1.5);
    EXPECT_DOUBLE_EQ(books.battery_throughput(), 2.5);
    EXPECT_DOUBLE_EQ(books.grid_bought, 5.0);
    EXPECT_DOUBLE_EQ(books.grid_sold, 1.0);
    EXPECT_DOUBLE_EQ(books.grid_cost, 2 * (5 * 0.2 - 1 * 0.1) * 0.5);
    EXPECT_DOUBLE_EQ(books.renewable_fraction(), 3.0 / (3.0 + 6.0 + 5.0));
}

struct WarningCase {
    const char* text;
    const char* rule;
};

class WarningSorting : public ::testing::TestWithParam<WarningCase> {};

TEST_P(WarningSorting, FindsTheRuleFromTheFixedText) {
    EXPECT_STREQ(classify_warning(GetParam().text).id, GetParam().rule) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Messages, WarningSorting,
    ::testing::Values(
        WarningCase{"simulation_state.generators(2).power_setpoint (5.000000 kW) is greater than the generator's "
                    "power_available (4.000000 kW) in time step: 3",
                    "G1"},
        WarningCase{"simulation_state.generators(1).power_setpoint (0.500000 kW) is less than the generator's minimum "
                    "load (simulation_parameters_.generator_list[i].minimum_load) in time step: 1",
                    "G2"},
        WarningCase{"simulation_state.generators(1).current_state is FORCED_ON but the generator is not producing "
                    "power in time step: 4",
                    "G3"},
        WarningCase{"simulation_state.generators(1).current_state is FORCED_OFF but the generator is producing power "
                    "(2.000000 kW) in time step: 4",
                    "G4"},
        WarningCase{"simulation_state.grids(0).grid_is_down is TRUE but power is being sold (2.000000 kW) in time "
                    "step: 1",
                    "R2"},
        WarningCase{"simulation_state.grids[0].grid_purchases (9.000000 kW) exceeds "
                    "simulation_state.grids[0].max_grid_purchases in time step: 1",
                    "R3"},
        WarningCase{"The value of simulation_state.dc_bus.load_served (3.871000 kW) exceeds the available generation "
                    "(0.000000 kW) in timestep: 1",
                    "B3"},
        WarningCase{"The value of simulation_state.ac_bus.operating_capacity_served (50.000000 kW) exceeds the "
                    "available capacity (40.000000 kW) in time step: 2",
                    "B5"},
        WarningCase{"AC production exceeds the load, but excess electricity doesn't match the expected value. "
                    "Estimated AC production: 39.430000 kW. AC load requested: 28.435000 kW. AC excess electricity: "
                    "0.000000 kW. Time step: 1",
                    "B9"},
        WarningCase{"Unmet load can't be less than zero: simulation_state.dc_bus.unmet_load = -1.000000 kW. Time "
                    "step: 1",
                    "S10"},
        WarningCase{"Load served can't be greater than load requested: simulation_state.dc_bus.load_served = "
                    "5.000000. simulation_state.dc_bus.load_requested = 4.000000 kW. Time step: 1",
                    "L2"},
        WarningCase{"There were additional warnings.", "limit"}, WarningCase{"MATLAB warning: mine", "MATLAB"},
        WarningCase{"Something else", "other"}));

TEST(WarningCounts, FollowTheRuleTableAndLeaveOutRulesWithoutWarnings) {
    const auto counts = count_warnings({"Something else", "There were additional warnings.",
                                        "The value of simulation_state.pvs(1).power_setpoint (2 kW) ...",
                                        "The value of simulation_state.pvs(2).power_setpoint (2 kW) ..."});
    ASSERT_EQ(counts.size(), 3u);
    EXPECT_STREQ(counts[0].first->id, "P1");
    EXPECT_EQ(counts[0].second, 2u);
    EXPECT_STREQ(counts[1].first->id, "limit");
    EXPECT_STREQ(counts[2].first->id, "other");
}

struct EngineStart {
    const char* message;                  // what start_simulation returned
    std::optional<std::string> places;    // our libeng's search places; none with MATLAB's
    const char* explanation;              // the summary's lines after the start error
};

class EngineStartSummary : public ::testing::TestWithParam<EngineStart> {};

TEST_P(EngineStartSummary, ExplainsOurLibengCodesOnly) {
    const EngineStart& c = GetParam();
    Scenario scenario;
    scenario.file = "x.json";
    scenario.steps = 3;
    scenario.parameters.timestep_size_in_seconds = 3600;
    RunOutcome outcome(0);
    outcome.start_error.severity = DISPATCH_CRITICAL_ERROR;
    outcome.start_error.message = c.message;
    outcome.critical = true;
    outcome.engine_search_places = c.places;
    const std::string head = "Scenario x.json: 0 of 3 time steps of 3600 s\nStart simulation: critical error: " +
                             std::string(c.message) + "\n" + c.explanation + "\nLoad (kWh)\n";
    const std::string summary = format_summary(scenario, outcome);
    EXPECT_EQ(summary.substr(0, head.size()), head);
}

INSTANTIATE_TEST_SUITE_P(
    Codes, EngineStartSummary,
    ::testing::Values(
        EngineStart{"\nCan't start MATLAB engine: code 1\n", "/opt/a/octave-engine\n/opt/bin/octave-engine\n",
                    "  code 1: no octave-engine program was found; looked in:\n    /opt/a/octave-engine\n"
                    "    /opt/bin/octave-engine\n"},
        EngineStart{"\nCan't start MATLAB engine: code 2\n", "",
                    "  code 2: the engine's socket or process could not be created (too many processes or open "
                    "files?)\n"},
        EngineStart{"\nCan't start MATLAB engine: code 3\n", "",
                    "  code 3: the engine program started but did not report ready; run it by hand to see why\n"},
        EngineStart{"\nCan't start MATLAB engine: code 1\n", std::nullopt, ""},
        EngineStart{"\nCan't start MATLAB engine: code 7\n", "", ""}));

TEST(Summary, CountsNonFiniteStepsAndKeepsTotalsNumbers) {
    Scenario scenario;
    scenario.file = "x.json";
    scenario.steps = 3;
    scenario.parameters.generator_list.resize(1);
    scenario.parameters.generator_list[0].component.name = "G";
    RunOutcome outcome(1);
    outcome.steps_run = 3;
    SimulationState s;
    s.generator_list = {GeneratorState{20, 0, DISPATCH_DECIDES}};
    for (const double p : {std::nan(""), 5.0, HUGE_VAL}) {
        s.generator_list[0].power_setpoint = p;
        outcome.books.record(s, StepOutcome{{0.0}, {false}, {}, 0}, 1.0);
    }
    const std::string summary = format_summary(scenario, outcome);
    EXPECT_NE(summary.find("  generator G               5.0, fuel 0.0, 1.0 h run, 0 starts\n"), std::string::npos)
        << summary;
    EXPECT_NE(summary.find("\nNon-finite decisions\n  2 time steps had a non-finite set point or bus value; the "
                           "books count it as 0\n"),
              std::string::npos)
        << summary;
}

}  // namespace
}  // namespace tamlo_host
