// Keeps the books of a run step by step.
#include "books.h"

#include <cmath>

namespace tamlo_host {

using namespace tamlo_dispatch;

void Books::record(const SimulationState& state, const StepOutcome& outcome, double hours) {
    ++steps;
    // One NaN would make every total NaN for the rest of the run; it is counted instead.
    bool non_finite = false;
    const auto v = [&](double value) {
        if (std::isfinite(value)) return value;
        non_finite = true;
        return 0.0;
    };
    energy_requested += (state.ac_bus.load_requested + state.dc_bus.load_requested) * hours;
    energy_served += (v(state.ac_bus.load_served) + v(state.dc_bus.load_served)) * hours;
    unmet_load += (v(state.ac_bus.unmet_load) + v(state.dc_bus.unmet_load)) * hours;
    excess_electricity += (v(state.ac_bus.excess_electricity) + v(state.dc_bus.excess_electricity)) * hours;
    capacity_shortage += (v(state.ac_bus.capacity_shortage) + v(state.dc_bus.capacity_shortage)) * hours;
    for (std::size_t i = 0; i < generators.size() && i < state.generator_list.size(); ++i) {
        const double p = v(state.generator_list[i].power_setpoint);
        GeneratorBook& book = generators[i];
        if (p > 0) {
            book.energy += p * hours;
            book.runtime_hours += hours;
        }
        book.fuel += outcome.generator_fuel[i];
        if (outcome.generator_started[i]) ++book.starts;
    }
    for (const PvState& pv : state.pv_list) pv_energy += v(pv.power_setpoint) * hours;
    for (const WindTurbineState& wind : state.wind_turbine_list) wind_energy += v(wind.power_setpoint) * hours;
    for (const BatteryState& battery : state.battery_list) v(battery.power_setpoint);
    for (double p : outcome.battery_power) {
        if (p > 0) battery_charged += p * hours;
        if (p < 0) battery_discharged += -p * hours;
    }
    battery_setpoints_limited += outcome.battery_setpoints_limited;
    for (const GridState& grid : state.grid_list) {
        const double bought = v(grid.grid_purchases);
        const double sold = v(grid.grid_sales);
        grid_bought += bought * hours;
        grid_sold += sold * hours;
        grid_cost += (bought * grid.power_price - sold * grid.sellback_rate) * hours;
    }
    if (non_finite) ++non_finite_steps;
}

double Books::generator_energy() const {
    double total = 0.0;
    for (const GeneratorBook& book : generators) total += book.energy;
    return total;
}

double Books::renewable_fraction() const {
    const double renewable = pv_energy + wind_energy;
    const double total = renewable + generator_energy() + grid_bought;
    return total > 0 ? renewable / total : 0.0;
}

}  // namespace tamlo_host
