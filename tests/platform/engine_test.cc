// One real engine through libeng: values put, looked at by Octave and got back unchanged,
// what an evaluation prints, and the calls that save a round trip.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "array_text.h"
#include "engine.h"

namespace {

using tamlo_test::ArrayOwner;
using tamlo_test::describe;

class Engine1 : public ::testing::Test {
protected:
    static constexpr int buffer_size = 4096;

    static void SetUpTestSuite() {
        int status = -1;
        engine_ = engOpenSingleUse("", nullptr, &status);
        ASSERT_NE(engine_, nullptr) << "engine did not start, status " << status;
        ASSERT_EQ(engOutputBuffer(engine_, buffer_, buffer_size), 0);
    }
    static void TearDownTestSuite() {
        if (engine_ != nullptr) {
            EXPECT_EQ(engClose(engine_), 0);
        }
        engine_ = nullptr;
    }
    void SetUp() override { ASSERT_NE(engine_, nullptr); }

    // Evaluates a command that must succeed and returns what it printed; the buffer holds
    // stale text before, so that a call that prints nothing must still empty it.
    static std::string eval(const std::string& command) {
        std::strcpy(buffer_, "stale");
        EXPECT_EQ(engEvalString(engine_, command.c_str()), 0) << command;
        return buffer_;
    }
    static std::string get(const char* name) {
        ArrayOwner v(engGetVariable(engine_, name));
        return describe(v.get());
    }

