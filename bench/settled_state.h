// A sample system's first state that an identity strategy can hand back without a warning.
#ifndef TAMLO_BENCH_SETTLED_STATE_H
#define TAMLO_BENCH_SETTLED_STATE_H

#include "sample_systems.h"

namespace tamlo_bench {

// The sample state with each bus's unmet load and capacity shortage as nothing served leaves
// them. Validation stops checking once a run has collected its limit of warnings, so a step
// that warns would be timed without it after a few iterations.
inline tamlo_dispatch::SimulationState settled_state(const tamlo_dispatch::SimulationParameters& parameters) {
    tamlo_dispatch::SimulationState state = tamlo_samples::make_state(parameters);
    for (tamlo_dispatch::BusState* bus : {&state.ac_bus, &state.dc_bus}) {
        bus->unmet_load = bus->load_requested - bus->load_served;
        bus->capacity_shortage = bus->operating_capacity_requested - bus->operating_capacity_served;
    }
    return state;
}

}  // namespace tamlo_bench

#endif
