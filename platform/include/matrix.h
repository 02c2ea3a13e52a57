// Declarations of the MATLAB matrix (mx) C API subset this project uses, written from
// MATLAB's public documentation. Functions that take or return an index or size are
// imported under their 64-bit-index link names (suffix _730), exactly as a build against
// MATLAB's own libmx imports them, so one binary runs against either library.
#ifndef TAMLO_PLATFORM_MATRIX_H
#define TAMLO_PLATFORM_MATRIX_H

#include <stddef.h>
#include <stdint.h>

#ifndef __cplusplus
#include <stdbool.h>
#endif

#if defined(_WIN32)
#define TAMLO_MX_API __declspec(dllimport)
#else
#define TAMLO_MX_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct mxArray_tag mxArray;
typedef size_t mwSize;
typedef size_t mwIndex;
typedef ptrdiff_t mwSignedIndex;
typedef uint16_t mxChar;
typedef bool mxLogical;

typedef enum {
    mxUNKNOWN_CLASS = 0,
    mxCELL_CLASS = 1,
    mxSTRUCT_CLASS = 2,
    mxLOGICAL_CLASS = 3,
    mxCHAR_CLASS = 4,
    mxVOID_CLASS = 5,
    mxDOUBLE_CLASS = 6,
    mxSINGLE_CLASS = 7,
    mxINT8_CLASS = 8,
    mxUINT8_CLASS = 9,
    mxINT16_CLASS = 10,
    mxUINT16_CLASS = 11,
    mxINT32_CLASS = 12,
    mxUINT32_CLASS = 13,
    mxINT64_CLASS = 14,
    mxUINT64_CLASS = 15,
    mxFUNCTION_CLASS = 16,
    mxOPAQUE_CLASS = 17,
    mxOBJECT_CLASS = 18
} mxClassID;

typedef enum { mxREAL = 0, mxCOMPLEX = 1 } mxComplexity;

// --- 64-bit-index entry points (link names end in _730) ---
TAMLO_MX_API mxArray* mxCreateStructMatrix_730(mwSize m, mwSize n, int nfields, const char** fieldnames);
TAMLO_MX_API mxArray* mxGetField_730(const mxArray* pa, mwIndex i, const char* fieldname);
TAMLO_MX_API void mxSetField_730(mxArray* pa, mwIndex i, const char* fieldname, mxArray* value);
TAMLO_MX_API mxArray* mxCreateDoubleMatrix_730(mwSize m, mwSize n, mxComplexity flag);
TAMLO_MX_API mxArray* mxGetCell_730(const mxArray* pa, mwIndex i);
TAMLO_MX_API int mxGetString_730(const mxArray* pa, char* buf, mwSize buflen);

#define mxCreateStructMatrix mxCreateStructMatrix_730
#define mxGetField mxGetField_730
#define mxSetField mxSetField_730
#define mxCreateDoubleMatrix mxCreateDoubleMatrix_730
#define mxGetCell mxGetCell_730
#define mxGetString mxGetString_730

// --- plain-name entry points used by the extension ---
TAMLO_MX_API int mxAddField(mxArray* pa, const char* fieldname);
TAMLO_MX_API int mxGetFieldNumber(const mxArray* pa, const char* fieldname);
TAMLO_MX_API mxArray* mxDuplicateArray(const mxArray* in);
TAMLO_MX_API void mxDestroyArray(mxArray* pa);
TAMLO_MX_API mxArray* mxCreateDoubleScalar(double value);
TAMLO_MX_API mxArray* mxCreateLogicalScalar(mxLogical value);
TAMLO_MX_API mxArray* mxCreateString(const char* str);
TAMLO_MX_API double* mxGetPr(const mxArray* pa);
TAMLO_MX_API double mxGetScalar(const mxArray* pa);
TAMLO_MX_API size_t mxGetNumberOfElements(const mxArray* pa);
TAMLO_MX_API bool mxIsStruct(const mxArray* pa);
TAMLO_MX_API bool mxIsLogicalScalarTrue(const mxArray* pa);

// --- further entry points for tests, the engine and the bench (never imported by the extension) ---
TAMLO_MX_API mxClassID mxGetClassID(const mxArray* pa);
TAMLO_MX_API const char* mxGetClassName(const mxArray* pa);
TAMLO_MX_API mwSize mxGetM(const mxArray* pa);
TAMLO_MX_API mwSize mxGetN(const mxArray* pa);
TAMLO_MX_API mwSize mxGetNumberOfDimensions(const mxArray* pa);
TAMLO_MX_API const mwSize* mxGetDimensions(const mxArray* pa);
TAMLO_MX_API bool mxIsEmpty(const mxArray* pa);
TAMLO_MX_API bool mxIsDouble(const mxArray* pa);
TAMLO_MX_API bool mxIsLogical(const mxArray* pa);
TAMLO_MX_API bool mxIsChar(const mxArray* pa);
TAMLO_MX_API bool mxIsCell(const mxArray* pa);
TAMLO_MX_API bool mxIsNumeric(const mxArray* pa);
TAMLO_MX_API int mxGetNumberOfFields(const mxArray* pa);
TAMLO_MX_API const char* mxGetFieldNameByNumber(const mxArray* pa, int n);
TAMLO_MX_API mxArray* mxGetFieldByNumber(const mxArray* pa, mwIndex i, int fieldnum);
TAMLO_MX_API void mxSetFieldByNumber(mxArray* pa, mwIndex i, int fieldnum, mxArray* value);
TAMLO_MX_API void mxRemoveField(mxArray* pa, int fieldnum);
TAMLO_MX_API mxArray* mxCreateCellMatrix(mwSize m, mwSize n);
TAMLO_MX_API void mxSetCell(mxArray* pa, mwIndex i, mxArray* value);
TAMLO_MX_API mxArray* mxCreateLogicalMatrix(mwSize m, mwSize n);
TAMLO_MX_API mxArray* mxCreateLogicalArray(mwSize ndim, const mwSize* dims);
TAMLO_MX_API mxLogical* mxGetLogicals(const mxArray* pa);
TAMLO_MX_API mxArray* mxCreateNumericMatrix(mwSize m, mwSize n, mxClassID classid, mxComplexity flag);
TAMLO_MX_API mxArray* mxCreateNumericArray(mwSize ndim, const mwSize* dims, mxClassID classid,
                                           mxComplexity flag);
TAMLO_MX_API mxArray* mxCreateStructArray(mwSize ndim, const mwSize* dims, int nfields,
                                          const char** fieldnames);
TAMLO_MX_API mxArray* mxCreateCellArray(mwSize ndim, const mwSize* dims);
TAMLO_MX_API mxArray* mxCreateCharArray(mwSize ndim, const mwSize* dims);
TAMLO_MX_API void* mxGetData(const mxArray* pa);
TAMLO_MX_API mxChar* mxGetChars(const mxArray* pa);
TAMLO_MX_API char* mxArrayToString(const mxArray* pa);
TAMLO_MX_API void mxFree(void* ptr);
TAMLO_MX_API size_t mxGetElementSize(const mxArray* pa);

#ifdef __cplusplus
}
#endif

#endif
