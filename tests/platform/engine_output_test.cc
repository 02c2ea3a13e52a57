// What an evaluation prints reaches the registered output buffer, cut and terminated.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "engine_session.h"

namespace {

class EngineOutput : public tamlo_test::EngineSuite {};

TEST_F(EngineOutput, CapturesEverythingPrintedInOrder) {
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
        {"undefined function", "no_such_function_xyz(1)", "error: 'no_such_function_xyz' undefined near line 1, column 1\n"},
        {"only line feeds", "fprintf('\\n\\n')", "\n\n"},
        {"cd to a missing folder", "cd('/no/such/folder/xyz');", "error: /no/such/folder/xyz: No such file or directory\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(eval(row.command), row.output);
    }
}

TEST_F(EngineOutput, ParseErrorIsReportedAsOutputNotAsFailure) {
    const std::string out = eval("a = [1 2");
    EXPECT_EQ(out.rfind("error: parse error:", 0), 0u) << out;
}

TEST_F(EngineOutput, NothingPrintedLeavesAnEmptyBuffer) {
    std::strcpy(buffer_, "stale");
    EXPECT_EQ(engEvalString(engine_, "y = 1;"), 0);
    EXPECT_STREQ(buffer_, "");
}

TEST_F(EngineOutput, LongOutputIsCutToBufferSizeMinusOneAndTerminated) {
    char small[16];
    std::memset(small, 'Z', sizeof small);
    ASSERT_EQ(engOutputBuffer(engine_, small, 8), 0);
    EXPECT_EQ(engEvalString(engine_, "disp('0123456789abcdef')"), 0);
    EXPECT_STREQ(small, "0123456");
    EXPECT_EQ(small[8], 'Z') << "wrote past the registered length";
    ASSERT_EQ(engOutputBuffer(engine_, buffer_, buffer_size), 0);
}

TEST_F(EngineOutput, NullBufferTurnsCaptureOff) {
    std::strcpy(buffer_, "untouched");
    ASSERT_EQ(engOutputBuffer(engine_, nullptr, 0), 0);
    EXPECT_EQ(engEvalString(engine_, "disp('invisible')"), 0);
    EXPECT_STREQ(buffer_, "untouched");
    ASSERT_EQ(engOutputBuffer(engine_, buffer_, buffer_size), 0);
    EXPECT_EQ(eval("disp('visible')"), "visible\n");
}

TEST_F(EngineOutput, SetVisibleIsAcceptedAndChangesNothing) {
    EXPECT_EQ(engSetVisible(engine_, false), 0);
    EXPECT_EQ(engSetVisible(engine_, true), 0);
    EXPECT_EQ(eval("disp(3)"), "3\n");
}

}  // namespace
