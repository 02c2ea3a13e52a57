// The library's one export: the factory the simulator resolves after loading the library.
#include "dispatch_extension.h"

extern "C" TAMLO_EXTENSION_EXPORT IDispatchExtension* create_engine_extension() {
    return new DispatchExtension();
}
