// Builds the batteries struct array of simulation_parameters and each battery's dedicated_converter struct.
#include "battery_structs.h"

#include "component_fields.h"
#include "struct_primitives.h"

namespace tamlo_marshal {

using namespace tamlo_dispatch;

// dedicated_converter is written for every battery; has_dedicated_converter tells whether
// it is real.
mxArray* make_battery_array(const std::vector<BatteryParameters>& batteries) {
    mxArray* s = make_struct_array(batteries.size());
    for (std::size_t i = 0; i < batteries.size(); ++i) {
        const BatteryParameters& battery = batteries[i];
        set_number_field(s, i, "nominal_voltage", battery.nominal_voltage);
        set_number_field(s, i, "nominal_capacity", battery.nominal_capacity);
        set_number_field(s, i, "minimum_state_of_charge", battery.minimum_state_of_charge);
        set_number_field(s, i, "fractional_charge_efficiency", battery.fractional_charge_efficiency);
        set_number_field(s, i, "fractional_discharge_efficiency", battery.fractional_discharge_efficiency);
        set_number_field(s, i, "wear_cost", battery.wear_cost);
        set_number_field(s, i, "battery_bank_maximum_absolute_soc", battery.battery_bank_maximum_absolute_soc);
        set_number_field(s, i, "battery_bank_minimum_absolute_soc", battery.battery_bank_minimum_absolute_soc);
        set_struct_field(s, i, "dedicated_converter", make_dedicated_converter_struct(battery.dedicated_converter));
        set_logical_field(s, i, "has_dedicated_converter", battery.has_dedicated_converter);
        add_component_fields(s, i, battery.component, true);
    }
    return s;
}

// The converter's own head (name, number, bus, cost) is not passed on; both tables are
// written whatever has_efficiency_tables says.
mxArray* make_dedicated_converter_struct(const DedicatedConverterParameters& converter) {
    mxArray* s = make_single_struct();
    set_number_field(s, 0, "rectifier_capacity", converter.rectifier_capacity);
    set_number_field(s, 0, "inverter_capacity", converter.inverter_capacity);
    set_number_field(s, 0, "lifetime_in_years", converter.lifetime_in_years);
    set_logical_field(s, 0, "has_efficiency_tables", converter.has_efficiency_tables);
    set_struct_field(s, 0, "inverter_efficiency_table", make_point_matrix(converter.inverter_efficiency_table));
    set_struct_field(s, 0, "rectifier_efficiency_table", make_point_matrix(converter.rectifier_efficiency_table));
    set_number_field(s, 0, "rectifier_efficiency", converter.rectifier_efficiency);
    set_number_field(s, 0, "inverter_efficiency", converter.inverter_efficiency);
    return s;
}

}  // namespace tamlo_marshal
