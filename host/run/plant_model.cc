// The plant model: series and history in, one SimulationState per step out.
#include "plant_model.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tamlo_host {

using namespace tamlo_dispatch;

double wind_turbine_power(const PointList& curve, double speed) {
    if (curve.empty() || speed < curve.front().first || speed > curve.back().first) return 0.0;
    for (std::size_t i = 1; i < curve.size(); ++i) {
        const auto& [x0, y0] = curve[i - 1];
        const auto& [x1, y1] = curve[i];
        if (speed <= x1) return y0 + (y1 - y0) * (speed - x0) / (x1 - x0);
    }
    return curve.back().second;  // a one-point curve at exactly its speed
}

namespace {

struct ConverterPath {
    double rectifier = 1.0;  // fraction of bus power that reaches the battery terminals
    double inverter = 1.0;
    double charge_cap = std::numeric_limits<double>::infinity();
    double discharge_cap = std::numeric_limits<double>::infinity();
};

ConverterPath converter_path(const BatteryParameters& battery) {
    ConverterPath path;
    if (battery.has_dedicated_converter) {
        path.rectifier = battery.dedicated_converter.rectifier_efficiency / 100.0;
        path.inverter = battery.dedicated_converter.inverter_efficiency / 100.0;
        path.charge_cap = battery.dedicated_converter.rectifier_capacity;
        path.discharge_cap = battery.dedicated_converter.inverter_capacity;
    }
    return path;
}

}  // namespace

BatteryLimits battery_limits(const BatteryParameters& battery, double soc_kwh, double hours) {
    const ConverterPath path = converter_path(battery);
    const double room = battery.battery_bank_maximum_absolute_soc - soc_kwh;
    const double stored = soc_kwh - battery.battery_bank_minimum_absolute_soc;
    BatteryLimits limits;
    limits.max_charge_power =
        std::max(0.0, std::min(path.charge_cap, room / (hours * battery.fractional_charge_efficiency * path.rectifier)));
    limits.max_discharge_power = std::max(
        0.0, std::min(path.discharge_cap, stored * battery.fractional_discharge_efficiency * path.inverter / hours));
    return limits;
}

double battery_soc_after(const BatteryParameters& battery, double soc_kwh, double p, double hours) {
    const ConverterPath path = converter_path(battery);
    double soc = soc_kwh;
    if (p > 0) soc += p * path.rectifier * battery.fractional_charge_efficiency * hours;
    if (p < 0) soc -= -p / (path.inverter * battery.fractional_discharge_efficiency) * hours;
    // Rounding must not carry the bank past its limits.
    return std::clamp(soc, battery.battery_bank_minimum_absolute_soc, battery.battery_bank_maximum_absolute_soc);
}

GeneratorCurrentState generator_current_state(const GeneratorParameters& generator, const GeneratorHistory& history,
                                              double schedule) {
    if (generator.fuel.limit_consumption && history.fuel_left <= 0) return FORCED_OFF_OUT_OF_FUEL;
    if (schedule < 0) return FORCED_OFF_FOR_SCHEDULE;
    if (schedule > 0) return FORCED_ON_FOR_SCHEDULE;
    if (history.ran_last_step && history.hours_since_start < generator.minimum_runtime) {
        return FORCED_ON_FOR_MINIMUM_RUNTIME;
    }
    return DISPATCH_DECIDES;
}

double generator_fuel(const GeneratorParameters& generator, double p, double hours) {
    if (p <= 0) return 0.0;
    if (generator.use_nonlinear_fuel_curve) {
        return (generator.nonlinear_x0 + generator.nonlinear_x1 * p + generator.nonlinear_x2 * p * p) * hours;
    }
    return (generator.fuel_curve_intercept * generator.rated_capacity + generator.fuel_curve_slope * p) * hours;
}

