// The run's energy books: what was requested, served and produced, fuel, grid money.
#ifndef TAMLO_HOST_BOOKS_H
#define TAMLO_HOST_BOOKS_H

#include <cstddef>
#include <vector>

#include "plant_model.h"
#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_host {

struct GeneratorBook {
    double energy = 0.0;  // kWh
    double fuel = 0.0;    // the fuel curve's units
    double runtime_hours = 0.0;
    std::size_t starts = 0;
};

struct Books {
    std::size_t steps = 0;
    double energy_requested = 0.0;  // kWh, both buses
    double energy_served = 0.0;
    double unmet_load = 0.0;
    double excess_electricity = 0.0;
    double capacity_shortage = 0.0;
    std::vector<GeneratorBook> generators;
    double pv_energy = 0.0;
    double wind_energy = 0.0;
    double battery_charged = 0.0;     // kWh at the bus
    double battery_discharged = 0.0;  // kWh at the bus
    std::size_t battery_setpoints_limited = 0;
    double grid_bought = 0.0;
    double grid_sold = 0.0;
    double grid_cost = 0.0;  // purchases at power_price less sales at sellback_rate
    // Steps in which a decision the books read was NaN or infinite; such values count as 0.
    std::size_t non_finite_steps = 0;

    explicit Books(std::size_t generator_count) : generators(generator_count) {}

    // Adds one completed step, as the dispatch left it and the plant applied it.
    void record(const tamlo_dispatch::SimulationState& state, const StepOutcome& outcome, double hours);

    double battery_throughput() const { return battery_charged + battery_discharged; }
    double generator_energy() const;
    // Renewable share of the energy produced or bought: (PV + wind) / (PV + wind + generators + grid bought).
    double renewable_fraction() const;
};

}  // namespace tamlo_host

#endif
