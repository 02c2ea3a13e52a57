// Keeps the books of a run step by step.
#include "books.h"

namespace tamlo_host {

using namespace tamlo_dispatch;

void Books::record(const SimulationState& state, const StepOutcome& outcome, double hours) {
    ++steps;
    energy_requested += (state.ac_bus.load_requested + state.dc_bus.load_requested) * hours;
    energy_served += (state.ac_bus.load_served + state.dc_bus.load_served) * hours;
    unmet_load += (state.ac_bus.unmet_load + state.dc_bus.unmet_load) * hours;
    excess_electricity += (state.ac_bus.excess_electricity + state.dc_bus.excess_electricity) * hours;
    capacity_shortage += (state.ac_bus.capacity_shortage + state.dc_bus.capacity_shortage) * hours;
    for (std::size_t i = 0; i < generators.size() && i < state.generator_list.size(); ++i) {
        const double p = state.generator_list[i].power_setpoint;
        GeneratorBook& book = generators[i];
        if (p > 0) {
            book.energy += p * hours;
            book.runtime_hours += hours;
        }
        book.fuel += outcome.generator_fuel[i];
        if (outcome.generator_started[i]) ++book.starts;
    }
    for (const PvState& pv : state.pv_list) pv_energy += pv.power_setpoint * hours;
    for (const WindTurbineState& wind : state.wind_turbine_list) wind_energy += wind.power_setpoint * hours;
    for (double p : outcome.battery_power) {
        if (p > 0) battery_charged += p * hours;
        if (p < 0) battery_discharged += -p * hours;
    }
    battery_setpoints_limited += outcome.battery_setpoints_limited;
    for (const GridState& grid : state.grid_list) {
        grid_bought += grid.grid_purchases * hours;
        grid_sold += grid.grid_sales * hours;
        grid_cost += (grid.grid_purchases * grid.power_price - grid.grid_sales * grid.sellback_rate) * hours;
    }
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
