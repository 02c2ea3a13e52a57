// The simulation_state struct: its 12 top-level fields, each element's fields in order,
// current_state texts, flywheel logicals, and refills of the kept struct.
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "mx_expect.h"
#include "simulation_state_struct.h"
#include "struct_primitives.h"

namespace tamlo_marshal {
namespace {

using namespace tamlo_dispatch;
using namespace tamlo_marshal_test;
using namespace std::string_literals;

SimulationState sample_state() {
    SimulationState s;
    s.generator_list = {{50.0, 20.0, FORCED_ON_FOR_SCHEDULE}};
    s.pv_list = {{12.0, 11.0}};
    BatteryState battery;
    battery.dedicated_converter = {1.0, 2.0, 3.0, 4.0};
    battery.max_charge_power = 5.0;
    battery.max_discharge_power = 6.0;
    battery.state_of_charge_kwh = 7.0;
    battery.state_of_charge_percent = 8.0;
    battery.power_setpoint = -9.0;
    battery.energy_cost = 0.1;
    s.battery_list = {battery};
    s.primary_load_list = {{30.0, 29.0}};
    s.converter_list = {{11.0, 12.0, 13.0, 14.0}};
    s.flywheel_list = {{0, 2.5}};
    GridState grid;
    grid.grid_state.prohibit_any_grid_sales = true;
    grid.grid_state.maintain_state_of_charge_percent = 80.0;
    grid.max_grid_purchases = 100.0;
    grid.max_grid_sales = 50.0;
    grid.grid_purchases = 10.0;
    grid.grid_sales = 0.5;
    grid.power_price = 0.25;
    grid.sellback_rate = 0.07;
    s.grid_list = {grid};
    s.custom_component_list = {{15.0, 14.0}};
    s.wind_turbine_list = {{3.0, 4.0, FORCED_OFF_FOR_MAINTENANCE_EVENT}};
    s.ac_bus = {1, 2, 3, 4, 5, 6, 7};
    s.dc_bus = {10, 20, 30, 40, 50, 60, 70};
    s.current_timestep = 17;
    return s;
}

MxPtr filled(const SimulationState& state) {
    MxPtr target(make_single_struct());
    fill_simulation_state_struct(target.get(), state);
    return target;
}

TEST(SimulationStateStruct, TopLevelHasTwelveFieldsInTableOrder) {
    MxPtr target = filled(sample_state());
    expect_struct(target.get(), 0,
                  {{"generators", Struct{1, 1}},
                   {"pvs", Struct{1, 1}},
                   {"batteries", Struct{1, 1}},
                   {"flywheels", Struct{1, 1}},
                   {"converters", Struct{1, 1}},
                   {"grids", Struct{1, 1}},
                   {"custom_components", Struct{1, 1}},
                   {"wind_turbines", Struct{1, 1}},
                   {"primary_loads", Struct{1, 1}},
                   {"ac_bus", Struct{1, 1}},
                   {"dc_bus", Struct{1, 1}},
                   {"current_timestep", 17.0}});
}

struct ElementCase {
    const char* list;
    std::vector<FieldRow> fields;
};

void PrintTo(const ElementCase& c, std::ostream* os) { *os << c.list; }

class StateElement : public testing::TestWithParam<ElementCase> {};

TEST_P(StateElement, HasFieldsInTableOrder) {
    MxPtr target = filled(sample_state());
    expect_struct(field_of(target.get(), GetParam().list), 0, GetParam().fields);
}

const std::vector<FieldRow> bus_fields(double scale) {
    return {{"capacity_shortage", 7 * scale},
            {"excess_electricity", 4 * scale},
            {"load_requested", 1 * scale},
            {"load_served", 2 * scale},
            {"operating_capacity_requested", 5 * scale},
            {"operating_capacity_served", 6 * scale},
            {"unmet_load", 3 * scale}};
}

INSTANTIATE_TEST_SUITE_P(
    SimulationStateStruct, StateElement,
    testing::Values(
        ElementCase{"generators",
                    {{"power_available", 50.0},
                     {"power_setpoint", 20.0},
                     {"current_state", "FORCED_ON_FOR_SCHEDULE"s}}},
        ElementCase{"pvs", {{"power_available", 12.0}, {"power_setpoint", 11.0}}},
        ElementCase{"batteries",
                    {{"dedicated_converter", Struct{1, 1}},
                     {"energy_cost", 0.1},
                     {"max_charge_power", 5.0},
                     {"max_discharge_power", 6.0},
                     {"power_setpoint", -9.0},
                     {"state_of_charge_kwh", 7.0},
                     {"state_of_charge_percent", 8.0}}},
        ElementCase{"flywheels", {{"flywheel_state", true}, {"load_served", 2.5}}},
        ElementCase{"converters",
                    {{"inverter_power_input", 11.0},
                     {"inverter_power_output", 12.0},
                     {"rectifier_power_input", 13.0},
                     {"rectifier_power_output", 14.0}}},
        ElementCase{"grids",
                    {{"grid_purchases", 10.0},
                     {"grid_sales", 0.5},
                     {"grid_state", Struct{1, 1}},
                     {"max_grid_purchases", 100.0},
                     {"max_grid_sales", 50.0},
                     {"power_price", 0.25},
                     {"sellback_rate", 0.07}}},
        ElementCase{"custom_components", {{"power_setpoint", 14.0}, {"power_available", 15.0}}},
        ElementCase{"wind_turbines",
                    {{"power_setpoint", 3.0},
                     {"power_available", 4.0},
                     {"current_state", "FORCED_OFF_FOR_MAINTENANCE_EVENT"s}}},
        ElementCase{"primary_loads", {{"load_requested", 30.0}, {"load_served", 29.0}}},
        ElementCase{"ac_bus", bus_fields(1)}, ElementCase{"dc_bus", bus_fields(10)}),
    [](const testing::TestParamInfo<ElementCase>& info) { return std::string(info.param.list); });

TEST(SimulationStateStruct, DedicatedConverterHasTheFourFlows) {
    MxPtr target = filled(sample_state());
    expect_struct(field_of(field_of(target.get(), "batteries"), "dedicated_converter"), 0,
                  {{"inverter_power_input", 1.0},
                   {"inverter_power_output", 2.0},
                   {"rectifier_power_input", 3.0},
                   {"rectifier_power_output", 4.0}});
}

TEST(SimulationStateStruct, GridStateFlagsAreInAlphabeticalOrder) {
    MxPtr target = filled(sample_state());
    expect_struct(field_of(field_of(target.get(), "grids"), "grid_state"), 0,
                  {{"grid_is_down", false},
                   {"maintain_state_of_charge", false},
                   {"maintain_state_of_charge_has_ended", false},
                   {"maintain_state_of_charge_percent", 80.0},
                   {"prohibit_any_battery_charging", false},
                   {"prohibit_any_grid_sales", true},
                   {"prohibit_battery_from_discharging", false},
                   {"prohibit_grid_from_charging_battery", false},
                   {"prohibit_grid_sales_from_battery", false}});
}

TEST(SimulationStateStruct, EachFlagReachesItsOwnField) {
    // One flag set at a time, so that two swapped fields cannot pass unnoticed.
    bool GridStateFlags::*const flags[] = {
        &GridStateFlags::maintain_state_of_charge,          &GridStateFlags::prohibit_grid_from_charging_battery,
        &GridStateFlags::prohibit_any_battery_charging,     &GridStateFlags::prohibit_battery_from_discharging,
        &GridStateFlags::prohibit_grid_sales_from_battery,  &GridStateFlags::prohibit_any_grid_sales,
        &GridStateFlags::grid_is_down,                      &GridStateFlags::maintain_state_of_charge_has_ended};
    const char* names[] = {"maintain_state_of_charge",          "prohibit_grid_from_charging_battery",
                           "prohibit_any_battery_charging",     "prohibit_battery_from_discharging",
                           "prohibit_grid_sales_from_battery",  "prohibit_any_grid_sales",
                           "grid_is_down",                      "maintain_state_of_charge_has_ended"};
    for (std::size_t set = 0; set < std::size(flags); ++set) {
        GridStateFlags record;
        record.*flags[set] = true;
        MxPtr s(make_grid_state_flags(record));
        for (std::size_t f = 0; f < std::size(names); ++f) {
            SCOPED_TRACE(std::string(names[set]) + " set, reading " + names[f]);
            EXPECT_EQ(mxIsLogicalScalarTrue(field_of(s.get(), names[f])), f == set);
        }
    }
}

struct CurrentStateCase {
    std::int32_t code;
    const char* generator_text;     // null: no current_state
    const char* wind_turbine_text;  // null: no current_state
};

void PrintTo(const CurrentStateCase& c, std::ostream* os) { *os << "code " << c.code; }

class CurrentState : public testing::TestWithParam<CurrentStateCase> {};

TEST_P(CurrentState, IsWrittenOnlyForTheCodesOfItsKind) {
    const auto code = static_cast<GeneratorCurrentState>(GetParam().code);
    SimulationState state;
    state.generator_list = {{1.0, 2.0, code}};
    state.wind_turbine_list = {{3.0, 4.0, code}};
    MxPtr target = filled(state);
    const mxArray* generators = field_of(target.get(), "generators");
    const mxArray* turbines = field_of(target.get(), "wind_turbines");
    if (GetParam().generator_text) {
        expect_struct(generators, 0,
                      {{"power_available", 1.0}, {"power_setpoint", 2.0}, {"current_state", std::string(GetParam().generator_text)}});
    } else {
        expect_struct(generators, 0, {{"power_available", 1.0}, {"power_setpoint", 2.0}});
    }
    if (GetParam().wind_turbine_text) {
        expect_struct(turbines, 0,
                      {{"power_setpoint", 3.0}, {"power_available", 4.0}, {"current_state", std::string(GetParam().wind_turbine_text)}});
    } else {
        expect_struct(turbines, 0, {{"power_setpoint", 3.0}, {"power_available", 4.0}});
    }
}

INSTANTIATE_TEST_SUITE_P(
    SimulationStateStruct, CurrentState,
    testing::Values(CurrentStateCase{-4, nullptr, nullptr},
                    CurrentStateCase{-3, "FORCED_OFF_OUT_OF_FUEL", nullptr},
                    CurrentStateCase{-2, "FORCED_OFF_FOR_MAINTENANCE_EVENT", "FORCED_OFF_FOR_MAINTENANCE_EVENT"},
                    CurrentStateCase{-1, "FORCED_OFF_FOR_SCHEDULE", "FORCED_OFF_FOR_SCHEDULE"},
                    CurrentStateCase{0, "DISPATCH_DECIDES", "DISPATCH_DECIDES"},
                    CurrentStateCase{1, "FORCED_ON_FOR_SCHEDULE", "FORCED_ON_FOR_SCHEDULE"},
                    CurrentStateCase{2, "FORCED_ON_FOR_MINIMUM_RUNTIME", nullptr},
                    CurrentStateCase{3, nullptr, nullptr}),
    [](const testing::TestParamInfo<CurrentStateCase>& info) {
        const std::int32_t code = info.param.code;
        return code < 0 ? "minus" + std::to_string(-code) : std::to_string(code);
    });

TEST(SimulationStateStruct, OutOfTableCodeLeavesOnlyThatElementsCurrentStateEmpty) {
    SimulationState state;
    state.generator_list = {{1.0, 1.0, static_cast<GeneratorCurrentState>(3)}, {2.0, 2.0, DISPATCH_DECIDES}};
    state.wind_turbine_list = {{1.0, 1.0, FORCED_ON_FOR_SCHEDULE}, {2.0, 2.0, FORCED_OFF_OUT_OF_FUEL}};
    MxPtr target = filled(state);
    expect_struct(field_of(target.get(), "generators"), 0,
                  {{"power_available", 1.0}, {"power_setpoint", 1.0}, {"current_state", Unwritten{}}});
    expect_struct(field_of(target.get(), "generators"), 1,
                  {{"power_available", 2.0}, {"power_setpoint", 2.0}, {"current_state", "DISPATCH_DECIDES"s}});
    expect_struct(field_of(target.get(), "wind_turbines"), 1,
                  {{"power_setpoint", 2.0}, {"power_available", 2.0}, {"current_state", Unwritten{}}});
}

TEST(SimulationStateStruct, FlywheelStateIsTrueExactlyForCodeZero) {
    SimulationState state;
    state.flywheel_list = {{0, 1.0}, {1, 2.0}, {7, 3.0}, {UINT32_MAX, 4.0}};
    MxPtr target = filled(state);
    const mxArray* flywheels = field_of(target.get(), "flywheels");
    expect_struct(flywheels, 0, {{"flywheel_state", true}, {"load_served", 1.0}});
    expect_struct(flywheels, 1, {{"flywheel_state", false}, {"load_served", 2.0}});
    expect_struct(flywheels, 2, {{"flywheel_state", false}, {"load_served", 3.0}});
    expect_struct(flywheels, 3, {{"flywheel_state", false}, {"load_served", 4.0}});
}

TEST(SimulationStateStruct, CurrentTimestepIsPassedWithoutShiftOrWrap) {
    SimulationState state;
    MxPtr target = filled(state);
    EXPECT_EQ(mxGetScalar(field_of(target.get(), "current_timestep")), 0.0);
    state.current_timestep = UINT32_MAX;
    fill_simulation_state_struct(target.get(), state);
    EXPECT_EQ(mxGetScalar(field_of(target.get(), "current_timestep")), 4294967295.0);
}

TEST(SimulationStateStruct, EmptyListsGiveZeroByOneWithoutFields) {
    MxPtr target = filled(SimulationState{});
    EXPECT_EQ(mxGetNumberOfFields(target.get()), 12);
    for (const char* list : {"generators", "pvs", "batteries", "flywheels", "converters", "grids",
                             "custom_components", "wind_turbines", "primary_loads"}) {
        SCOPED_TRACE(list);
        expect_struct_shape(field_of(target.get(), list), 0, 1, 0);
    }
}

TEST(SimulationStateStruct, SecondFillWithMoreGeneratorsReplacesThemAndKeepsFieldOrder) {
    MxPtr target(make_single_struct());
    SimulationState first;
    first.generator_list = {{1.0, 0.0, DISPATCH_DECIDES}};
    first.current_timestep = 0;
    fill_simulation_state_struct(target.get(), first);
    const std::vector<std::string> first_order = field_names(target.get());

    SimulationState second = sample_state();
    second.generator_list = {{5.0, 1.0, FORCED_OFF_FOR_SCHEDULE}, {6.0, 2.0, DISPATCH_DECIDES},
                             {7.0, 3.0, FORCED_ON_FOR_MINIMUM_RUNTIME}};
    // The first step's arrays are destroyed here; the sanitizer build checks that none leaks.
    fill_simulation_state_struct(target.get(), second);

    EXPECT_EQ(field_names(target.get()), first_order);
    const mxArray* generators = field_of(target.get(), "generators");
    expect_struct_shape(generators, 3, 1, 3);
    expect_struct(generators, 2,
                  {{"power_available", 7.0}, {"power_setpoint", 3.0}, {"current_state", "FORCED_ON_FOR_MINIMUM_RUNTIME"s}});
    EXPECT_EQ(mxGetScalar(field_of(target.get(), "current_timestep")), 17.0);
}

TEST(SimulationStateStruct, FillIntoAStructWithForeignFieldsKeepsThemFirst) {
    MxPtr target(make_single_struct());
    set_number_field(target.get(), 0, "dc_bus", 1.0);
    fill_simulation_state_struct(target.get(), sample_state());
    EXPECT_EQ(field_names(target.get()).front(), "dc_bus");
    expect_struct_shape(field_of(target.get(), "dc_bus"), 1, 1, 7);
}

}  // namespace
}  // namespace tamlo_marshal
