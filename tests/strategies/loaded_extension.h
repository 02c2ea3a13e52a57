// The extension, loaded as a host loads it, and the settings the strategy tests give it.
#ifndef TAMLO_TESTS_STRATEGIES_LOADED_EXTENSION_H
#define TAMLO_TESTS_STRATEGIES_LOADED_EXTENSION_H

#include <string>
#include <vector>

#include "extension_loader.h"

namespace tamlo_strategies {

using tamlo_test_support::create_extension;
using tamlo_test_support::ExtensionPtr;

// The MATLAB folder, the three function names, and the file the field dump fixture writes.
inline std::vector<tamlo_dispatch::ExtensionParameter> settings(const std::string& folder, const std::string& prefix,
                                                               const std::string& dump_file = "/dev/null") {
    const auto text = [](const char* name, std::string value) {
        return tamlo_dispatch::ExtensionParameter{name, tamlo_dispatch::ExtensionParameterType::text, 0.0, false,
                                                  std::move(value), {}};
    };
    return {text("path", folder), text("start simulation", prefix + "_start"), text("dispatch", prefix + "_dispatch"),
            text("end simulation", prefix + "_end"), text("field dump file", dump_file)};
}

}  // namespace tamlo_strategies

#endif
