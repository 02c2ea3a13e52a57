// The lifecycle of the extension object: starting a run, one time step, ending a run.
#include "dispatch_extension.h"

#include "validate_dispatch.h"

using tamlo_dispatch::DispatchError;
using tamlo_dispatch::ResultParameters;
using tamlo_dispatch::SimulationErrorsAndWarnings;
using tamlo_dispatch::SimulationParameters;
using tamlo_dispatch::SimulationState;

void DispatchExtension::destroy() {
    delete this;
}

void DispatchExtension::close_engine() {
    matlab_connection_.close_engine();
}

std::shared_ptr<DispatchError> DispatchExtension::start_simulation(const SimulationParameters& parameters) {
    if (dispatch_error_.severity == tamlo_dispatch::DISPATCH_CRITICAL_ERROR) {
        return std::make_shared<DispatchError>(dispatch_error_);
    }
    simulation_parameters_ = parameters;
    errors_and_warnings_.simulation_errors.clear();
    errors_and_warnings_.simulation_warnings.clear();
    read_settings();

    auto result = std::make_shared<DispatchError>();
    if (const char* message = first_empty_setting_message()) {
        set_critical_error(*result, message);
        return result;
    }

    auto opened = matlab_connection_.open_engine(working_directory_);
    if (opened->severity == tamlo_dispatch::DISPATCH_CRITICAL_ERROR) {
        return opened;
    }
    matlab_connection_.put_simulation_parameters(simulation_parameters_);
    dispatch_error_.severity = tamlo_dispatch::DISPATCH_NO_ERROR;
    return matlab_connection_.call_start_simulation(start_simulation_function_);
}

void DispatchExtension::read_settings() {
    struct Setting {
        const char* key;
        std::string DispatchExtension::*value;
    };
    static constexpr Setting settings[] = {
        {"path", &DispatchExtension::working_directory_},
        {"start simulation", &DispatchExtension::start_simulation_function_},
        {"dispatch", &DispatchExtension::dispatch_function_},
        {"end simulation", &DispatchExtension::end_simulation_function_},
    };
    // Exact, case-sensitive names; a later occurrence of a key overrides an earlier one.
    for (const tamlo_dispatch::ExtensionParameter& parameter : simulation_parameters_.extension_parameters) {
        for (const Setting& setting : settings) {
            if (parameter.name == setting.key) {
                this->*setting.value = parameter.text_value;
            }
        }
    }
}

const char* DispatchExtension::first_empty_setting_message() const {
    struct Requirement {
        const std::string DispatchExtension::*value;
        const char* message;
    };
    static constexpr Requirement requirements[] = {
        {&DispatchExtension::working_directory_, "Matlab working directory cannot be empty"},
        {&DispatchExtension::start_simulation_function_, "Matlab start simulation function name cannot be empty"},
        {&DispatchExtension::dispatch_function_, "Matlab dispatch function name cannot be empty"},
        {&DispatchExtension::end_simulation_function_, "Matlab end simulation function name cannot be empty"},
    };
    for (const Requirement& requirement : requirements) {
        if ((this->*requirement.value).empty()) {
            return requirement.message;
        }
    }
    return nullptr;
}

void DispatchExtension::dispatch(SimulationState& state) {
    if (dispatch_error_.severity == tamlo_dispatch::DISPATCH_CRITICAL_ERROR) {
        return;
    }
    // Without an open engine (no start got that far, or close_engine closed it) the call
    // reports a critical error instead of touching the engine: a host that dispatches
    // without a successful start is broken, and the run must stop there.
    auto outcome = matlab_connection_.call_dispatch(dispatch_function_, state, simulation_parameters_);
    if (tamlo_extension::record_step_outcome(dispatch_error_, *outcome)) {
        // validate_dispatch takes the state read-only, which is all the copy was for: the
        // simulator's record cannot change, and no per-step copy is paid.
        tamlo_validation::validate_dispatch(simulation_parameters_, state, errors_and_warnings_);
    }
}

std::shared_ptr<SimulationErrorsAndWarnings> DispatchExtension::end_simulation() {
    auto result = std::make_shared<SimulationErrorsAndWarnings>();
    if (matlab_connection_.is_open()) {
        SimulationErrorsAndWarnings texts = matlab_connection_.call_end_simulation(end_simulation_function_);
        for (const std::string& text : texts.simulation_errors) {
            result->simulation_errors.push_back("MATLAB error: " + text);
        }
        for (const std::string& text : texts.simulation_warnings) {
            result->simulation_warnings.push_back("MATLAB warning: " + text);
        }
    } else {
        // No engine to ask (no start got as far as opening one, or close_engine closed it):
        // say so, unprefixed since MATLAB never spoke, and still hand over what was collected.
        result->simulation_errors.push_back(tamlo_matlab::no_engine_end_simulation_message());
    }
    result->simulation_errors.insert(result->simulation_errors.end(), errors_and_warnings_.simulation_errors.begin(),
                                     errors_and_warnings_.simulation_errors.end());
    result->simulation_warnings.insert(result->simulation_warnings.end(),
                                       errors_and_warnings_.simulation_warnings.begin(),
                                       errors_and_warnings_.simulation_warnings.end());
    if (dispatch_error_.severity != tamlo_dispatch::DISPATCH_NO_ERROR) {
        result->simulation_errors.push_back(dispatch_error_.message);
    }
    return result;
}

std::shared_ptr<ResultParameters> DispatchExtension::get_result_parameters() {
    auto results = std::make_shared<ResultParameters>();
    tamlo_extension::fill_result_parameters(*results, simulation_parameters_);
    return results;
}

namespace tamlo_extension {

bool record_step_outcome(DispatchError& error_state, const DispatchError& outcome) {
    // A critical error is final for the object: nothing overrides it.
    if (error_state.severity == tamlo_dispatch::DISPATCH_CRITICAL_ERROR) {
        return false;
    }
    switch (outcome.severity) {
    case tamlo_dispatch::DISPATCH_CRITICAL_ERROR:
        set_critical_error(error_state, outcome.message);
        return false;
    case tamlo_dispatch::DISPATCH_SIMULATION_ERROR:
        set_simulation_error(error_state, outcome.message);
        return false;
    default:
        return true;
    }
}

}  // namespace tamlo_extension
