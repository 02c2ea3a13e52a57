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

#ifdef __cplusplus
}
#endif

#endif
