// Test helpers that read MATLAB arrays back through the matrix API and hold them against
// a table of expected fields: name, class, dimensions and value, in field order.
#ifndef TAMLO_TESTS_MARSHAL_MX_EXPECT_H
#define TAMLO_TESTS_MARSHAL_MX_EXPECT_H

#include <cstddef>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "matrix.h"

namespace tamlo_marshal_test {

struct MxDeleter {
    void operator()(mxArray* a) const { mxDestroyArray(a); }
};
// Owns one array made by a builder under test.
using MxPtr = std::unique_ptr<mxArray, MxDeleter>;

// Expected value forms of one field.
struct Column {  // N x 1 double
    std::vector<double> values;
};
struct Matrix {  // rows x cols double, data in column-major order
    std::size_t rows;
    std::size_t cols;
    std::vector<double> data;
};
struct Struct {  // a struct (array) of these dimensions, checked by its own table
    std::size_t rows;
    std::size_t cols;
};
struct Unwritten {};  // the field exists but this element holds no array

using Expected = std::variant<double, bool, std::string, Column, Matrix, Struct, Unwritten>;

struct FieldRow {
    std::string name;
    Expected value;
};

std::vector<std::string> field_names(const mxArray* s);
std::string text_of(const mxArray* a);
// s(index).field, or null; fails the test when s has no such field.
const mxArray* field_of(const mxArray* s, const char* field, std::size_t index = 0);

// Checks that s is a struct whose fields are exactly the rows' names in order and that
// s(index) holds the expected value in each.
void expect_struct(const mxArray* s, std::size_t index, const std::vector<FieldRow>& rows);
// Checks class, dimensions (m x n) and number of fields of a struct array.
void expect_struct_shape(const mxArray* s, std::size_t m, std::size_t n, int fields);

}  // namespace tamlo_marshal_test

#endif
