// Checks the first grid's purchases and sales against its outage flag and its limits.
#ifndef TAMLO_VALIDATION_GRID_CHECKS_H
#define TAMLO_VALIDATION_GRID_CHECKS_H

#include <string>
#include <vector>

#include "tamlo_dispatch/simulation_parameters.h"
#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_validation {

// Looks at the first grid only; nothing when either list has no first entry.
void check_grid(const tamlo_dispatch::SimulationParameters& parameters, const tamlo_dispatch::SimulationState& state,
                std::vector<std::string>& warnings);

}  // namespace tamlo_validation

#endif
