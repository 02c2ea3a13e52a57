// Builds the wind_turbines struct array of simulation_parameters.
#include "wind_turbine_structs.h"

#include "component_fields.h"
#include "struct_primitives.h"

namespace tamlo_marshal {

using namespace tamlo_dispatch;

mxArray* make_wind_turbine_array(const std::vector<WindTurbineParameters>& turbines) {
    mxArray* s = make_struct_array(turbines.size());
    for (std::size_t i = 0; i < turbines.size(); ++i) {
        const WindTurbineParameters& turbine = turbines[i];
        set_struct_field(s, i, "power_curve", make_point_matrix(turbine.power_curve));
        set_number_field(s, i, "quantity", count_to_double(turbine.quantity));
        set_number_field(s, i, "rated_power", turbine.rated_power);
        add_component_fields(s, i, turbine.component, true);
    }
    return s;
}

}  // namespace tamlo_marshal
