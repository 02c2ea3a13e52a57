// The primitives every MATLAB struct builder is made of: empty structs and struct arrays,
// and typed writers of one field of one element.
#ifndef TAMLO_MARSHAL_STRUCT_PRIMITIVES_H
#define TAMLO_MARSHAL_STRUCT_PRIMITIVES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "matrix.h"

namespace tamlo_marshal {

// New 1 x 1 struct without fields; the caller owns it.
mxArray* make_single_struct();
// New N x 1 struct array without fields (0 x 1 for N = 0); the caller owns it.
mxArray* make_struct_array(std::size_t count);

// Writes value into s(index).field. Takes ownership of value: a deep copy is stored and value
// itself is destroyed. An existing value at that place is destroyed; an existing field keeps
// its place in the field order, a new one is added at the end.
void set_struct_field(mxArray* s, std::size_t index, const char* field, mxArray* value);

void set_number_field(mxArray* s, std::size_t index, const char* field, double value);
void set_logical_field(mxArray* s, std::size_t index, const char* field, bool value);
void set_string_field(mxArray* s, std::size_t index, const char* field, std::string value);
void set_number_list_field(mxArray* s, std::size_t index, const char* field, std::vector<double> values);
// Writes element 1 of a 1 x 1 struct: an N x 1 double column of the converted values.
void set_index_list_field(mxArray* s, const char* field, std::vector<std::uint64_t> values);

// New N x 2 double matrix, row i+1 holding pair i; the caller owns it.
mxArray* make_point_matrix(const std::vector<std::pair<double, double>>& points);

// New N x 1 double column holding the values in order; the caller owns it.
mxArray* make_number_column(const std::vector<double>& values);

// Counts and indices as MATLAB doubles: unsigned stays positive (2^64 - 1 becomes
// 1.8446744073709552e19), values above 2^53 round to the nearest double.
constexpr double count_to_double(std::uint64_t value) { return static_cast<double>(value); }
constexpr double count_to_double(std::int32_t value) { return static_cast<double>(value); }

// The writers below serve the per-time-step structs, where every value is made for the one
// place it is written to: they store the value itself instead of a copy of it. Like
// set_struct_field, they replace a value already there and keep the field order.

// Stores value itself in s(index).field; ownership of value passes to s.
void adopt_struct_field(mxArray* s, std::size_t index, const char* field, mxArray* value);
void adopt_number_field(mxArray* s, std::size_t index, const char* field, double value);
void adopt_logical_field(mxArray* s, std::size_t index, const char* field, bool value);
void adopt_string_field(mxArray* s, std::size_t index, const char* field, const char* value);

}  // namespace tamlo_marshal

#endif
