// Copies of the simulator's records: parameters copy whole and share their grid models,
// a state copy is independent of its source.
#include <gtest/gtest.h>

#include <memory>

#include "tamlo_dispatch/simulation_parameters.h"
#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_dispatch {
namespace {

SimulationParameters sample_parameters() {
    SimulationParameters p;
    ExtensionParameter path;
    path.name = "path";
    path.type = ExtensionParameterType::text;
    path.text_value = "/home/user/dispatch";
    ExtensionParameter list;
    list.name = "weights";
    list.type = ExtensionParameterType::number_list;
    list.number_list_value = {1.0, 2.5, -3.0};
    p.extension_parameters = {path, list};

    GeneratorParameters g1;
    g1.component.name = "diesel";
    g1.component.component_number = 7;
    g1.component.is_AC = true;
    g1.fuel.name = "diesel fuel";
    g1.minimum_load = 12.5;
    g1.opaque_value = 0xDEADBEEFu;
    GeneratorParameters g2 = g1;
    g2.component.name = "gas";
    g2.component.component_number = 8;
    p.generator_list = {g1, g2};

    PvParameters pv;
    pv.component.name = "roof";
    pv.solar_forecast = {0.0, 0.5, 0.9};
    p.pv_list = {pv};

    WindTurbineParameters wind;
    wind.power_curve = {{3.0, 0.0}, {12.0, 100.0}};
    p.wind_turbine_list = {wind};

    CustomComponentParameters custom;
    custom.item_list = {{1.5, "label", "detail"}};
    custom.is_AC = true;
    p.custom_component_list = {custom};

    auto real_time = std::make_shared<RealTime>();
    real_time->realtime_power_price = {0.1, 0.2};
    auto tariff = std::make_shared<ComplexUtility>();
    tariff->tariff_name = "E-19";
    GridParameters grid1;
    grid1.technical_model = real_time;
    grid1.limit_net_grid_purchases = true;
    grid1.max_net_grid_purchases = 250.0;
    GridParameters grid2;
    grid2.technical_model = tariff;
    p.grid_list = {grid1, grid2};

    p.emissions.emissions_penalty_CO2 = 3.0;
    p.emissions.use_max_emissions_NOx = true;
    p.operating_reserve.solar_requirement = 25.0;
    p.timestep_size_in_seconds = 3600;
    p.number_of_timesteps = 8760;
    return p;
}

TEST(SimulationParametersCopy, HoldsEqualValuesInListOrder) {
    const SimulationParameters source = sample_parameters();
    const SimulationParameters copy = source;

    ASSERT_EQ(copy.extension_parameters.size(), 2u);
    EXPECT_EQ(copy.extension_parameters[0].name, "path");
    EXPECT_EQ(copy.extension_parameters[0].text_value, "/home/user/dispatch");
    EXPECT_EQ(copy.extension_parameters[1].name, "weights");
    EXPECT_EQ(copy.extension_parameters[1].type, ExtensionParameterType::number_list);
    EXPECT_EQ(copy.extension_parameters[1].number_list_value, source.extension_parameters[1].number_list_value);

    ASSERT_EQ(copy.generator_list.size(), 2u);
    EXPECT_EQ(copy.generator_list[0].component.name, "diesel");
    EXPECT_EQ(copy.generator_list[1].component.name, "gas");
    EXPECT_EQ(copy.generator_list[1].component.component_number, 8u);
    EXPECT_EQ(copy.generator_list[0].fuel.name, "diesel fuel");
    EXPECT_EQ(copy.generator_list[0].minimum_load, 12.5);
    EXPECT_EQ(copy.generator_list[0].opaque_value, 0xDEADBEEFu);

    ASSERT_EQ(copy.pv_list.size(), 1u);
    EXPECT_EQ(copy.pv_list[0].solar_forecast, source.pv_list[0].solar_forecast);
    EXPECT_EQ(copy.wind_turbine_list[0].power_curve, source.wind_turbine_list[0].power_curve);
    ASSERT_EQ(copy.custom_component_list[0].item_list.size(), 1u);
    EXPECT_EQ(copy.custom_component_list[0].item_list[0].label, "label");
    EXPECT_TRUE(copy.custom_component_list[0].is_AC);

    ASSERT_EQ(copy.grid_list.size(), 2u);
    EXPECT_TRUE(copy.grid_list[0].limit_net_grid_purchases);
    EXPECT_EQ(copy.grid_list[0].max_net_grid_purchases, 250.0);

    EXPECT_EQ(copy.emissions.emissions_penalty_CO2, 3.0);
    EXPECT_TRUE(copy.emissions.use_max_emissions_NOx);
    EXPECT_EQ(copy.operating_reserve.solar_requirement, 25.0);
    EXPECT_EQ(copy.timestep_size_in_seconds, 3600u);
    EXPECT_EQ(copy.number_of_timesteps, 8760u);
}

TEST(SimulationParametersCopy, SharesGridModelsWithSource) {
    const SimulationParameters source = sample_parameters();
    const SimulationParameters copy = source;
    ASSERT_EQ(copy.grid_list.size(), source.grid_list.size());
    for (std::size_t i = 0; i < source.grid_list.size(); ++i) {
        EXPECT_EQ(copy.grid_list[i].technical_model.get(), source.grid_list[i].technical_model.get());
    }
    EXPECT_EQ(copy.grid_list[0].technical_model->get_model_type(), GridModelType::RealTime);
    EXPECT_EQ(copy.grid_list[1].technical_model->get_model_type(), GridModelType::ComplexUtility);
    EXPECT_EQ(source.grid_list[0].technical_model.use_count(), 2);
}

SimulationState sample_state() {
    SimulationState s;
    s.generator_list = {{100.0, 40.0, FORCED_ON_FOR_SCHEDULE}, {80.0, 0.0, FORCED_OFF_OUT_OF_FUEL}};
    s.pv_list = {{25.0, 20.0}};
    BatteryState battery;
    battery.dedicated_converter = {1.0, 2.0, 3.0, 4.0};
    battery.power_setpoint = -9.0;
    s.battery_list = {battery};
    s.primary_load_list = {{100.0, 90.0}};
    s.converter_list = {{10.0, 9.0, 0.0, 0.0}};
    s.flywheel_list = {{1, 2.5}};
    GridState grid;
    grid.grid_state.grid_is_down = true;
    grid.grid_purchases = 5.0;
    s.grid_list = {grid};
    s.custom_component_list = {{2.0, 1.0}};
    s.wind_turbine_list = {{10.0, 12.0, DISPATCH_DECIDES}};
    s.ac_bus = {100.0, 90.0, 10.0, 0.0, 20.0, 15.0, 5.0};
    s.dc_bus = {10.0, 10.0, 0.0, 1.0, 5.0, 5.0, 0.0};
    s.current_timestep = 17;
    return s;
}

TEST(SimulationStateCopy, HoldsEqualValuesInListOrder) {
    const SimulationState source = sample_state();
    const SimulationState copy = source;
    ASSERT_EQ(copy.generator_list.size(), 2u);
    EXPECT_EQ(copy.generator_list[0].power_setpoint, 40.0);
    EXPECT_EQ(copy.generator_list[0].current_state, FORCED_ON_FOR_SCHEDULE);
    EXPECT_EQ(copy.generator_list[1].current_state, FORCED_OFF_OUT_OF_FUEL);
    EXPECT_EQ(copy.battery_list[0].dedicated_converter.rectifier_power_output, 4.0);
    EXPECT_EQ(copy.battery_list[0].power_setpoint, -9.0);
    EXPECT_EQ(copy.flywheel_list[0].flywheel_state, 1u);
    EXPECT_TRUE(copy.grid_list[0].grid_state.grid_is_down);
    EXPECT_EQ(copy.wind_turbine_list[0].power_available, 12.0);
    EXPECT_EQ(copy.ac_bus.capacity_shortage, 5.0);
    EXPECT_EQ(copy.dc_bus.excess_electricity, 1.0);
    EXPECT_EQ(copy.current_timestep, 17u);
}

TEST(SimulationStateCopy, ChangingCopyLeavesSourceUnchanged) {
    const SimulationState source = sample_state();
    SimulationState copy = source;
    copy.generator_list[0].power_setpoint = 99.0;
    copy.generator_list.push_back({});
    copy.battery_list[0].dedicated_converter.inverter_power_input = 77.0;
    copy.grid_list[0].grid_state.grid_is_down = false;
    copy.ac_bus.load_served = 0.0;
    copy.current_timestep = 18;

    EXPECT_EQ(source.generator_list.size(), 2u);
    EXPECT_EQ(source.generator_list[0].power_setpoint, 40.0);
    EXPECT_EQ(source.battery_list[0].dedicated_converter.inverter_power_input, 1.0);
    EXPECT_TRUE(source.grid_list[0].grid_state.grid_is_down);
    EXPECT_EQ(source.ac_bus.load_served, 90.0);
    EXPECT_EQ(source.current_timestep, 17u);
    EXPECT_NE(copy.generator_list.data(), source.generator_list.data());
}

}  // namespace
}  // namespace tamlo_dispatch
