// The outcome records the extension hands back to the simulator: errors, messages of a run,
// and the per-component result layout.
#ifndef TAMLO_DISPATCH_DISPATCH_OUTCOME_H
#define TAMLO_DISPATCH_DISPATCH_OUTCOME_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tamlo_dispatch {

enum DispatchSeverity : std::int32_t {
    DISPATCH_NO_ERROR = 0,
    DISPATCH_SIMULATION_ERROR = 1,
    DISPATCH_CRITICAL_ERROR = 2,
};

struct DispatchError {
    DispatchSeverity severity = DISPATCH_NO_ERROR;
    // Fields the simulator owns; the extension zeroes them in records it makes and copies
    // them whole, nothing more.
    std::uint32_t host_fields[9] = {};
    std::string message;
};

struct SimulationErrorsAndWarnings {
    std::vector<std::string> simulation_errors;
    std::vector<std::string> simulation_warnings;
};

struct ResultItem {
    std::string label;
    double value = 0.0;
    std::string detail;
};

struct ResultSeries {
    std::string label;
    std::string detail;
    std::vector<double> values;
};

struct ComponentResults {
    std::uint64_t component_number = 0;
    std::vector<ResultItem> result_items;
};

struct ResultParameters {
    std::vector<ComponentResults> generator_results;
    std::vector<ComponentResults> primary_load_results;
    std::vector<ComponentResults> pv_results;
    std::vector<ComponentResults> battery_results;
    std::vector<ComponentResults> wind_turbine_results;
    std::vector<ComponentResults> converter_results;
    std::vector<ComponentResults> flywheel_results;
    std::vector<ResultSeries> series_results;
    std::uint64_t number_of_timesteps = 0;
    bool valid = true;
};

inline void set_simulation_error(DispatchError& error, std::string message) {
    error.severity = DISPATCH_SIMULATION_ERROR;
    error.message = std::move(message);
}

inline void set_critical_error(DispatchError& error, std::string message) {
    error.severity = DISPATCH_CRITICAL_ERROR;
    error.message = std::move(message);
}

// The records cross the library boundary: a reorder or a width change must fail the build.
static_assert(sizeof(DispatchSeverity) == 4);
static_assert(offsetof(DispatchError, host_fields) == 4);
static_assert(sizeof(DispatchError::host_fields) == 36);
static_assert(offsetof(DispatchError, message) == 40);
static_assert(offsetof(SimulationErrorsAndWarnings, simulation_warnings) == sizeof(std::vector<std::string>));
static_assert(offsetof(ResultItem, value) == sizeof(std::string));
static_assert(offsetof(ResultItem, detail) == sizeof(std::string) + 8);
static_assert(offsetof(ResultSeries, values) == 2 * sizeof(std::string));
static_assert(offsetof(ComponentResults, result_items) == 8);
static_assert(offsetof(ResultParameters, series_results) == 7 * sizeof(std::vector<ComponentResults>));
static_assert(offsetof(ResultParameters, number_of_timesteps) == 8 * sizeof(std::vector<ComponentResults>));
static_assert(offsetof(ResultParameters, valid) == 8 * sizeof(std::vector<ComponentResults>) + 8);

}  // namespace tamlo_dispatch

#endif
