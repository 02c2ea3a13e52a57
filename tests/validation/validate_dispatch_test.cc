// The whole validation of a time step: the warning limit and its note, the order of the check
// groups, and the supply estimated for each bus.
#include <gtest/gtest.h>

#include "bus_balance.h"
#include "row_name.h"
#include "test_systems.h"

namespace tamlo_test {
namespace {

using tamlo_test::PrintTo;

System two_violations() {
    System s = quiet_system();
    s.state.ac_bus.unmet_load = -1.0;
    s.state.dc_bus.unmet_load = -2.0;
    return s;
}

const char* const note = "There were additional warnings.";

struct LimitRow {
    const char* name;
    std::size_t earlier;
    System system;
    Warnings added;
};

class WarningLimit : public ::testing::TestWithParam<LimitRow> {};

// A second step after the first adds nothing more in every row: either the limit was passed
// or the note ended the list.
TEST_P(WarningLimit, AddsThenStops) {
    const LimitRow& r = GetParam();
    Warnings expected(r.earlier, "earlier");
    expected.insert(expected.end(), r.added.begin(), r.added.end());
    const Warnings after_first = validate(r.system, Warnings(r.earlier, "earlier"));
    EXPECT_EQ(after_first, expected);
    EXPECT_EQ(validate(r.system, after_first), expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, WarningLimit, ::testing::Values(
    LimitRow{"nine earlier grow to eleven without the note", 9, two_violations(),
        {"Unmet load can't be less than zero: simulation_state.ac_bus.unmet_load = -1.000000 kW. Time step: 5",
         "Unmet load can't be less than zero: simulation_state.dc_bus.unmet_load = -2.000000 kW. Time step: 5"}},
    LimitRow{"ten earlier get the note instead of new warnings", 10, two_violations(), {note}},
    LimitRow{"eleven earlier get nothing", 11, two_violations(), {}}),
    row_name);

TEST(ValidateDispatch, GroupsReportInFixedOrder) {
    System s = quiet_system();
    SimulationState& st = s.state;
    st.converter_list[0] = ConverterState{10.0, 11.0, 0.0, 0.0};  // C1: 11 is not 10 * 100 / 100
    st.generator_list[0].power_setpoint = 29.0;  // keeps AC production at 100 beside the inverter's 11
    st.generator_list[0].power_available = 25.0;  // G1
    st.battery_list[0].power_setpoint = -19.0;  // keeps DC production at 10 beside the inverter's input
    st.grid_list[0].max_grid_sales = -1.0;  // R4
    st.pv_list[0].power_available = 19.0;  // P1
    st.dc_bus.operating_capacity_served = 2.0;  // B8
    st.ac_bus.unmet_load = -1.0;  // S5
    st.dc_bus.load_served = 10.5;  // L2
    const Warnings w = validate(s);
    ASSERT_EQ(w.size(), 7u);
    const char* const leads[] = {"Dispatch must set", "simulation_state.generators(1)", "simulation_state.grids[0]",
                                 "The value of simulation_state.pvs(1)", "If there is a capacity shortage",
                                 "Unmet load can't", "Load served can't be greater"};
    for (std::size_t i = 0; i < w.size(); ++i) {
        EXPECT_EQ(w[i].rfind(leads[i], 0), 0u) << w[i];
    }
}

// ---- Supply estimated for each bus ----

struct SupplyRow {
    const char* name;
    void (*change)(System&);
    double ac_production;
    double ac_capacity;
    double dc_production;
    double dc_capacity;
};

// The quiet system's figures, a battery's set point taken from its bus and a custom component on
// the bus of its own flag show in the balance warnings of rules_test.cc.
class BusSupply : public ::testing::TestWithParam<SupplyRow> {};

TEST_P(BusSupply, SumsEachSourceOnItsBus) {
    const SupplyRow& r = GetParam();
    System s = quiet_system();
    r.change(s);
    Warnings warnings;
    const tamlo_validation::BusEstimates e = tamlo_validation::estimate_bus_supply(s.parameters, s.state, warnings);
    EXPECT_NEAR(e.ac.production, r.ac_production, 1e-9);
    EXPECT_NEAR(e.ac.capacity, r.ac_capacity, 1e-9);
    EXPECT_NEAR(e.dc.production, r.dc_production, 1e-9);
    EXPECT_NEAR(e.dc.capacity, r.dc_capacity, 1e-9);
}

// AC asks 300 kW of capacity: 210 before the grid's 50, so it lacks 90.
void ac_lacks_capacity(System& s, double inverter_capacity, double inverter_efficiency) {
    s.state.ac_bus.operating_capacity_requested = 300.0;
    s.parameters.converter_list[0].inverter_capacity = inverter_capacity;
    s.parameters.converter_list[0].inverter_efficiency = inverter_efficiency;
}

INSTANTIATE_TEST_SUITE_P(Rows, BusSupply, ::testing::Values(
    SupplyRow{"grid trade and purchase limit feed AC", [](System& s) {
        s.state.grid_list[0] = GridState{{}, 60.0, 7.0, 5.0, 2.0, 0.0, 0.0};
    }, 103.0, 270.0, 10.0, 51.0},
    SupplyRow{"converter flows move production between buses",
        [](System& s) { s.state.converter_list[0] = ConverterState{10.0, 9.0, 20.0, 17.0}; }, 89.0, 260.0, 17.0, 51.0},
    SupplyRow{"flywheel of the parameters adds capacity and its parasitic load", [](System& s) {
        s.parameters.flywheel_list = {FlywheelParameters{on_bus<FlywheelParameters>(true).component, 7.0, 0.5}};
    }, 99.5, 267.0, 10.0, 51.0},
    SupplyRow{"state entries without parameters count on no bus", [](System& s) {
        s.state.generator_list.push_back({500.0, 500.0, DISPATCH_DECIDES});
        s.state.battery_list.push_back(s.state.battery_list[0]);
    }, 100.0, 260.0, 10.0, 51.0},
    SupplyRow{"inverter moves spare DC capacity after losses", [](System& s) { ac_lacks_capacity(s, 100.0, 90.0); },
        100.0, 260.0 + 46.0 * 0.9, 10.0, 5.0},
    SupplyRow{"inverter capacity limits the move", [](System& s) { ac_lacks_capacity(s, 10.0, 90.0); },
        100.0, 270.0, 10.0, 51.0 - 10.0 / 0.9},
    SupplyRow{"rectifier moves spare AC capacity to DC", [](System& s) {
        s.state.dc_bus.operating_capacity_requested = 100.0;
        s.parameters.converter_list[0].rectifier_capacity = 500.0;
    }, 100.0, 20.0 + 50.0, 10.0, 51.0 + 190.0 * 0.85},
    SupplyRow{"converter of 0 % efficiency moves nothing", [](System& s) { ac_lacks_capacity(s, 100.0, 0.0); },
        100.0, 260.0, 10.0, 51.0},
    SupplyRow{"converter and grid are skipped when the state lists neither", [](System& s) {
        ac_lacks_capacity(s, 100.0, 90.0);
        s.state.converter_list.clear();
        s.state.grid_list.clear();
    }, 100.0, 210.0, 10.0, 51.0}),
    row_name);

}  // namespace
}  // namespace tamlo_test
