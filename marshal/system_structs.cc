// Builds the system-wide structs of simulation_parameters: extension_parameters, emissions
// and operating_reserve.
#include "system_structs.h"

#include "struct_primitives.h"

namespace tamlo_marshal {

using namespace tamlo_dispatch;

namespace {

// Every type code other than number, number_list and boolean is text.
void set_extension_value_field(mxArray* s, std::size_t index, const ExtensionParameter& parameter) {
    switch (parameter.type) {
        case ExtensionParameterType::number:
            set_number_field(s, index, "value", parameter.number_value);
            return;
        case ExtensionParameterType::number_list:
            set_number_list_field(s, index, "value", parameter.number_list_value);
            return;
        case ExtensionParameterType::boolean:
            set_logical_field(s, index, "value", parameter.boolean_value);
            return;
        default:
            set_string_field(s, index, "value", parameter.text_value);
            return;
    }
}

}  // namespace

mxArray* make_extension_parameter_array(const std::vector<ExtensionParameter>& parameters) {
    mxArray* s = make_struct_array(parameters.size());
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        set_string_field(s, i, "name", parameters[i].name);
        set_extension_value_field(s, i, parameters[i]);
    }
    return s;
}

// MATLAB sees the pollutants in one order (CO, CO2, NOx, PM, SO2, UHC) for all three groups,
// whatever order the record keeps them in.
mxArray* make_emissions_struct(const EmissionsParameters& emissions) {
    mxArray* s = make_single_struct();
    set_number_field(s, 0, "emissions_penalty_CO", emissions.emissions_penalty_CO);
    set_number_field(s, 0, "emissions_penalty_CO2", emissions.emissions_penalty_CO2);
    set_number_field(s, 0, "emissions_penalty_NOx", emissions.emissions_penalty_NOx);
    set_number_field(s, 0, "emissions_penalty_PM", emissions.emissions_penalty_PM);
    set_number_field(s, 0, "emissions_penalty_SO2", emissions.emissions_penalty_SO2);
    set_number_field(s, 0, "emissions_penalty_UHC", emissions.emissions_penalty_UHC);
    set_number_field(s, 0, "max_emissions_CO", emissions.max_emissions_CO);
    set_number_field(s, 0, "max_emissions_CO2", emissions.max_emissions_CO2);
    set_number_field(s, 0, "max_emissions_NOx", emissions.max_emissions_NOx);
    set_number_field(s, 0, "max_emissions_PM", emissions.max_emissions_PM);
    set_number_field(s, 0, "max_emissions_SO2", emissions.max_emissions_SO2);
    set_number_field(s, 0, "max_emissions_UHC", emissions.max_emissions_UHC);
    set_logical_field(s, 0, "use_max_emissions_CO", emissions.use_max_emissions_CO);
    set_logical_field(s, 0, "use_max_emissions_CO2", emissions.use_max_emissions_CO2);
    set_logical_field(s, 0, "use_max_emissions_NOx", emissions.use_max_emissions_NOx);
    set_logical_field(s, 0, "use_max_emissions_PM", emissions.use_max_emissions_PM);
    set_logical_field(s, 0, "use_max_emissions_SO2", emissions.use_max_emissions_SO2);
    set_logical_field(s, 0, "use_max_emissions_UHC", emissions.use_max_emissions_UHC);
    return s;
}

mxArray* make_operating_reserve_struct(const OperatingReserveParameters& reserve) {
    mxArray* s = make_single_struct();
    set_number_field(s, 0, "peak_load_requirement", reserve.peak_load_requirement);
    set_number_field(s, 0, "solar_requirement", reserve.solar_requirement);
    set_number_field(s, 0, "timestep_requirement", reserve.timestep_requirement);
    set_number_field(s, 0, "wind_requirement", reserve.wind_requirement);
    return s;
}

}  // namespace tamlo_marshal
