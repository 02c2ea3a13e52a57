// Builds the primary_loads struct array of simulation_parameters.
#ifndef TAMLO_MARSHAL_PRIMARY_LOAD_STRUCTS_H
#define TAMLO_MARSHAL_PRIMARY_LOAD_STRUCTS_H

#include <vector>

#include "matrix.h"
#include "tamlo_dispatch/simulation_parameters.h"

namespace tamlo_marshal {

// New N x 1 struct array, one element per primary load; the caller owns it.
mxArray* make_primary_load_array(const std::vector<tamlo_dispatch::PrimaryLoadParameters>& loads);

}  // namespace tamlo_marshal

#endif
