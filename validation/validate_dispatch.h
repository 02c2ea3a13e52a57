// Checks one time step's dispatch decisions against the rules of the system and collects
// every violation as a plain-language warning.
#ifndef TAMLO_VALIDATION_VALIDATE_DISPATCH_H
#define TAMLO_VALIDATION_VALIDATE_DISPATCH_H

#include "tamlo_dispatch/dispatch_outcome.h"
#include "tamlo_dispatch/simulation_parameters.h"
#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_validation {

// Appends to errors_and_warnings.simulation_warnings only; reads nothing else of it.
void validate_dispatch(const tamlo_dispatch::SimulationParameters& parameters,
                       const tamlo_dispatch::SimulationState& state,
                       tamlo_dispatch::SimulationErrorsAndWarnings& errors_and_warnings);

}  // namespace tamlo_validation

#endif
