// The extension, loaded as a host loads it, and the settings the strategy tests give it.
#ifndef TAMLO_TESTS_STRATEGIES_LOADED_EXTENSION_H
#define TAMLO_TESTS_STRATEGIES_LOADED_EXTENSION_H

#include <memory>
#include <string>
#include <vector>

#include "dispatch_extension_interface.h"
#include "extension_loader.h"

namespace tamlo_strategies {

using tamlo_test_support::create_extension;
using tamlo_test_support::ExtensionPtr;

// A text extension parameter.
tamlo_dispatch::ExtensionParameter text_parameter(std::string name, std::string value);

// The four settings the extension reads: MATLAB folder and the three function names.
std::vector<tamlo_dispatch::ExtensionParameter> settings(const std::string& folder, const std::string& prefix);

}  // namespace tamlo_strategies

#endif