PlantModel::PlantModel(const Scenario& scenario)
    : scenario_(scenario), hours_(static_cast<double>(scenario.parameters.timestep_size_in_seconds) / 3600.0) {
    const SimulationParameters& p = scenario.parameters;
    for (std::size_t i = 0; i < p.battery_list.size(); ++i) {
        const BatteryParameters& b = p.battery_list[i];
        soc_.push_back(std::clamp(b.battery_bank_maximum_absolute_soc *
                                      scenario.plant.batteries[i].initial_state_of_charge_percent / 100.0,
                                  b.battery_bank_minimum_absolute_soc, b.battery_bank_maximum_absolute_soc));
    }
    for (const GeneratorParameters& g : p.generator_list) {
        GeneratorHistory history;
        history.fuel_left = g.fuel.initial_fuel_available;
        generators_.push_back(history);
    }
}

void PlantModel::fill_state(std::size_t t, SimulationState& state) const {
    const SimulationParameters& p = scenario_.parameters;
    const PlantInputs& plant = scenario_.plant;
    state.current_timestep = static_cast<std::uint32_t>(t);

    state.generator_list.assign(p.generator_list.size(), GeneratorState{});
    for (std::size_t i = 0; i < p.generator_list.size(); ++i) {
        const auto& schedule = plant.generator_schedules[i];
        GeneratorState& g = state.generator_list[i];
        g.current_state = generator_current_state(p.generator_list[i], generators_[i], schedule.empty() ? 0 : schedule[t]);
        g.power_available = g.current_state < 0 ? 0.0 : p.generator_list[i].rated_capacity;
    }

    state.pv_list.assign(p.pv_list.size(), PvState{});
    for (std::size_t i = 0; i < p.pv_list.size(); ++i) {
        state.pv_list[i].power_available = p.pv_list[i].rated_capacity * plant.solar[i][t];
    }

    state.wind_turbine_list.assign(p.wind_turbine_list.size(), WindTurbineState{});
    for (std::size_t i = 0; i < p.wind_turbine_list.size(); ++i) {
        const WindTurbineParameters& w = p.wind_turbine_list[i];
        state.wind_turbine_list[i].power_available =
            static_cast<double>(w.quantity) * wind_turbine_power(w.power_curve, plant.wind_speed[i][t]);
    }

    state.battery_list.assign(p.battery_list.size(), BatteryState{});
    for (std::size_t i = 0; i < p.battery_list.size(); ++i) {
        const BatteryParameters& b = p.battery_list[i];
        BatteryState& s = state.battery_list[i];
        const BatteryLimits limits = battery_limits(b, soc_[i], hours_);
        s.max_charge_power = limits.max_charge_power;
        s.max_discharge_power = limits.max_discharge_power;
        s.state_of_charge_kwh = soc_[i];
        s.state_of_charge_percent = 100.0 * soc_[i] / b.battery_bank_maximum_absolute_soc;
        s.energy_cost = plant.batteries[i].energy_cost;
    }

    state.primary_load_list.assign(p.primary_load_list.size(), PrimaryLoadState{});
    for (std::size_t i = 0; i < p.primary_load_list.size(); ++i) {
        state.primary_load_list[i].load_requested = plant.loads[i][t];
    }

    state.converter_list.assign(p.converter_list.size(), ConverterState{});
    state.flywheel_list.assign(p.flywheel_list.size(), FlywheelState{});

    state.grid_list.assign(p.grid_list.size(), GridState{});
    for (std::size_t i = 0; i < p.grid_list.size(); ++i) fill_grid(i, t, state.grid_list[i]);

    state.custom_component_list.assign(p.custom_component_list.size(), CustomComponentState{});
    for (std::size_t i = 0; i < p.custom_component_list.size(); ++i) {
        state.custom_component_list[i].power_available = p.custom_component_list[i].capacity;
    }

    fill_bus(state.ac_bus, true, state, t);
    fill_bus(state.dc_bus, false, state, t);
}

