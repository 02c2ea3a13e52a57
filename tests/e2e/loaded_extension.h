// Loads the built extension library with dlopen, as a host does, and makes extension objects.
#ifndef TAMLO_TESTS_E2E_LOADED_EXTENSION_H
#define TAMLO_TESTS_E2E_LOADED_EXTENSION_H

#include <memory>
#include <string>

#include "dispatch_extension_interface.h"
#include "sample_systems.h"

namespace tamlo_e2e {

struct DestroyExtension {
    void operator()(IDispatchExtension* extension) const { extension->destroy(); }
};
using ExtensionPtr = std::unique_ptr<IDispatchExtension, DestroyExtension>;

// A new object from the library's create_engine_extension (the library is loaded once).
ExtensionPtr create_extension();

// Folder of the .m fixtures.
std::string fixture_directory();

// The settings with the fixture folder as path.
tamlo_samples::Settings fixture_settings(std::string start_simulation, std::string dispatch,
                                         std::string end_simulation);

// A system without any component: zero loads, nothing to validate.
tamlo_dispatch::SimulationParameters empty_system(const tamlo_samples::Settings& settings);

// `parameters` with the settings appended.
tamlo_dispatch::SimulationParameters with_settings(tamlo_dispatch::SimulationParameters parameters,
                                                   const tamlo_samples::Settings& settings);

}  // namespace tamlo_e2e

#endif
