// Extras of our libeng that MATLAB's does not have, for tests and diagnostics only. Code
// that must also run against MATLAB's libeng never includes this header.
#ifndef TAMLO_PLATFORM_ENG_EXT_H
#define TAMLO_PLATFORM_ENG_EXT_H

#include "engine.h"

#ifdef __cplusplus
extern "C" {
#endif

// Process id of the engine behind an open handle, or -1 for a null, closed or unknown handle.
TAMLO_ENG_API int tamlo_engGetPid(Engine* ep);

// Path of the octave-engine program that engOpenSingleUse would start, or null when none is
// found. The text stays valid until the next call.
TAMLO_ENG_API const char* tamlo_engServerPath(void);

// Time limit in seconds for every later call on ep (0 means none). A call that runs past it
// ends the engine (interrupt first, then kill), fails as on a dead engine and leaves the reason
// in the registered output buffer. Returns 0, or 1 for an unknown handle or a limit that is
// negative or not finite.
TAMLO_ENG_API int tamlo_engSetCallTimeout(Engine* ep, double seconds);

// The limit that engines opened later in this process start with (0 means none); for hosts
// that never see the handle, such as a bench driving an extension. Returns 0, or 1 for a limit
// that is negative or not finite.
TAMLO_ENG_API int tamlo_engSetDefaultCallTimeout(double seconds);

// The places engOpenSingleUse looks for the octave-engine program, in order, one per line.
// The text stays valid until the next call.
TAMLO_ENG_API const char* tamlo_engServerCandidates(void);

#ifdef __cplusplus
}
#endif

#endif
