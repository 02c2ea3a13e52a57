// Checks every generator's set point against its availability, minimum load and forced state.
#ifndef TAMLO_VALIDATION_GENERATOR_CHECKS_H
#define TAMLO_VALIDATION_GENERATOR_CHECKS_H

#include <string>
#include <vector>

#include "tamlo_dispatch/simulation_parameters.h"
#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_validation {

// One pass over the state's generators. The minimum-load rule needs the generator's
// parameters and is skipped for a state entry that has none; the other rules read the
// state alone and run for every entry.
void check_generators(const tamlo_dispatch::SimulationParameters& parameters,
                      const tamlo_dispatch::SimulationState& state, std::vector<std::string>& warnings);

}  // namespace tamlo_validation

#endif
