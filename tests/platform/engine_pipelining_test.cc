// Calls that save a round trip: a put of a name the engine already took is not waited for, and
// an eval brings back the variables fetched after the same command last time. What follows
// still sees the engine's current values, and an engine lost meanwhile fails the next call.
#include <gtest/gtest.h>

#include <signal.h>

#include <cmath>
#include <string>
#include <vector>

#include "engine.h"
#include "engine_session.h"
#include "matrix.h"
#include "tamlo_eng_ext.h"

namespace {

using tamlo_test::ArrayOwner;

class EnginePipelining : public tamlo_test::EngineSuite {};

TEST_F(EnginePipelining, EachPutIsSeenByTheNextEval) {
    for (int k = 1; k <= 5; ++k) {
        ArrayOwner v(mxCreateDoubleScalar(k));
        ASSERT_EQ(engPutVariable(engine_, "pipelined", v.get()), 0);
        EXPECT_EQ(eval("disp(pipelined)"), std::to_string(k) + "\n");
    }
}

TEST_F(EnginePipelining, PutsInARowEndWithTheLastValue) {
    for (int k = 1; k <= 5; ++k) {
        ArrayOwner v(mxCreateDoubleScalar(k));
        ASSERT_EQ(engPutVariable(engine_, "in_a_row", v.get()), 0);
    }
    ArrayOwner back(engGetVariable(engine_, "in_a_row"));
    ASSERT_NE(back.get(), nullptr);
    EXPECT_EQ(mxGetScalar(back.get()), 5.0);
}

TEST_F(EnginePipelining, GetRightAfterAPutReturnsThePutValue) {
    ArrayOwner first(mxCreateString("first"));
    ArrayOwner second(mxCreateString("second"));
    ASSERT_EQ(engPutVariable(engine_, "then_got", first.get()), 0);
    ASSERT_EQ(engPutVariable(engine_, "then_got", second.get()), 0);
    ArrayOwner back(engGetVariable(engine_, "then_got"));
    char text[16] = "";
    ASSERT_EQ(mxGetString(back.get(), text, sizeof text), 0);
    EXPECT_STREQ(text, "second");
}

TEST_F(EnginePipelining, ArrayNoFrameCanCarryIsRefusedAndTheSessionGoesOn) {
    ArrayOwner one(mxCreateDoubleScalar(1));
    ASSERT_EQ(engPutVariable(engine_, "kept", one.get()), 0);
    // No elements, but dims whose running product passes what a frame can carry.
    ArrayOwner odd(mxCreateDoubleMatrix(mwSize{1} << 40, 0, mxREAL));
    ASSERT_NE(odd.get(), nullptr);
    EXPECT_NE(engPutVariable(engine_, "kept", odd.get()), 0);
    EXPECT_EQ(eval("disp(kept)"), "1\n");
}

// One call in a sequence: an eval, a put of a number, or a get that expects a number (NAN: no
// such variable).
struct Call {
    char op;  // 'e', 'p', 'g'
    const char* text;
    double number;
};

struct SequenceRow {
    const char* name;
    std::vector<Call> calls;
};

TEST_F(EnginePipelining, GetsAfterARepeatedEvalSeeTheEnginesCurrentValues) {
    const char* const count = "brought = brought + 1;";
    const char* const toggle = "if exist('toggled', 'var'), clear toggled; else, toggled = 7; end";
    const SequenceRow rows[] = {
        {"each eval's own result", {{'p', "brought", 0}, {'e', count, 0}, {'g', "brought", 1}, {'e', count, 0},
                                    {'g', "brought", 2}, {'e', count, 0}, {'g', "brought", 3}}},
        {"a put after the eval wins", {{'p', "brought", 0}, {'e', count, 0}, {'g', "brought", 1}, {'e', count, 0},
                                       {'p', "brought", 100}, {'g', "brought", 100}}},
        {"the same name twice", {{'p', "brought", 0}, {'e', count, 0}, {'g', "brought", 1}, {'e', count, 0},
                                 {'g', "brought", 2}, {'g', "brought", 2}}},
        {"an eval that fails after assigning",
         {{'p', "brought", 0}, {'e', "brought = brought + 1; error('stop');", 0}, {'g', "brought", 1},
          {'e', "brought = brought + 1; error('stop');", 0}, {'g', "brought", 2}}},
        {"a variable that comes and goes", {{'e', "clear toggled", 0}, {'e', toggle, 0}, {'g', "toggled", 7},
                                            {'e', toggle, 0}, {'g', "toggled", NAN}, {'e', toggle, 0},
                                            {'g', "toggled", 7}, {'e', toggle, 0}, {'g', "toggled", NAN}}},
        {"another command in between", {{'p', "brought", 0}, {'e', count, 0}, {'g', "brought", 1},
                                        {'e', "brought = 50;", 0}, {'e', count, 0}, {'g', "brought", 51}}},
    };
    for (const SequenceRow& row : rows) {
        for (std::size_t k = 0; k < row.calls.size(); ++k) {
            const Call& c = row.calls[k];
            SCOPED_TRACE(std::string(row.name) + ", call " + std::to_string(k + 1));
            if (c.op == 'e') {
                engEvalString(engine_, c.text);
            } else if (c.op == 'p') {
                ArrayOwner v(mxCreateDoubleScalar(c.number));
                ASSERT_EQ(engPutVariable(engine_, c.text, v.get()), 0);
            } else {
                ArrayOwner back(engGetVariable(engine_, c.text));
                if (std::isnan(c.number)) {
                    EXPECT_EQ(back.get(), nullptr);
                } else {
                    ASSERT_NE(back.get(), nullptr);
                    EXPECT_EQ(mxGetScalar(back.get()), c.number);
                }
            }
        }
    }
}

TEST(EnginePipeliningFaults, EngineKilledAfterAPutNotWaitedForFailsTheNextCall) {
    int status = -1;
    Engine* ep = engOpenSingleUse("", nullptr, &status);
    ASSERT_NE(ep, nullptr) << "status " << status;
    ArrayOwner one(mxCreateDoubleScalar(1));
    ASSERT_EQ(engPutVariable(ep, "x", one.get()), 0);  // waited for: the engine takes the name
    ASSERT_EQ(engPutVariable(ep, "x", one.get()), 0);  // not waited for
    ASSERT_EQ(::kill(tamlo_engGetPid(ep), SIGKILL), 0);
    EXPECT_NE(engEvalString(ep, "disp(x)"), 0);
    EXPECT_EQ(engGetVariable(ep, "x"), nullptr);
    EXPECT_EQ(engClose(ep), 0);
}

}  // namespace
