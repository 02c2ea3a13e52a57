// Sample systems for end-to-end tests and benchmarks: parameters and a matching first state.
#ifndef TAMLO_TESTS_E2E_SAMPLE_SYSTEMS_H
#define TAMLO_TESTS_E2E_SAMPLE_SYSTEMS_H

#include <cstddef>
#include <string>

#include "tamlo_dispatch/simulation_parameters.h"
#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_samples {

// The four settings of the extension, as the simulator passes them.
struct Settings {
    std::string path;
    std::string start_simulation;
    std::string dispatch;
    std::string end_simulation;
};
void add_settings(tamlo_dispatch::SimulationParameters& parameters, const Settings& settings);
void add_text_parameter(tamlo_dispatch::SimulationParameters& parameters, std::string name, std::string value);

// `count` of each kind: generators, PV arrays, wind turbines, batteries, converters, grids
// (real-time price models) and, twice as many, primary loads. count = 1 is the typical
// system: 2 generators, 1 PV, 1 wind turbine, 1 battery, 1 converter, 1 grid, 2 loads.
tamlo_dispatch::SimulationParameters make_system(std::size_t count);

// A first time step for a sample system: availabilities, loads and limits, no decisions yet.
tamlo_dispatch::SimulationState make_state(const tamlo_dispatch::SimulationParameters& parameters);

}  // namespace tamlo_samples

#endif
