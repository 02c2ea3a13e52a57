// Builds the batteries struct array of simulation_parameters and each battery's dedicated_converter struct.
#ifndef TAMLO_MARSHAL_BATTERY_STRUCTS_H
#define TAMLO_MARSHAL_BATTERY_STRUCTS_H

#include <vector>

#include "matrix.h"
#include "tamlo_dispatch/simulation_parameters.h"

namespace tamlo_marshal {

// New N x 1 struct array, one element per battery bank; the caller owns it.
mxArray* make_battery_array(const std::vector<tamlo_dispatch::BatteryParameters>& batteries);
// New 1 x 1 dedicated_converter struct (without the converter's own head); the caller owns it.
mxArray* make_dedicated_converter_struct(const tamlo_dispatch::DedicatedConverterParameters& converter);

}  // namespace tamlo_marshal

#endif
