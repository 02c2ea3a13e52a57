// Arrays written out as text, so that one string compares class, dims, fields and every
// element of a value, and an owner that frees an array at the end of a scope.
#ifndef TAMLO_TESTS_PLATFORM_ARRAY_TEXT_H
#define TAMLO_TESTS_PLATFORM_ARRAY_TEXT_H

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "matrix.h"
#include "mx_wire.h"

namespace tamlo_test {

using ArrayOwner = tamlo::wire::ArrayPtr;

// Element i as text: floating-point values in full, integers and logicals exactly.
inline std::string element_text(const mxArray* a, size_t i) {
    const size_t size = mxGetElementSize(a);
    const void* p = static_cast<const char*>(mxGetData(a)) + i * size;
    const mxClassID c = mxGetClassID(a);
    char buf[32];
    if (c == mxDOUBLE_CLASS || c == mxSINGLE_CLASS) {
        const double v = c == mxDOUBLE_CLASS ? *static_cast<const double*>(p) : *static_cast<const float*>(p);
        std::snprintf(buf, sizeof buf, "%.17g", v);
        return buf;
    }
    uint64_t u = 0;
    std::memcpy(&u, p, size);  // little-endian, as on every host this runs on
    if (c != mxINT8_CLASS && c != mxINT16_CLASS && c != mxINT32_CLASS && c != mxINT64_CLASS) return std::to_string(u);
    if (size < 8 && (u >> (8 * size - 1)) != 0) u |= ~uint64_t{0} << (8 * size);  // sign-extend
    return std::to_string(static_cast<int64_t>(u));
}

// "class dims" then the contents: "double 1x2 [1 3]", "char 1x2 'ab'", "cell 1x2 (...) null",
// "struct 1x1 {a,b} (...) (...)" with the fields of each element in turn; null for no array.
inline std::string describe(const mxArray* a) {
    if (a == nullptr) return "null";
    std::string s = mxGetClassName(a);
    for (mwSize k = 0; k < mxGetNumberOfDimensions(a); ++k)
        s += (k == 0 ? " " : "x") + std::to_string(mxGetDimensions(a)[k]);
    const size_t n = mxGetNumberOfElements(a);
    auto nested = [](const mxArray* v) { return v == nullptr ? std::string(" null") : " (" + describe(v) + ")"; };
    if (mxIsStruct(a)) {
        s += " {";
        for (int f = 0; f < mxGetNumberOfFields(a); ++f) s += (f == 0 ? "" : ",") + std::string(mxGetFieldNameByNumber(a, f));
        s += "}";
        for (size_t i = 0; i < n; ++i)
            for (int f = 0; f < mxGetNumberOfFields(a); ++f) s += nested(mxGetFieldByNumber(a, i, f));
    } else if (mxIsCell(a)) {
        for (size_t i = 0; i < n; ++i) s += nested(mxGetCell(a, i));
    } else if (mxIsChar(a)) {
        char* text = mxArrayToString(a);
        s += " '" + std::string(text != nullptr ? text : "?") + "'";
        mxFree(text);
    } else {
        s += " [";
        for (size_t i = 0; i < n; ++i) s += (i == 0 ? "" : " ") + element_text(a, i);
        s += "]";
    }
    return s;
}

}  // namespace tamlo_test

#endif
