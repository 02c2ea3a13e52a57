// Calls the user's dispatch function for one time step and reads its decisions from
// new_simulation_state back into the simulator's SimulationState.
#include <string>

#include "matlab_connection.h"

namespace tamlo_matlab {

using tamlo_dispatch::BusState;
using tamlo_dispatch::ConverterState;
using tamlo_dispatch::DispatchError;
using tamlo_dispatch::SimulationParameters;
using tamlo_dispatch::SimulationState;

namespace {

// The four flows of a converter, in the order they are read.
struct ConverterField {
    const char* name;
    double ConverterState::*value;
};
constexpr ConverterField converter_fields[] = {
    {"inverter_power_input", &ConverterState::inverter_power_input},
    {"inverter_power_output", &ConverterState::inverter_power_output},
    {"rectifier_power_input", &ConverterState::rectifier_power_input},
    {"rectifier_power_output", &ConverterState::rectifier_power_output},
};

struct BusField {
    const char* name;
    double BusState::*value;
};
constexpr BusField bus_fields[] = {
    {"load_served", &BusState::load_served},
    {"unmet_load", &BusState::unmet_load},
    {"excess_electricity", &BusState::excess_electricity},
    {"operating_capacity_served", &BusState::operating_capacity_served},
    {"capacity_shortage", &BusState::capacity_shortage},
};

bool read_converter(const mxArray* container, std::size_t element, const char* list, std::size_t entry,
                    ConverterState& target, DispatchError& outcome) {
    for (const ConverterField& field : converter_fields) {
        if (!MatlabConnection::read_state_number(container, element, list, entry, field.name, outcome,
                                                 target.*field.value)) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::shared_ptr<DispatchError> MatlabConnection::call_dispatch(std::string function_name, SimulationState& state,
                                                               const SimulationParameters& parameters) {
    auto outcome = std::make_shared<DispatchError>();
    if (!open_) {
        set_critical_error(*outcome, no_engine_dispatch_message());
        return outcome;
    }

    put_simulation_state(state);
    clear_output_buffer();
    const std::string command = "[new_simulation_state, custom_variables] = " + function_name +
                                "(simulation_parameters, simulation_state, custom_variables);";
    engEvalString(engine_, command.c_str());
    mxArray* result = engGetVariable(engine_, "new_simulation_state");  // owned here

    // Printing anything fails the step, even when a usable struct came back.
    if (output_buffer_[0] != '\0' || result == nullptr) {
        set_critical_error(*outcome, "MATLAB error while executing '" + command + "': " + output_text());
    } else if (!mxIsStruct(result)) {
        set_critical_error(*outcome,
                           "Output variable simulation_state was not of type struct. Check that your MATLAB "
                           "dispatch function returns a struct simulation_state.");
    } else {
        read_new_simulation_state(result, state, parameters, *outcome);
    }
    mxDestroyArray(result);
    return outcome;
}

bool MatlabConnection::read_new_simulation_state(const mxArray* result, SimulationState& state,
                                                 const SimulationParameters& parameters, DispatchError& outcome) {
    for (std::size_t i = 0; i < state.generator_list.size(); ++i) {
        if (!read_state_number(result, 0, "generators", i, "power_setpoint", outcome,
                               state.generator_list[i].power_setpoint)) {
            return false;
        }
    }
    for (std::size_t i = 0; i < state.wind_turbine_list.size(); ++i) {
        if (!read_state_number(result, 0, "wind_turbines", i, "power_setpoint", outcome,
                               state.wind_turbine_list[i].power_setpoint)) {
            return false;
        }
    }
    for (std::size_t i = 0; i < state.pv_list.size(); ++i) {
        if (!read_state_number(result, 0, "pvs", i, "power_setpoint", outcome, state.pv_list[i].power_setpoint)) {
            return false;
        }
    }
    for (std::size_t i = 0; i < state.converter_list.size(); ++i) {
        if (!read_converter(result, 0, "converters", i, state.converter_list[i], outcome)) {
            return false;
        }
    }
    for (std::size_t i = 0; i < state.flywheel_list.size(); ++i) {
        tamlo_dispatch::FlywheelState& flywheel = state.flywheel_list[i];
        if (!read_state_number(result, 0, "flywheels", i, "load_served", outcome, flywheel.load_served)) {
            return false;
        }
        bool is_true = false;
        if (!read_state_logical(result, 0, "flywheels", i, "flywheel_state", outcome, is_true)) {
            return false;
        }
        // The simulator's code 0 is what MATLAB sees as true.
        flywheel.flywheel_state = is_true ? 0 : 1;
    }

    const mxArray* batteries = mxGetField(result, 0, "batteries");
    if (batteries != nullptr) {
        for (std::size_t i = 0; i < state.battery_list.size(); ++i) {
            tamlo_dispatch::BatteryState& battery = state.battery_list[i];
            if (!read_state_number(result, 0, "batteries", i, "power_setpoint", outcome, battery.power_setpoint)) {
                return false;
            }
            // The state list is parallel to the parameters list; a shorter parameters list
            // means no dedicated converter is known for this battery.
            const bool has_dedicated_converter =
                i < parameters.battery_list.size() && parameters.battery_list[i].has_dedicated_converter;
            if (has_dedicated_converter &&
                !read_converter(batteries, i, "dedicated_converter", 0, battery.dedicated_converter, outcome)) {
                return false;
            }
        }
    }

    if (!read_bus_state(result, "ac_bus", state.ac_bus, outcome) ||
        !read_bus_state(result, "dc_bus", state.dc_bus, outcome)) {
        return false;
    }
    for (std::size_t i = 0; i < state.primary_load_list.size(); ++i) {
        if (!read_state_number(result, 0, "primary_loads", i, "load_served", outcome,
                               state.primary_load_list[i].load_served)) {
            return false;
        }
    }
    for (std::size_t i = 0; i < state.grid_list.size(); ++i) {
        tamlo_dispatch::GridState& grid = state.grid_list[i];
        if (!read_state_number(result, 0, "grids", i, "grid_purchases", outcome, grid.grid_purchases) ||
            !read_state_number(result, 0, "grids", i, "grid_sales", outcome, grid.grid_sales)) {
            return false;
        }
    }
    return true;
}

bool MatlabConnection::find_state_field(const mxArray* container, std::size_t element, std::string list,
                                        std::size_t entry, std::string field, DispatchError& outcome,
                                        const mxArray*& found) {
    const mxArray* list_array = mxGetField(container, element, list.c_str());
    if (list_array == nullptr) {
        set_critical_error(outcome, "Field " + list +
                                        " of simulation_state variable is missing! Check that your MATLAB dispatch "
                                        "function returns a struct with this field.");
        return false;
    }
    found = mxGetField(list_array, entry, field.c_str());
    if (found == nullptr) {
        set_critical_error(outcome, "Field " + field + " of " + list + "(" + std::to_string(entry) +
                                        ") in simulation_state could not be read.");
        return false;
    }
    return true;
}

bool MatlabConnection::read_state_number(const mxArray* container, std::size_t element, std::string list,
                                         std::size_t entry, std::string field, DispatchError& outcome,
                                         double& target) {
    const mxArray* found = nullptr;
    if (!find_state_field(container, element, std::move(list), entry, std::move(field), outcome, found)) {
        return false;
    }
    target = mxGetScalar(found);
    return true;
}

bool MatlabConnection::read_state_logical(const mxArray* container, std::size_t element, std::string list,
                                          std::size_t entry, std::string field, DispatchError& outcome,
                                          bool& target) {
    const mxArray* found = nullptr;
    if (!find_state_field(container, element, std::move(list), entry, std::move(field), outcome, found)) {
        return false;
    }
    target = mxIsLogicalScalarTrue(found);
    return true;
}

bool MatlabConnection::read_bus_state(const mxArray* new_simulation_state, std::string bus, BusState& target,
                                      DispatchError& outcome) {
    const mxArray* bus_array = mxGetField(new_simulation_state, 0, bus.c_str());
    if (bus_array == nullptr) {
        set_critical_error(outcome, "Field " + bus +
                                        " of simulation_state is missing!  Check that your MATLAB dispatch function "
                                        "returns a struct with this field.");
        return false;
    }
    for (const BusField& field : bus_fields) {
        if (!read_bus_number(bus_array, field.name, outcome, target.*field.value)) {
            return false;
        }
    }
    return true;
}

bool MatlabConnection::read_bus_number(const mxArray* bus, std::string field, DispatchError& outcome,
                                       double& target) {
    const mxArray* value = mxGetField(bus, 0, field.c_str());
    if (value == nullptr) {
        set_critical_error(outcome, "Could not find field " + field +
                                        " in simulation_state. Check that your MATLAB dispatch function returns a "
                                        "struct with this field.");
        return false;
    }
    target = mxGetScalar(value);
    return true;
}

}  // namespace tamlo_matlab
