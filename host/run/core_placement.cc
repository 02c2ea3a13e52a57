// Where a run's processes run: the allowed cores, and keeping to one of them.
#include "core_placement.h"

#include <sched.h>

namespace tamlo_host {

std::vector<int> allowed_cores() {
    cpu_set_t set;
    CPU_ZERO(&set);
    if (::sched_getaffinity(0, sizeof set, &set) != 0) return {};
    std::vector<int> cores;
    for (int c = 0; c < CPU_SETSIZE; ++c) {
        if (CPU_ISSET(c, &set)) cores.push_back(c);
    }
    return cores;
}

bool keep_to_core(int core) {
    if (core < 0 || core >= CPU_SETSIZE) return false;
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(core, &set);
    return ::sched_setaffinity(0, sizeof set, &set) == 0;
}

int keep_to_current_core() {
    if (allowed_cores().size() < 2) return -1;
    const int core = ::sched_getcpu();
    return keep_to_core(core) ? core : -1;
}

}  // namespace tamlo_host
