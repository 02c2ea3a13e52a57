// Builds the pvs struct array of simulation_parameters.
#include "pv_structs.h"

#include "component_fields.h"
#include "struct_primitives.h"

namespace tamlo_marshal {

using namespace tamlo_dispatch;

mxArray* make_pv_array(const std::vector<PvParameters>& pvs) {
    mxArray* s = make_struct_array(pvs.size());
    for (std::size_t i = 0; i < pvs.size(); ++i) {
        const PvParameters& pv = pvs[i];
        set_number_field(s, i, "lifetime_in_years", pv.lifetime_in_years);
        set_number_field(s, i, "rated_capacity", pv.rated_capacity);
        set_number_list_field(s, i, "solar_forecast", pv.solar_forecast);
        add_component_fields(s, i, pv.component, true);
    }
    return s;
}

}  // namespace tamlo_marshal
