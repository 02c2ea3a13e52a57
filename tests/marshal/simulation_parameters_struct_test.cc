// The simulation_parameters struct: its 22 top-level fields, the has_ flags, extension
// parameters, emissions, operating reserve, and a refill of the kept struct.
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "mx_expect.h"
#include "simulation_parameters_struct.h"
#include "struct_primitives.h"
#include "system_structs.h"

namespace tamlo_marshal {
namespace {

using namespace tamlo_dispatch;
using namespace tamlo_marshal_test;
using namespace std::string_literals;

SimulationParameters full_system() {
    SimulationParameters p;
    p.extension_parameters = {{"dispatch", ExtensionParameterType::text, 0.0, false, "my_dispatch", {}}};
    p.generator_list.resize(2);
    p.primary_load_list.resize(1);
    p.pv_list.resize(1);
    p.battery_list.resize(1);
    p.converter_list.resize(1);
    p.flywheel_list.resize(1);
    p.grid_list = {{std::make_shared<RealTime>(), false, 0.0}};
    p.custom_component_list.resize(1);
    p.wind_turbine_list.resize(3);
    p.emissions.max_emissions_SO2 = 9.0;
    p.operating_reserve = {10.0, 20.0, 30.0, 40.0};
    p.maximum_annual_capacity_shortage = 0.01;
    p.minimum_renewable_fraction = 0.5;
    p.timestep_size_in_seconds = 60;
    p.number_of_timesteps = 100;
    return p;
}

TEST(SimulationParametersStruct, TopLevelHasTwentyTwoFieldsInTableOrder) {
    MxPtr target(make_single_struct());
    fill_simulation_parameters_struct(target.get(), full_system());
    expect_struct(target.get(), 0,
                  {{"generators", Struct{2, 1}},
                   {"primary_loads", Struct{1, 1}},
                   {"pvs", Struct{1, 1}},
                   {"batteries", Struct{1, 1}},
                   {"converters", Struct{1, 1}},
                   {"flywheels", Struct{1, 1}},
                   {"grids", Struct{1, 1}},
                   {"custom_components", Struct{1, 1}},
                   {"wind_turbines", Struct{3, 1}},
                   {"emissions", Struct{1, 1}},
                   {"operating_reserve", Struct{1, 1}},
                   {"maximum_annual_capacity_shortage", 0.01},
                   {"minimum_renewable_fraction", 0.5},
                   {"timestep_size_in_seconds", 60.0},
                   {"number_of_timesteps", 100.0},
                   {"extension_parameters", Struct{1, 1}},
                   {"has_generator", true},
                   {"has_battery", true},
                   {"has_pv", true},
                   {"has_converter", true},
                   {"has_flywheel", true},
                   {"has_wind_turbine", true}});
}

TEST(SimulationParametersStruct, EmptySystemHasFalseFlagsAndEmptyArrays) {
    MxPtr target(make_single_struct());
    fill_simulation_parameters_struct(target.get(), SimulationParameters{});
    EXPECT_EQ(mxGetNumberOfFields(target.get()), 22);
    for (const char* list : {"generators", "primary_loads", "pvs", "batteries", "converters", "flywheels", "grids",
                             "custom_components", "wind_turbines", "extension_parameters"}) {
        SCOPED_TRACE(list);
        expect_struct_shape(field_of(target.get(), list), 0, 1, 0);
    }
    for (const char* flag : {"has_generator", "has_battery", "has_pv", "has_converter", "has_flywheel",
                             "has_wind_turbine"}) {
        SCOPED_TRACE(flag);
        const mxArray* value = field_of(target.get(), flag);
        ASSERT_NE(value, nullptr);
        EXPECT_EQ(mxGetClassID(value), mxLOGICAL_CLASS);
        EXPECT_FALSE(mxIsLogicalScalarTrue(value));
    }
}

struct HasFlagCase {
    const char* flag;
    void (*add)(SimulationParameters&);
};

void PrintTo(const HasFlagCase& c, std::ostream* os) { *os << c.flag; }

class HasFlag : public testing::TestWithParam<HasFlagCase> {};

TEST_P(HasFlag, IsTrueExactlyWhenItsListHasEntries) {
    SimulationParameters p;
    GetParam().add(p);
    MxPtr target(make_single_struct());
    fill_simulation_parameters_struct(target.get(), p);
    for (const char* flag : {"has_generator", "has_battery", "has_pv", "has_converter", "has_flywheel",
                             "has_wind_turbine"}) {
        SCOPED_TRACE(flag);
        EXPECT_EQ(mxIsLogicalScalarTrue(field_of(target.get(), flag)), std::string(flag) == GetParam().flag);
    }
}

INSTANTIATE_TEST_SUITE_P(
    SimulationParametersStruct, HasFlag,
    testing::Values(HasFlagCase{"has_generator", [](SimulationParameters& p) { p.generator_list.resize(1); }},
                    HasFlagCase{"has_battery", [](SimulationParameters& p) { p.battery_list.resize(1); }},
                    HasFlagCase{"has_pv", [](SimulationParameters& p) { p.pv_list.resize(1); }},
                    HasFlagCase{"has_converter", [](SimulationParameters& p) { p.converter_list.resize(1); }},
                    HasFlagCase{"has_flywheel", [](SimulationParameters& p) { p.flywheel_list.resize(1); }},
                    HasFlagCase{"has_wind_turbine", [](SimulationParameters& p) { p.wind_turbine_list.resize(1); }},
                    HasFlagCase{"none", [](SimulationParameters& p) {
                                    p.primary_load_list.resize(1);
                                    p.custom_component_list.resize(1);
                                    p.grid_list.resize(1);
                                }}),
    [](const testing::TestParamInfo<HasFlagCase>& info) { return std::string(info.param.flag); });

TEST(SimulationParametersStruct, RefillKeepsFieldOrderAndTakesNewValues) {
    MxPtr target(make_single_struct());
    fill_simulation_parameters_struct(target.get(), full_system());
    const std::vector<std::string> first_order = field_names(target.get());

    SimulationParameters second;
    second.pv_list.resize(4);
    second.number_of_timesteps = 8760;
    // The first run's values are destroyed here; the sanitizer build checks that none leaks.
    fill_simulation_parameters_struct(target.get(), second);

    EXPECT_EQ(field_names(target.get()), first_order);
    expect_struct_shape(field_of(target.get(), "generators"), 0, 1, 0);
    expect_struct_shape(field_of(target.get(), "pvs"), 4, 1, 7);
    EXPECT_EQ(mxGetScalar(field_of(target.get(), "number_of_timesteps")), 8760.0);
    EXPECT_FALSE(mxIsLogicalScalarTrue(field_of(target.get(), "has_generator")));
    EXPECT_TRUE(mxIsLogicalScalarTrue(field_of(target.get(), "has_pv")));
}

TEST(SimulationParametersStruct, LargeCountsStayPositive) {
    SimulationParameters p;
    p.number_of_timesteps = UINT64_MAX;
    MxPtr target(make_single_struct());
    fill_simulation_parameters_struct(target.get(), p);
    EXPECT_EQ(mxGetScalar(field_of(target.get(), "number_of_timesteps")), 1.8446744073709552e19);
}

struct ExtensionValueCase {
    const char* what;
    std::int32_t type;
    Expected value;
};

void PrintTo(const ExtensionValueCase& c, std::ostream* os) { *os << c.what; }

class ExtensionParameterValue : public testing::TestWithParam<ExtensionValueCase> {};

TEST_P(ExtensionParameterValue, HasTheClassItsTypeNames) {
    ExtensionParameter parameter{"item", static_cast<ExtensionParameterType>(GetParam().type), 2.5, true,
                                 "some text", {1.0, 2.0, 3.0}};
    MxPtr parameters(make_extension_parameter_array({parameter}));
    expect_struct(parameters.get(), 0, {{"name", "item"s}, {"value", GetParam().value}});
}

INSTANTIATE_TEST_SUITE_P(
    SimulationParametersStruct, ExtensionParameterValue,
    testing::Values(ExtensionValueCase{"number", 0, 2.5}, ExtensionValueCase{"text", 1, "some text"s},
                    ExtensionValueCase{"number_list", 2, Column{{1.0, 2.0, 3.0}}},
                    ExtensionValueCase{"boolean", 3, true}, ExtensionValueCase{"type7", 7, "some text"s},
                    ExtensionValueCase{"negative_type", -1, "some text"s}),
    [](const testing::TestParamInfo<ExtensionValueCase>& info) { return std::string(info.param.what); });

TEST(SimulationParametersStruct, ExtensionParameterValuesMayDifferInClass) {
    MxPtr parameters(make_extension_parameter_array(
        {{"path", ExtensionParameterType::text, 0.0, false, "/work", {}},
         {"steps", ExtensionParameterType::number, 3.0, false, "", {}},
         {"empty list", ExtensionParameterType::number_list, 0.0, false, "", {}}}));
    expect_struct_shape(parameters.get(), 3, 1, 2);
    expect_struct(parameters.get(), 0, {{"name", "path"s}, {"value", "/work"s}});
    expect_struct(parameters.get(), 1, {{"name", "steps"s}, {"value", 3.0}});
    expect_struct(parameters.get(), 2, {{"name", "empty list"s}, {"value", Column{{}}}});
}

TEST(SimulationParametersStruct, EmissionsHaveFieldsInMatlabOrder) {
    EmissionsParameters e;
    e.emissions_penalty_CO2 = 1;
    e.emissions_penalty_CO = 2;
    e.emissions_penalty_UHC = 3;
    e.emissions_penalty_PM = 4;
    e.emissions_penalty_SO2 = 5;
    e.emissions_penalty_NOx = 6;
    e.max_emissions_CO = 7;
    e.max_emissions_CO2 = 8;
    e.max_emissions_UHC = 9;
    e.max_emissions_PM = 10;
    e.max_emissions_SO2 = 11;
    e.max_emissions_NOx = 12;
    e.use_max_emissions_CO = true;
    e.use_max_emissions_UHC = true;
    e.use_max_emissions_NOx = true;
    MxPtr emissions(make_emissions_struct(e));
    expect_struct(emissions.get(), 0,
                  {{"emissions_penalty_CO", 2.0},
                   {"emissions_penalty_CO2", 1.0},
                   {"emissions_penalty_NOx", 6.0},
                   {"emissions_penalty_PM", 4.0},
                   {"emissions_penalty_SO2", 5.0},
                   {"emissions_penalty_UHC", 3.0},
                   {"max_emissions_CO", 7.0},
                   {"max_emissions_CO2", 8.0},
                   {"max_emissions_NOx", 12.0},
                   {"max_emissions_PM", 10.0},
                   {"max_emissions_SO2", 11.0},
                   {"max_emissions_UHC", 9.0},
                   {"use_max_emissions_CO", true},
                   {"use_max_emissions_CO2", false},
                   {"use_max_emissions_NOx", true},
                   {"use_max_emissions_PM", false},
                   {"use_max_emissions_SO2", false},
                   {"use_max_emissions_UHC", true}});
}

TEST(SimulationParametersStruct, OperatingReserveHasFieldsInMatlabOrder) {
    MxPtr reserve(make_operating_reserve_struct({10.0, 20.0, 30.0, 40.0}));
    expect_struct(reserve.get(), 0,
                  {{"peak_load_requirement", 10.0},
                   {"solar_requirement", 40.0},
                   {"timestep_requirement", 20.0},
                   {"wind_requirement", 30.0}});
}

}  // namespace
}  // namespace tamlo_marshal
