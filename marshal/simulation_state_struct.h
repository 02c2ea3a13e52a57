// Fills the simulation_state struct that the user's dispatch function receives.
#ifndef TAMLO_MARSHAL_SIMULATION_STATE_STRUCT_H
#define TAMLO_MARSHAL_SIMULATION_STATE_STRUCT_H

#include <vector>

#include "matrix.h"
#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_marshal {

// Writes every top-level field of simulation_state into element 1 of the 1 x 1 struct
// `target` (kept by the caller across time steps).
void fill_simulation_state_struct(mxArray* target, const tamlo_dispatch::SimulationState& state);

// Builders shared with the grid tariff structs.
mxArray* make_grid_state_flags(const tamlo_dispatch::GridStateFlags& flags);

// Builders of the values of simulation_state, each a new array that the caller owns:
// N x 1 struct arrays for the lists, 1 x 1 structs for the buses.
mxArray* make_generator_states(const std::vector<tamlo_dispatch::GeneratorState>& generators);
mxArray* make_pv_states(const std::vector<tamlo_dispatch::PvState>& pvs);
mxArray* make_battery_states(const std::vector<tamlo_dispatch::BatteryState>& batteries);
mxArray* make_flywheel_states(const std::vector<tamlo_dispatch::FlywheelState>& flywheels);
mxArray* make_converter_states(const std::vector<tamlo_dispatch::ConverterState>& converters);
mxArray* make_grid_states(const std::vector<tamlo_dispatch::GridState>& grids);
mxArray* make_custom_component_states(const std::vector<tamlo_dispatch::CustomComponentState>& components);
mxArray* make_wind_turbine_states(const std::vector<tamlo_dispatch::WindTurbineState>& turbines);
mxArray* make_primary_load_states(const std::vector<tamlo_dispatch::PrimaryLoadState>& loads);
mxArray* make_bus_state(const tamlo_dispatch::BusState& bus);

}  // namespace tamlo_marshal

#endif
