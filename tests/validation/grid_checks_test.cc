// Grid rules R1-R4 on the first grid.
#include "grid_checks.h"

#include <gtest/gtest.h>

#include "row_name.h"

#include "test_systems.h"

namespace tamlo_test {
namespace {

using tamlo_test::PrintTo;

struct GridRow {
    const char* name;
    bool grid_is_down;
    double purchases;
    double sales;
    double max_purchases;
    double max_sales;
    std::vector<std::string> expected;
};

GridState grid_state(bool down, double purchases, double sales, double max_purchases, double max_sales) {
    GridState g;
    g.grid_state.grid_is_down = down;
    g.grid_purchases = purchases;
    g.grid_sales = sales;
    g.max_grid_purchases = max_purchases;
    g.max_grid_sales = max_sales;
    return g;
}

std::vector<std::string> check(const SimulationParameters& p, const SimulationState& s) {
    std::vector<std::string> warnings;
    tamlo_validation::check_grid(p, s, warnings);
    return warnings;
}

class GridChecks : public ::testing::TestWithParam<GridRow> {};

TEST_P(GridChecks, ReportsWholeMessages) {
    const GridRow& r = GetParam();
    SimulationParameters p;
    p.grid_list = {grid_parameters()};
    SimulationState s;
    s.grid_list = {grid_state(r.grid_is_down, r.purchases, r.sales, r.max_purchases, r.max_sales)};
    s.current_timestep = 41;
    EXPECT_EQ(check(p, s), r.expected) << r.name;
}

INSTANTIATE_TEST_SUITE_P(Rows, GridChecks, ::testing::Values(
    GridRow{"trade within limits passes", false, 30.0, 0.0, 50.0, 50.0, {}},
    GridRow{"down grid with purchases of exactly 1e-6 passes", true, 0.000001, 0.000001, 50.0, 50.0, {}},
    GridRow{"R1 purchases from a down grid", true, 2.0, 0.0, 50.0, 50.0,
        {"simulation_state.grids(0).grid_is_down is TRUE but power is being purchased (2.000000 kW) in time step: 42"}},
    GridRow{"R1 and R3 purchases from a down grid above its limit", true, 2.0, 0.0, 1.0, 50.0,
        {"simulation_state.grids(0).grid_is_down is TRUE but power is being purchased (2.000000 kW) in time step: 42",
         "simulation_state.grids[0].grid_purchases (2.000000 kW) exceeds simulation_state.grids[0].max_grid_purchases "
         "in time step: 42"}},
    GridRow{"R2 sales to a down grid", true, 0.0, 3.5, 50.0, 50.0,
        {"simulation_state.grids(0).grid_is_down is TRUE but power is being sold (3.500000 kW) in time step: 42"}},
    GridRow{"R3 compares without tolerance", false, 100.00005, 0.0, 100.0, 50.0,
        {"simulation_state.grids[0].grid_purchases (100.000050 kW) exceeds "
         "simulation_state.grids[0].max_grid_purchases in time step: 42"}},
    GridRow{"R4 sales above limit", false, 0.0, 60.0, 50.0, 50.0,
        {"simulation_state.grids[0].grid_sales (60.000000 kW) exceeds simulation_state.grids[0].max_grid_sales in "
         "time step: 42"}},
    GridRow{"all four in order", true, 70.0, 60.0, 50.0, 50.0,
        {"simulation_state.grids(0).grid_is_down is TRUE but power is being purchased (70.000000 kW) in time step: 42",
         "simulation_state.grids(0).grid_is_down is TRUE but power is being sold (60.000000 kW) in time step: 42",
         "simulation_state.grids[0].grid_purchases (70.000000 kW) exceeds simulation_state.grids[0].max_grid_purchases "
         "in time step: 42",
         "simulation_state.grids[0].grid_sales (60.000000 kW) exceeds simulation_state.grids[0].max_grid_sales in "
         "time step: 42"}}),
    row_name);

TEST(GridCheck, SkippedWhenParametersListNoGrid) {
    SimulationParameters p;
    SimulationState s;
    s.grid_list = {grid_state(true, 70.0, 60.0, 0.0, 0.0)};
    EXPECT_TRUE(check(p, s).empty());
}

TEST(GridCheck, IgnoresSecondGrid) {
    SimulationParameters p;
    p.grid_list = {grid_parameters(), grid_parameters()};
    SimulationState s;
    s.grid_list = {grid_state(false, 1.0, 0.0, 10.0, 10.0), grid_state(true, 70.0, 60.0, 0.0, 0.0)};
    EXPECT_TRUE(check(p, s).empty());
}

TEST(GridCheck, SkippedWhenStateListsNoGridBesideParameters) {
    SimulationParameters p;
    p.grid_list = {grid_parameters()};
    SimulationState s;
    EXPECT_TRUE(check(p, s).empty());
}

}  // namespace
}  // namespace tamlo_test
