// The extension, loaded as a host loads it, and the settings the strategy tests give it.
#ifndef TAMLO_TESTS_STRATEGIES_LOADED_EXTENSION_H
#define TAMLO_TESTS_STRATEGIES_LOADED_EXTENSION_H

#include <string>
#include <vector>

#include "dispatch_extension_interface.h"
#include "extension_loader.h"

namespace tamlo_strategies {

using tamlo_test_support::create_extension;
using tamlo_test_support::ExtensionPtr;

inline tamlo_dispatch::ExtensionParameter text_parameter(std::string name, std::string value) {
    return {std::move(name), tamlo_dispatch::ExtensionParameterType::text, 0.0, false, std::move(value), {}};
}

// The MATLAB folder, the three function names, and where the field dump fixture writes.
inline std::vector<tamlo_dispatch::ExtensionParameter> settings(const std::string& folder, const std::string& prefix,
                                                               const std::string& dump_file = "/dev/null") {
    return {text_parameter("path", folder), text_parameter("start simulation", prefix + "_start"),
            text_parameter("dispatch", prefix + "_dispatch"), text_parameter("end simulation", prefix + "_end"),
            text_parameter("field dump file", dump_file)};
}

}  // namespace tamlo_strategies

#endif
