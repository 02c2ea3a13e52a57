// Checks that a PV array, wind turbine or custom component is not set above what it can deliver.
#ifndef TAMLO_VALIDATION_SETPOINT_CHECKS_H
#define TAMLO_VALIDATION_SETPOINT_CHECKS_H

#include <cstddef>
#include <string>
#include <vector>

#include "message_format.h"

namespace tamlo_validation {

enum class SetpointSource { pv, wind_turbine, custom_component };

// Compared plainly, without tolerance: any set point above the available power is reported.
void check_setpoint_within_available(SetpointSource source, std::size_t index, double power_setpoint,
                                     double power_available, Count step, std::vector<std::string>& warnings);

}  // namespace tamlo_validation

#endif
