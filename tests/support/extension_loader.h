// Loads the built extension library with dlopen, as a host does, and makes extension objects.
#ifndef TAMLO_TESTS_SUPPORT_EXTENSION_LOADER_H
#define TAMLO_TESTS_SUPPORT_EXTENSION_LOADER_H

#include <memory>

#include "dispatch_extension_interface.h"

namespace tamlo_test_support {

struct DestroyExtension {
    void operator()(IDispatchExtension* extension) const { extension->destroy(); }
};
using ExtensionPtr = std::unique_ptr<IDispatchExtension, DestroyExtension>;

// A new object from the library's create_engine_extension (the library is loaded once).
ExtensionPtr create_extension();

}  // namespace tamlo_test_support

#endif
