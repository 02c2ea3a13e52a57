// Random but reproducible systems and time-step states for trying strategies: any count of
// each component kind on either bus, with states a simulator could send.
#ifndef TAMLO_TESTS_STRATEGIES_GENERATED_SYSTEMS_H
#define TAMLO_TESTS_STRATEGIES_GENERATED_SYSTEMS_H

#include <cstdint>
#include <random>
#include <string>

#include "dispatch_extension_interface.h"

namespace tamlo_strategies {

class SystemGenerator {
public:
    explicit SystemGenerator(std::uint32_t seed) : random_(seed) {}

    // A system of 0..3 components of each kind (at least one primary load).
    tamlo_dispatch::SimulationParameters system();

    // The state of time step `step` of `system`, with every decision field zero.
    tamlo_dispatch::SimulationState state(const tamlo_dispatch::SimulationParameters& system, std::uint32_t step);

private:
    double uniform(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random_); }
    int count(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
    bool chance(double p) { return uniform(0.0, 1.0) < p; }
    tamlo_dispatch::ComponentParameters head(const std::string& name, bool is_ac);

    std::mt19937 random_;
    std::uint64_t next_number_ = 1;
};

// One line per component and its state, for a failure message.
std::string describe(const tamlo_dispatch::SimulationParameters& system, const tamlo_dispatch::SimulationState& state);

}  // namespace tamlo_strategies

#endif
