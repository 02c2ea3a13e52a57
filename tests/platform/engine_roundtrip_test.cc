// Values through a real engine: put, looked at by Octave, and got back unchanged.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "engine_session.h"

namespace {

using tamlo_test::ArrayOwner;

// Compares class, dims, data, field order and nested values.
::testing::AssertionResult same_array(const mxArray* a, const mxArray* b, const std::string& path = "v") {
    if (a == nullptr || b == nullptr) {
        if (a == b) return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << path << ": one side holds no array";
    }
    if (mxGetClassID(a) != mxGetClassID(b))
        return ::testing::AssertionFailure() << path << ": class " << mxGetClassName(a) << " vs " << mxGetClassName(b);
    const mwSize n = mxGetNumberOfDimensions(a);
    if (n != mxGetNumberOfDimensions(b) ||
        std::memcmp(mxGetDimensions(a), mxGetDimensions(b), n * sizeof(mwSize)) != 0)
        return ::testing::AssertionFailure() << path << ": dims differ";
    const size_t numel = mxGetNumberOfElements(a);
    if (mxIsStruct(a)) {
        if (mxGetNumberOfFields(a) != mxGetNumberOfFields(b))
            return ::testing::AssertionFailure() << path << ": field count differs";
        for (int f = 0; f < mxGetNumberOfFields(a); ++f) {
            if (std::strcmp(mxGetFieldNameByNumber(a, f), mxGetFieldNameByNumber(b, f)) != 0)
                return ::testing::AssertionFailure() << path << ": field " << f << " is "
                                                     << mxGetFieldNameByNumber(a, f) << " vs "
                                                     << mxGetFieldNameByNumber(b, f);
            for (size_t i = 0; i < numel; ++i) {
                auto r = same_array(mxGetFieldByNumber(a, i, f), mxGetFieldByNumber(b, i, f),
                                    path + "(" + std::to_string(i + 1) + ")." + mxGetFieldNameByNumber(a, f));
                if (!r) return r;
            }
        }
        return ::testing::AssertionSuccess();
    }
    if (mxIsCell(a)) {
        for (size_t i = 0; i < numel; ++i) {
            auto r = same_array(mxGetCell(a, i), mxGetCell(b, i), path + "{" + std::to_string(i + 1) + "}");
            if (!r) return r;
        }
        return ::testing::AssertionSuccess();
    }
    if (numel > 0 && std::memcmp(mxGetData(a), mxGetData(b), numel * mxGetElementSize(a)) != 0)
        return ::testing::AssertionFailure() << path << ": data differs";
    return ::testing::AssertionSuccess();
}

mxArray* double_column(std::vector<double> values) {
    mxArray* a = mxCreateDoubleMatrix(values.size(), 1, mxREAL);
    if (!values.empty()) std::memcpy(mxGetPr(a), values.data(), values.size() * sizeof(double));
    return a;
}

mxArray* points_n_by_2() {
    mxArray* a = mxCreateDoubleMatrix(3, 2, mxREAL);
    const double data[] = {1, 2, 3, 10, 20, 30};
    std::memcpy(mxGetPr(a), data, sizeof data);
    return a;
}

mxArray* logical_row() {
    mxArray* a = mxCreateLogicalMatrix(1, 3);
    mxGetLogicals(a)[0] = true;
    mxGetLogicals(a)[2] = true;
    return a;
}

template <typename T>
mxArray* integer_pair(mxClassID c, T first, T second) {
    mxArray* a = mxCreateNumericMatrix(1, 2, c, mxREAL);
    T values[2] = {first, second};
    std::memcpy(mxGetData(a), values, sizeof values);
    return a;
}

mxArray* generator_list() {
    // A 2 x 1 struct array with a nested 1 x 1 struct in each element; fields not alphabetical.
    mxArray* s = mxCreateStructMatrix(2, 1, 0, nullptr);
    for (const char* f : {"power_setpoint", "fuel", "is_on"}) mxAddField(s, f);
    for (mwIndex i = 0; i < 2; ++i) {
        mxSetField(s, i, "power_setpoint", mxCreateDoubleScalar(100.0 * static_cast<double>(i + 1)));
        mxArray* fuel = mxCreateStructMatrix(1, 1, 0, nullptr);
        mxAddField(fuel, "cost");
        mxAddField(fuel, "carbon_content");
        mxSetField(fuel, 0, "cost", mxCreateDoubleScalar(1.25));
        mxSetField(fuel, 0, "carbon_content", mxCreateDoubleScalar(0.5));
        mxSetField(s, i, "fuel", fuel);
        mxSetField(s, i, "is_on", mxCreateLogicalScalar(i == 0));
    }
    return s;
}

mxArray* mixed_cell() {
    mxArray* c = mxCreateCellMatrix(2, 2);
    mxSetCell(c, 0, mxCreateString("first"));
    mxSetCell(c, 1, mxCreateDoubleScalar(2));
    mxArray* inner = mxCreateCellMatrix(1, 1);
    mxSetCell(inner, 0, mxCreateLogicalScalar(true));
    mxSetCell(c, 3, inner);
    return c;
}

mxArray* three_d_single() {
    const mwSize dims[3] = {2, 1, 3};
    mxArray* a = mxCreateNumericArray(3, dims, mxSINGLE_CLASS, mxREAL);
    auto* p = static_cast<float*>(mxGetData(a));
    for (int k = 0; k < 6; ++k) p[k] = 0.5f * static_cast<float>(k);
    return a;
}

struct RoundTrip {
    const char* what;
    std::function<mxArray*()> make;
    // What Octave reports: "class size" and, for structs, the field names.
    std::string octave_view;
};

class EngineRoundTrip : public tamlo_test::EngineSuite {};

TEST_F(EngineRoundTrip, EachClassAndShapeKeepsClassDimsFieldsAndData) {
    const RoundTrip rows[] = {
        {"double scalar", [] { return mxCreateDoubleScalar(-3.25); }, "double 1 1\n"},
        {"double column", [] { return double_column({1, 2, 3, 4}); }, "double 4 1\n"},
        {"empty double column", [] { return double_column({}); }, "double 0 1\n"},
        {"N x 2 points", points_n_by_2, "double 3 2\n"},
        {"logical scalar", [] { return mxCreateLogicalScalar(true); }, "logical 1 1\n"},
        {"logical row", logical_row, "logical 1 3\n"},
        {"char row", [] { return mxCreateString("hello world"); }, "char 1 11\n"},
        {"empty char", [] { return mxCreateString(""); }, "char 0 0\n"},
        {"int8", [] { return integer_pair<int8_t>(mxINT8_CLASS, -128, 127); }, "int8 1 2\n"},
        {"uint16", [] { return integer_pair<uint16_t>(mxUINT16_CLASS, 0, 65535); }, "uint16 1 2\n"},
        {"int32", [] { return integer_pair<int32_t>(mxINT32_CLASS, -7, 7); }, "int32 1 2\n"},
        {"uint64", [] { return integer_pair<uint64_t>(mxUINT64_CLASS, 0, UINT64_MAX); }, "uint64 1 2\n"},
        {"int64", [] { return integer_pair<int64_t>(mxINT64_CLASS, INT64_MIN, INT64_MAX); }, "int64 1 2\n"},
        {"single 3-D", three_d_single, "single 2 1 3\n"},
        {"0 x 1 struct without fields", [] { return mxCreateStructMatrix(0, 1, 0, nullptr); },
         "struct 0 1\nfields(0): \n"},
        {"3 x 2 struct without fields", [] { return mxCreateStructMatrix(3, 2, 0, nullptr); },
         "struct 3 2\nfields(0): \n"},
        {"struct array with nested structs", generator_list, "struct 2 1\nfields(3): power_setpoint fuel is_on\n"},
        {"cell with nested cell and an empty slot", mixed_cell, "cell 2 2\n"},
    };
    for (const RoundTrip& row : rows) {
        SCOPED_TRACE(row.what);
        ArrayOwner sent(row.make());
        ASSERT_EQ(engPutVariable(engine_, "v", sent.get()), 0);
        std::string view = eval("printf('%s', class(v)); printf(' %d', size(v)); printf('\\n');");
        if (mxIsStruct(sent.get())) view += eval("printf('fields(%d):', numel(fieldnames(v))); printf(' %s', fieldnames(v){:}); printf('\\n');");
        EXPECT_EQ(view, row.octave_view);
        ArrayOwner back(engGetVariable(engine_, "v"));
        ASSERT_NE(back.get(), nullptr);
        if (mxIsCell(sent.get())) {
            // An unset cell slot reads back as the [] Octave holds there.
            ASSERT_NE(mxGetCell(back.get(), 2), nullptr);
            EXPECT_TRUE(mxIsDouble(mxGetCell(back.get(), 2)) && mxIsEmpty(mxGetCell(back.get(), 2)));
            mxSetCell(sent.get(), 2, mxCreateDoubleMatrix(0, 0, mxREAL));
        }
        EXPECT_TRUE(same_array(sent.get(), back.get()));
    }
}

TEST_F(EngineRoundTrip, NestedValuesAreSeenByOctave) {
    ArrayOwner gens(generator_list());
    ASSERT_EQ(engPutVariable(engine_, "generators", gens.get()), 0);
    EXPECT_EQ(eval("printf('%g %g %d %s\\n', generators(2).power_setpoint, generators(1).fuel.cost, "
                   "generators(1).is_on, class(generators(2).is_on));"),
              "200 1.25 1 logical\n");
}

TEST_F(EngineRoundTrip, ValuesMadeInOctaveArriveWithTheirClassAndShape) {
    struct Row {
        const char* what;
        const char* command;
        mxClassID class_id;
        std::vector<mwSize> dims;
        std::vector<std::string> fields;
    } rows[] = {
        {"struct array field order", "v = struct('zeta', {1, 2}, 'alpha', 3);", mxSTRUCT_CLASS, {1, 2}, {"zeta", "alpha"}},
        {"field added later goes last", "clear v; v.b = 1; v.a = 2; v.c = 3;", mxSTRUCT_CLASS, {1, 1}, {"b", "a", "c"}},
        {"empty struct with fields", "v = struct('a', {}, 'b', {});", mxSTRUCT_CLASS, {0, 0}, {"a", "b"}},
        {"0 x 1 struct without fields", "v = repmat(struct(), 0, 1);", mxSTRUCT_CLASS, {0, 1}, {}},
        {"range is double", "v = 1:4;", mxDOUBLE_CLASS, {1, 4}, {}},
        {"logical", "v = [true; false];", mxLOGICAL_CLASS, {2, 1}, {}},
        {"char matrix", "v = ['ab'; 'cd'];", mxCHAR_CLASS, {2, 2}, {}},
        {"uint8", "v = uint8([1 2 3]);", mxUINT8_CLASS, {1, 3}, {}},
        {"sparse becomes full", "v = speye(3);", mxDOUBLE_CLASS, {3, 3}, {}},
        {"sparse logical becomes full logical", "v = sparse([true false]);", mxLOGICAL_CLASS, {1, 2}, {}},
        {"complex keeps its real part", "v = [1+2i, 3-4i];", mxDOUBLE_CLASS, {1, 2}, {}},
        {"function handle becomes empty double", "v = @sin;", mxDOUBLE_CLASS, {0, 0}, {}},
        {"cell", "v = {1, 'a'; [], {}};", mxCELL_CLASS, {2, 2}, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(eval(row.command), "");
        ArrayOwner v(engGetVariable(engine_, "v"));
        ASSERT_NE(v.get(), nullptr);
        EXPECT_EQ(mxGetClassID(v.get()), row.class_id);
        EXPECT_EQ(std::vector<mwSize>(mxGetDimensions(v.get()), mxGetDimensions(v.get()) + mxGetNumberOfDimensions(v.get())),
                  row.dims);
        std::vector<std::string> fields;
        for (int f = 0; f < mxGetNumberOfFields(v.get()); ++f) fields.emplace_back(mxGetFieldNameByNumber(v.get(), f));
        EXPECT_EQ(fields, row.fields);
    }
}

TEST_F(EngineRoundTrip, ConvertedValuesHoldTheExpectedNumbers) {
    eval("v = [1+2i, 3-4i];");
    ArrayOwner complex(engGetVariable(engine_, "v"));
    ASSERT_NE(complex.get(), nullptr);
    EXPECT_EQ(mxGetPr(complex.get())[1], 3.0);
    eval("v = speye(2) * 5;");
    ArrayOwner sparse(engGetVariable(engine_, "v"));
    ASSERT_NE(sparse.get(), nullptr);
    const double expected[] = {5, 0, 0, 5};
    EXPECT_EQ(std::memcmp(mxGetPr(sparse.get()), expected, sizeof expected), 0);
    eval("v = 'caf\xe9';");
    char buf[8];
    ArrayOwner text(engGetVariable(engine_, "v"));
    EXPECT_EQ(mxGetString(text.get(), buf, sizeof buf), 0);
    EXPECT_STREQ(buf, "caf\xe9");
}

// `levels` cells, one inside the other, around the scalar 5.
mxArray* cells_around_five(int levels) {
    mxArray* top = mxCreateDoubleScalar(5);
    for (int k = 0; k < levels; ++k) {
        mxArray* c = mxCreateCellMatrix(1, 1);
        mxSetCell(c, 0, top);
        top = c;
    }
    return top;
}

// Cells to the first value that is not a cell, then that value: "63 double 5".
std::string nesting_seen_by_us(const mxArray* a) {
    int cells = 0;
    for (; a != nullptr && mxIsCell(a); ++cells) a = mxGetCell(a, 0);
    if (a == nullptr) return std::to_string(cells) + " nothing";
    std::string seen = std::to_string(cells) + " " + mxGetClassName(a);
    if (mxIsEmpty(a)) {
        seen += " []";
    } else {
        seen += ' ';
        seen += std::to_string(static_cast<int>(mxGetScalar(a)));
    }
    return seen;
}

TEST_F(EngineRoundTrip, NestingPastTheLimitEndsInTheStandInBothWays) {
    const char* seen_by_octave =
        "x = v; n = 0; while iscell(x), x = x{1}; n++; end; "
        "if isempty(x), s = '[]'; else s = num2str(x); end; printf('%d %s %s', n, class(x), s);";
    struct Row {
        const char* what;
        int cells;
        const char* arrives;
    } rows[] = {
        {"scalar at the deepest level", 63, "63 double 5"},
        {"cell at the deepest level", 64, "63 double []"},
        {"1,000 levels", 1000, "63 double []"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        ArrayOwner sent(cells_around_five(row.cells));
        ASSERT_EQ(engPutVariable(engine_, "v", sent.get()), 0);
        EXPECT_EQ(eval(seen_by_octave), row.arrives);
        eval("v = 5; for k = 1:" + std::to_string(row.cells) + ", v = {v}; end");
        ArrayOwner back(engGetVariable(engine_, "v"));
        ASSERT_NE(back.get(), nullptr);
        EXPECT_EQ(nesting_seen_by_us(back.get()), row.arrives);
    }
}

TEST_F(EngineRoundTrip, ValueNoFrameCanCarryIsRefusedAndTheEngineGoesOn) {
    struct Row {
        const char* what;
        std::function<bool()> refused;
    } rows[] = {
        {"get of a value past the largest frame",
         [] {
             eval("v = repmat({zeros(1, 2^24)}, 1, 3);");
             ArrayOwner back(engGetVariable(engine_, "v"));
             return back.get() == nullptr;
         }},
        {"put of data past the largest frame",
         [] {
             ArrayOwner big(mxCreateDoubleMatrix(1, (mwSize{1} << 25) + 1, mxREAL));
             return engPutVariable(engine_, "v", big.get()) != 0;
         }},
        {"put of an empty array with a dim Octave cannot index",
         [] {
             ArrayOwner odd(mxCreateDoubleMatrix(0, mwSize{1} << 63, mxREAL));
             return engPutVariable(engine_, "v", odd.get()) != 0;
         }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_TRUE(row.refused());
        eval("w = 7;");
        ArrayOwner w(engGetVariable(engine_, "w"));
        ASSERT_NE(w.get(), nullptr);
        EXPECT_EQ(mxGetScalar(w.get()), 7.0);
    }
    eval("clear v");
}

TEST_F(EngineRoundTrip, MissingVariableIsNull) {
    eval("clear no_such_variable;");
    EXPECT_EQ(engGetVariable(engine_, "no_such_variable"), nullptr);
    EXPECT_EQ(engGetVariable(engine_, "not a name"), nullptr);
    // The engine is still fine afterwards.
    EXPECT_EQ(eval("disp(7)"), "7\n");
}

TEST_F(EngineRoundTrip, PutReplacesAnExistingVariable) {
    ArrayOwner one(mxCreateDoubleScalar(1));
    ArrayOwner text(mxCreateString("now text"));
    ASSERT_EQ(engPutVariable(engine_, "replaced", one.get()), 0);
    ASSERT_EQ(engPutVariable(engine_, "replaced", text.get()), 0);
    EXPECT_EQ(eval("disp(replaced)"), "now text\n");
}

TEST_F(EngineRoundTrip, PutRefusesBadNamesAndNullArrays) {
    ArrayOwner one(mxCreateDoubleScalar(1));
    EXPECT_NE(engPutVariable(engine_, "1abc", one.get()), 0);
    EXPECT_NE(engPutVariable(engine_, "for", one.get()), 0);
    EXPECT_NE(engPutVariable(engine_, "ok_name", nullptr), 0);
    EXPECT_NE(engPutVariable(engine_, nullptr, one.get()), 0);
    EXPECT_EQ(eval("disp(exist('ok_name'))"), "0\n");
}

}  // namespace
