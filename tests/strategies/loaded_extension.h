// Loads the built extension library with dlopen, as a host does, for the strategy tests.
#ifndef TAMLO_TESTS_STRATEGIES_LOADED_EXTENSION_H
#define TAMLO_TESTS_STRATEGIES_LOADED_EXTENSION_H

#include <memory>
#include <string>
#include <vector>

#include "dispatch_extension_interface.h"

namespace tamlo_strategies {

struct DestroyExtension {
    void operator()(IDispatchExtension* extension) const { extension->destroy(); }
};
using ExtensionPtr = std::unique_ptr<IDispatchExtension, DestroyExtension>;

// A new object from the library's create_engine_extension (the library is loaded once).
ExtensionPtr create_extension();

// A text extension parameter.
tamlo_dispatch::ExtensionParameter text_parameter(std::string name, std::string value);

// The four settings the extension reads: MATLAB folder and the three function names.
std::vector<tamlo_dispatch::ExtensionParameter> settings(const std::string& folder, const std::string& prefix);

}  // namespace tamlo_strategies

#endif
