// Checks the first system converter's flows against its efficiencies and capacities.
#include "converter_checks.h"

#include "comparison.h"
#include "message_format.h"

namespace tamlo_validation {
namespace {

using tamlo_dispatch::ConverterParameters;
using tamlo_dispatch::ConverterState;

// One direction of power flow through the converter, with the texts of its two checks.
struct ConverterDirection {
    double ConverterState::*input;
    double ConverterState::*output;
    double ConverterParameters::*efficiency;
    double ConverterParameters::*capacity;
    const char* efficiency_output_lead;
    const char* efficiency_input_lead;
    const char* efficiency_tail;
    const char* capacity_lead;
    const char* capacity_tail;
};

constexpr ConverterDirection converter_directions[] = {
    {&ConverterState::inverter_power_input, &ConverterState::inverter_power_output,
     &ConverterParameters::inverter_efficiency, &ConverterParameters::inverter_capacity,
     "Dispatch must set simulation_state.converter.inverter_power_output (",
     " kW) equal to simulation_state.converter.inverter_power_input (",
     " kW) * simulation_parameters.converter.inverter_efficiency/100. Incorrect value found in time step: ",
     "simulation_state.converters.inverter_power_output (",
     " kW) exceeded simulation_parameters.converter.inverter_capacity in time step: "},
    {&ConverterState::rectifier_power_input, &ConverterState::rectifier_power_output,
     &ConverterParameters::rectifier_efficiency, &ConverterParameters::rectifier_capacity,
     "Dispatch must set simulation_state.converter.rectifier_power_output (",
     " kW) equal to simulation_state.converter.rectifier_power_input (",
     " kW) * simulation_parameters.converter.rectifier_efficiency/100. Incorrect value found in time step: ",
     "simulation_state.converters.rectifier_power_output (",
     " kW) exceeded simulation_parameters.converter.rectifier_capacity in time step: "},
};

}  // namespace

void check_converter(const tamlo_dispatch::SimulationParameters& parameters,
                     const tamlo_dispatch::SimulationState& state, std::vector<std::string>& warnings) {
    // A state without the converter that the parameters list has nothing to check.
    if (parameters.converter_list.empty() || state.converter_list.empty()) {
        return;
    }
    const ConverterParameters& converter = parameters.converter_list.front();
    const ConverterState& flows = state.converter_list.front();
    const Count step = time_step_number(state);

    for (const ConverterDirection& d : converter_directions) {
        const double output = flows.*d.output;
        const double input = flows.*d.input;
        if (!approximately_equal(output, (input * (converter.*d.efficiency)) / percent_divisor,
                                 validation_tolerance)) {
            add_warning(warnings, d.efficiency_output_lead, Quantity{output}, d.efficiency_input_lead,
                        Quantity{input}, d.efficiency_tail, step);
        }
    }
    for (const ConverterDirection& d : converter_directions) {
        const double output = flows.*d.output;
        if (definitely_greater(output, converter.*d.capacity, validation_tolerance)) {
            add_warning(warnings, d.capacity_lead, Quantity{output}, d.capacity_tail, step);
        }
    }
}

}  // namespace tamlo_validation
