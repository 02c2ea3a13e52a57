// The struct-building primitives: every MATLAB struct the extension makes is written with these.
#include "struct_primitives.h"

#include <cstring>

namespace tamlo_marshal {

mxArray* make_single_struct() { return mxCreateStructMatrix(1, 1, 0, nullptr); }

mxArray* make_struct_array(std::size_t count) { return mxCreateStructMatrix(count, 1, 0, nullptr); }

namespace {

// Makes s(index).field an empty place: the old value is destroyed, or the field is added
// (at the end of the field order) when s does not have it yet.
void clear_field(mxArray* s, std::size_t index, const char* field) {
    if (mxGetFieldNumber(s, field) >= 0) {
        // An element not written since its field was added holds no array.
        if (mxArray* old = mxGetField(s, index, field)) mxDestroyArray(old);
    } else {
        mxAddField(s, field);
    }
}

}  // namespace

void set_struct_field(mxArray* s, std::size_t index, const char* field, mxArray* value) {
    clear_field(s, index, field);
    mxSetField(s, index, field, mxDuplicateArray(value));
    mxDestroyArray(value);
}

void set_number_field(mxArray* s, std::size_t index, const char* field, double value) {
    set_struct_field(s, index, field, mxCreateDoubleScalar(value));
}

void set_logical_field(mxArray* s, std::size_t index, const char* field, bool value) {
    set_struct_field(s, index, field, mxCreateLogicalScalar(value));
}

void set_string_field(mxArray* s, std::size_t index, const char* field, std::string value) {
    set_struct_field(s, index, field, mxCreateString(value.c_str()));
}

mxArray* make_number_column(const std::vector<double>& values) {
    mxArray* column = mxCreateDoubleMatrix(values.size(), 1, mxREAL);
    if (!values.empty()) std::memcpy(mxGetPr(column), values.data(), values.size() * sizeof(double));
    return column;
}

void set_number_list_field(mxArray* s, std::size_t index, const char* field, std::vector<double> values) {
    set_struct_field(s, index, field, make_number_column(values));
}

void set_index_list_field(mxArray* s, const char* field, std::vector<std::uint64_t> values) {
    mxArray* column = mxCreateDoubleMatrix(values.size(), 1, mxREAL);
    double* data = mxGetPr(column);
    for (std::size_t i = 0; i < values.size(); ++i) data[i] = count_to_double(values[i]);
    set_struct_field(s, 0, field, column);
}

mxArray* make_point_matrix(const std::vector<std::pair<double, double>>& points) {
    const std::size_t n = points.size();
    mxArray* matrix = mxCreateDoubleMatrix(n, 2, mxREAL);
    double* data = mxGetPr(matrix);
    // Column-major: the first members fill column 1, the second members column 2.
    for (std::size_t i = 0; i < n; ++i) {
        data[i] = points[i].first;
        data[n + i] = points[i].second;
    }
    return matrix;
}

void adopt_struct_field(mxArray* s, std::size_t index, const char* field, mxArray* value) {
    clear_field(s, index, field);
    mxSetField(s, index, field, value);
}

void adopt_number_field(mxArray* s, std::size_t index, const char* field, double value) {
    adopt_struct_field(s, index, field, mxCreateDoubleScalar(value));
}

void adopt_logical_field(mxArray* s, std::size_t index, const char* field, bool value) {
    adopt_struct_field(s, index, field, mxCreateLogicalScalar(value));
}

void adopt_string_field(mxArray* s, std::size_t index, const char* field, const char* value) {
    adopt_struct_field(s, index, field, mxCreateString(value));
}

}  // namespace tamlo_marshal
