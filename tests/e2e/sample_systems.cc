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
    for (std::size_t i = 1; i <= 2 * count; ++i) {
        p.generator_list.push_back({.component = head("Generator " + std::to_string(i), number++, true),
                                    .fuel = {.name = "Diesel"},
                                    .rated_capacity = 100,
                                    .minimum_load = 25});
        p.primary_load_list.push_back({.name = "Load " + std::to_string(i), .is_AC = true, .peak_load = 80});
    }
    for (std::size_t i = 1; i <= count; ++i) {
        const std::string n = std::to_string(i);
        p.pv_list.push_back({.component = head("PV " + n, number++, false),
                             .rated_capacity = 50,
                             .solar_forecast = {0.0, 0.2, 0.6, 0.9}});
        p.wind_turbine_list.push_back({.component = head("Wind " + n, number++, true),
                                       .rated_power = 30,
                                       .power_curve = {{0, 0}, {3, 0}, {12, 30}, {25, 30}}});
        BatteryParameters& battery = p.battery_list.emplace_back();
        battery.component = head("Battery " + n, number++, false);
        battery.nominal_capacity = 200;
        battery.dedicated_converter.component = head("Battery converter", number++, false);
        p.converter_list.push_back({.component = head("Converter " + n, number++, true),
                                    .inverter_capacity = 60,
                                    .rectifier_capacity = 60,
                                    .inverter_efficiency = 95,
                                    .rectifier_efficiency = 90});
        auto model = std::make_shared<RealTime>();
        model->realtime_power_price = {0.10, 0.12, 0.30, 0.25};
        model->realtime_sellback_rate = {0.03, 0.03, 0.05, 0.04};
        p.grid_list.push_back({model, true, 100});
    }
    p.operating_reserve = {10, 10, 50, 80};
    p.timestep_size_in_seconds = 3600;
    p.number_of_timesteps = 8760;
    return p;
}

SimulationState make_state(const SimulationParameters& parameters) {
    SimulationState s;
    for (const GeneratorParameters& generator : parameters.generator_list) {
        s.generator_list.push_back({generator.rated_capacity, 0.0, DISPATCH_DECIDES});
    }
    s.battery_list.assign(parameters.battery_list.size(), {.dedicated_converter = {},
                                                           .max_charge_power = 30,
                                                           .max_discharge_power = 35,
                                                           .state_of_charge_kwh = 120,
                                                           .state_of_charge_percent = 60,
                                                           .energy_cost = 0.02});
    s.grid_list.assign(parameters.grid_list.size(), {.grid_state = {},
                                                     .max_grid_purchases = 100,
                                                     .max_grid_sales = 50,
                                                     .power_price = 0.10,
                                                     .sellback_rate = 0.03});
    s.pv_list.assign(parameters.pv_list.size(), {20.0, 0.0});
    s.primary_load_list.assign(parameters.primary_load_list.size(), {40.0, 0.0});
    s.converter_list.resize(parameters.converter_list.size());
    s.wind_turbine_list.assign(parameters.wind_turbine_list.size(), {0.0, 12.0, DISPATCH_DECIDES});
    const double ac_load = 40.0 * s.primary_load_list.size();  // every sample load is AC
    s.ac_bus.load_requested = ac_load;
    s.ac_bus.operating_capacity_requested = ac_load * 1.1;
    return s;
}

}  // namespace tamlo_samples
