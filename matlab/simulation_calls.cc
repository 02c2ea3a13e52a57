// Calls the user's start- and end-simulation functions and reads init_error and end_sim_out.
#include <array>

#include "matlab_connection.h"

namespace tamlo_matlab {

using tamlo_dispatch::DispatchError;
using tamlo_dispatch::SimulationErrorsAndWarnings;

std::shared_ptr<DispatchError> MatlabConnection::call_start_simulation(std::string function_name) {
    auto result = std::make_shared<DispatchError>();
    const std::string command = "[init_error, custom_variables] = " + function_name + "(simulation_parameters);";
    if (!open_) {
        set_critical_error(*result, "The start simulation function was not called: no MATLAB engine is open.");
        return result;
    }

    clear_output_buffer();
    engEvalString(engine_, command.c_str());
    mxArray* init_error = engGetVariable(engine_, "init_error");  // owned here
    if (init_error == nullptr) {
        set_critical_error(*result, "MATLAB error while executing '" + command + "': " + output_text());
        return result;
    }

    std::array<char, kMatlabTextBufferSize> buffer{};
    read_init_error(init_error, buffer.data(), *result);
    mxDestroyArray(init_error);
    return result;
}

bool MatlabConnection::read_init_error(const mxArray* array, char* buffer, DispatchError& result) {
    const mxArray* description = mxGetField(array, 0, "error_description");
    const mxArray* severity_code = mxGetField(array, 0, "severity_code");
    if (description == nullptr || severity_code == nullptr) {
        set_critical_error(result,
                           std::string("Field ") + "error_description" + " or " + "severity_code" +
                               " of init_error variable is missing! Check that your MATLAB StartSimulation "
                               "function returns a struct with this field.");
        return false;
    }
    std::string description_text = read_text(description, buffer);
    std::string severity_text = read_text(severity_code, buffer);
    apply_severity_code(std::move(description_text), std::move(severity_text), result);
    return true;
}

void MatlabConnection::apply_severity_code(std::string description, std::string severity_code,
                                           DispatchError& result) {
    remove_line_feeds(description);
    if (severity_code == "DISPATCH_SIMULATION_ERROR") {
        set_simulation_error(result, "MATLAB error: " + description);
    } else if (severity_code == "DISPATCH_CRITICAL_ERROR") {
        set_critical_error(result, "MATLAB error: " + description);
    }
}

SimulationErrorsAndWarnings MatlabConnection::call_end_simulation(std::string function_name) {
    SimulationErrorsAndWarnings lists;
    if (!open_) {
        lists.simulation_errors.push_back(no_engine_end_simulation_message());
        return lists;
    }

    clear_output_buffer();
    const std::string command = "end_sim_out = " + function_name + "(simulation_parameters, custom_variables);";
    engEvalString(engine_, command.c_str());
    mxArray* end_sim_out = engGetVariable(engine_, "end_sim_out");  // owned here
    if (end_sim_out == nullptr) {
        lists.simulation_errors.push_back("MATLAB error while executing '" + command + "': " + output_text());
        return lists;
    }

    std::array<char, kMatlabTextBufferSize> buffer{};
    read_end_sim_out(end_sim_out, buffer.data(), lists);
    mxDestroyArray(end_sim_out);
    return lists;
}

bool MatlabConnection::read_end_sim_out(const mxArray* array, char* buffer, SimulationErrorsAndWarnings& lists) {
    const mxArray* errors = mxGetField(array, 0, "simulation_errors");
    const mxArray* warnings = mxGetField(array, 0, "simulation_warnings");
    if (errors == nullptr || warnings == nullptr) {
        lists.simulation_errors.push_back(std::string("Field ") + "simulation_errors" + " or " +
                                          "simulation_warnings" +
                                          " of init_error variable is missing! Check that your MATLAB "
                                          "EndSimulation function returns a struct with this field.");
        return false;
    }
    const std::size_t error_count = mxGetNumberOfElements(errors);
    const std::size_t warning_count = mxGetNumberOfElements(warnings);
    // mxGetCell gives null for an array that is not a cell array; read_text makes that empty.
    for (std::size_t i = 0; i < error_count; ++i) {
        lists.simulation_errors.push_back(read_text(mxGetCell(errors, i), buffer));
    }
    for (std::size_t i = 0; i < warning_count; ++i) {
        lists.simulation_warnings.push_back(read_text(mxGetCell(warnings, i), buffer));
    }
    return true;
}

}  // namespace tamlo_matlab
