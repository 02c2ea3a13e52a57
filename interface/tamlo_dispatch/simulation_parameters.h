// The records in which the simulator describes a whole simulation run to the extension.
#ifndef TAMLO_DISPATCH_SIMULATION_PARAMETERS_H
#define TAMLO_DISPATCH_SIMULATION_PARAMETERS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tamlo_dispatch/grid_models.h"

namespace tamlo_dispatch {

// number = 0, number_list = 2, boolean = 3; every other value (1 among them) is text.
enum class ExtensionParameterType : std::int32_t {
    number = 0,
    text = 1,
    number_list = 2,
    boolean = 3,
};

struct ExtensionParameter {
    std::string name;
    ExtensionParameterType type = ExtensionParameterType::text;
    double number_value = 0.0;
    bool boolean_value = false;
    std::string text_value;
    std::vector<double> number_list_value;
};

struct EmissionsParameters {
    double emissions_penalty_CO2 = 0.0;
    double emissions_penalty_CO = 0.0;
    double emissions_penalty_UHC = 0.0;
    double emissions_penalty_PM = 0.0;
    double emissions_penalty_SO2 = 0.0;
    double emissions_penalty_NOx = 0.0;
    double max_emissions_CO = 0.0;
    double max_emissions_CO2 = 0.0;
    double max_emissions_UHC = 0.0;
    double max_emissions_PM = 0.0;
    double max_emissions_SO2 = 0.0;
    double max_emissions_NOx = 0.0;
    bool use_max_emissions_CO = false;
    bool use_max_emissions_CO2 = false;
    bool use_max_emissions_UHC = false;
    bool use_max_emissions_PM = false;
    bool use_max_emissions_SO2 = false;
    bool use_max_emissions_NOx = false;
};

struct OperatingReserveParameters {
    double peak_load_requirement = 0.0;
    double timestep_requirement = 0.0;
    double wind_requirement = 0.0;
    double solar_requirement = 0.0;
};

struct ComponentCost {
    double capital = 0.0;
    double replacement = 0.0;
    double operation_and_maintenance = 0.0;
};

// The common head of every component record except the primary load.
struct ComponentParameters {
    ComponentCost cost;
    std::string name;
    std::uint64_t component_number = 0;
    bool is_AC = false;
};

struct FuelParameters {
    std::string name;
    double cost = 0.0;
    bool limit_consumption = false;
    double initial_fuel_available = 0.0;
    double lower_heating_value = 0.0;
    double density = 0.0;
    double carbon_content = 0.0;
    double sulfur_content = 0.0;
};

struct GeneratorParameters {
    ComponentParameters component;
    FuelParameters fuel;
    double rated_capacity = 0.0;
    double lifetime_in_hours = 0.0;
    double minimum_load = 0.0;
    double minimum_runtime = 0.0;
    double fuel_curve_intercept = 0.0;
    double fuel_curve_slope = 0.0;
    bool use_nonlinear_fuel_curve = false;
    double nonlinear_x0 = 0.0;
    double nonlinear_x1 = 0.0;
    double nonlinear_x2 = 0.0;
    double emissions_factor_CO = 0.0;
    std::uint64_t opaque_value = 0;  // the simulator's; copied, never read
    double emissions_factor_UHC = 0.0;
    double emissions_factor_PM = 0.0;
    double emissions_factor_NOx = 0.0;
    double emissions_sulfur_PM_ratio = 0.0;
};

struct PrimaryLoadParameters {
    std::string name;
    bool is_AC = false;
    double peak_load = 0.0;
};

using PointList = std::vector<std::pair<double, double>>;

struct WindTurbineParameters {
    ComponentParameters component;
    std::uint64_t quantity = 0;
    double rated_power = 0.0;
    PointList power_curve;
};

struct PvParameters {
    ComponentParameters component;
    double rated_capacity = 0.0;
    double lifetime_in_years = 0.0;
    std::vector<double> solar_forecast;
};

struct CustomComponentItem {
    double value = 0.0;
    std::string label;
    std::string detail;
};

struct CustomComponentParameters {
    ComponentParameters component;
    std::vector<CustomComponentItem> item_list;
    std::vector<ExtensionParameter> parameter_list;
    std::string name;
    std::uint64_t opaque_value = 0;  // the simulator's; copied, never read
    double capacity = 0.0;
    std::uint64_t component_number = 0;
    bool is_AC = false;
};

struct DedicatedConverterParameters {
    ComponentParameters component;
    double rectifier_capacity = 0.0;
    double inverter_capacity = 0.0;
    double lifetime_in_years = 0.0;
    bool has_efficiency_tables = false;
    PointList inverter_efficiency_table;
    PointList rectifier_efficiency_table;
    double rectifier_efficiency = 0.0;
    double inverter_efficiency = 0.0;
};

struct BatteryParameters {
    ComponentParameters component;
    double nominal_voltage = 0.0;
    double nominal_capacity = 0.0;
    double minimum_state_of_charge = 0.0;
    std::uint64_t opaque_value = 0;  // the simulator's; copied, never read
    double fractional_charge_efficiency = 0.0;
    double fractional_discharge_efficiency = 0.0;
    double wear_cost = 0.0;
    double battery_bank_maximum_absolute_soc = 0.0;
    double battery_bank_minimum_absolute_soc = 0.0;
    DedicatedConverterParameters dedicated_converter;
    bool has_dedicated_converter = false;
};

struct ConverterParameters {
    ComponentParameters component;
    double inverter_capacity = 0.0;      // kW
    double rectifier_capacity = 0.0;     // kW
    double inverter_efficiency = 0.0;    // percent
    double rectifier_efficiency = 0.0;   // percent
    double lifetime_in_years = 0.0;
    bool able_to_parallel_with_ac_generator = false;
};

struct FlywheelParameters {
    ComponentParameters component;
    double charge_discharge_capacity = 0.0;
    double parasitic_load = 0.0;
    double lifetime_in_years = 0.0;
    std::int32_t quantity = 0;
};

struct SimulationParameters {
    std::vector<ExtensionParameter> extension_parameters;
    std::vector<GeneratorParameters> generator_list;
    std::vector<PrimaryLoadParameters> primary_load_list;
    std::vector<PvParameters> pv_list;
    std::vector<BatteryParameters> battery_list;
    std::vector<ConverterParameters> converter_list;
    std::vector<FlywheelParameters> flywheel_list;
    std::vector<GridParameters> grid_list;
    std::vector<CustomComponentParameters> custom_component_list;
    std::vector<WindTurbineParameters> wind_turbine_list;
    EmissionsParameters emissions;
    OperatingReserveParameters operating_reserve;
    double maximum_annual_capacity_shortage = 0.0;
    double minimum_renewable_fraction = 0.0;
    std::uint64_t timestep_size_in_seconds = 0;
    std::uint64_t number_of_timesteps = 0;
};

// Layout pins: these records are shared in memory with the simulator.
namespace layout {
constexpr std::size_t str = sizeof(std::string);
constexpr std::size_t vec = sizeof(std::vector<double>);
constexpr std::size_t head = 24 + str + 16;  // cost, name, component_number, is_AC (+ padding)
}  // namespace layout

static_assert(sizeof(ExtensionParameterType) == 4);
static_assert(offsetof(ExtensionParameter, type) == layout::str);
static_assert(offsetof(ExtensionParameter, number_value) == layout::str + 8);
static_assert(offsetof(ExtensionParameter, boolean_value) == layout::str + 16);
static_assert(offsetof(ExtensionParameter, text_value) == layout::str + 24);
static_assert(offsetof(ExtensionParameter, number_list_value) == 2 * layout::str + 24);
static_assert(offsetof(EmissionsParameters, max_emissions_CO) == 48);
static_assert(offsetof(EmissionsParameters, use_max_emissions_CO) == 96);
static_assert(offsetof(EmissionsParameters, use_max_emissions_NOx) == 101);
static_assert(sizeof(OperatingReserveParameters) == 32);
static_assert(offsetof(ComponentCost, operation_and_maintenance) == 16);
static_assert(offsetof(ComponentParameters, name) == 24);
static_assert(offsetof(ComponentParameters, component_number) == 24 + layout::str);
static_assert(offsetof(ComponentParameters, is_AC) == 32 + layout::str);
static_assert(sizeof(ComponentParameters) == layout::head);
static_assert(offsetof(FuelParameters, limit_consumption) == layout::str + 8);
static_assert(offsetof(FuelParameters, sulfur_content) == layout::str + 48);
static_assert(offsetof(GeneratorParameters, fuel) == layout::head);
static_assert(offsetof(GeneratorParameters, rated_capacity) == layout::head + sizeof(FuelParameters));
static_assert(offsetof(GeneratorParameters, use_nonlinear_fuel_curve) == layout::head + sizeof(FuelParameters) + 48);
static_assert(offsetof(GeneratorParameters, opaque_value) == layout::head + sizeof(FuelParameters) + 88);
static_assert(offsetof(GeneratorParameters, emissions_sulfur_PM_ratio) ==
              layout::head + sizeof(FuelParameters) + 120);
static_assert(offsetof(PrimaryLoadParameters, peak_load) == layout::str + 8);
static_assert(offsetof(WindTurbineParameters, power_curve) == layout::head + 16);
static_assert(offsetof(PvParameters, solar_forecast) == layout::head + 16);
static_assert(offsetof(CustomComponentItem, detail) == 8 + layout::str);
static_assert(offsetof(CustomComponentParameters, name) == layout::head + 2 * layout::vec);
static_assert(offsetof(CustomComponentParameters, is_AC) == layout::head + 2 * layout::vec + layout::str + 24);
static_assert(offsetof(DedicatedConverterParameters, has_efficiency_tables) == layout::head + 24);
static_assert(offsetof(DedicatedConverterParameters, inverter_efficiency_table) == layout::head + 32);
static_assert(offsetof(DedicatedConverterParameters, inverter_efficiency) == layout::head + 32 + 2 * layout::vec + 8);
static_assert(offsetof(BatteryParameters, opaque_value) == layout::head + 24);
static_assert(offsetof(BatteryParameters, dedicated_converter) == layout::head + 72);
static_assert(offsetof(BatteryParameters, has_dedicated_converter) ==
              layout::head + 72 + sizeof(DedicatedConverterParameters));
static_assert(offsetof(ConverterParameters, able_to_parallel_with_ac_generator) == layout::head + 40);
static_assert(offsetof(FlywheelParameters, quantity) == layout::head + 24);
static_assert(offsetof(SimulationParameters, wind_turbine_list) == 9 * layout::vec);
static_assert(offsetof(SimulationParameters, emissions) == 10 * layout::vec);
static_assert(offsetof(SimulationParameters, operating_reserve) == 10 * layout::vec + sizeof(EmissionsParameters));
static_assert(offsetof(SimulationParameters, number_of_timesteps) ==
              10 * layout::vec + sizeof(EmissionsParameters) + 56);

}  // namespace tamlo_dispatch

#endif
