// Checks one time step's dispatch decisions against the rules of the system and collects
// every violation as a plain-language warning.
#include "validate_dispatch.h"

#include <cstddef>

#include "bus_balance.h"
#include "bus_sign_checks.h"
#include "converter_checks.h"
#include "generator_checks.h"
#include "grid_checks.h"

namespace tamlo_validation {
namespace {

constexpr std::size_t warning_limit = 10;

}  // namespace

void validate_dispatch(const tamlo_dispatch::SimulationParameters& parameters,
                       const tamlo_dispatch::SimulationState& state,
                       tamlo_dispatch::SimulationErrorsAndWarnings& errors_and_warnings) {
    std::vector<std::string>& warnings = errors_and_warnings.simulation_warnings;
    // The limit is looked at only here: one step may go past it, and the note then never comes.
    if (warnings.size() == warning_limit) {
        warnings.emplace_back("There were additional warnings.");
        return;
    }
    if (warnings.size() > warning_limit) {
        return;
    }

    check_converter(parameters, state, warnings);
    check_generators(parameters, state, warnings);
    check_grid(parameters, state, warnings);
    const BusEstimates estimates = estimate_bus_supply(parameters, state, warnings);
    check_bus_balance(state, estimates, warnings);
    check_bus_signs(state, warnings);
    check_load_served(state, warnings);
}

}  // namespace tamlo_validation
