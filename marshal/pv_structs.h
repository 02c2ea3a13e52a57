// Builds the pvs struct array of simulation_parameters.
#ifndef TAMLO_MARSHAL_PV_STRUCTS_H
#define TAMLO_MARSHAL_PV_STRUCTS_H

#include <vector>

#include "matrix.h"
#include "tamlo_dispatch/simulation_parameters.h"

namespace tamlo_marshal {

// New N x 1 struct array, one element per PV array; the caller owns it.
mxArray* make_pv_array(const std::vector<tamlo_dispatch::PvParameters>& pvs);

}  // namespace tamlo_marshal

#endif