    static Engine* engine_;
    static char buffer_[buffer_size + 1];
};

Engine* Engine1::engine_ = nullptr;
char Engine1::buffer_[Engine1::buffer_size + 1];

template <typename T>
mxArray* numeric(mxClassID c, mwSize m, mwSize n, std::vector<T> values) {
    mxArray* a = mxCreateNumericMatrix(m, n, c, mxREAL);
    std::memcpy(mxGetData(a), values.data(), values.size() * sizeof(T));
    return a;
}

mxArray* single_3d() {
    const mwSize dims[3] = {2, 1, 3};
    mxArray* a = mxCreateNumericArray(3, dims, mxSINGLE_CLASS, mxREAL);
    for (int k = 0; k < 6; ++k) static_cast<float*>(mxGetData(a))[k] = 0.5f * static_cast<float>(k);
    return a;
}

mxArray* logical_row() {
    mxArray* a = mxCreateLogicalMatrix(1, 3);
    mxGetLogicals(a)[0] = mxGetLogicals(a)[2] = true;
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
        mxSetField(fuel, 0, "cost", mxCreateDoubleScalar(1.25 * static_cast<double>(i + 1)));
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

TEST_F(Engine1, EachClassAndShapeIsSeenByOctaveAndComesBackUnchanged) {
    struct Row {
        const char* what;
        std::function<mxArray*()> make;
        // What Octave reports: class, size and, for structs, the field names.
        std::string octave_view;
        std::string back = "";  // what comes back where it is not what was sent
    } rows[] = {
        {"double scalar", [] { return mxCreateDoubleScalar(-3.25); }, "double 1 1"},
        {"N x 2 points", [] { return numeric<double>(mxDOUBLE_CLASS, 3, 2, {1, 2, 3, 10, 20, 0.1}); }, "double 3 2"},
        {"empty double column", [] { return mxCreateDoubleMatrix(0, 1, mxREAL); }, "double 0 1"},
        {"logical row", logical_row, "logical 1 3"},
        {"char row", [] { return mxCreateString("hello world"); }, "char 1 11"},
        {"empty char", [] { return mxCreateString(""); }, "char 0 0"},
        {"int8", [] { return numeric<int8_t>(mxINT8_CLASS, 1, 2, {-128, 127}); }, "int8 1 2"},
        {"uint16", [] { return numeric<uint16_t>(mxUINT16_CLASS, 1, 2, {0, 65535}); }, "uint16 1 2"},
        {"int32", [] { return numeric<int32_t>(mxINT32_CLASS, 1, 2, {-7, 7}); }, "int32 1 2"},
        {"uint64", [] { return numeric<uint64_t>(mxUINT64_CLASS, 1, 2, {0, UINT64_MAX}); }, "uint64 1 2"},
        {"int64", [] { return numeric<int64_t>(mxINT64_CLASS, 1, 2, {INT64_MIN, INT64_MAX}); }, "int64 1 2"},
        {"single scalar", [] { return numeric<float>(mxSINGLE_CLASS, 1, 1, {0.1f}); }, "single 1 1"},
        {"single 3-D", single_3d, "single 2 1 3"},
        {"0 x 1 struct without fields", [] { return mxCreateStructMatrix(0, 1, 0, nullptr); }, "struct 0 1 {}"},
        {"3 x 2 struct without fields", [] { return mxCreateStructMatrix(3, 2, 0, nullptr); }, "struct 3 2 {}"},
        {"struct array with nested structs", generator_list, "struct 2 1 {power_setpoint,fuel,is_on}"},
        {"cell with nested cell and an empty slot", mixed_cell, "cell 2 2",
         "cell 2x2 (char 1x5 'first') (double 1x1 [2]) (double 0x0 []) (cell 1x1 (logical 1x1 [1]))"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        ArrayOwner sent(row.make());
        ASSERT_EQ(engPutVariable(engine_, "v", sent.get()), 0);
        EXPECT_EQ(eval("printf('%s', class(v)); printf(' %d', size(v)); "
                       "if isstruct(v), printf(' {%s}', strjoin(fieldnames(v)', ',')); end"),
                  row.octave_view);
        EXPECT_EQ(get("v"), row.back.empty() ? describe(sent.get()) : row.back);
    }
    ArrayOwner gens(generator_list());
    ASSERT_EQ(engPutVariable(engine_, "generators", gens.get()), 0);
    EXPECT_EQ(eval("printf('%g %g %d %s', generators(2).power_setpoint, generators(2).fuel.cost, "
                   "generators(1).is_on, class(generators(2).is_on));"),
              "200 2.5 1 logical");
}

TEST_F(Engine1, ValuesMadeInOctaveArriveAsMatlabWouldHoldThem) {
    struct Row {
        const char* what;
        const char* command;
        std::string arrives;
    } rows[] = {
        {"struct array field order", "v = struct('zeta', {1, 2}, 'alpha', 3);",
         "struct 1x2 {zeta,alpha} (double 1x1 [1]) (double 1x1 [3]) (double 1x1 [2]) (double 1x1 [3])"},
        {"field added later goes last", "clear v; v.b = 1; v.a = 'x';", "struct 1x1 {b,a} (double 1x1 [1]) (char 1x1 'x')"},
        {"empty struct with fields", "v = struct('a', {}, 'b', {});", "struct 0x0 {a,b}"},
        {"0 x 1 struct without fields", "v = repmat(struct(), 0, 1);", "struct 0x1 {}"},
        {"range is double", "v = 1:4;", "double 1x4 [1 2 3 4]"},
        {"char matrix", "v = ['ab'; 'cd'];", "char 2x2 'acbd'"},
        {"eight-bit text", "v = 'caf\xe9';", "char 1x4 'caf\xe9'"},
        {"uint8", "v = uint8([1 2 255]);", "uint8 1x3 [1 2 255]"},
        {"single", "v = single(0.1);", "single 1x1 [0.10000000149011612]"},
        {"sparse becomes full", "v = speye(2) * 5;", "double 2x2 [5 0 0 5]"},
        {"sparse logical becomes full logical", "v = sparse([true false]);", "logical 1x2 [1 0]"},
        {"complex keeps its real part", "v = [1+2i, 3-4i];", "double 1x2 [1 3]"},
        {"function handle becomes empty double", "v = @sin;", "double 0x0 []"},
        {"cell", "v = {1, 'a'; [], {}};", "cell 2x2 (double 1x1 [1]) (double 0x0 []) (char 1x1 'a') (cell 0x0)"},
        {"missing variable", "clear v;", "null"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(eval(row.command), "");
        EXPECT_EQ(get("v"), row.arrives);
    }
    EXPECT_EQ(get("not a name"), "null");
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

// Cells to the first value that is not a cell, then that value: "63 double 1x1 [5]".
std::string nesting_seen_by_us(const mxArray* a) {
    int cells = 0;
    for (; a != nullptr && mxIsCell(a); ++cells) a = mxGetCell(a, 0);
    return std::to_string(cells) + " " + describe(a);
}

TEST_F(Engine1, NestingPastTheLimitEndsInTheStandInBothWays) {
    const char* seen_by_octave =
        "x = v; n = 0; while iscell(x), x = x{1}; n++; end; printf('%d %s %dx%d [%s]', n, class(x), size(x), num2str(x));";
    struct Row {
        const char* what;
        int cells;
        const char* arrives;
    } rows[] = {
        {"scalar at the deepest level", 63, "63 double 1x1 [5]"},
        {"cell at the deepest level", 64, "63 double 0x0 []"},
        {"1,000 levels", 1000, "63 double 0x0 []"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        ArrayOwner sent(cells_around_five(row.cells));
        ASSERT_EQ(engPutVariable(engine_, "v", sent.get()), 0);
        EXPECT_EQ(eval(seen_by_octave), row.arrives);
        eval("v = 5; for k = 1:" + std::to_string(row.cells) + ", v = {v}; end");
        ArrayOwner back(engGetVariable(engine_, "v"));
        EXPECT_EQ(nesting_seen_by_us(back.get()), row.arrives);
    }
}

TEST_F(Engine1, WhatNoFrameCanCarryOrNoNameCanHoldIsRefusedAndTheEngineGoesOn) {
    const mwSize dims33[33] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
                               1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2};
    auto put = [](const char* name, mxArray* value) {
        ArrayOwner owned(value);
        return engPutVariable(engine_, name, owned.get());
    };
    struct Row {
        const char* what;
        std::function<bool()> refused;
    } rows[] = {
        {"get of a value past the largest frame",
         [] { return eval("big = repmat({zeros(1, 2^24)}, 1, 3);") == "" && get("big") == "null"; }},
        {"put of data past the largest frame",
         [&] { return put("kept", mxCreateDoubleMatrix(1, (mwSize{1} << 25) + 1, mxREAL)) != 0; }},
        {"put of an empty array with a dim Octave cannot index",
         [&] { return put("kept", mxCreateDoubleMatrix(0, mwSize{1} << 63, mxREAL)) != 0; }},
        {"put of an empty array whose dims pass a frame",
         [&] { return put("kept", mxCreateDoubleMatrix(mwSize{1} << 40, 0, mxREAL)) != 0; }},
        {"put of 33 dimensions", [&] { return put("kept", mxCreateNumericArray(33, dims33, mxINT8_CLASS, mxREAL)) != 0; }},
        {"put of no array", [&] { return put("kept", nullptr) != 0; }},
        {"put without a name", [&] { return put(nullptr, mxCreateDoubleScalar(2)) != 0; }},
        {"put of a name that is not one", [&] { return put("1abc", mxCreateDoubleScalar(2)) != 0; }},
        {"put of a keyword", [&] { return put("for", mxCreateDoubleScalar(2)) != 0; }},
    };
    // Taken once by the engine, so that the puts of it that follow are not waited for.
    ASSERT_EQ(put("kept", mxCreateDoubleScalar(1)), 0);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_TRUE(row.refused());
        EXPECT_EQ(eval("disp(kept); clear big"), "1\n");
    }
}

TEST_F(Engine1, CapturesEverythingPrintedInOrder) {
    const std::string no_terminal =
        ": the MATLAB engine runs without a terminal, so nothing can wait for a key or a reply\n";
    struct Row {
        const char* what;
        const char* command;
        std::string output;
    } rows[] = {
        {"disp", "disp(42)", "42\n"},
        {"value without semicolon", "x = 5", "x = 5\n"},
        {"silent command", "x = 5;", ""},
        {"warning", "warning('careful now')", "warning: careful now\n"},
        {"standard error", "fprintf(2, 'to stderr\\n')", "to stderr\n"},
        {"mixed streams keep their order", "disp(1); fprintf(2, 'e\\n'); disp(2)", "1\ne\n2\n"},
        {"error after printed text", "disp('before'); error('boom %d', 3); disp('after')", "before\nerror: boom 3\n"},
        {"error inside a function",
         "function f(), error('inner'); end\nf()", "error: inner\nerror: called from\n    f at line 1 column 15\n"},
        {"undefined function", "no_such_function_xyz(1)", "error: 'no_such_function_xyz' undefined near line 1, column 1\n"},
        {"parse error", "a = [1 2", "error: parse error:\n\n  syntax error\n\n\n"},
        {"waiting for a key", "keyboard", "error: keyboard" + no_terminal},
        {"only line feeds", "fprintf('\\n\\n')", "\n\n"},
        {"cd to a missing folder", "cd('/no/such/folder/xyz');", "error: /no/such/folder/xyz: No such file or directory\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(eval(row.command), row.output);
    }
}

TEST_F(Engine1, OutputIsCutToTheBufferOrNotCapturedWithoutOne) {
    char small[16];
    std::memset(small, 'Z', sizeof small);
    ASSERT_EQ(engOutputBuffer(engine_, small, 8), 0);
    EXPECT_EQ(engEvalString(engine_, "disp('0123456789abcdef')"), 0);
    EXPECT_STREQ(small, "0123456");
    EXPECT_EQ(small[8], 'Z') << "wrote past the registered length";
    std::strcpy(buffer_, "untouched");
    ASSERT_EQ(engOutputBuffer(engine_, nullptr, 0), 0);
    EXPECT_EQ(engEvalString(engine_, "disp('invisible')"), 0);
    EXPECT_STREQ(buffer_, "untouched");
    ASSERT_EQ(engOutputBuffer(engine_, buffer_, buffer_size), 0);
    EXPECT_EQ(engSetVisible(engine_, false), 0);
    EXPECT_EQ(eval("disp('visible')"), "visible\n");
}

// One call in a sequence: an eval, a put of a number, or a get that expects a number (NAN: no
// such variable).
struct Call {
    char op;  // 'e', 'p', 'g'
    const char* text;
    double number;
};

TEST_F(Engine1, CallsInAnyOrderSeeTheEnginesCurrentValues) {
    const char* const count = "brought = brought + 1;";
    const char* const toggle = "if exist('toggled', 'var'), clear toggled; else, toggled = 7; end";
    const char* const fail = "brought = brought + 1; error('stop');";
    const struct {
        const char* name;
        std::vector<Call> calls;
    } rows[] = {
        {"each put is seen by the next eval", {{'p', "brought", 1}, {'e', count, 0}, {'g', "brought", 2},
                                               {'p', "brought", 10}, {'e', count, 0}, {'g', "brought", 11}}},
        {"puts in a row end with the last", {{'p', "brought", 1}, {'p', "brought", 2}, {'p', "brought", 3},
                                             {'g', "brought", 3}}},
        {"each eval's own result", {{'p', "brought", 0}, {'e', count, 0}, {'g', "brought", 1}, {'e', count, 0},
                                    {'g', "brought", 2}, {'e', count, 0}, {'g', "brought", 3}}},
        {"a put after the eval wins", {{'p', "brought", 0}, {'e', count, 0}, {'g', "brought", 1}, {'e', count, 0},
                                       {'p', "brought", 100}, {'g', "brought", 100}}},
        {"the same name twice", {{'p', "brought", 0}, {'e', count, 0}, {'g', "brought", 1}, {'e', count, 0},
                                 {'g', "brought", 2}, {'g', "brought", 2}}},
        {"another name after the same eval", {{'p', "brought", 0}, {'p', "other", 9}, {'e', count, 0},
                                              {'g', "brought", 1}, {'e', count, 0}, {'g', "other", 9}}},
        {"an eval that fails after assigning", {{'p', "brought", 0}, {'e', fail, 0}, {'g', "brought", 1},
                                                {'e', fail, 0}, {'g', "brought", 2}}},
        {"a variable that comes and goes", {{'e', "clear toggled", 0}, {'e', toggle, 0}, {'g', "toggled", 7},
                                            {'e', toggle, 0}, {'g', "toggled", NAN}, {'e', toggle, 0},
                                            {'g', "toggled", 7}, {'e', toggle, 0}, {'g', "toggled", NAN}}},
        {"another command in between", {{'p', "brought", 0}, {'e', count, 0}, {'g', "brought", 1},
                                        {'e', "brought = 50;", 0}, {'e', count, 0}, {'g', "brought", 51}}},
    };
    for (const auto& row : rows) {
        for (std::size_t k = 0; k < row.calls.size(); ++k) {
            const Call& c = row.calls[k];
            SCOPED_TRACE(std::string(row.name) + ", call " + std::to_string(k + 1));
            if (c.op == 'e') {
                engEvalString(engine_, c.text);
            } else if (c.op == 'p') {
                ArrayOwner v(mxCreateDoubleScalar(c.number));
                ASSERT_EQ(engPutVariable(engine_, c.text, v.get()), 0);
            } else {
                ArrayOwner v(mxCreateDoubleScalar(c.number));
                EXPECT_EQ(get(c.text), std::isnan(c.number) ? "null" : describe(v.get()));
            }
        }
    }
}

}  // namespace
