// Warm engines: a template octave-engine that started its interpreter once and forks a fresh
// engine for each open, so that only the first open of a process pays for Octave's start.
#ifndef TAMLO_PLATFORM_ENGINE_TEMPLATE_H
#define TAMLO_PLATFORM_ENGINE_TEMPLATE_H

#include <sys/types.h>

#include <string>

namespace tamlo::eng {

// Hands engine_fd (the engine's end of a new socketpair) to a fresh engine forked from this
// process's template, starting the template from server on first use. On success pid is the
// engine's process (a child of the template, not of this process) and the engine sends its
// ready frame on the socket as a spawned one does. False unless warm engines are asked for
// (TAMLO_ENG_WARM=1), or when the template cannot serve; the caller then spawns an engine itself.
bool open_warm_engine(const std::string& server, int engine_fd, pid_t& pid);

}  // namespace tamlo::eng

#endif
