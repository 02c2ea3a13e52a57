// The component parameter structs: generators with fuel and cost, primary loads, PV arrays,
// wind turbines and custom components.
#include <gtest/gtest.h>

#include <string>

#include "component_fields.h"
#include "custom_component_structs.h"
#include "generator_structs.h"
#include "mx_expect.h"
#include "primary_load_structs.h"
#include "pv_structs.h"
#include "struct_primitives.h"
#include "wind_turbine_structs.h"

namespace tamlo_marshal {
namespace {

using namespace tamlo_dispatch;
using namespace tamlo_marshal_test;
using namespace std::string_literals;

ComponentParameters head(const char* name, std::uint64_t number, bool is_AC) {
    ComponentParameters component;
    component.cost = {100.0, 200.0, 3.5};  // capital, replacement, operation and maintenance
    component.name = name;
    component.component_number = number;
    component.is_AC = is_AC;
    return component;
}

const std::vector<FieldRow> cost_fields = {
    {"capital", 100.0}, {"operation_and_maintenance", 3.5}, {"replacement", 200.0}};

GeneratorParameters sample_generator(const char* name) {
    GeneratorParameters g;
    g.component = head(name, 7, true);
    g.fuel = {"diesel", 1.2, true, 5000.0, 43.2, 820.0, 88.0, 0.33};
    g.rated_capacity = 250.0;
    g.lifetime_in_hours = 15000.0;
    g.minimum_load = 62.5;
    g.minimum_runtime = 30.0;
    g.fuel_curve_intercept = 0.016;
    g.fuel_curve_slope = 0.25;
    g.use_nonlinear_fuel_curve = true;
    g.nonlinear_x0 = 1.1;
    g.nonlinear_x1 = 2.2;
    g.nonlinear_x2 = 3.3;
    g.emissions_factor_CO = 6.5;
    g.opaque_value = 0xdeadbeef;
    g.emissions_factor_UHC = 0.72;
    g.emissions_factor_PM = 0.49;
    g.emissions_factor_NOx = 58.0;
    g.emissions_sulfur_PM_ratio = 2.2e-2;
    return g;
}

TEST(GeneratorStructs, ElementHasFieldsInTableOrder) {
    MxPtr generators(make_generator_array({sample_generator("Gen A")}));
    expect_struct_shape(generators.get(), 1, 1, 20);
    expect_struct(generators.get(), 0,
                  {{"emissions_factor_CO", 6.5},
                   {"emissions_factor_NOx", 58.0},
                   {"emissions_factor_PM", 0.49},
                   {"emissions_factor_UHC", 0.72},
                   {"emissions_sulfur_PM_ratio", 2.2e-2},
                   {"fuel", Struct{1, 1}},
                   {"fuel_curve_intercept", 0.016},
                   {"fuel_curve_slope", 0.25},
                   {"lifetime_in_hours", 15000.0},
                   {"minimum_load", 62.5},
                   {"minimum_runtime", 30.0},
                   {"nonlinear_x0", 1.1},
                   {"nonlinear_x1", 2.2},
                   {"nonlinear_x2", 3.3},
                   {"rated_capacity", 250.0},
                   {"use_nonlinear_fuel_curve", true},
                   {"component_number", 7.0},
                   {"is_AC", true},
                   {"name", "Gen A"s},
                   {"cost", Struct{1, 1}}});
    expect_struct(field_of(generators.get(), "cost"), 0, cost_fields);
}

TEST(GeneratorStructs, FuelHasFieldsInTableOrder) {
    MxPtr generators(make_generator_array({sample_generator("Gen A")}));
    expect_struct(field_of(generators.get(), "fuel"), 0,
                  {{"carbon_content", 88.0},
                   {"cost", 1.2},
                   {"density", 820.0},
                   {"initial_fuel_available", 5000.0},
                   {"limit_consumption", true},
                   {"lower_heating_value", 43.2},
                   {"name", "diesel"s},
                   {"sulfur_content", 0.33}});
}

TEST(GeneratorStructs, FuelIsAStructAlsoWithoutConsumptionLimit) {
    GeneratorParameters g = sample_generator("Gen A");
    g.fuel.limit_consumption = false;
    MxPtr fuel(make_fuel_struct(g.fuel));
    expect_struct_shape(fuel.get(), 1, 1, 8);
    EXPECT_FALSE(mxIsLogicalScalarTrue(field_of(fuel.get(), "limit_consumption")));
}

TEST(GeneratorStructs, TwoGeneratorsGiveTwoRowsInListOrder) {
    MxPtr generators(make_generator_array({sample_generator("first"), sample_generator("second")}));
    expect_struct_shape(generators.get(), 2, 1, 20);
    EXPECT_EQ(text_of(field_of(generators.get(), "name", 0)), "first");
    EXPECT_EQ(text_of(field_of(generators.get(), "name", 1)), "second");
}

TEST(GeneratorStructs, EmptyListGivesZeroByOneWithoutFields) {
    MxPtr generators(make_generator_array({}));
    expect_struct_shape(generators.get(), 0, 1, 0);
}

TEST(ComponentFields, ConverterFieldsLeaveOutIsAC) {
    MxPtr s(make_struct_array(1));
    add_component_fields(s.get(), 0, head("conv", 3, true), false);
    expect_struct(s.get(), 0, {{"component_number", 3.0}, {"name", "conv"s}, {"cost", Struct{1, 1}}});
}

TEST(ComponentFields, ComponentNumberConvertsUnsigned) {
    MxPtr s(make_struct_array(1));
    add_component_fields(s.get(), 0, head("big", UINT64_MAX, false), true);
    expect_struct(s.get(), 0,
                  {{"component_number", 1.8446744073709552e19},
                   {"is_AC", false},
                   {"name", "big"s},
                   {"cost", Struct{1, 1}}});
}

TEST(PrimaryLoadStructs, ElementHasNoHeadFields) {
    MxPtr loads(make_primary_load_array({{"village", true, 120.0}, {"pump", false, 5.5}}));
    expect_struct_shape(loads.get(), 2, 1, 3);
    expect_struct(loads.get(), 0, {{"is_AC", true}, {"name", "village"s}, {"peak_load", 120.0}});
    expect_struct(loads.get(), 1, {{"is_AC", false}, {"name", "pump"s}, {"peak_load", 5.5}});
}

TEST(PvStructs, ElementHasFieldsInTableOrder) {
    PvParameters pv;
    pv.component = head("roof", 11, false);
    pv.rated_capacity = 40.0;
    pv.lifetime_in_years = 25.0;
    pv.solar_forecast = {0.0, 0.4, 0.9};
    MxPtr pvs(make_pv_array({pv}));
    expect_struct(pvs.get(), 0,
                  {{"lifetime_in_years", 25.0},
                   {"rated_capacity", 40.0},
                   {"solar_forecast", Column{{0.0, 0.4, 0.9}}},
                   {"component_number", 11.0},
                   {"is_AC", false},
                   {"name", "roof"s},
                   {"cost", Struct{1, 1}}});
}

TEST(PvStructs, EmptyForecastGivesZeroByOneColumn) {
    PvParameters pv;
    MxPtr pvs(make_pv_array({pv}));
    const mxArray* forecast = field_of(pvs.get(), "solar_forecast");
    ASSERT_NE(forecast, nullptr);
    EXPECT_EQ(mxGetClassID(forecast), mxDOUBLE_CLASS);
    EXPECT_EQ(mxGetM(forecast), 0u);
    EXPECT_EQ(mxGetN(forecast), 1u);
}

TEST(WindTurbineStructs, ElementHasFieldsInTableOrder) {
    WindTurbineParameters turbine;
    turbine.component = head("ridge", 21, true);
    turbine.quantity = 3;
    turbine.rated_power = 10.0;
    turbine.power_curve = {{3.0, 0.0}, {12.0, 10.0}};
    MxPtr turbines(make_wind_turbine_array({turbine}));
    expect_struct(turbines.get(), 0,
                  {{"power_curve", Matrix{2, 2, {3.0, 12.0, 0.0, 10.0}}},
                   {"quantity", 3.0},
                   {"rated_power", 10.0},
                   {"component_number", 21.0},
                   {"is_AC", true},
                   {"name", "ridge"s},
                   {"cost", Struct{1, 1}}});
}

TEST(WindTurbineStructs, EmptyPowerCurveGivesZeroByTwo) {
    MxPtr turbines(make_wind_turbine_array({WindTurbineParameters{}}));
    const mxArray* curve = field_of(turbines.get(), "power_curve");
    ASSERT_NE(curve, nullptr);
    EXPECT_EQ(mxGetClassID(curve), mxDOUBLE_CLASS);
    EXPECT_EQ(mxGetM(curve), 0u);
    EXPECT_EQ(mxGetN(curve), 2u);
}

TEST(CustomComponentStructs, ElementHasFieldsInTableOrderWithTheHeadsValues) {
    CustomComponentParameters component;
    component.component = head("head name", 31, true);
    component.item_list = {{1.0, "label", "detail"}};
    component.parameter_list = {ExtensionParameter{"p", ExtensionParameterType::number, 2.0, false, "", {}}};
    component.name = "own name";
    component.capacity = 75.0;
    component.component_number = 32;
    component.is_AC = false;
    MxPtr components(make_custom_component_array({component}));
    expect_struct(components.get(), 0,
                  {{"capacity", 75.0},
                   {"component_number", 31.0},
                   {"is_AC", true},
                   {"name", "head name"s},
                   {"cost", Struct{1, 1}}});
    expect_struct(field_of(components.get(), "cost"), 0, cost_fields);
}

}  // namespace
}  // namespace tamlo_marshal
