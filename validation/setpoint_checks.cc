// Checks that a PV array, wind turbine or custom component is not set above what it can deliver.
#include "setpoint_checks.h"

namespace tamlo_validation {
namespace {

// Indexed by SetpointSource: P1, W1, U1.
constexpr const char* setpoint_leads[] = {
    "The value of simulation_state.pvs(",
    "The value of simulation_state.wind_turbines(",
    "The value of simulation_state.custom_components(",
};

}  // namespace

void check_setpoint_within_available(SetpointSource source, std::size_t index, double power_setpoint,
                                     double power_available, Count step, std::vector<std::string>& warnings) {
    if (power_setpoint > power_available) {
        add_warning(warnings, setpoint_leads[static_cast<std::size_t>(source)], component_number(index),
                    ").power_setpoint (", Quantity{power_setpoint},
                    " kW) can't be larger than the power_available (", Quantity{power_available},
                    " kW) in timestep: ", step);
    }
}

}  // namespace tamlo_validation
