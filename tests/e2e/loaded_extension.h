// The extension, loaded as a host loads it, and the fixture settings the end-to-end tests give it.
#ifndef TAMLO_TESTS_E2E_LOADED_EXTENSION_H
#define TAMLO_TESTS_E2E_LOADED_EXTENSION_H

#include <memory>
#include <string>

#include "dispatch_extension_interface.h"
#include "extension_loader.h"
#include "sample_systems.h"

namespace tamlo_e2e {

using tamlo_test_support::create_extension;
using tamlo_test_support::ExtensionPtr;

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
