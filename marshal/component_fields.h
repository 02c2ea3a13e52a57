// The fields that every component struct ends with: number, bus, name and the cost struct.
#ifndef TAMLO_MARSHAL_COMPONENT_FIELDS_H
#define TAMLO_MARSHAL_COMPONENT_FIELDS_H

#include <cstddef>

#include "matrix.h"
#include "tamlo_dispatch/simulation_parameters.h"

namespace tamlo_marshal {

// Writes component_number, is_AC (only when include_is_AC), name and cost into s(index).
void add_component_fields(mxArray* s, std::size_t index, tamlo_dispatch::ComponentParameters head,
                          bool include_is_AC);

// New 1 x 1 cost struct; the caller owns it.
mxArray* make_cost_struct(const tamlo_dispatch::ComponentCost& cost);

}  // namespace tamlo_marshal

#endif
