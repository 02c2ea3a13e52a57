// Loads the built extension library with dlopen, as a host does, for the strategy tests.
#include "loaded_extension.h"

#include <dlfcn.h>

#include <stdexcept>

namespace tamlo_strategies {

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

tamlo_dispatch::ExtensionParameter text_parameter(std::string name, std::string value) {
    tamlo_dispatch::ExtensionParameter parameter;
    parameter.name = std::move(name);
    parameter.type = tamlo_dispatch::ExtensionParameterType::text;
    parameter.text_value = std::move(value);
    return parameter;
}

std::vector<tamlo_dispatch::ExtensionParameter> settings(const std::string& folder, const std::string& prefix) {
    return {text_parameter("path", folder), text_parameter("start simulation", prefix + "_start"),
            text_parameter("dispatch", prefix + "_dispatch"), text_parameter("end simulation", prefix + "_end")};
}

}  // namespace tamlo_strategies
