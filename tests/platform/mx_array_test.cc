// Our libmx against MATLAB's documented behaviour of each mx function.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "matrix.h"

namespace {

struct Owned {
    explicit Owned(mxArray* a) : a(a) {}
    ~Owned() { mxDestroyArray(a); }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    mxArray* get() const { return a; }
    mxArray* a;
};

std::vector<std::string> field_names(const mxArray* s) {
    std::vector<std::string> names;
    for (int f = 0; f < mxGetNumberOfFields(s); ++f) names.emplace_back(mxGetFieldNameByNumber(s, f));
    return names;
}

TEST(MxCreation, ShapesAndClassesOfEachCreator) {
    const mwSize dims3[3] = {2, 3, 4};
    const mwSize dims_trailing[4] = {2, 3, 1, 1};
    struct Row {
        const char* what;
        mxArray* array;
        mxClassID class_id;
        std::vector<mwSize> dims;
    } rows[] = {
        {"double matrix", mxCreateDoubleMatrix(3, 2, mxREAL), mxDOUBLE_CLASS, {3, 2}},
        {"double scalar", mxCreateDoubleScalar(4.5), mxDOUBLE_CLASS, {1, 1}},
        {"logical scalar", mxCreateLogicalScalar(true), mxLOGICAL_CLASS, {1, 1}},
        {"logical matrix", mxCreateLogicalMatrix(0, 1), mxLOGICAL_CLASS, {0, 1}},
        {"string", mxCreateString("abc"), mxCHAR_CLASS, {1, 3}},
        {"empty string", mxCreateString(""), mxCHAR_CLASS, {0, 0}},
        {"struct matrix", mxCreateStructMatrix(0, 1, 0, nullptr), mxSTRUCT_CLASS, {0, 1}},
        {"cell matrix", mxCreateCellMatrix(2, 2), mxCELL_CLASS, {2, 2}},
        {"int8", mxCreateNumericMatrix(1, 2, mxINT8_CLASS, mxREAL), mxINT8_CLASS, {1, 2}},
        {"uint64", mxCreateNumericMatrix(1, 1, mxUINT64_CLASS, mxREAL), mxUINT64_CLASS, {1, 1}},
        {"single N-D", mxCreateNumericArray(3, dims3, mxSINGLE_CLASS, mxREAL), mxSINGLE_CLASS, {2, 3, 4}},
        {"trailing ones dropped", mxCreateNumericArray(4, dims_trailing, mxINT32_CLASS, mxREAL), mxINT32_CLASS, {2, 3}},
        {"char array", mxCreateCharArray(3, dims3), mxCHAR_CLASS, {2, 3, 4}},
        {"cell array", mxCreateCellArray(3, dims3), mxCELL_CLASS, {2, 3, 4}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Owned a(row.array);
        ASSERT_NE(a.get(), nullptr);
        EXPECT_EQ(mxGetClassID(a.get()), row.class_id);
        ASSERT_EQ(mxGetNumberOfDimensions(a.get()), row.dims.size());
        EXPECT_EQ(std::vector<mwSize>(mxGetDimensions(a.get()), mxGetDimensions(a.get()) + row.dims.size()), row.dims);
        size_t numel = 1;
        for (mwSize d : row.dims) numel *= d;
        EXPECT_EQ(mxGetNumberOfElements(a.get()), numel);
        EXPECT_EQ(mxGetM(a.get()), row.dims[0]);
        mwSize n = 1;
        for (size_t k = 1; k < row.dims.size(); ++k) n *= row.dims[k];
        EXPECT_EQ(mxGetN(a.get()), n);
    }
}

TEST(MxCreation, RefusesComplexAndNonNumericClasses) {
    EXPECT_EQ(mxCreateDoubleMatrix(1, 1, mxCOMPLEX), nullptr);
    EXPECT_EQ(mxCreateNumericMatrix(1, 1, mxSTRUCT_CLASS, mxREAL), nullptr);
    EXPECT_EQ(mxCreateNumericMatrix(1, 1, mxDOUBLE_CLASS, mxCOMPLEX), nullptr);
    const char* repeated[] = {"a", "a"};
    EXPECT_EQ(mxCreateStructMatrix(1, 1, 2, repeated), nullptr);
    const char* invalid[] = {"1a"};
    EXPECT_EQ(mxCreateStructMatrix(1, 1, 1, invalid), nullptr);
    EXPECT_EQ(mxCreateString(nullptr), nullptr);
}

TEST(MxCreation, NewDataIsZero) {
    Owned a(mxCreateDoubleMatrix(2, 2, mxREAL));
    for (int i = 0; i < 4; ++i) EXPECT_EQ(mxGetPr(a.get())[i], 0.0);
    Owned l(mxCreateLogicalMatrix(1, 3));
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(mxGetLogicals(l.get())[i]);
}

TEST(MxStruct, FieldOrderIsOrderAdded) {
    Owned s(mxCreateStructMatrix(2, 1, 0, nullptr));
    EXPECT_EQ(mxAddField(s.get(), "zeta"), 0);
    EXPECT_EQ(mxAddField(s.get(), "alpha"), 1);
    EXPECT_EQ(mxAddField(s.get(), "mid"), 2);
    EXPECT_EQ(field_names(s.get()), (std::vector<std::string>{"zeta", "alpha", "mid"}));
    EXPECT_EQ(mxGetFieldNumber(s.get(), "alpha"), 1);
    EXPECT_EQ(mxGetFieldNumber(s.get(), "none"), -1);
}

TEST(MxStruct, AddFieldKeepsValuesOfEveryElement) {
    // Enough fields that some are added in the room already there and some need more.
    const char* names[] = {"a", "b", "c", "d", "e", "f", "g"};
    Owned s(mxCreateStructMatrix(3, 1, 0, nullptr));
    for (int n = 0; n < 7; ++n) {
        SCOPED_TRACE(names[n]);
        EXPECT_EQ(mxAddField(s.get(), names[n]), n);
        for (mwIndex i = 0; i < 3; ++i) EXPECT_EQ(mxGetField(s.get(), i, names[n]), nullptr);
        for (mwIndex i = 0; i < 3; ++i) mxSetField(s.get(), i, names[n], mxCreateDoubleScalar(10.0 * n + i));
        for (int f = 0; f <= n; ++f)
            for (mwIndex i = 0; i < 3; ++i) EXPECT_EQ(mxGetScalar(mxGetField(s.get(), i, names[f])), 10.0 * f + i);
    }
}

TEST(MxStruct, GetFieldIsNullWhereMatlabGivesNull) {
    Owned s(mxCreateStructMatrix(2, 1, 0, nullptr));
    mxAddField(s.get(), "set");
    mxAddField(s.get(), "unset");
    mxSetField(s.get(), 0, "set", mxCreateDoubleScalar(1));
    Owned d(mxCreateDoubleScalar(1));
    struct Row {
        const char* what;
        const mxArray* array;
        mwIndex index;
        const char* field;
    } rows[] = {
        {"not a struct", d.get(), 0, "set"},
        {"missing field", s.get(), 0, "other"},
        {"index out of range", s.get(), 2, "set"},
        {"element never set", s.get(), 1, "set"},
        {"field never set", s.get(), 0, "unset"},
        {"null array", nullptr, 0, "set"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(mxGetField(row.array, row.index, row.field), nullptr);
    }
    EXPECT_NE(mxGetField(s.get(), 0, "set"), nullptr);
}

TEST(MxStruct, SetFieldDoesNotFreeThePreviousValue) {
    Owned s(mxCreateStructMatrix(1, 1, 0, nullptr));
    mxAddField(s.get(), "a");
    mxArray* first = mxCreateDoubleScalar(1);
    mxSetField(s.get(), 0, "a", first);
    mxSetField(s.get(), 0, "a", mxCreateDoubleScalar(2));
    // Still ours and still valid: reading and destroying it must be fine under ASan.
    EXPECT_EQ(mxGetScalar(first), 1.0);
    mxDestroyArray(first);
    EXPECT_EQ(mxGetScalar(mxGetField(s.get(), 0, "a")), 2.0);
}

TEST(MxStruct, RemoveFieldKeepsOtherFieldsInOrder) {
    Owned s(mxCreateStructMatrix(2, 1, 0, nullptr));
    for (const char* f : {"a", "b", "c"}) mxAddField(s.get(), f);
    mxSetField(s.get(), 0, "a", mxCreateDoubleScalar(1));
    mxSetField(s.get(), 1, "c", mxCreateDoubleScalar(3));
    mxArray* b = mxCreateDoubleScalar(2);
    mxSetField(s.get(), 1, "b", b);
    mxRemoveField(s.get(), 1);
    mxDestroyArray(b);
    EXPECT_EQ(field_names(s.get()), (std::vector<std::string>{"a", "c"}));
    EXPECT_EQ(mxGetScalar(mxGetField(s.get(), 0, "a")), 1.0);
    EXPECT_EQ(mxGetField(s.get(), 1, "a"), nullptr);
    EXPECT_EQ(mxGetField(s.get(), 0, "c"), nullptr);
    EXPECT_EQ(mxGetScalar(mxGetField(s.get(), 1, "c")), 3.0);
}

TEST(MxCell, GetAndSetCellWithinRange) {
    Owned c(mxCreateCellMatrix(2, 1));
    mxSetCell(c.get(), 1, mxCreateString("x"));
    EXPECT_EQ(mxGetCell(c.get(), 0), nullptr);
    EXPECT_TRUE(mxIsChar(mxGetCell(c.get(), 1)));
    EXPECT_EQ(mxGetCell(c.get(), 2), nullptr);
    Owned d(mxCreateDoubleScalar(1));
    EXPECT_EQ(mxGetCell(d.get(), 0), nullptr);
}

TEST(MxString, GetStringCopiesCutsAndTerminates) {
    Owned abc(mxCreateString("abcdef"));
    Owned empty(mxCreateString(""));
    Owned number(mxCreateDoubleScalar(65));
    struct Row {
        const char* what;
        const mxArray* array;
        mwSize buflen;
        int status;
        std::string text;
    } rows[] = {
        {"fits", abc.get(), 7, 0, "abcdef"},
        {"large buffer", abc.get(), 100, 0, "abcdef"},
        {"cut to buflen-1", abc.get(), 4, 1, "abc"},
        {"one byte holds only the terminator", abc.get(), 1, 1, ""},
        {"empty text", empty.get(), 10, 0, ""},
        {"not char", number.get(), 10, 1, ""},
        {"null array", nullptr, 10, 1, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        char buf[101];
        std::memset(buf, 'Z', sizeof buf);
        EXPECT_EQ(mxGetString(row.array, buf, row.buflen), row.status);
        EXPECT_EQ(std::string(buf), row.text);
        EXPECT_EQ(buf[row.buflen], 'Z') << "wrote past the buffer";
    }
}

TEST(MxString, GetStringWithZeroLengthTouchesNothing) {
    Owned abc(mxCreateString("abc"));
    char buf[2] = {'Z', 'Z'};
    EXPECT_EQ(mxGetString(abc.get(), buf, 0), 1);
    EXPECT_EQ(buf[0], 'Z');
}

TEST(MxString, KeepsEveryByteOfEightBitText) {
    const char text[] = "caf\xc3\xa9 \x7f\x80\xff";
    Owned s(mxCreateString(text));
    char* back = mxArrayToString(s.get());
    ASSERT_NE(back, nullptr);
    EXPECT_STREQ(back, text);
    mxFree(back);
    Owned d(mxCreateDoubleScalar(1));
    EXPECT_EQ(mxArrayToString(d.get()), nullptr);
}

template <typename T>
mxArray* numeric_scalar(mxClassID c, T v) {
    mxArray* a = mxCreateNumericMatrix(1, 1, c, mxREAL);
    std::memcpy(mxGetData(a), &v, sizeof v);
    return a;
}

TEST(MxScalar, GetScalarConvertsTheFirstElementOfEachClass) {
    struct Row {
        const char* what;
        mxArray* array;
        double expected;
    } rows[] = {
        {"double", mxCreateDoubleScalar(-2.5), -2.5},
        {"single", numeric_scalar<float>(mxSINGLE_CLASS, 1.5f), 1.5},
        {"int8", numeric_scalar<int8_t>(mxINT8_CLASS, -128), -128},
        {"uint8", numeric_scalar<uint8_t>(mxUINT8_CLASS, 255), 255},
        {"int16", numeric_scalar<int16_t>(mxINT16_CLASS, -300), -300},
        {"uint16", numeric_scalar<uint16_t>(mxUINT16_CLASS, 60000), 60000},
        {"int32", numeric_scalar<int32_t>(mxINT32_CLASS, -70000), -70000},
        {"uint32", numeric_scalar<uint32_t>(mxUINT32_CLASS, 4000000000u), 4000000000.0},
        {"int64", numeric_scalar<int64_t>(mxINT64_CLASS, -5), -5},
        {"uint64", numeric_scalar<uint64_t>(mxUINT64_CLASS, UINT64_MAX), 18446744073709551615.0},
        {"logical true", mxCreateLogicalScalar(true), 1},
        {"logical false", mxCreateLogicalScalar(false), 0},
        {"char", mxCreateString("A"), 65},
        {"empty double", mxCreateDoubleMatrix(0, 1, mxREAL), 0},
        {"empty char", mxCreateString(""), 0},
        {"struct", mxCreateStructMatrix(1, 1, 0, nullptr), 0},
        {"cell", mxCreateCellMatrix(1, 1), 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Owned a(row.array);
        EXPECT_EQ(mxGetScalar(a.get()), row.expected);
    }
    EXPECT_EQ(mxGetScalar(nullptr), 0.0);
}

TEST(MxScalar, GetScalarOfAMatrixIsItsFirstElement) {
    Owned a(mxCreateDoubleMatrix(2, 1, mxREAL));
    mxGetPr(a.get())[0] = 7;
    mxGetPr(a.get())[1] = 8;
    EXPECT_EQ(mxGetScalar(a.get()), 7.0);
}

TEST(MxLogical, IsLogicalScalarTrueOnlyForOneByOneTrueLogical) {
    mxArray* two_true = mxCreateLogicalMatrix(1, 2);
    mxGetLogicals(two_true)[0] = true;
    mxGetLogicals(two_true)[1] = true;
    struct Row {
        const char* what;
        mxArray* array;
        bool expected;
    } rows[] = {
        {"logical true", mxCreateLogicalScalar(true), true},
        {"logical false", mxCreateLogicalScalar(false), false},
        {"double 1", mxCreateDoubleScalar(1), false},
        {"1 x 2 logical true", two_true, false},
        {"empty logical", mxCreateLogicalMatrix(0, 0), false},
        {"char", mxCreateString("1"), false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Owned a(row.array);
        EXPECT_EQ(mxIsLogicalScalarTrue(a.get()), row.expected);
    }
    EXPECT_FALSE(mxIsLogicalScalarTrue(nullptr));
}

TEST(MxAccess, GetPrIsNullForNonDouble) {
    Owned s(mxCreateNumericMatrix(1, 1, mxSINGLE_CLASS, mxREAL));
    Owned l(mxCreateLogicalScalar(true));
    Owned d(mxCreateDoubleScalar(3));
    EXPECT_EQ(mxGetPr(s.get()), nullptr);
    EXPECT_EQ(mxGetPr(l.get()), nullptr);
    ASSERT_NE(mxGetPr(d.get()), nullptr);
    EXPECT_EQ(*mxGetPr(d.get()), 3.0);
}

TEST(MxAccess, PredicatesAndClassNames) {
    Owned d(mxCreateDoubleScalar(3));
    Owned s(mxCreateStructMatrix(1, 1, 0, nullptr));
    Owned e(mxCreateDoubleMatrix(0, 0, mxREAL));
    EXPECT_TRUE(mxIsDouble(d.get()));
    EXPECT_TRUE(mxIsNumeric(d.get()));
    EXPECT_FALSE(mxIsStruct(d.get()));
    EXPECT_TRUE(mxIsStruct(s.get()));
    EXPECT_FALSE(mxIsNumeric(s.get()));
    EXPECT_TRUE(mxIsEmpty(e.get()));
    EXPECT_FALSE(mxIsEmpty(d.get()));
    EXPECT_STREQ(mxGetClassName(d.get()), "double");
    EXPECT_STREQ(mxGetClassName(s.get()), "struct");
    EXPECT_EQ(mxGetElementSize(d.get()), 8u);
}

TEST(MxCopy, DuplicateIsDeep) {
    Owned s(mxCreateStructMatrix(2, 1, 0, nullptr));
    mxAddField(s.get(), "x");
    mxAddField(s.get(), "c");
    mxSetField(s.get(), 0, "x", mxCreateDoubleScalar(1));
    mxArray* cell = mxCreateCellMatrix(1, 2);
    mxSetCell(cell, 0, mxCreateString("in cell"));
    mxSetField(s.get(), 1, "c", cell);
    Owned copy(mxDuplicateArray(s.get()));
    ASSERT_NE(copy.get(), nullptr);
    EXPECT_EQ(field_names(copy.get()), field_names(s.get()));
    // Changing the original leaves the copy as it was.
    *mxGetPr(mxGetField(s.get(), 0, "x")) = 99;
    mxDestroyArray(mxGetCell(cell, 0));
    mxSetCell(cell, 0, nullptr);
    EXPECT_EQ(mxGetScalar(mxGetField(copy.get(), 0, "x")), 1.0);
    char buf[16];
    EXPECT_EQ(mxGetString(mxGetCell(mxGetField(copy.get(), 1, "c"), 0), buf, sizeof buf), 0);
    EXPECT_STREQ(buf, "in cell");
    EXPECT_EQ(mxGetCell(mxGetField(copy.get(), 1, "c"), 1), nullptr);
    EXPECT_EQ(mxGetField(copy.get(), 1, "x"), nullptr);
    EXPECT_EQ(mxDuplicateArray(nullptr), nullptr);
}

TEST(MxCopy, FieldChangesStayWithTheirArray) {
    Owned s(mxCreateStructMatrix(1, 1, 0, nullptr));
    for (const char* f : {"a", "b"}) mxAddField(s.get(), f);
    Owned copy(mxDuplicateArray(s.get()));
    Owned second(mxDuplicateArray(copy.get()));
    mxAddField(copy.get(), "added");
    mxRemoveField(s.get(), 0);
    EXPECT_EQ(field_names(s.get()), (std::vector<std::string>{"b"}));
    EXPECT_EQ(field_names(copy.get()), (std::vector<std::string>{"a", "b", "added"}));
    EXPECT_EQ(field_names(second.get()), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(mxGetFieldNumber(second.get(), "added"), -1);
}

TEST(MxDestroy, AcceptsNullAndFreesNestedArrays) {
    mxDestroyArray(nullptr);
    mxArray* s = mxCreateStructMatrix(1, 1, 0, nullptr);
    mxAddField(s, "inner");
    mxArray* inner = mxCreateStructMatrix(3, 1, 0, nullptr);
    mxAddField(inner, "v");
    for (mwIndex i = 0; i < 3; ++i) mxSetField(inner, i, "v", mxCreateDoubleMatrix(4, 4, mxREAL));
    mxSetField(s, 0, "inner", inner);
    // LeakSanitizer and valgrind fail the run if anything here is left behind.
    mxDestroyArray(s);
    SUCCEED();
}

TEST(MxDestroy, ArraysOutliveTheThreadThatMadeThem) {
    mxArray* made_there = nullptr;
    mxArray* made_here = mxCreateString("made here");
    std::thread([&] {
        made_there = mxCreateStructMatrix(1, 1, 0, nullptr);
        mxAddField(made_there, "v");
        mxSetField(made_there, 0, "v", mxCreateDoubleScalar(7));
        mxDestroyArray(made_here);
        mxDestroyArray(mxCreateDoubleScalar(1));
    }).join();
    EXPECT_EQ(mxGetScalar(mxGetField(made_there, 0, "v")), 7.0);
    mxDestroyArray(made_there);
}

}  // namespace
