// The storage and converter parameter structs: batteries with their dedicated converter,
// system converters and flywheels.
#include <gtest/gtest.h>

#include <string>

#include "battery_structs.h"
#include "converter_structs.h"
#include "flywheel_structs.h"
#include "mx_expect.h"

namespace tamlo_marshal {
namespace {

using namespace tamlo_dispatch;
using namespace tamlo_marshal_test;
using namespace std::string_literals;

ComponentParameters head(const char* name, std::uint64_t number) {
    ComponentParameters component;
    component.cost = {10.0, 20.0, 0.5};
    component.name = name;
    component.component_number = number;
    component.is_AC = false;
    return component;
}

BatteryParameters sample_battery() {
    BatteryParameters b;
    b.component = head("bank", 41);
    b.nominal_voltage = 48.0;
    b.nominal_capacity = 200.0;
    b.minimum_state_of_charge = 30.0;
    b.fractional_charge_efficiency = 0.9;
    b.fractional_discharge_efficiency = 0.95;
    b.wear_cost = 0.02;
    b.battery_bank_maximum_absolute_soc = 180.0;
    b.battery_bank_minimum_absolute_soc = 60.0;
    b.dedicated_converter.component = head("dedicated", 42);
    b.dedicated_converter.rectifier_capacity = 15.0;
    b.dedicated_converter.inverter_capacity = 16.0;
    b.dedicated_converter.lifetime_in_years = 12.0;
    b.dedicated_converter.has_efficiency_tables = true;
    b.dedicated_converter.inverter_efficiency_table = {{0.1, 90.0}, {1.0, 96.0}};
    b.dedicated_converter.rectifier_efficiency_table = {{0.5, 93.0}};
    b.dedicated_converter.rectifier_efficiency = 94.0;
    b.dedicated_converter.inverter_efficiency = 95.0;
    b.has_dedicated_converter = true;
    return b;
}

TEST(BatteryStructs, ElementHasFieldsInTableOrder) {
    MxPtr batteries(make_battery_array({sample_battery()}));
    expect_struct_shape(batteries.get(), 1, 1, 14);
    expect_struct(batteries.get(), 0,
                  {{"nominal_voltage", 48.0},
                   {"nominal_capacity", 200.0},
                   {"minimum_state_of_charge", 30.0},
                   {"fractional_charge_efficiency", 0.9},
                   {"fractional_discharge_efficiency", 0.95},
                   {"wear_cost", 0.02},
                   {"battery_bank_maximum_absolute_soc", 180.0},
                   {"battery_bank_minimum_absolute_soc", 60.0},
                   {"dedicated_converter", Struct{1, 1}},
                   {"has_dedicated_converter", true},
                   {"component_number", 41.0},
                   {"is_AC", false},
                   {"name", "bank"s},
                   {"cost", Struct{1, 1}}});
}

TEST(BatteryStructs, DedicatedConverterHasItsEightFieldsWithoutHead) {
    MxPtr batteries(make_battery_array({sample_battery()}));
    expect_struct(field_of(batteries.get(), "dedicated_converter"), 0,
                  {{"rectifier_capacity", 15.0},
                   {"inverter_capacity", 16.0},
                   {"lifetime_in_years", 12.0},
                   {"has_efficiency_tables", true},
                   {"inverter_efficiency_table", Matrix{2, 2, {0.1, 1.0, 90.0, 96.0}}},
                   {"rectifier_efficiency_table", Matrix{1, 2, {0.5, 93.0}}},
                   {"rectifier_efficiency", 94.0},
                   {"inverter_efficiency", 95.0}});
}

TEST(BatteryStructs, BatteryWithoutDedicatedConverterStillCarriesIt) {
    BatteryParameters b = sample_battery();
    b.has_dedicated_converter = false;
    b.dedicated_converter = DedicatedConverterParameters{};
    MxPtr batteries(make_battery_array({b}));
    EXPECT_FALSE(mxIsLogicalScalarTrue(field_of(batteries.get(), "has_dedicated_converter")));
    expect_struct(field_of(batteries.get(), "dedicated_converter"), 0,
                  {{"rectifier_capacity", 0.0},
                   {"inverter_capacity", 0.0},
                   {"lifetime_in_years", 0.0},
                   {"has_efficiency_tables", false},
                   {"inverter_efficiency_table", Matrix{0, 2, {}}},
                   {"rectifier_efficiency_table", Matrix{0, 2, {}}},
                   {"rectifier_efficiency", 0.0},
                   {"inverter_efficiency", 0.0}});
}

TEST(ConverterStructs, ElementHasNoIsACAndEfficienciesInPercent) {
    ConverterParameters c;
    c.component = head("main converter", 51);
    c.component.is_AC = true;
    c.inverter_capacity = 30.0;
    c.rectifier_capacity = 25.0;
    c.inverter_efficiency = 95.0;
    c.rectifier_efficiency = 90.0;
    c.lifetime_in_years = 15.0;
    c.able_to_parallel_with_ac_generator = true;
    MxPtr converters(make_converter_array({c}));
    expect_struct(converters.get(), 0,
                  {{"inverter_capacity", 30.0},
                   {"rectifier_capacity", 25.0},
                   {"inverter_efficiency", 95.0},
                   {"rectifier_efficiency", 90.0},
                   {"lifetime_in_years", 15.0},
                   {"able_to_parallel_with_ac_generator", true},
                   {"component_number", 51.0},
                   {"name", "main converter"s},
                   {"cost", Struct{1, 1}}});
}

TEST(FlywheelStructs, ElementHasFieldsInTableOrderAndQuantityIsNeverClamped) {
    FlywheelParameters f;
    f.component = head("spin", 61);
    f.charge_discharge_capacity = 100.0;
    f.parasitic_load = 1.5;
    f.lifetime_in_years = 20.0;
    f.quantity = -1;
    MxPtr flywheels(make_flywheel_array({f}));
    expect_struct(flywheels.get(), 0,
                  {{"charge_discharge_capacity", 100.0},
                   {"parasitic_load", 1.5},
                   {"lifetime_in_years", 20.0},
                   {"quantity", -1.0},
                   {"component_number", 61.0},
                   {"is_AC", false},
                   {"name", "spin"s},
                   {"cost", Struct{1, 1}}});
}

TEST(StorageStructs, EmptyListsGiveZeroByOneWithoutFields) {
    MxPtr batteries(make_battery_array({}));
    MxPtr converters(make_converter_array({}));
    MxPtr flywheels(make_flywheel_array({}));
    expect_struct_shape(batteries.get(), 0, 1, 0);
    expect_struct_shape(converters.get(), 0, 1, 0);
    expect_struct_shape(flywheels.get(), 0, 1, 0);
}

}  // namespace
}  // namespace tamlo_marshal
