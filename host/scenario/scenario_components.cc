// Readers of the component records, field names as in simulation_parameters.
#include "scenario_readers.h"

namespace tamlo_host {

using namespace tamlo_dispatch;

void read_component_head(ObjectReader& r, ComponentParameters& head, bool include_is_AC) {
    r.read("component_number", head.component_number);
    if (include_is_AC) r.read("is_AC", head.is_AC);
    r.read("name", head.name);
    r.object("cost", [&](ObjectReader& c) {
        c.read("capital", head.cost.capital);
        c.read("operation_and_maintenance", head.cost.operation_and_maintenance);
        c.read("replacement", head.cost.replacement);
    });
}

void read_generator(ObjectReader& r, GeneratorParameters& g) {
    r.read("emissions_factor_CO", g.emissions_factor_CO);
    r.read("emissions_factor_NOx", g.emissions_factor_NOx);
    r.read("emissions_factor_PM", g.emissions_factor_PM);
    r.read("emissions_factor_UHC", g.emissions_factor_UHC);
    r.read("emissions_sulfur_PM_ratio", g.emissions_sulfur_PM_ratio);
    r.object("fuel", [&](ObjectReader& f) {
        f.read("carbon_content", g.fuel.carbon_content);
        f.read("cost", g.fuel.cost);
        f.read("density", g.fuel.density);
        f.read("initial_fuel_available", g.fuel.initial_fuel_available, amount);
        f.read("limit_consumption", g.fuel.limit_consumption);
        f.read("lower_heating_value", g.fuel.lower_heating_value);
        f.read("name", g.fuel.name);
        f.read("sulfur_content", g.fuel.sulfur_content);
    });
    r.read("fuel_curve_intercept", g.fuel_curve_intercept);
    r.read("fuel_curve_slope", g.fuel_curve_slope);
    r.read("lifetime_in_hours", g.lifetime_in_hours);
    r.read("minimum_load", g.minimum_load, power_kw);
    r.read("minimum_runtime", g.minimum_runtime);
    r.read("nonlinear_x0", g.nonlinear_x0);
    r.read("nonlinear_x1", g.nonlinear_x1);
    r.read("nonlinear_x2", g.nonlinear_x2);
    r.require("rated_capacity");
    r.read("rated_capacity", g.rated_capacity, power_kw);
    r.read("use_nonlinear_fuel_curve", g.use_nonlinear_fuel_curve);
    read_component_head(r, g.component, true);
    if (g.minimum_load > g.rated_capacity) {
        r.fail(r.child_path("minimum_load"), "must be at most rated_capacity (" + r.number_text(g.rated_capacity) + ")");
    }
}

void read_primary_load(ObjectReader& r, PrimaryLoadParameters& load) {
    r.read("is_AC", load.is_AC);
    r.read("name", load.name);
    r.read("peak_load", load.peak_load, power_kw);
}

void read_pv(ObjectReader& r, PvParameters& pv, ScenarioContext& context) {
    r.read("lifetime_in_years", pv.lifetime_in_years);
    r.require("rated_capacity");
    r.read("rated_capacity", pv.rated_capacity, power_kw);
    read_number_list(r, "solar_forecast", context, any_number, false, pv.solar_forecast);
    read_component_head(r, pv.component, true);
}

void read_wind_turbine(ObjectReader& r, WindTurbineParameters& turbine) {
    r.require("power_curve");
    r.read("power_curve", turbine.power_curve, wind_speed_m_s, power_kw);
    for (std::size_t i = 1; i < turbine.power_curve.size(); ++i) {
        if (!(turbine.power_curve[i].first > turbine.power_curve[i - 1].first)) {
            r.fail(r.child_path("power_curve") + "[" + std::to_string(i) + "]",
                   "wind speeds of the power curve must increase from point to point");
        }
    }
    r.require("quantity");
    r.read("quantity", turbine.quantity);
    r.read("rated_power", turbine.rated_power, power_kw);
    read_component_head(r, turbine.component, true);
}

void read_custom_component(ObjectReader& r, CustomComponentParameters& custom) {
    r.read("capacity", custom.capacity, power_kw);
    r.read("component_number", custom.component_number);
    r.read("is_AC", custom.is_AC);
    r.read("name", custom.name);
    // The head carries the same three values; MATLAB receives the head's.
    custom.component.component_number = custom.component_number;
    custom.component.is_AC = custom.is_AC;
    custom.component.name = custom.name;
    r.object("cost", [&](ObjectReader& c) {
        c.read("capital", custom.component.cost.capital);
        c.read("operation_and_maintenance", custom.component.cost.operation_and_maintenance);
        c.read("replacement", custom.component.cost.replacement);
    });
}

void read_battery(ObjectReader& r, BatteryParameters& battery) {
    r.read("nominal_voltage", battery.nominal_voltage);
    r.read("nominal_capacity", battery.nominal_capacity, amount);
    r.read("minimum_state_of_charge", battery.minimum_state_of_charge);
    r.require("fractional_charge_efficiency");
    r.read("fractional_charge_efficiency", battery.fractional_charge_efficiency);
    r.require("fractional_discharge_efficiency");
    r.read("fractional_discharge_efficiency", battery.fractional_discharge_efficiency);
    r.read("wear_cost", battery.wear_cost);
    r.require("battery_bank_maximum_absolute_soc");
    r.read("battery_bank_maximum_absolute_soc", battery.battery_bank_maximum_absolute_soc, energy_kwh);
    r.read("battery_bank_minimum_absolute_soc", battery.battery_bank_minimum_absolute_soc, energy_kwh);
    r.object("dedicated_converter", [&](ObjectReader& d) {
        DedicatedConverterParameters& c = battery.dedicated_converter;
        d.read("rectifier_capacity", c.rectifier_capacity, power_kw);
        d.read("inverter_capacity", c.inverter_capacity, power_kw);
        d.read("lifetime_in_years", c.lifetime_in_years);
        d.read("has_efficiency_tables", c.has_efficiency_tables);
        d.read("inverter_efficiency_table", c.inverter_efficiency_table, non_negative, non_negative);
        d.read("rectifier_efficiency_table", c.rectifier_efficiency_table, non_negative, non_negative);
        d.read("rectifier_efficiency", c.rectifier_efficiency);
        d.read("inverter_efficiency", c.inverter_efficiency);
    });
    r.read("has_dedicated_converter", battery.has_dedicated_converter);
    read_component_head(r, battery.component, true);

    const auto fraction_check = [&](const char* key, double value) {
        if (!(value > 0 && value <= 1)) r.fail(r.child_path(key), "must be a fraction above 0 and at most 1");
    };
    fraction_check("fractional_charge_efficiency", battery.fractional_charge_efficiency);
    fraction_check("fractional_discharge_efficiency", battery.fractional_discharge_efficiency);
    if (!(battery.battery_bank_maximum_absolute_soc > battery.battery_bank_minimum_absolute_soc)) {
        r.fail(r.child_path("battery_bank_maximum_absolute_soc"),
               "must be greater than battery_bank_minimum_absolute_soc");
    }
    if (battery.has_dedicated_converter) {
        const auto percent_check = [&](const char* key, double value) {
            if (!(value > 0 && value <= 100)) {
                r.fail(r.child_path("dedicated_converter") + "." + key, "must be a percentage above 0 and at most 100");
            }
        };
        percent_check("rectifier_efficiency", battery.dedicated_converter.rectifier_efficiency);
        percent_check("inverter_efficiency", battery.dedicated_converter.inverter_efficiency);
    }
}

void read_converter(ObjectReader& r, ConverterParameters& converter) {
    r.read("inverter_capacity", converter.inverter_capacity, power_kw);
    r.read("rectifier_capacity", converter.rectifier_capacity, power_kw);
    r.read("inverter_efficiency", converter.inverter_efficiency);
    r.read("rectifier_efficiency", converter.rectifier_efficiency);
    r.read("lifetime_in_years", converter.lifetime_in_years);
    r.read("able_to_parallel_with_ac_generator", converter.able_to_parallel_with_ac_generator);
    read_component_head(r, converter.component, false);
}

void read_flywheel(ObjectReader& r, FlywheelParameters& flywheel) {
    r.read("charge_discharge_capacity", flywheel.charge_discharge_capacity, power_kw);
    r.read("parasitic_load", flywheel.parasitic_load, power_kw);
    r.read("lifetime_in_years", flywheel.lifetime_in_years);
    r.read("quantity", flywheel.quantity, 0);
    read_component_head(r, flywheel.component, true);
}

void read_emissions(ObjectReader& r, EmissionsParameters& e) {
    r.read("emissions_penalty_CO", e.emissions_penalty_CO);
    r.read("emissions_penalty_CO2", e.emissions_penalty_CO2);
    r.read("emissions_penalty_NOx", e.emissions_penalty_NOx);
    r.read("emissions_penalty_PM", e.emissions_penalty_PM);
    r.read("emissions_penalty_SO2", e.emissions_penalty_SO2);
    r.read("emissions_penalty_UHC", e.emissions_penalty_UHC);
    r.read("max_emissions_CO", e.max_emissions_CO);
    r.read("max_emissions_CO2", e.max_emissions_CO2);
    r.read("max_emissions_NOx", e.max_emissions_NOx);
    r.read("max_emissions_PM", e.max_emissions_PM);
    r.read("max_emissions_SO2", e.max_emissions_SO2);
    r.read("max_emissions_UHC", e.max_emissions_UHC);
    r.read("use_max_emissions_CO", e.use_max_emissions_CO);
    r.read("use_max_emissions_CO2", e.use_max_emissions_CO2);
    r.read("use_max_emissions_NOx", e.use_max_emissions_NOx);
    r.read("use_max_emissions_PM", e.use_max_emissions_PM);
    r.read("use_max_emissions_SO2", e.use_max_emissions_SO2);
    r.read("use_max_emissions_UHC", e.use_max_emissions_UHC);
}

void read_operating_reserve(ObjectReader& r, OperatingReserveParameters& reserve) {
    r.read("peak_load_requirement", reserve.peak_load_requirement);
    r.read("solar_requirement", reserve.solar_requirement);
    r.read("timestep_requirement", reserve.timestep_requirement);
    r.read("wind_requirement", reserve.wind_requirement);
}

}  // namespace tamlo_host
