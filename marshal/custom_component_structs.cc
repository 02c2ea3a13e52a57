// Builds the custom_components struct array of simulation_parameters.
#include "custom_component_structs.h"

#include "component_fields.h"
#include "struct_primitives.h"

namespace tamlo_marshal {

using namespace tamlo_dispatch;

// A custom component carries number, bus and name twice, in its head and as own members.
// The own members fix the field order; the head, written after them, supplies the values
// (and the cost). Items and parameters stay with the simulator.
mxArray* make_custom_component_array(const std::vector<CustomComponentParameters>& components) {
    mxArray* s = make_struct_array(components.size());
    for (std::size_t i = 0; i < components.size(); ++i) {
        const CustomComponentParameters& component = components[i];
        set_number_field(s, i, "capacity", component.capacity);
        set_number_field(s, i, "component_number", count_to_double(component.component_number));
        set_logical_field(s, i, "is_AC", component.is_AC);
        set_string_field(s, i, "name", component.name);
        add_component_fields(s, i, component.component, true);
    }
    return s;
}

}  // namespace tamlo_marshal
