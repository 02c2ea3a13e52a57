// Writes one CSV line per time step: what the dispatch saw and decided.
#ifndef TAMLO_HOST_RESULTS_CSV_H
#define TAMLO_HOST_RESULTS_CSV_H

#include <cstddef>
#include <fstream>
#include <string>

#include "tamlo_dispatch/simulation_parameters.h"
#include "tamlo_dispatch/simulation_state.h"

namespace tamlo_host {

class ResultsCsv {
public:
    // Throws InputError when the file cannot be written.
    ResultsCsv(const std::string& file, const tamlo_dispatch::SimulationParameters& parameters);
    void write(std::size_t step, const tamlo_dispatch::SimulationState& state);

private:
    std::string file_;
    std::ofstream out_;
};

// The header line's column names (MATLAB field paths, one-based), without the line feed.
std::string results_header(const tamlo_dispatch::SimulationParameters& parameters);

}  // namespace tamlo_host

#endif
