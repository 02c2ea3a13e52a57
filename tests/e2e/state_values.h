// Every number of a SimulationState in one flat list, for whole-record comparisons.
#ifndef TAMLO_TESTS_E2E_STATE_VALUES_H
#define TAMLO_TESTS_E2E_STATE_VALUES_H

#include <vector>

#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_e2e {

inline void add_bus(std::vector<double>& v, const tamlo_dispatch::BusState& b) {
    v.insert(v.end(), {b.load_requested, b.load_served, b.unmet_load, b.excess_electricity,
                       b.operating_capacity_requested, b.operating_capacity_served, b.capacity_shortage});
}

inline void add_converter(std::vector<double>& v, const tamlo_dispatch::ConverterState& c) {
    v.insert(v.end(), {c.inverter_power_input, c.inverter_power_output, c.rectifier_power_input,
                       c.rectifier_power_output});
}

inline std::vector<double> state_values(const tamlo_dispatch::SimulationState& s) {
    std::vector<double> v;
    for (const auto& g : s.generator_list) v.insert(v.end(), {g.power_available, g.power_setpoint, double(g.current_state)});
    for (const auto& p : s.pv_list) v.insert(v.end(), {p.power_available, p.power_setpoint});
    for (const auto& b : s.battery_list) {
        add_converter(v, b.dedicated_converter);
        v.insert(v.end(), {b.max_charge_power, b.max_discharge_power, b.state_of_charge_kwh,
                           b.state_of_charge_percent, b.power_setpoint, b.energy_cost});
    }
    for (const auto& l : s.primary_load_list) v.insert(v.end(), {l.load_requested, l.load_served});
    for (const auto& c : s.converter_list) add_converter(v, c);
    for (const auto& f : s.flywheel_list) v.insert(v.end(), {double(f.flywheel_state), f.load_served});
    for (const auto& g : s.grid_list) {
        const auto& f = g.grid_state;
        v.insert(v.end(), {double(f.maintain_state_of_charge), double(f.prohibit_grid_from_charging_battery),
                           double(f.prohibit_any_battery_charging), double(f.prohibit_battery_from_discharging),
                           double(f.prohibit_grid_sales_from_battery), double(f.prohibit_any_grid_sales),
                           double(f.grid_is_down), double(f.maintain_state_of_charge_has_ended),
                           f.maintain_state_of_charge_percent, g.max_grid_purchases, g.max_grid_sales,
                           g.grid_purchases, g.grid_sales, g.power_price, g.sellback_rate});
    }
    for (const auto& c : s.custom_component_list) v.insert(v.end(), {c.power_available, c.power_setpoint});
    for (const auto& w : s.wind_turbine_list) v.insert(v.end(), {w.power_setpoint, w.power_available, double(w.current_state)});
    add_bus(v, s.ac_bus);
    add_bus(v, s.dc_bus);
    v.push_back(double(s.current_timestep));
    return v;
}

}  // namespace tamlo_e2e

#endif
