// The extension, loaded as a host loads it, and runs of the .m fixtures for it.
#ifndef TAMLO_TESTS_E2E_LOADED_EXTENSION_H
#define TAMLO_TESTS_E2E_LOADED_EXTENSION_H

#include <string>
#include <vector>

#include "extension_loader.h"
#include "sample_systems.h"

namespace tamlo_e2e {

using tamlo_test_support::create_extension;
using tamlo_test_support::ExtensionPtr;
using Texts = std::vector<std::string>;

// `system` set to run the three named fixture functions.
inline tamlo_dispatch::SimulationParameters run_of(const char* start, const char* dispatch, const char* end,
                                                   tamlo_dispatch::SimulationParameters system = {}) {
    tamlo_samples::add_settings(system, {TAMLO_E2E_FIXTURE_DIR, start, dispatch, end});
    return system;
}

// A run of start_code, dispatch_code and end_code (end_empty_lists without end code), which run
// the MATLAB text given here.
inline tamlo_dispatch::SimulationParameters code_run(const std::string& start_code, const std::string& dispatch_code = "",
                                                     const std::string& end_code = "",
                                                     tamlo_dispatch::SimulationParameters system = {}) {
    system = run_of("start_code", "dispatch_code", end_code.empty() ? "end_empty_lists" : "end_code", system);
    tamlo_samples::add_text_parameter(system, "start code", start_code);
    tamlo_samples::add_text_parameter(system, "dispatch code", dispatch_code);
    tamlo_samples::add_text_parameter(system, "end code", end_code);
    return system;
}

}  // namespace tamlo_e2e

#endif
