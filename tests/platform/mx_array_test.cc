// Our libmx against MATLAB's documented behaviour of each mx function.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

#include "array_text.h"

namespace {

using tamlo_test::ArrayOwner;
using tamlo_test::describe;

template <typename T>
mxArray* numeric_pair(mxClassID c, T first) {
    mxArray* a = mxCreateNumericMatrix(1, 2, c, mxREAL);
    std::memcpy(mxGetData(a), &first, sizeof first);
    return a;
}

// mxGetScalar reads the first element; only a 1 x 1 true logical is scalar true.
TEST(MxCreation, EachCreatorMakesItsClassAndShapeWithZeroedDataAndItsScalar) {
    const mwSize dims3[3] = {2, 1, 2};
    const mwSize dims_trailing[4] = {2, 3, 1, 1};
    mxArray* two_true = mxCreateLogicalMatrix(1, 2);
    mxGetLogicals(two_true)[0] = true;
    mxGetLogicals(two_true)[1] = true;
    struct Row {
        const char* what;
        mxArray* array;
        std::string text;
        mwSize n;
        double scalar;
        bool scalar_true;
    } rows[] = {
        {"double matrix", mxCreateDoubleMatrix(3, 2, mxREAL), "double 3x2 [0 0 0 0 0 0]", 2, 0, false},
        {"double scalar 1", mxCreateDoubleScalar(1), "double 1x1 [1]", 1, 1, false},
        {"logical true", mxCreateLogicalScalar(true), "logical 1x1 [1]", 1, 1, true},
        {"logical false", mxCreateLogicalScalar(false), "logical 1x1 [0]", 1, 0, false},
        {"1 x 2 logical true", two_true, "logical 1x2 [1 1]", 2, 1, false},
        {"string", mxCreateString("abc"), "char 1x3 'abc'", 3, 97, false},
        {"empty string", mxCreateString(""), "char 0x0 ''", 0, 0, false},
        {"struct matrix", mxCreateStructMatrix(0, 1, 0, nullptr), "struct 0x1 {}", 1, 0, false},
        {"cell matrix", mxCreateCellMatrix(1, 2), "cell 1x2 null null", 2, 0, false},
        {"trailing ones dropped", mxCreateNumericArray(4, dims_trailing, mxINT32_CLASS, mxREAL),
         "int32 2x3 [0 0 0 0 0 0]", 3, 0, false},
        {"cell N-D", mxCreateCellArray(3, dims3), "cell 2x1x2 null null null null", 2, 0, false},
        {"single", numeric_pair<float>(mxSINGLE_CLASS, 1.5f), "single 1x2 [1.5 0]", 2, 1.5, false},
        {"int8", numeric_pair<int8_t>(mxINT8_CLASS, -128), "int8 1x2 [-128 0]", 2, -128, false},
        {"uint64", numeric_pair<uint64_t>(mxUINT64_CLASS, UINT64_MAX), "uint64 1x2 [18446744073709551615 0]", 2,
         18446744073709551615.0, false},
        {"no array", nullptr, "null", 0, 0, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        ArrayOwner a(row.array);
        EXPECT_EQ(describe(a.get()), row.text);
        EXPECT_EQ(mxGetN(a.get()), row.n);
        EXPECT_EQ(mxGetScalar(a.get()), row.scalar);
        EXPECT_EQ(mxIsLogicalScalarTrue(a.get()), row.scalar_true);
    }
}

TEST(MxCreation, RefusesComplexNonNumericAndBadFieldNames) {
    const std::string longest(63, 'n'), too_long(64, 'n');
    const char* repeated[] = {"a", "a"};
    const char* invalid[] = {"1a"};
    const char* longest_name[] = {longest.c_str()};
    EXPECT_EQ(mxCreateDoubleMatrix(1, 1, mxCOMPLEX), nullptr);
    EXPECT_EQ(mxCreateNumericMatrix(1, 1, mxSTRUCT_CLASS, mxREAL), nullptr);
    EXPECT_EQ(mxCreateNumericMatrix(1, 1, mxDOUBLE_CLASS, mxCOMPLEX), nullptr);
    EXPECT_EQ(mxCreateStructMatrix(1, 1, 2, repeated), nullptr);
    EXPECT_EQ(mxCreateStructMatrix(1, 1, 1, invalid), nullptr);
    EXPECT_EQ(mxCreateString(nullptr), nullptr);
    ArrayOwner s(mxCreateStructMatrix(1, 1, 1, longest_name));
    ASSERT_NE(s.get(), nullptr);
    EXPECT_EQ(mxAddField(s.get(), too_long.c_str()), -1);
}

TEST(MxStruct, AddFieldKeepsOrderAndValuesAndGetFieldGivesNullWhereMatlabDoes) {
    // Enough fields that some are added in the room already there and some need more.
    const char* names[] = {"zeta", "b", "c", "d", "e", "f", "alpha"};
    ArrayOwner s(mxCreateStructMatrix(3, 1, 0, nullptr));
    for (int n = 0; n < 7; ++n) {
        SCOPED_TRACE(names[n]);
        EXPECT_EQ(mxAddField(s.get(), names[n]), n);
        for (mwIndex i = 0; i < 3; ++i) EXPECT_EQ(mxGetField(s.get(), i, names[n]), nullptr);
        for (mwIndex i = 0; i < 3; ++i) mxSetField(s.get(), i, names[n], mxCreateDoubleScalar(10.0 * n + i));
        for (int f = 0; f <= n; ++f)
            for (mwIndex i = 0; i < 3; ++i) EXPECT_EQ(mxGetScalar(mxGetField(s.get(), i, names[f])), 10.0 * f + i);
    }
    EXPECT_EQ(mxAddField(s.get(), "b"), 1);
    EXPECT_EQ(mxGetNumberOfFields(s.get()), 7);
    EXPECT_EQ(mxGetFieldNumber(s.get(), "alpha"), 6);
    EXPECT_EQ(mxGetFieldNumber(s.get(), "none"), -1);
    // Null where MATLAB gives null. Index 3 of zeta would land on the first value of b.
    EXPECT_EQ(mxGetField(s.get(), 3, "zeta"), nullptr);
    EXPECT_EQ(mxGetField(s.get(), 0, "none"), nullptr);
    EXPECT_EQ(mxGetField(nullptr, 0, "b"), nullptr);
    EXPECT_EQ(mxGetField(mxGetField(s.get(), 0, "b"), 0, "b"), nullptr) << "not a struct";
    EXPECT_EQ(mxGetCell(mxGetField(s.get(), 0, "b"), 0), nullptr) << "not a cell";
}

TEST(MxString, GetStringCopiesCutsAndTerminates) {
    ArrayOwner abc(mxCreateString("abcdef"));
    ArrayOwner empty(mxCreateString(""));
    ArrayOwner number(mxCreateDoubleScalar(65));
    struct Row {
        const char* what;
        const mxArray* array;
        mwSize buflen;
        int status;
        std::string text;
    } rows[] = {
        {"fits", abc.get(), 7, 0, "abcdef"},
        {"cut to buflen-1", abc.get(), 4, 1, "abc"},
        {"no room at all touches nothing", abc.get(), 0, 1, "ZZZZZZZZZZZ"},
        {"empty text", empty.get(), 10, 0, ""},
        {"not char", number.get(), 10, 1, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        char buf[12] = "ZZZZZZZZZZZ";
        EXPECT_EQ(mxGetString(row.array, buf, row.buflen), row.status);
        EXPECT_EQ(buf[row.buflen], 'Z') << "wrote past the buffer";
        EXPECT_EQ(std::string(buf), row.text);
    }
}

TEST(MxStruct, CopiesAreDeepAndSetOrRemoveLeaveOldValuesToTheirOwner) {
    ArrayOwner s(mxCreateStructMatrix(2, 1, 0, nullptr));
    mxAddField(s.get(), "x");
    mxAddField(s.get(), "c");
    ArrayOwner x(mxCreateNumericMatrix(1, 2, mxINT16_CLASS, mxREAL));
    static_cast<int16_t*>(mxGetData(x.get()))[1] = -7;
    mxSetField(s.get(), 0, "x", x.get());
    ArrayOwner cell(mxCreateCellMatrix(1, 2));
    mxSetCell(cell.get(), 0, mxCreateString("in cell"));
    mxSetField(s.get(), 1, "c", cell.get());
    ArrayOwner copy(mxDuplicateArray(s.get()));
    ArrayOwner second(mxDuplicateArray(copy.get()));
    const std::string before = describe(s.get());
    EXPECT_EQ(before, "struct 2x1 {x,c} (int16 1x2 [0 -7]) null null (cell 1x2 (char 1x7 'in cell') null)");
    // The replaced and the removed values are ours again: ASan fails the run if they were freed.
    mxSetField(s.get(), 0, "x", mxCreateDoubleScalar(5));
    mxRemoveField(s.get(), 1);
    // Changing the original, its data, cells or fields, leaves the copies as they were.
    static_cast<int16_t*>(mxGetData(x.get()))[1] = 99;
    mxDestroyArray(mxGetCell(cell.get(), 0));
    mxSetCell(cell.get(), 0, nullptr);
    mxAddField(copy.get(), "added");
    EXPECT_EQ(describe(s.get()), "struct 2x1 {x} (double 1x1 [5]) null");
    EXPECT_EQ(describe(x.get()) + ", " + describe(cell.get()), "int16 1x2 [0 99], cell 1x2 null null");
    EXPECT_EQ(describe(copy.get()), "struct 2x1 {x,c,added} (int16 1x2 [0 -7]) null null null "
                                    "(cell 1x2 (char 1x7 'in cell') null) null");
    EXPECT_EQ(describe(second.get()), before);
    EXPECT_EQ(mxDuplicateArray(nullptr), nullptr);
    mxDestroyArray(nullptr);
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
