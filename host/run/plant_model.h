// The bench's simple plant: fills each time step's SimulationState from the series and
// the previous decisions, then applies the dispatch's decisions (docs/plant_model.md).
#ifndef TAMLO_HOST_PLANT_MODEL_H
#define TAMLO_HOST_PLANT_MODEL_H

#include <cmath>
#include <cstddef>
#include <vector>

#include "scenario.h"
#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_host {

// A decision that is not a number (NaN, inf) does nothing: the books count it apart, and it
// must not leave a charge or a fuel tank at NaN for the rest of the run.
inline double finite_or_zero(double value) { return std::isfinite(value) ? value : 0.0; }

// Power of one turbine at a wind speed: linear between the curve's points, 0 outside them.
double wind_turbine_power(const tamlo_dispatch::PointList& curve, double speed);

struct BatteryLimits {
    double max_charge_power = 0.0;     // at the bus, kW
    double max_discharge_power = 0.0;  // at the bus, kW
};
BatteryLimits battery_limits(const tamlo_dispatch::BatteryParameters& battery, double soc_kwh, double hours);
// Stored energy after a step at bus power p (positive charges), p already within the limits.
double battery_soc_after(const tamlo_dispatch::BatteryParameters& battery, double soc_kwh, double p, double hours);

// Where a generator stands at the start of a step.
struct GeneratorHistory {
    double fuel_left = 0.0;
    bool ran_last_step = false;
    double hours_since_start = 0.0;
};
tamlo_dispatch::GeneratorCurrentState generator_current_state(const tamlo_dispatch::GeneratorParameters& generator,
                                                              const GeneratorHistory& history, double schedule);
// Fuel burnt in one step at set point p (kW), before any limit of the fuel left.
double generator_fuel(const tamlo_dispatch::GeneratorParameters& generator, double p, double hours);

// What the plant did with one step's decisions, for the books.
struct StepOutcome {
    std::vector<double> generator_fuel;     // per generator, fuel units
    std::vector<bool> generator_started;    // per generator
    std::vector<double> battery_power;      // per battery, applied bus power (kW)
    std::size_t battery_setpoints_limited = 0;
};

class PlantModel {
public:
    explicit PlantModel(const Scenario& scenario);

    // Gives state the parameters' list sizes and fills every field for step t.
    void fill_state(std::size_t t, tamlo_dispatch::SimulationState& state) const;
    // Applies the completed state of step t: battery charge, fuel, run time.
    StepOutcome apply(const tamlo_dispatch::SimulationState& state);

    double hours() const { return hours_; }
    double battery_soc(std::size_t i) const { return soc_[i]; }
    const GeneratorHistory& generator_history(std::size_t i) const { return generators_[i]; }

private:
    void fill_bus(tamlo_dispatch::BusState& bus, bool ac, const tamlo_dispatch::SimulationState& state,
                  std::size_t t) const;
    void fill_grid(std::size_t i, std::size_t t, tamlo_dispatch::GridState& grid) const;

    const Scenario& scenario_;
    double hours_;
    std::vector<double> soc_;
    std::vector<GeneratorHistory> generators_;
};

}  // namespace tamlo_host

#endif
