// Random but reproducible systems and time-step states for trying strategies.
#include "generated_systems.h"

#include <algorithm>
#include <sstream>

namespace tamlo_strategies {

using namespace tamlo_dispatch;

ComponentParameters SystemGenerator::head(const std::string& name, bool is_ac) {
    ComponentParameters component;
    component.name = name;
    component.component_number = next_number_++;
    component.is_AC = is_ac;
    return component;
}

SimulationParameters SystemGenerator::system() {
    SimulationParameters p;
    p.timestep_size_in_seconds = 3600;
    p.number_of_timesteps = 8760;
    p.operating_reserve.timestep_requirement = 10;

    for (int i = count(0, 3); i > 0; --i) {
        GeneratorParameters g;
        g.component = head("generator", !chance(0.2));
        g.rated_capacity = uniform(20, 200);
        g.minimum_load = chance(0.7) ? uniform(0, 0.4) * g.rated_capacity : 0.0;
        p.generator_list.push_back(g);
    }
    for (int i = count(0, 2); i > 0; --i) {
        PvParameters pv;
        pv.component = head("pv", chance(0.4));
        pv.rated_capacity = uniform(10, 150);
        p.pv_list.push_back(pv);
    }
    for (int i = count(0, 2); i > 0; --i) {
        WindTurbineParameters wind;
        wind.component = head("wind", chance(0.6));
        wind.quantity = static_cast<std::uint64_t>(count(1, 3));
        wind.rated_power = uniform(5, 50);
        p.wind_turbine_list.push_back(wind);
    }
    for (int i = count(0, 2); i > 0; --i) {
        BatteryParameters battery;
        battery.component = head("battery", chance(0.4));
        battery.has_dedicated_converter = chance(0.5);
        battery.dedicated_converter.rectifier_efficiency = uniform(85, 98);
        battery.dedicated_converter.inverter_efficiency = uniform(85, 98);
        battery.dedicated_converter.rectifier_capacity = uniform(10, 100);
        battery.dedicated_converter.inverter_capacity = uniform(10, 100);
        p.battery_list.push_back(battery);
    }
    for (int i = count(0, 2); i > 0; --i) {
        ConverterParameters converter;
        converter.component = head("converter", true);
        converter.inverter_capacity = uniform(5, 150);
        converter.rectifier_capacity = uniform(5, 150);
        converter.inverter_efficiency = uniform(80, 98);
        converter.rectifier_efficiency = uniform(80, 98);
        p.converter_list.push_back(converter);
    }
    for (int i = count(0, 1); i > 0; --i) {
        FlywheelParameters flywheel;
        flywheel.component = head("flywheel", chance(0.5));
        flywheel.charge_discharge_capacity = uniform(5, 50);
        flywheel.parasitic_load = uniform(0.1, 3);
        flywheel.quantity = 1;
        p.flywheel_list.push_back(flywheel);
    }
    for (int i = count(0, 2); i > 0; --i) {
        GridParameters grid;
        grid.technical_model = std::make_shared<RealTime>();
        p.grid_list.push_back(grid);
    }
    for (int i = count(0, 1); i > 0; --i) {
        CustomComponentParameters custom;
        custom.component = head("custom", chance(0.5));
        custom.name = custom.component.name;
        custom.component_number = custom.component.component_number;
        custom.is_AC = custom.component.is_AC;
        custom.capacity = uniform(1, 40);
        p.custom_component_list.push_back(custom);
    }
    for (int i = count(1, 3); i > 0; --i) {
        PrimaryLoadParameters load;
        load.name = "load";
        load.is_AC = chance(0.6);
        load.peak_load = uniform(10, 200);
        p.primary_load_list.push_back(load);
    }
    // A flywheel's parasitic load has to be reported as unmet load when nothing covers it,
    // which only works on a bus that has load: give its bus one.
    for (const FlywheelParameters& flywheel : p.flywheel_list) {
        const bool has_load = std::any_of(p.primary_load_list.begin(), p.primary_load_list.end(),
                                          [&](const PrimaryLoadParameters& l) { return l.is_AC == flywheel.component.is_AC; });
        if (!has_load) {
            PrimaryLoadParameters load;
            load.name = "flywheel bus load";
            load.is_AC = flywheel.component.is_AC;
            load.peak_load = uniform(10, 200);
            p.primary_load_list.push_back(load);
        }
    }
    return p;
}

SimulationState SystemGenerator::state(const SimulationParameters& p, std::uint32_t step) {
    SimulationState s;
    s.current_timestep = step;
    for (const GeneratorParameters& g : p.generator_list) {
        GeneratorState state;
        const double draw = uniform(0, 1);
        if (draw < 0.12) {
            state.current_state = static_cast<GeneratorCurrentState>(count(-3, -1));
            state.power_available = 0.0;
        } else {
            state.current_state = draw < 0.3 ? static_cast<GeneratorCurrentState>(count(1, 2)) : DISPATCH_DECIDES;
            state.power_available = g.rated_capacity;
        }
        s.generator_list.push_back(state);
    }
    for (const PvParameters& pv : p.pv_list) {
        PvState state;
        state.power_available = chance(0.3) ? 0.0 : pv.rated_capacity * uniform(0, 1);
        s.pv_list.push_back(state);
    }
    for (const WindTurbineParameters& wind : p.wind_turbine_list) {
        WindTurbineState state;
        state.power_available = static_cast<double>(wind.quantity) * wind.rated_power * uniform(0, 1);
        s.wind_turbine_list.push_back(state);
    }
    for (const BatteryParameters& battery : p.battery_list) {
        BatteryState state;
        state.state_of_charge_percent = uniform(0, 100);
        state.state_of_charge_kwh = state.state_of_charge_percent;
        state.max_charge_power = state.state_of_charge_percent > 98 ? 0.0 : uniform(0, 60);
        state.max_discharge_power = state.state_of_charge_percent < 2 ? 0.0 : uniform(0, 60);
        if (battery.has_dedicated_converter) {
            state.max_charge_power = std::min(state.max_charge_power, battery.dedicated_converter.rectifier_capacity);
            state.max_discharge_power =
                std::min(state.max_discharge_power, battery.dedicated_converter.inverter_capacity);
        }
        s.battery_list.push_back(state);
    }
    s.converter_list.resize(p.converter_list.size());
    s.flywheel_list.resize(p.flywheel_list.size());
    for (std::size_t i = 0; i < p.grid_list.size(); ++i) {
        GridState state;
        state.grid_state.grid_is_down = chance(0.2);
        state.grid_state.prohibit_any_grid_sales = chance(0.1);
        state.grid_state.prohibit_any_battery_charging = chance(0.1);
        state.grid_state.prohibit_battery_from_discharging = chance(0.1);
        state.grid_state.maintain_state_of_charge = chance(0.1);
        state.grid_state.maintain_state_of_charge_percent = uniform(0, 100);
        if (!state.grid_state.grid_is_down) {
            state.max_grid_purchases = chance(0.2) ? 0.0 : uniform(0, 150);
            state.max_grid_sales = state.grid_state.prohibit_any_grid_sales ? 0.0 : uniform(0, 80);
        }
        state.power_price = uniform(0.05, 0.4);
        state.sellback_rate = uniform(0, 0.1);
        s.grid_list.push_back(state);
    }
    for (const CustomComponentParameters& custom : p.custom_component_list) {
        CustomComponentState state;
        state.power_available = custom.capacity;
        state.power_setpoint = custom.capacity * uniform(0, 1);
        s.custom_component_list.push_back(state);
    }
    for (const PrimaryLoadParameters& load : p.primary_load_list) {
        PrimaryLoadState state;
        state.load_requested = chance(0.1) ? 0.0 : load.peak_load * uniform(0.05, 1);
        BusState& bus = load.is_AC ? s.ac_bus : s.dc_bus;
        bus.load_requested += state.load_requested;
        s.primary_load_list.push_back(state);
    }
    for (const FlywheelParameters& flywheel : p.flywheel_list) {
        BusState& bus = flywheel.component.is_AC ? s.ac_bus : s.dc_bus;
        bus.load_requested = std::max(bus.load_requested, 1.0);
    }
    for (BusState* bus : {&s.ac_bus, &s.dc_bus}) {
        bus->operating_capacity_requested = bus->load_requested * uniform(1.0, 1.5);
    }
    return s;
}

std::string describe(const SimulationParameters& p, const SimulationState& s) {
    std::ostringstream out;
    const auto bus = [](bool is_ac) { return is_ac ? "AC" : "DC"; };
    for (std::size_t i = 0; i < p.generator_list.size(); ++i) {
        out << "generator " << i + 1 << " " << bus(p.generator_list[i].component.is_AC)
            << " min " << p.generator_list[i].minimum_load << " available " << s.generator_list[i].power_available
            << " state " << s.generator_list[i].current_state << " set point " << s.generator_list[i].power_setpoint
            << "\n";
    }
    for (std::size_t i = 0; i < p.pv_list.size(); ++i) {
        out << "pv " << i + 1 << " " << bus(p.pv_list[i].component.is_AC) << " available "
            << s.pv_list[i].power_available << " set point " << s.pv_list[i].power_setpoint << "\n";
    }
    for (std::size_t i = 0; i < p.wind_turbine_list.size(); ++i) {
        out << "wind " << i + 1 << " " << bus(p.wind_turbine_list[i].component.is_AC) << " available "
            << s.wind_turbine_list[i].power_available << " set point " << s.wind_turbine_list[i].power_setpoint
            << "\n";
    }
    for (std::size_t i = 0; i < p.battery_list.size(); ++i) {
        out << "battery " << i + 1 << " " << bus(p.battery_list[i].component.is_AC) << " charge "
            << s.battery_list[i].max_charge_power << " discharge " << s.battery_list[i].max_discharge_power
            << " set point " << s.battery_list[i].power_setpoint << "\n";
    }
    for (std::size_t i = 0; i < p.converter_list.size(); ++i) {
        const ConverterParameters& c = p.converter_list[i];
        const ConverterState& f = s.converter_list[i];
        out << "converter " << i + 1 << " inverter " << c.inverter_capacity << " kW " << c.inverter_efficiency
            << " % in " << f.inverter_power_input << " out " << f.inverter_power_output << "; rectifier "
            << c.rectifier_capacity << " kW " << c.rectifier_efficiency << " % in " << f.rectifier_power_input
            << " out " << f.rectifier_power_output << "\n";
    }
    for (std::size_t i = 0; i < p.flywheel_list.size(); ++i) {
        out << "flywheel " << i + 1 << " " << bus(p.flywheel_list[i].component.is_AC) << " parasitic "
            << p.flywheel_list[i].parasitic_load << "\n";
    }
    for (std::size_t i = 0; i < p.grid_list.size(); ++i) {
        const GridState& g = s.grid_list[i];
        out << "grid " << i + 1 << (g.grid_state.grid_is_down ? " down" : " up") << " max purchases "
            << g.max_grid_purchases << " max sales " << g.max_grid_sales << " purchases " << g.grid_purchases
            << " sales " << g.grid_sales << "\n";
    }
    for (std::size_t i = 0; i < p.custom_component_list.size(); ++i) {
        out << "custom " << i + 1 << " " << bus(p.custom_component_list[i].is_AC) << " set point "
            << s.custom_component_list[i].power_setpoint << "\n";
    }
    for (const auto& [name, b] : {std::pair{"AC", &s.ac_bus}, std::pair{"DC", &s.dc_bus}}) {
        out << name << " bus requested " << b->load_requested << " served " << b->load_served << " unmet "
            << b->unmet_load << " excess " << b->excess_electricity << " capacity requested "
            << b->operating_capacity_requested << " served " << b->operating_capacity_served << " shortage "
            << b->capacity_shortage << "\n";
    }
    return out.str();
}

}  // namespace tamlo_strategies
