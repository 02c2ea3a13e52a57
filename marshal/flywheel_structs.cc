// Builds the flywheels struct array of simulation_parameters.
#include "flywheel_structs.h"

#include "component_fields.h"
#include "struct_primitives.h"

namespace tamlo_marshal {

using namespace tamlo_dispatch;

mxArray* make_flywheel_array(const std::vector<FlywheelParameters>& flywheels) {
    mxArray* s = make_struct_array(flywheels.size());
    for (std::size_t i = 0; i < flywheels.size(); ++i) {
        const FlywheelParameters& flywheel = flywheels[i];
        set_number_field(s, i, "charge_discharge_capacity", flywheel.charge_discharge_capacity);
        set_number_field(s, i, "parasitic_load", flywheel.parasitic_load);
        set_number_field(s, i, "lifetime_in_years", flywheel.lifetime_in_years);
        set_number_field(s, i, "quantity", count_to_double(flywheel.quantity));
        add_component_fields(s, i, flywheel.component, true);
    }
    return s;
}

}  // namespace tamlo_marshal
