// Fills the simulation_parameters struct that the user's three MATLAB functions receive.
#ifndef TAMLO_MARSHAL_SIMULATION_PARAMETERS_STRUCT_H
#define TAMLO_MARSHAL_SIMULATION_PARAMETERS_STRUCT_H

#include "matrix.h"
#include "tamlo_dispatch/simulation_parameters.h"

namespace tamlo_marshal {

// Writes every top-level field of simulation_parameters into element 1 of the 1 x 1 struct
// `target` (kept by the caller across runs: on a refill each old value is replaced and the
// field order stays that of the first fill).
void fill_simulation_parameters_struct(mxArray* target, const tamlo_dispatch::SimulationParameters& parameters);

}  // namespace tamlo_marshal

#endif
