// Builds the primary_loads struct array of simulation_parameters.
#include "primary_load_structs.h"

#include "struct_primitives.h"

namespace tamlo_marshal {

using namespace tamlo_dispatch;

// A primary load has no common head: no component_number and no cost.
mxArray* make_primary_load_array(const std::vector<PrimaryLoadParameters>& loads) {
    mxArray* s = make_struct_array(loads.size());
    for (std::size_t i = 0; i < loads.size(); ++i) {
        const PrimaryLoadParameters& load = loads[i];
        set_logical_field(s, i, "is_AC", load.is_AC);
        set_string_field(s, i, "name", load.name);
        set_number_field(s, i, "peak_load", load.peak_load);
    }
    return s;
}

}  // namespace tamlo_marshal
