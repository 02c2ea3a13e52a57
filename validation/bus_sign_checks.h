// Checks the signs of the bus figures the dispatch reported, and load served against load
// requested on each bus.
#ifndef TAMLO_VALIDATION_BUS_SIGN_CHECKS_H
#define TAMLO_VALIDATION_BUS_SIGN_CHECKS_H

#include <string>
#include <vector>

#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_validation {

// Ten bus values, each reported when it is -1e-6 kW or less.
void check_bus_signs(const tamlo_dispatch::SimulationState& state, std::vector<std::string>& warnings);

// Load served above load requested, AC then DC.
void check_load_served(const tamlo_dispatch::SimulationState& state, std::vector<std::string>& warnings);

}  // namespace tamlo_validation

#endif
