// Loads the built extension library with dlopen, as a host does.
#include "loaded_extension.h"

#include <dlfcn.h>

#include <stdexcept>

namespace tamlo_e2e {

namespace {

CreateEngineExtensionFunction load_factory() {
    // Kept loaded for the test process's life, as a host keeps its extensions.
    void* library = dlopen(TAMLO_EXTENSION_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        throw std::runtime_error(std::string("dlopen failed: ") + dlerror());
    }
    void* symbol = dlsym(library, "create_engine_extension");
    if (symbol == nullptr) {
        throw std::runtime_error(std::string("dlsym failed: ") + dlerror());
    }
    return reinterpret_cast<CreateEngineExtensionFunction>(symbol);
}

}  // namespace

ExtensionPtr create_extension() {
    static const CreateEngineExtensionFunction factory = load_factory();
    return ExtensionPtr(factory());
}

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
