// Where a run's processes run. A run and its engine pass the turn to each other several times a
// time step; waking a process on another core costs more than the work between, on virtual
// machines most, so a run keeps itself and the engines it starts to one core.
#ifndef TAMLO_HOST_CORE_PLACEMENT_H
#define TAMLO_HOST_CORE_PLACEMENT_H

#include <vector>

namespace tamlo_host {

// The cores this process may run on, in order; empty when the system does not say.
std::vector<int> allowed_cores();

// Keeps this process, and every process it starts from now on, to one core. Safe between fork
// and exec. Returns false when the system refused.
bool keep_to_core(int core);

// Keeps this process to the core it is running on, where the system placed it as it started,
// when it may use more than one. Returns that core, or -1 when nothing changed.
int keep_to_current_core();

}  // namespace tamlo_host

#endif
