// Reads MATLAB arrays back and holds them against tables of expected fields.
#include "mx_expect.h"

#include <gtest/gtest.h>

namespace tamlo_marshal_test {

std::vector<std::string> field_names(const mxArray* s) {
    std::vector<std::string> names;
    for (int i = 0; i < mxGetNumberOfFields(s); ++i) names.emplace_back(mxGetFieldNameByNumber(s, i));
    return names;
}

std::string text_of(const mxArray* a) {
    char* chars = mxArrayToString(a);
    if (chars == nullptr) return "<not text>";
    std::string text(chars);
    mxFree(chars);
    return text;
}

const mxArray* field_of(const mxArray* s, const char* field, std::size_t index) {
    EXPECT_GE(mxGetFieldNumber(s, field), 0) << "no field " << field;
    return mxGetField(s, index, field);
}

namespace {

void expect_double_data(const mxArray* a, const std::vector<double>& expected) {
    ASSERT_EQ(mxGetClassID(a), mxDOUBLE_CLASS);
    ASSERT_EQ(mxGetNumberOfElements(a), expected.size());
    const double* data = mxGetPr(a);
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(data[i], expected[i]) << "element " << i;
}

struct ValueCheck {
    const mxArray* a;

    void operator()(double expected) const {
        ASSERT_EQ(mxGetClassID(a), mxDOUBLE_CLASS);
        EXPECT_EQ(mxGetM(a), 1u);
        EXPECT_EQ(mxGetN(a), 1u);
        EXPECT_EQ(mxGetScalar(a), expected);
    }
    void operator()(bool expected) const {
        ASSERT_EQ(mxGetClassID(a), mxLOGICAL_CLASS);
        EXPECT_EQ(mxGetM(a), 1u);
        EXPECT_EQ(mxGetN(a), 1u);
        EXPECT_EQ(mxIsLogicalScalarTrue(a), expected);
    }
    void operator()(const std::string& expected) const {
        ASSERT_EQ(mxGetClassID(a), mxCHAR_CLASS);
        if (expected.empty()) {
            EXPECT_TRUE(mxIsEmpty(a));
        } else {
            EXPECT_EQ(mxGetM(a), 1u);
            EXPECT_EQ(mxGetN(a), expected.size());
        }
        EXPECT_EQ(text_of(a), expected);
    }
    void operator()(const Column& expected) const {
        EXPECT_EQ(mxGetM(a), expected.values.size());
        EXPECT_EQ(mxGetN(a), 1u);
        expect_double_data(a, expected.values);
    }
    void operator()(const Matrix& expected) const {
        EXPECT_EQ(mxGetM(a), expected.rows);
        EXPECT_EQ(mxGetN(a), expected.cols);
        expect_double_data(a, expected.data);
    }
    void operator()(const Struct& expected) const {
        ASSERT_EQ(mxGetClassID(a), mxSTRUCT_CLASS);
        EXPECT_EQ(mxGetM(a), expected.rows);
        EXPECT_EQ(mxGetN(a), expected.cols);
    }
    void operator()(Unwritten) const { ADD_FAILURE() << "holds an array, expected none"; }
};

}  // namespace

void expect_struct(const mxArray* s, std::size_t index, const std::vector<FieldRow>& rows) {
    ASSERT_NE(s, nullptr);
    ASSERT_EQ(mxGetClassID(s), mxSTRUCT_CLASS);
    ASSERT_LT(index, mxGetNumberOfElements(s));
    std::vector<std::string> expected_names;
    for (const FieldRow& row : rows) expected_names.push_back(row.name);
    ASSERT_EQ(field_names(s), expected_names);
    for (const FieldRow& row : rows) {
        SCOPED_TRACE("field " + row.name + " of element " + std::to_string(index + 1));
        const mxArray* value = mxGetField(s, index, row.name.c_str());
        if (std::holds_alternative<Unwritten>(row.value)) {
            EXPECT_EQ(value, nullptr);
            continue;
        }
        ASSERT_NE(value, nullptr);
        std::visit(ValueCheck{value}, row.value);
    }
}

void expect_struct_shape(const mxArray* s, std::size_t m, std::size_t n, int fields) {
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(mxGetClassID(s), mxSTRUCT_CLASS);
    EXPECT_EQ(mxGetM(s), m);
    EXPECT_EQ(mxGetN(s), n);
    EXPECT_EQ(mxGetNumberOfFields(s), fields);
}

}  // namespace tamlo_marshal_test
