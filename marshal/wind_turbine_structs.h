// Builds the wind_turbines struct array of simulation_parameters.
#ifndef TAMLO_MARSHAL_WIND_TURBINE_STRUCTS_H
#define TAMLO_MARSHAL_WIND_TURBINE_STRUCTS_H

#include <vector>

#include "matrix.h"
#include "tamlo_dispatch/simulation_parameters.h"

namespace tamlo_marshal {

// New N x 1 struct array, one element per wind turbine; the caller owns it.
mxArray* make_wind_turbine_array(const std::vector<tamlo_dispatch::WindTurbineParameters>& turbines);

}  // namespace tamlo_marshal

#endif
