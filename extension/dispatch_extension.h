// The extension object behind the simulator's IDispatchExtension: lifecycle, settings,
// error state of a run and the messages collected during it.
#ifndef TAMLO_EXTENSION_DISPATCH_EXTENSION_H
#define TAMLO_EXTENSION_DISPATCH_EXTENSION_H

#include <memory>
#include <string>

#include "dispatch_extension_interface.h"
#include "matlab_connection.h"

class DispatchExtension : public IDispatchExtension {
public:
    DispatchExtension() = default;
    ~DispatchExtension() override = default;

    void destroy() override;
    void close_engine() override;
    std::shared_ptr<tamlo_dispatch::DispatchError> start_simulation(
        const tamlo_dispatch::SimulationParameters& parameters) override;
    void dispatch(tamlo_dispatch::SimulationState& state) override;
    std::shared_ptr<tamlo_dispatch::SimulationErrorsAndWarnings> end_simulation() override;
    std::shared_ptr<tamlo_dispatch::ResultParameters> get_result_parameters() override;

private:
    void read_settings();
    // The message of the first empty setting, or null when all four are given.
    const char* first_empty_setting_message() const;

    tamlo_dispatch::SimulationParameters simulation_parameters_;
    tamlo_matlab::MatlabConnection matlab_connection_;
    tamlo_dispatch::DispatchError dispatch_error_;
    tamlo_dispatch::SimulationErrorsAndWarnings errors_and_warnings_;
    std::string working_directory_;
    std::string start_simulation_function_;
    std::string dispatch_function_;
    std::string end_simulation_function_;
};

namespace tamlo_extension {

// Folds one time step's outcome into the run's error state. True when the step succeeded
// and its decisions are to be validated.
bool record_step_outcome(tamlo_dispatch::DispatchError& error_state, const tamlo_dispatch::DispatchError& outcome);

// The per-component result layout of a run.
void fill_result_parameters(tamlo_dispatch::ResultParameters& results,
                            const tamlo_dispatch::SimulationParameters& parameters);

}  // namespace tamlo_extension

#endif
