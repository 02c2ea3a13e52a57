// Loads the built extension library with dlopen, as a host does.
#include "extension_loader.h"

#include <dlfcn.h>

#include <stdexcept>
#include <string>

namespace tamlo_test_support {

ExtensionPtr create_extension() {
    // Kept loaded for the test process's life, as a host keeps its extensions.
    static const auto factory = [] {
        void* library = dlopen(TAMLO_EXTENSION_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        void* symbol = library != nullptr ? dlsym(library, "create_engine_extension") : nullptr;
        if (symbol == nullptr) throw std::runtime_error(std::string("loading the extension failed: ") + dlerror());
        return reinterpret_cast<CreateEngineExtensionFunction>(symbol);
    }();
    return ExtensionPtr(factory());
}

}  // namespace tamlo_test_support
