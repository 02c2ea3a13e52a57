// Builds the generators struct array of simulation_parameters and each generator's fuel struct.
#include "generator_structs.h"

#include "component_fields.h"
#include "struct_primitives.h"

namespace tamlo_marshal {

using namespace tamlo_dispatch;

mxArray* make_generator_array(const std::vector<GeneratorParameters>& generators) {
    mxArray* s = make_struct_array(generators.size());
    for (std::size_t i = 0; i < generators.size(); ++i) {
        const GeneratorParameters& g = generators[i];
        set_number_field(s, i, "emissions_factor_CO", g.emissions_factor_CO);
        set_number_field(s, i, "emissions_factor_NOx", g.emissions_factor_NOx);
        set_number_field(s, i, "emissions_factor_PM", g.emissions_factor_PM);
        set_number_field(s, i, "emissions_factor_UHC", g.emissions_factor_UHC);
        set_number_field(s, i, "emissions_sulfur_PM_ratio", g.emissions_sulfur_PM_ratio);
        set_struct_field(s, i, "fuel", make_fuel_struct(g.fuel));
        set_number_field(s, i, "fuel_curve_intercept", g.fuel_curve_intercept);
        set_number_field(s, i, "fuel_curve_slope", g.fuel_curve_slope);
        set_number_field(s, i, "lifetime_in_hours", g.lifetime_in_hours);
        set_number_field(s, i, "minimum_load", g.minimum_load);
        set_number_field(s, i, "minimum_runtime", g.minimum_runtime);
        set_number_field(s, i, "nonlinear_x0", g.nonlinear_x0);
        set_number_field(s, i, "nonlinear_x1", g.nonlinear_x1);
        set_number_field(s, i, "nonlinear_x2", g.nonlinear_x2);
        set_number_field(s, i, "rated_capacity", g.rated_capacity);
        set_logical_field(s, i, "use_nonlinear_fuel_curve", g.use_nonlinear_fuel_curve);
        add_component_fields(s, i, g.component, true);
    }
    return s;
}

mxArray* make_fuel_struct(const FuelParameters& fuel) {
    mxArray* s = make_single_struct();
    set_number_field(s, 0, "carbon_content", fuel.carbon_content);
    set_number_field(s, 0, "cost", fuel.cost);
    set_number_field(s, 0, "density", fuel.density);
    set_number_field(s, 0, "initial_fuel_available", fuel.initial_fuel_available);
    set_logical_field(s, 0, "limit_consumption", fuel.limit_consumption);
    set_number_field(s, 0, "lower_heating_value", fuel.lower_heating_value);
    set_string_field(s, 0, "name", fuel.name);
    set_number_field(s, 0, "sulfur_content", fuel.sulfur_content);
    return s;
}

}  // namespace tamlo_marshal
