// The simulator's abstract interface to a dispatch extension and the library's one export.
#ifndef TAMLO_DISPATCH_EXTENSION_INTERFACE_H
#define TAMLO_DISPATCH_EXTENSION_INTERFACE_H

#include <memory>

#include "tamlo_dispatch/dispatch_outcome.h"
#include "tamlo_dispatch/simulation_parameters.h"
#include "tamlo_dispatch/simulation_state.h"

// The simulator calls these operations by their place in the virtual table: keep the order.
class IDispatchExtension {
public:
    virtual ~IDispatchExtension() = default;
    virtual void destroy() = 0;
    virtual void close_engine() = 0;
    virtual std::shared_ptr<tamlo_dispatch::DispatchError> start_simulation(
        const tamlo_dispatch::SimulationParameters& parameters) = 0;
    virtual void dispatch(tamlo_dispatch::SimulationState& state) = 0;
    virtual std::shared_ptr<tamlo_dispatch::SimulationErrorsAndWarnings> end_simulation() = 0;
    virtual std::shared_ptr<tamlo_dispatch::ResultParameters> get_result_parameters() = 0;
};

#if defined(_WIN32)
#define TAMLO_EXTENSION_EXPORT __declspec(dllexport)
#else
#define TAMLO_EXTENSION_EXPORT __attribute__((visibility("default")))
#endif

extern "C" TAMLO_EXTENSION_EXPORT IDispatchExtension* create_engine_extension();

// The signature a host resolves with dlopen/GetProcAddress.
using CreateEngineExtensionFunction = IDispatchExtension* (*)();

#endif
