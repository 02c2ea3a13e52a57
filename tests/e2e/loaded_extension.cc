// The extension, loaded as a host loads it, and the fixture settings the end-to-end tests give it.
#include "loaded_extension.h"

namespace tamlo_e2e {

std::string fixture_directory() {
    return TAMLO_E2E_FIXTURE_DIR;
}

tamlo_samples::Settings fixture_settings(std::string start_simulation, std::string dispatch,
                                         std::string end_simulation) {
    return {fixture_directory(), std::move(start_simulation), std::move(dispatch), std::move(end_simulation)};
}

tamlo_dispatch::SimulationParameters empty_system(const tamlo_samples::Settings& settings) {
    tamlo_dispatch::SimulationParameters parameters;
    parameters.timestep_size_in_seconds = 3600;
    parameters.number_of_timesteps = 24;
    tamlo_samples::add_settings(parameters, settings);
    return parameters;
}

tamlo_dispatch::SimulationParameters with_settings(tamlo_dispatch::SimulationParameters parameters,
                                                   const tamlo_samples::Settings& settings) {
    tamlo_samples::add_settings(parameters, settings);
    return parameters;
}

}  // namespace tamlo_e2e
