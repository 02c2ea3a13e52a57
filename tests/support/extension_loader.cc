// Loads the built extension library with dlopen, as a host does.
#include "extension_loader.h"

#include <dlfcn.h>

#include <stdexcept>
#include <string>

namespace tamlo_test_support {

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

}  // namespace tamlo_test_support
