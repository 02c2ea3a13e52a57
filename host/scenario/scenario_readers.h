// The scenario reader's pieces: one reader per record, shared series helpers.
#ifndef TAMLO_HOST_SCENARIO_READERS_H
#define TAMLO_HOST_SCENARIO_READERS_H

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "json_reader.h"
#include "series.h"
#include "tamlo_dispatch/simulation_parameters.h"

namespace tamlo_host {

struct ScenarioContext {
    std::filesystem::path folder;  // relative names in the scenario are resolved against it
    std::string file;
    std::size_t steps = 0;
    SeriesStore series;
};

// Reads {"file": ..., "column": ...} under key and returns that column's values for the run.
std::vector<double> read_series(ObjectReader& parent, const char* key, ScenarioContext& context,
                                const ValueRule& rule);

// A list of numbers given inline ([1, 2, ...]) or as a series reference. With per_step, an
// inline list must cover the run. Returns false when key is absent.
bool read_number_list(ObjectReader& parent, const char* key, ScenarioContext& context, const ValueRule& rule,
                      bool per_step, std::vector<double>& target);

void read_component_head(ObjectReader& r, tamlo_dispatch::ComponentParameters& head, bool include_is_AC);
void read_generator(ObjectReader& r, tamlo_dispatch::GeneratorParameters& g);
void read_primary_load(ObjectReader& r, tamlo_dispatch::PrimaryLoadParameters& load);
void read_pv(ObjectReader& r, tamlo_dispatch::PvParameters& pv, ScenarioContext& context);
void read_wind_turbine(ObjectReader& r, tamlo_dispatch::WindTurbineParameters& turbine);
void read_custom_component(ObjectReader& r, tamlo_dispatch::CustomComponentParameters& custom);
void read_battery(ObjectReader& r, tamlo_dispatch::BatteryParameters& battery);
void read_converter(ObjectReader& r, tamlo_dispatch::ConverterParameters& converter);
void read_flywheel(ObjectReader& r, tamlo_dispatch::FlywheelParameters& flywheel);
void read_emissions(ObjectReader& r, tamlo_dispatch::EmissionsParameters& emissions);
void read_operating_reserve(ObjectReader& r, tamlo_dispatch::OperatingReserveParameters& reserve);
void read_grid_state_flags(ObjectReader& r, tamlo_dispatch::GridStateFlags& flags);
void read_grid(ObjectReader& r, tamlo_dispatch::GridParameters& grid, ScenarioContext& context);

}  // namespace tamlo_host

#endif
