// Builds the converters struct array of simulation_parameters.
#ifndef TAMLO_MARSHAL_CONVERTER_STRUCTS_H
#define TAMLO_MARSHAL_CONVERTER_STRUCTS_H

#include <vector>

#include "matrix.h"
#include "tamlo_dispatch/simulation_parameters.h"

namespace tamlo_marshal {

// New N x 1 struct array, one element per system converter (no is_AC field); the caller owns it.
mxArray* make_converter_array(const std::vector<tamlo_dispatch::ConverterParameters>& converters);

}  // namespace tamlo_marshal

#endif
