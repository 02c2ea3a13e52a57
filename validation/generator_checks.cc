// Checks every generator's set point against its availability, minimum load and forced state.
#include "generator_checks.h"

#include "comparison.h"
#include "message_format.h"

namespace tamlo_validation {
namespace {

using tamlo_dispatch::GeneratorCurrentState;

// Values outside -3..2 are neither forced on nor forced off and escape both rules.
bool is_forced_on(GeneratorCurrentState s) {
    return s == tamlo_dispatch::FORCED_ON_FOR_SCHEDULE || s == tamlo_dispatch::FORCED_ON_FOR_MINIMUM_RUNTIME;
}

bool is_forced_off(GeneratorCurrentState s) {
    return s == tamlo_dispatch::FORCED_OFF_OUT_OF_FUEL || s == tamlo_dispatch::FORCED_OFF_FOR_MAINTENANCE_EVENT ||
           s == tamlo_dispatch::FORCED_OFF_FOR_SCHEDULE;
}

}  // namespace

void check_generators(const tamlo_dispatch::SimulationParameters& parameters,
                      const tamlo_dispatch::SimulationState& state, std::vector<std::string>& warnings) {
    const Count step = time_step_number(state);
    const auto& generators = state.generator_list;
    for (std::size_t i = 0; i < generators.size(); ++i) {
        const tamlo_dispatch::GeneratorState& g = generators[i];
        const double setpoint = g.power_setpoint;

        if (definitely_greater(setpoint, g.power_available, validation_tolerance)) {
            add_warning(warnings, "simulation_state.generators(", component_number(i), ").power_setpoint (",
                        Quantity{setpoint}, " kW) is greater than the generator's power_available (",
                        Quantity{g.power_available}, " kW) in time step: ", step);
        }
        // A generator that is off (set point near 0) is never held to its minimum load.
        if (i < parameters.generator_list.size() && setpoint > validation_tolerance &&
            definitely_greater(parameters.generator_list[i].minimum_load, setpoint, validation_tolerance)) {
            add_warning(warnings, "simulation_state.generators(", component_number(i), ").power_setpoint (",
                        Quantity{setpoint},
                        " kW) is less than the generator's minimum load "
                        "(simulation_parameters_.generator_list[i].minimum_load) in time step: ",
                        step);
        }
        if (is_forced_on(g.current_state)) {
            if (setpoint < validation_tolerance) {
                add_warning(warnings, "simulation_state.generators(", component_number(i),
                            ").current_state is FORCED_ON but the generator is not producing power in time step: ",
                            step);
            }
        } else if (is_forced_off(g.current_state)) {
            if (setpoint > validation_tolerance) {
                add_warning(warnings, "simulation_state.generators(", component_number(i),
                            ").current_state is FORCED_OFF but the generator is producing power (",
                            Quantity{setpoint}, " kW) in time step: ", step);
            }
        }
    }
}

}  // namespace tamlo_validation
