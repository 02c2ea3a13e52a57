// The extension's one connection to a MATLAB engine: opening it, the three user-function
// calls, and reading the user's outputs back into the simulator's records.
#ifndef TAMLO_MATLAB_MATLAB_CONNECTION_H
#define TAMLO_MATLAB_MATLAB_CONNECTION_H

#include <cstddef>
#include <memory>
#include <string>

#include "engine.h"
#include "matrix.h"
#include "tamlo_dispatch/dispatch_outcome.h"
#include "tamlo_dispatch/simulation_parameters.h"
#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_matlab {

// Size registered with engOutputBuffer and used for every text read with mxGetString.
inline constexpr std::size_t kMatlabTextBufferSize = 1024;

// Reported instead of calling MATLAB when no engine is open (a start that stopped before
// opening one, no start at all, or a closed engine).
std::string no_engine_dispatch_message();
std::string no_engine_end_simulation_message();

class MatlabConnection {
public:
    MatlabConnection() = default;
    ~MatlabConnection();
    MatlabConnection(const MatlabConnection&) = delete;
    MatlabConnection& operator=(const MatlabConnection&) = delete;

    // Starts the engine once and changes to the working directory; an engine that is
    // already open is reused untouched.
    std::shared_ptr<tamlo_dispatch::DispatchError> open_engine(std::string working_directory);
    // Ends the engine if it is open. A later open_engine starts a fresh one.
    void close_engine();
    bool is_open() const { return open_; }

    // Refill the cached struct and place it in the workspace; nothing happens without an engine.
    void put_simulation_parameters(const tamlo_dispatch::SimulationParameters& parameters);
    void put_simulation_state(const tamlo_dispatch::SimulationState& state);

    std::shared_ptr<tamlo_dispatch::DispatchError> call_start_simulation(std::string function_name);
    // The texts of end_sim_out, unprefixed.
    tamlo_dispatch::SimulationErrorsAndWarnings call_end_simulation(std::string function_name);
    std::shared_ptr<tamlo_dispatch::DispatchError> call_dispatch(
        std::string function_name, tamlo_dispatch::SimulationState& state,
        const tamlo_dispatch::SimulationParameters& parameters);

    // Reading the user's outputs. `buffer` holds kMatlabTextBufferSize bytes.
    static bool read_init_error(const mxArray* array, char* buffer, tamlo_dispatch::DispatchError& result);
    static bool read_end_sim_out(const mxArray* array, char* buffer,
                                 tamlo_dispatch::SimulationErrorsAndWarnings& lists);
    static void apply_severity_code(std::string description, std::string severity_code,
                                    tamlo_dispatch::DispatchError& result);

    // Read-back of new_simulation_state; on failure the outcome holds a critical error.
    static bool find_state_field(const mxArray* container, std::size_t element, std::string list,
                                 std::size_t entry, std::string field,
                                 tamlo_dispatch::DispatchError& outcome, const mxArray*& found);
    static bool read_state_number(const mxArray* container, std::size_t element, std::string list,
                                  std::size_t entry, std::string field,
                                  tamlo_dispatch::DispatchError& outcome, double& target);
    static bool read_state_logical(const mxArray* container, std::size_t element, std::string list,
                                   std::size_t entry, std::string field,
                                   tamlo_dispatch::DispatchError& outcome, bool& target);
    static bool read_bus_state(const mxArray* new_simulation_state, std::string bus,
                               tamlo_dispatch::BusState& target, tamlo_dispatch::DispatchError& outcome);
    static bool read_bus_number(const mxArray* bus, std::string field, tamlo_dispatch::DispatchError& outcome,
                                double& target);
    // Reads every decision of the read-back table into `state`, stopping at the first failure.
    static bool read_new_simulation_state(const mxArray* result, tamlo_dispatch::SimulationState& state,
                                          const tamlo_dispatch::SimulationParameters& parameters,
                                          tamlo_dispatch::DispatchError& outcome);

    static void remove_line_feeds(std::string& text);
    // Text of a char array through `buffer`, cut to kMatlabTextBufferSize - 1 characters;
    // anything that is not text (a null array included) reads as the empty text.
    static std::string read_text(const mxArray* array, char* buffer);

private:
    void clear_output_buffer();
    // What the last evaluation printed, line feeds removed.
    std::string output_text() const;

    Engine* engine_ = nullptr;
    // One byte more than registered, always zero: MATLAB may fill all 1024 bytes without a
    // terminator.
    std::unique_ptr<char[]> output_buffer_;
    bool open_ = false;
    mxArray* simulation_parameters_array_ = nullptr;
    mxArray* simulation_state_array_ = nullptr;
};

}  // namespace tamlo_matlab

#endif
