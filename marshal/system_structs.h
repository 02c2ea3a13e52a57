// Builds the system-wide structs of simulation_parameters: extension_parameters, emissions
// and operating_reserve.
#ifndef TAMLO_MARSHAL_SYSTEM_STRUCTS_H
#define TAMLO_MARSHAL_SYSTEM_STRUCTS_H

#include <vector>

#include "matrix.h"
#include "tamlo_dispatch/simulation_parameters.h"

namespace tamlo_marshal {

// New N x 1 struct array of name/value items; each value has the MATLAB class its type
// names. The caller owns it.
mxArray* make_extension_parameter_array(const std::vector<tamlo_dispatch::ExtensionParameter>& parameters);
// New 1 x 1 structs; the caller owns them.
mxArray* make_emissions_struct(const tamlo_dispatch::EmissionsParameters& emissions);
mxArray* make_operating_reserve_struct(const tamlo_dispatch::OperatingReserveParameters& reserve);

}  // namespace tamlo_marshal

#endif
