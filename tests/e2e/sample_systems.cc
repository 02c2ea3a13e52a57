// Sample systems for end-to-end tests and benchmarks.
#include "sample_systems.h"

#include <memory>

namespace tamlo_samples {

using namespace tamlo_dispatch;

void add_text_parameter(SimulationParameters& parameters, std::string name, std::string value) {
    ExtensionParameter parameter;
    parameter.name = std::move(name);
    parameter.type = ExtensionParameterType::text;
    parameter.text_value = std::move(value);
    parameters.extension_parameters.push_back(std::move(parameter));
}

void add_settings(SimulationParameters& parameters, const Settings& settings) {
    add_text_parameter(parameters, "path", settings.path);
    add_text_parameter(parameters, "start simulation", settings.start_simulation);
    add_text_parameter(parameters, "dispatch", settings.dispatch);
    add_text_parameter(parameters, "end simulation", settings.end_simulation);
}

namespace {

ComponentParameters head(const std::string& name, std::uint64_t number, bool is_ac) {
    ComponentParameters component;
    component.cost = {1000.0, 800.0, 0.5};
    component.name = name;
    component.component_number = number;
    component.is_AC = is_ac;
    return component;
}

}  // namespace

SimulationParameters make_system(std::size_t count) {
    SimulationParameters p;
    std::uint64_t number = 1;
    for (std::size_t i = 0; i < 2 * count; ++i) {
        GeneratorParameters g;
        g.component = head("Generator " + std::to_string(i + 1), number++, true);
        g.fuel.name = "Diesel";
        g.fuel.cost = 1.2;
        g.fuel.lower_heating_value = 43.2;
        g.fuel.density = 820;
        g.fuel.carbon_content = 88;
        g.fuel.sulfur_content = 0.4;
        g.rated_capacity = 100;
        g.lifetime_in_hours = 15000;
        g.minimum_load = 25;
        g.minimum_runtime = 0;
        g.fuel_curve_intercept = 0.0087;
        g.fuel_curve_slope = 0.2373;
        g.emissions_factor_CO = 16.5;
        p.generator_list.push_back(std::move(g));

        PrimaryLoadParameters load;
        load.name = "Load " + std::to_string(i + 1);
        load.is_AC = true;
        load.peak_load = 80;
        p.primary_load_list.push_back(std::move(load));
    }
    for (std::size_t i = 0; i < count; ++i) {
        PvParameters pv;
        pv.component = head("PV " + std::to_string(i + 1), number++, false);
        pv.rated_capacity = 50;
        pv.lifetime_in_years = 25;
        pv.solar_forecast = {0.0, 0.2, 0.6, 0.9};
        p.pv_list.push_back(std::move(pv));

        WindTurbineParameters wind;
        wind.component = head("Wind " + std::to_string(i + 1), number++, true);
        wind.quantity = 1;
        wind.rated_power = 30;
        wind.power_curve = {{0, 0}, {3, 0}, {12, 30}, {25, 30}};
        p.wind_turbine_list.push_back(std::move(wind));

        BatteryParameters battery;
        battery.component = head("Battery " + std::to_string(i + 1), number++, false);
        battery.nominal_voltage = 48;
        battery.nominal_capacity = 200;
        battery.minimum_state_of_charge = 20;
        battery.fractional_charge_efficiency = 0.95;
        battery.fractional_discharge_efficiency = 0.95;
        battery.battery_bank_maximum_absolute_soc = 200;
        battery.battery_bank_minimum_absolute_soc = 40;
        battery.dedicated_converter.component = head("Battery converter", number++, false);
        battery.dedicated_converter.inverter_capacity = 40;
        battery.dedicated_converter.rectifier_capacity = 40;
        battery.dedicated_converter.inverter_efficiency = 95;
        battery.dedicated_converter.rectifier_efficiency = 90;
        p.battery_list.push_back(std::move(battery));

        ConverterParameters converter;
        converter.component = head("Converter " + std::to_string(i + 1), number++, true);
        converter.inverter_capacity = 60;
        converter.rectifier_capacity = 60;
        converter.inverter_efficiency = 95;
        converter.rectifier_efficiency = 90;
        converter.lifetime_in_years = 15;
        p.converter_list.push_back(std::move(converter));

        auto model = std::make_shared<RealTime>();
        model->realtime_power_price = {0.10, 0.12, 0.30, 0.25};
        model->realtime_sellback_rate = {0.03, 0.03, 0.05, 0.04};
        GridParameters grid;
        grid.technical_model = model;
        grid.limit_net_grid_purchases = true;
        grid.max_net_grid_purchases = 100;
        p.grid_list.push_back(std::move(grid));
    }
    p.operating_reserve = {10, 10, 50, 80};
    p.timestep_size_in_seconds = 3600;
    p.number_of_timesteps = 8760;
    return p;
}

SimulationState make_state(const SimulationParameters& parameters) {
    SimulationState s;
    for (std::size_t i = 0; i < parameters.generator_list.size(); ++i) {
        s.generator_list.push_back({parameters.generator_list[i].rated_capacity, 0.0, DISPATCH_DECIDES});
    }
    for (std::size_t i = 0; i < parameters.pv_list.size(); ++i) {
        s.pv_list.push_back({20.0, 0.0});
    }
    for (std::size_t i = 0; i < parameters.battery_list.size(); ++i) {
        BatteryState battery;
        battery.max_charge_power = 30;
        battery.max_discharge_power = 35;
        battery.state_of_charge_kwh = 120;
        battery.state_of_charge_percent = 60;
        battery.energy_cost = 0.02;
        s.battery_list.push_back(battery);
    }
    for (std::size_t i = 0; i < parameters.primary_load_list.size(); ++i) {
        s.primary_load_list.push_back({40.0, 0.0});
    }
    for (std::size_t i = 0; i < parameters.converter_list.size(); ++i) {
        s.converter_list.push_back({});
    }
    for (std::size_t i = 0; i < parameters.flywheel_list.size(); ++i) {
        s.flywheel_list.push_back({0, 0.0});
    }
    for (std::size_t i = 0; i < parameters.grid_list.size(); ++i) {
        GridState grid;
        grid.max_grid_purchases = 100;
        grid.max_grid_sales = 50;
        grid.power_price = 0.10;
        grid.sellback_rate = 0.03;
        s.grid_list.push_back(grid);
    }
    for (std::size_t i = 0; i < parameters.custom_component_list.size(); ++i) {
        s.custom_component_list.push_back({10.0, 0.0});
    }
    for (std::size_t i = 0; i < parameters.wind_turbine_list.size(); ++i) {
        s.wind_turbine_list.push_back({0.0, 12.0, DISPATCH_DECIDES});
    }
    double ac_load = 0;
    for (const PrimaryLoadParameters& load : parameters.primary_load_list) {
        ac_load += load.is_AC ? 40.0 : 0.0;
    }
    s.ac_bus.load_requested = ac_load;
    s.ac_bus.operating_capacity_requested = ac_load * 1.1;
    s.current_timestep = 0;
    return s;
}

}  // namespace tamlo_samples
