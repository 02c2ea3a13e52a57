// Fills the simulation_state struct that the user's dispatch function receives.
#ifndef TAMLO_MARSHAL_SIMULATION_STATE_STRUCT_H
#define TAMLO_MARSHAL_SIMULATION_STATE_STRUCT_H

#include "matrix.h"
#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_marshal {

// Writes every top-level field of simulation_state into element 1 of the 1 x 1 struct
// `target` (kept by the caller across time steps).
void fill_simulation_state_struct(mxArray* target, const tamlo_dispatch::SimulationState& state);

// Builders shared with the grid tariff structs.
mxArray* make_grid_state_flags(const tamlo_dispatch::GridStateFlags& flags);

}  // namespace tamlo_marshal

#endif
