// Fills the simulation_parameters struct that the user's three MATLAB functions receive.
#include "simulation_parameters_struct.h"

#include "battery_structs.h"
#include "converter_structs.h"
#include "custom_component_structs.h"
#include "flywheel_structs.h"
#include "generator_structs.h"
#include "grid_structs.h"
#include "primary_load_structs.h"
#include "pv_structs.h"
#include "struct_primitives.h"
#include "system_structs.h"
#include "wind_turbine_structs.h"

namespace tamlo_marshal {

using namespace tamlo_dispatch;

// There are no has_ fields for primary loads, grids and custom components.
void fill_simulation_parameters_struct(mxArray* target, const SimulationParameters& parameters) {
    const SimulationParameters& p = parameters;
    set_struct_field(target, 0, "generators", make_generator_array(p.generator_list));
    set_struct_field(target, 0, "primary_loads", make_primary_load_array(p.primary_load_list));
    set_struct_field(target, 0, "pvs", make_pv_array(p.pv_list));
    set_struct_field(target, 0, "batteries", make_battery_array(p.battery_list));
    set_struct_field(target, 0, "converters", make_converter_array(p.converter_list));
    set_struct_field(target, 0, "flywheels", make_flywheel_array(p.flywheel_list));
    set_struct_field(target, 0, "grids", make_grid_parameters(p.grid_list));
    set_struct_field(target, 0, "custom_components", make_custom_component_array(p.custom_component_list));
    set_struct_field(target, 0, "wind_turbines", make_wind_turbine_array(p.wind_turbine_list));
    set_struct_field(target, 0, "emissions", make_emissions_struct(p.emissions));
    set_struct_field(target, 0, "operating_reserve", make_operating_reserve_struct(p.operating_reserve));
    set_number_field(target, 0, "maximum_annual_capacity_shortage", p.maximum_annual_capacity_shortage);
    set_number_field(target, 0, "minimum_renewable_fraction", p.minimum_renewable_fraction);
    set_number_field(target, 0, "timestep_size_in_seconds", count_to_double(p.timestep_size_in_seconds));
    set_number_field(target, 0, "number_of_timesteps", count_to_double(p.number_of_timesteps));
    set_struct_field(target, 0, "extension_parameters", make_extension_parameter_array(p.extension_parameters));
    set_logical_field(target, 0, "has_generator", !p.generator_list.empty());
    set_logical_field(target, 0, "has_battery", !p.battery_list.empty());
    set_logical_field(target, 0, "has_pv", !p.pv_list.empty());
    set_logical_field(target, 0, "has_converter", !p.converter_list.empty());
    set_logical_field(target, 0, "has_flywheel", !p.flywheel_list.empty());
    set_logical_field(target, 0, "has_wind_turbine", !p.wind_turbine_list.empty());
}

}  // namespace tamlo_marshal
