// Arrays written out as text, so that one string compares class, dims, fields and every
// element of a value, and an owner that frees an array at the end of a scope.
#ifndef TAMLO_TESTS_PLATFORM_ARRAY_TEXT_H
#define TAMLO_TESTS_PLATFORM_ARRAY_TEXT_H

#include <cstdio>
#include <cstring>
#include <string>
#include <type_traits>

#include "matrix.h"

namespace tamlo_test {

struct ArrayOwner {
    explicit ArrayOwner(mxArray* a = nullptr) : a(a) {}
    ~ArrayOwner() { mxDestroyArray(a); }
    ArrayOwner(const ArrayOwner&) = delete;
    ArrayOwner& operator=(const ArrayOwner&) = delete;
    mxArray* get() const { return a; }
    mxArray* a;
};

template <typename T>
std::string element_text(const mxArray* a, size_t i) {
    T v;
    std::memcpy(&v, static_cast<const char*>(mxGetData(a)) + i * sizeof(T), sizeof v);
    if constexpr (std::is_floating_point_v<T>) {
        char buf[32];
        std::snprintf(buf, sizeof buf, "%.17g", static_cast<double>(v));
        return buf;
    } else {
        return std::to_string(+v);
    }
}

inline std::string element_text(const mxArray* a, size_t i) {
    switch (mxGetClassID(a)) {
        case mxDOUBLE_CLASS: return element_text<double>(a, i);
        case mxSINGLE_CLASS: return element_text<float>(a, i);
        case mxLOGICAL_CLASS: return element_text<bool>(a, i);
        case mxINT8_CLASS: return element_text<int8_t>(a, i);
        case mxUINT8_CLASS: return element_text<uint8_t>(a, i);
        case mxINT16_CLASS: return element_text<int16_t>(a, i);
        case mxUINT16_CLASS: return element_text<uint16_t>(a, i);
        case mxINT32_CLASS: return element_text<int32_t>(a, i);
        case mxUINT32_CLASS: return element_text<uint32_t>(a, i);
        case mxINT64_CLASS: return element_text<int64_t>(a, i);
        case mxUINT64_CLASS: return element_text<uint64_t>(a, i);
        default: return "?";
    }
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
