// Builds the custom_components struct array of simulation_parameters.
#ifndef TAMLO_MARSHAL_CUSTOM_COMPONENT_STRUCTS_H
#define TAMLO_MARSHAL_CUSTOM_COMPONENT_STRUCTS_H

#include <vector>

#include "matrix.h"
#include "tamlo_dispatch/simulation_parameters.h"

namespace tamlo_marshal {

// New N x 1 struct array, one element per custom component; the caller owns it.
mxArray* make_custom_component_array(const std::vector<tamlo_dispatch::CustomComponentParameters>& components);

}  // namespace tamlo_marshal

#endif
