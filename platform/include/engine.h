// Declarations of the MATLAB Engine (eng) C API subset this project uses, written from
// MATLAB's public documentation.
#ifndef TAMLO_PLATFORM_ENGINE_H
#define TAMLO_PLATFORM_ENGINE_H

#include "matrix.h"

#if defined(_WIN32)
#define TAMLO_ENG_API __declspec(dllimport)
#else
#define TAMLO_ENG_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct engine Engine;

// Starts a new, unshared engine process. Returns null and sets *retstatus on failure.
TAMLO_ENG_API Engine* engOpenSingleUse(const char* startcmd, void* reserved, int* retstatus);
// Ends the engine process. 0 on success, 1 on failure.
TAMLO_ENG_API int engClose(Engine* ep);
// Evaluates one command line in the base workspace. 0 when the engine evaluated it, even if
// the command raised an error; non-zero only when the engine is gone.
TAMLO_ENG_API int engEvalString(Engine* ep, const char* string);
// Copies an array into the engine's base workspace under the given name. 0 on success.
TAMLO_ENG_API int engPutVariable(Engine* ep, const char* var_name, const mxArray* ap);
// Returns a copy of a base-workspace variable (owned by the caller), or null.
TAMLO_ENG_API mxArray* engGetVariable(Engine* ep, const char* name);
// Registers a buffer that receives the printed output of later engEvalString calls.
// A null buffer turns capture off.
TAMLO_ENG_API int engOutputBuffer(Engine* ep, char* buffer, int buflen);
TAMLO_ENG_API int engSetVisible(Engine* ep, bool newVal);

#ifdef __cplusplus
}
#endif

#endif