void PlantModel::fill_bus(BusState& bus, bool ac, const SimulationState& state, std::size_t) const {
    const SimulationParameters& p = scenario_.parameters;
    const OperatingReserveParameters& reserve = p.operating_reserve;
    bus = BusState{};
    double peak = 0.0;
    for (std::size_t i = 0; i < p.primary_load_list.size(); ++i) {
        if (p.primary_load_list[i].is_AC != ac) continue;
        bus.load_requested += state.primary_load_list[i].load_requested;
        peak += p.primary_load_list[i].peak_load;
    }
    double solar = 0.0;
    for (std::size_t i = 0; i < p.pv_list.size(); ++i) {
        if (p.pv_list[i].component.is_AC == ac) solar += state.pv_list[i].power_available;
    }
    double wind = 0.0;
    for (std::size_t i = 0; i < p.wind_turbine_list.size(); ++i) {
        if (p.wind_turbine_list[i].component.is_AC == ac) wind += state.wind_turbine_list[i].power_available;
    }
    bus.operating_capacity_requested = bus.load_requested * (1.0 + reserve.timestep_requirement / 100.0) +
                                       reserve.peak_load_requirement / 100.0 * peak +
                                       reserve.solar_requirement / 100.0 * solar +
                                       reserve.wind_requirement / 100.0 * wind;
}

void PlantModel::fill_grid(std::size_t i, std::size_t t, GridState& grid) const {
    const GridParameters& parameters = scenario_.parameters.grid_list[i];
    const PlantGrid& plant = scenario_.plant.grids[i];
    const IGridModel& model = *parameters.technical_model;
    switch (model.get_model_type()) {
        case GridModelType::RealTime: {
            const auto& m = static_cast<const RealTime&>(model);
            if (!m.demand_rate.empty()) grid.grid_state = m.demand_rate[m.demand_rate_index[t]].grid_state;
            grid.power_price = m.realtime_power_price[t];
            grid.sellback_rate = m.realtime_sellback_rate[t];
            break;
        }
        case GridModelType::Scheduled: {
            const auto& m = static_cast<const Scheduled&>(model);
            const GridRate& rate = m.grid_rate[m.grid_rate_index[t]];
            grid.grid_state = rate.grid_state;
            grid.power_price = rate.power_price;
            grid.sellback_rate = rate.sellback_rate;
            break;
        }
        case GridModelType::ComplexUtility: {
            const auto& m = static_cast<const ComplexUtility&>(model);
            grid.power_price = m.purchase_price[t];
            grid.sellback_rate = m.export_price[t];
            break;
        }
    }
    const bool down = !plant.outages.empty() && plant.outages[t] != 0;
    grid.grid_state.grid_is_down = down;
    grid.max_grid_purchases =
        down ? 0.0 : (parameters.limit_net_grid_purchases ? parameters.max_net_grid_purchases : plant.max_grid_purchases);
    grid.max_grid_sales = (down || grid.grid_state.prohibit_any_grid_sales) ? 0.0 : plant.max_grid_sales;
}

StepOutcome PlantModel::apply(const SimulationState& state) {
    const SimulationParameters& p = scenario_.parameters;
    StepOutcome outcome;
    for (std::size_t i = 0; i < p.generator_list.size(); ++i) {
        const GeneratorParameters& g = p.generator_list[i];
        GeneratorHistory& history = generators_[i];
        const double power = std::clamp(finite_or_zero(state.generator_list[i].power_setpoint), 0.0,
                                        state.generator_list[i].power_available);
        double fuel = generator_fuel(g, power, hours_);
        if (g.fuel.limit_consumption) {
            fuel = std::min(fuel, std::max(0.0, history.fuel_left));
            history.fuel_left -= fuel;
        }
        const bool running = power > 0;
        outcome.generator_started.push_back(running && !history.ran_last_step);
        history.hours_since_start = running ? (history.ran_last_step ? history.hours_since_start + hours_ : hours_) : 0.0;
        history.ran_last_step = running;
        outcome.generator_fuel.push_back(fuel);
    }
    for (std::size_t i = 0; i < p.battery_list.size(); ++i) {
        const BatteryState& s = state.battery_list[i];
        const double setpoint = finite_or_zero(s.power_setpoint);
        const double power = std::clamp(setpoint, -s.max_discharge_power, s.max_charge_power);
        // A set point within rounding of its limit is not worth a note.
        if (std::abs(power - setpoint) > 1e-6 * std::max(1.0, std::abs(setpoint))) {
            ++outcome.battery_setpoints_limited;
        }
        soc_[i] = battery_soc_after(p.battery_list[i], soc_[i], power, hours_);
        outcome.battery_power.push_back(power);
    }
    return outcome;
}

}  // namespace tamlo_host
