// A put of a name the engine already took is not waited for: what follows still sees its
// value, and an engine lost meanwhile fails the next call instead of passing it silently.
#include <gtest/gtest.h>

#include <signal.h>

#include <string>

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
