// Opens and closes the MATLAB engine, owns its output buffer and the two cached structs,
// and places simulation_parameters and simulation_state in the engine's workspace.
#include "matlab_connection.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "simulation_parameters_struct.h"
#include "simulation_state_struct.h"
#include "struct_primitives.h"

namespace tamlo_matlab {

using tamlo_dispatch::DispatchError;

std::string no_engine_dispatch_message() {
    return "The dispatch function was not called: no MATLAB engine is open. start_simulation has to succeed in "
           "opening one first.";
}

std::string no_engine_end_simulation_message() {
    return "The end simulation function was not called: no MATLAB engine is open. start_simulation has to succeed "
           "in opening one first.";
}

MatlabConnection::~MatlabConnection() {
    close_engine();
    output_buffer_.reset();
    mxDestroyArray(simulation_state_array_);
    mxDestroyArray(simulation_parameters_array_);
}

std::shared_ptr<DispatchError> MatlabConnection::open_engine(std::string working_directory) {
    auto result = std::make_shared<DispatchError>();
    if (open_) {
        return result;
    }

    int status = 0;
    engine_ = engOpenSingleUse("", nullptr, &status);
    if (engine_ == nullptr) {
        char text[200];
        std::snprintf(text, sizeof text, "\nCan't start MATLAB engine: code %d\n", status);
        set_critical_error(*result, text);
        return result;
    }

    open_ = true;
    if (!output_buffer_) {
        output_buffer_ = std::make_unique<char[]>(kMatlabTextBufferSize + 1);
    }
    clear_output_buffer();
    engOutputBuffer(engine_, output_buffer_.get(), static_cast<int>(kMatlabTextBufferSize));

    const std::string command = "clear; cd('" + working_directory + "');";
    engEvalString(engine_, command.c_str());
    if (output_buffer_[0] != '\0') {
        set_critical_error(*result, "MATLAB error: " + output_text());
    }

    engSetVisible(engine_, false);
    return result;
}

void MatlabConnection::close_engine() {
    if (!open_) {
        return;
    }
    engClose(engine_);
    // The handle is dead now; forgetting it keeps every later call away from it.
    engine_ = nullptr;
    open_ = false;
}

void MatlabConnection::put_simulation_parameters(const tamlo_dispatch::SimulationParameters& parameters) {
    if (!open_) {
        return;
    }
    if (simulation_parameters_array_ == nullptr) {
        simulation_parameters_array_ = tamlo_marshal::make_single_struct();
    }
    tamlo_marshal::fill_simulation_parameters_struct(simulation_parameters_array_, parameters);
    engPutVariable(engine_, "simulation_parameters", simulation_parameters_array_);
}

void MatlabConnection::put_simulation_state(const tamlo_dispatch::SimulationState& state) {
    if (!open_) {
        return;
    }
    if (simulation_state_array_ == nullptr) {
        simulation_state_array_ = tamlo_marshal::make_single_struct();
    }
    tamlo_marshal::fill_simulation_state_struct(simulation_state_array_, state);
    engPutVariable(engine_, "simulation_state", simulation_state_array_);
}

void MatlabConnection::clear_output_buffer() {
    output_buffer_[0] = '\0';
    output_buffer_[kMatlabTextBufferSize] = '\0';
}

std::string MatlabConnection::output_text() const {
    const char* begin = output_buffer_.get();
    // Bounded by the registered size: the spare byte past it is always zero anyway.
    std::string text(begin, std::find(begin, begin + kMatlabTextBufferSize, '\0'));
    remove_line_feeds(text);
    return text;
}

void MatlabConnection::remove_line_feeds(std::string& text) {
    text.erase(std::remove(text.begin(), text.end(), '\n'), text.end());
}

std::string MatlabConnection::read_text(const mxArray* array, char* buffer) {
    // Zeroed first, so a call that fails without writing leaves the empty text behind.
    std::memset(buffer, 0, kMatlabTextBufferSize);
    if (array == nullptr) {
        return {};
    }
    if (mxGetString(array, buffer, kMatlabTextBufferSize) != 0 &&
        mxGetNumberOfElements(array) < kMatlabTextBufferSize) {
        // Not a cut-short text (that fails too, after filling the buffer) but no text at all.
        return {};
    }
    return std::string(buffer, std::find(buffer, buffer + kMatlabTextBufferSize - 1, '\0'));
}

}  // namespace tamlo_matlab
