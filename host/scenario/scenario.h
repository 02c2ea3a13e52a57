// A scenario: the system's parameters as the simulator would pass them, and the plant
// inputs (time series and starting values) the bench needs to fill each time step.
#ifndef TAMLO_HOST_SCENARIO_H
#define TAMLO_HOST_SCENARIO_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "tamlo_dispatch/simulation_parameters.h"

namespace tamlo_host {

struct PlantBattery {
    double initial_state_of_charge_percent = 100.0;
    double energy_cost = 0.0;
};

struct PlantGrid {
    std::vector<double> outages;  // 1 = down, one value per step; empty: never down
    double max_grid_purchases = 0.0;  // used when limit_net_grid_purchases is false
    double max_grid_sales = 0.0;
};

// Every series holds exactly one value per time step of the run.
struct PlantInputs {
    std::vector<std::vector<double>> loads;                // per primary load, kW
    std::vector<std::vector<double>> solar;                // per PV array, kW per kW rated
    std::vector<std::vector<double>> wind_speed;           // per wind turbine, m/s
    std::vector<std::vector<double>> generator_schedules;  // per generator; empty: none
    std::vector<PlantBattery> batteries;                   // per battery
    std::vector<PlantGrid> grids;                          // per grid
};

// A file the run reads, so that no output is written over it.
struct InputFile {
    std::string path;
    std::string role;  // "the scenario", "a series file"
};

struct Scenario {
    std::string file;
    std::vector<InputFile> input_files;
    tamlo_dispatch::SimulationParameters parameters;
    PlantInputs plant;
    std::size_t steps = 0;  // equals parameters.number_of_timesteps
};

// Whether name can be called as a MATLAB function: a letter, then letters, digits and
// underscores, at most 63 characters, and not a keyword.
bool is_matlab_function_name(const std::string& name);

// Reads and checks a scenario file; steps, when given, replaces number_of_timesteps.
// Throws InputError naming the file and the JSON path or CSV line at fault.
Scenario read_scenario(const std::string& file, std::optional<std::uint64_t> steps = std::nullopt);

// The same for a scenario already parsed, read as if from file.
Scenario read_scenario(const nlohmann::ordered_json& document, const std::string& file,
                       std::optional<std::uint64_t> steps = std::nullopt);

}  // namespace tamlo_host

#endif
