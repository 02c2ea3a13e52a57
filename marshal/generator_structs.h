// Builds the generators struct array of simulation_parameters and each generator's fuel struct.
#ifndef TAMLO_MARSHAL_GENERATOR_STRUCTS_H
#define TAMLO_MARSHAL_GENERATOR_STRUCTS_H

#include <vector>

#include "matrix.h"
#include "tamlo_dispatch/simulation_parameters.h"

namespace tamlo_marshal {

// New N x 1 struct array, one element per generator; the caller owns it.
mxArray* make_generator_array(const std::vector<tamlo_dispatch::GeneratorParameters>& generators);
// New 1 x 1 fuel struct; the caller owns it.
mxArray* make_fuel_struct(const tamlo_dispatch::FuelParameters& fuel);

}  // namespace tamlo_marshal

#endif
