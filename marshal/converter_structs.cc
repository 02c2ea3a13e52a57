// Builds the converters struct array of simulation_parameters.
#include "converter_structs.h"

#include "component_fields.h"
#include "struct_primitives.h"

namespace tamlo_marshal {

using namespace tamlo_dispatch;

// A system converter joins both buses, so its element has no is_AC; efficiencies stay in percent.
mxArray* make_converter_array(const std::vector<ConverterParameters>& converters) {
    mxArray* s = make_struct_array(converters.size());
    for (std::size_t i = 0; i < converters.size(); ++i) {
        const ConverterParameters& converter = converters[i];
        set_number_field(s, i, "inverter_capacity", converter.inverter_capacity);
        set_number_field(s, i, "rectifier_capacity", converter.rectifier_capacity);
        set_number_field(s, i, "inverter_efficiency", converter.inverter_efficiency);
        set_number_field(s, i, "rectifier_efficiency", converter.rectifier_efficiency);
        set_number_field(s, i, "lifetime_in_years", converter.lifetime_in_years);
        set_logical_field(s, i, "able_to_parallel_with_ac_generator", converter.able_to_parallel_with_ac_generator);
        add_component_fields(s, i, converter.component, false);
    }
    return s;
}

}  // namespace tamlo_marshal
