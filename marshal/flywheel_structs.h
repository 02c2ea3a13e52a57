// Builds the flywheels struct array of simulation_parameters.
#ifndef TAMLO_MARSHAL_FLYWHEEL_STRUCTS_H
#define TAMLO_MARSHAL_FLYWHEEL_STRUCTS_H

#include <vector>

#include "matrix.h"
#include "tamlo_dispatch/simulation_parameters.h"

namespace tamlo_marshal {

// New N x 1 struct array, one element per flywheel; the caller owns it.
mxArray* make_flywheel_array(const std::vector<tamlo_dispatch::FlywheelParameters>& flywheels);

}  // namespace tamlo_marshal

#endif
