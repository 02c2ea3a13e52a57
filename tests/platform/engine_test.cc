// Engines through libeng. One shared engine: values put, looked at by Octave and got back
// unchanged, what an evaluation prints, and the calls that save a round trip. Engines of their
// own: a gone engine fails every call without hanging and says why, closing reaps the process,
// and the host's signals and other engines are untouched.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "array_text.h"
#include "engine.h"
#include "tamlo_eng_ext.h"

namespace {

using tamlo_test::ArrayOwner;
using tamlo_test::describe;

Engine* open_engine() {
    int status = -1;
    Engine* ep = engOpenSingleUse("", nullptr, &status);
    EXPECT_NE(ep, nullptr) << "status " << status;
    return ep;
}

// The state letter of a process ('Z' for a zombie, which still counts as existing), or 0 when
// no process with this id exists any more.
char process_state(int pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    std::getline(stat, line);
    const size_t close_paren = line.rfind(')');
    return close_paren != std::string::npos && close_paren + 2 < line.size() ? line[close_paren + 2] : 0;
}

class OneEngine : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        engine_ = open_engine();
        ASSERT_EQ(engOutputBuffer(engine_, buffer_, sizeof buffer_ - 1), 0);
    }
    static void TearDownTestSuite() { EXPECT_EQ(engClose(engine_), 0); }

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

    static inline Engine* engine_ = nullptr;
    static inline char buffer_[4097];  // 4096 registered, and one byte past them to show an overrun
};

TEST_F(OneEngine, ValuesComeAsMatlabWouldHoldThemAndGoBackUnchanged) {
    struct Row {
        const char* what;
        const char* command;
        std::string arrives;
    } rows[] = {
        {"struct array field order", "v = struct('zeta', {1, 2}, 'alpha', 3);",
         "struct 1x2 {zeta,alpha} (double 1x1 [1]) (double 1x1 [3]) (double 1x1 [2]) (double 1x1 [3])"},
        {"field added later goes last", "clear v; v.b = 1; v.a = 'x';", "struct 1x1 {b,a} (double 1x1 [1]) (char 1x1 'x')"},
        {"nested structs", "v = struct('fuel', struct('cost', {1.25; 2.5}), 'is_on', true);",
         "struct 1x1 {fuel,is_on} (struct 2x1 {cost} (double 1x1 [1.25]) (double 1x1 [2.5])) (logical 1x1 [1])"},
        {"empty struct with fields", "v = struct('a', {}, 'b', {});", "struct 0x0 {a,b}"},
        {"3 x 2 struct without fields", "v = repmat(struct(), 3, 2);", "struct 3x2 {}"},
        {"1 x 1 struct without fields", "v = struct();", "struct 1x1 {}"},
        {"N x 2 points", "v = [1 10; 2 20; 3 0.1];", "double 3x2 [1 2 3 10 20 0.10000000000000001]"},
        {"empty double column", "v = zeros(0, 1);", "double 0x1 []"},
        {"logical", "v = [true false true];", "logical 1x3 [1 0 1]"},
        {"char matrix", "v = ['ab'; 'cd'];", "char 2x2 'acbd'"},
        {"empty char", "v = '';", "char 0x0 ''"},
        {"int8", "v = int8([-128 127]);", "int8 1x2 [-128 127]"},
        {"uint16", "v = uint16([0 65535]);", "uint16 1x2 [0 65535]"},
        {"int32", "v = int32([-7 7]);", "int32 1x2 [-7 7]"},
        {"uint64", "v = [uint64(0) intmax('uint64')];", "uint64 1x2 [0 18446744073709551615]"},
        {"int64", "v = [intmin('int64') intmax('int64')];", "int64 1x2 [-9223372036854775808 9223372036854775807]"},
        {"single", "v = single(0.1);", "single 1x1 [0.10000000149011612]"},
        {"single 3-D", "v = single(reshape(0:5, 2, 1, 3) / 2);", "single 2x1x3 [0 0.5 1 1.5 2 2.5]"},
        {"sparse becomes full", "v = speye(2) * 5;", "double 2x2 [5 0 0 5]"},
        {"complex keeps its real part", "v = [1+2i, 3-4i];", "double 1x2 [1 3]"},
        {"function handle becomes empty double", "v = @sin;", "double 0x0 []"},
        {"cell", "v = {1, 'a'; [], {}};", "cell 2x2 (double 1x1 [1]) (double 0x0 []) (char 1x1 'a') (cell 0x0)"},
        {"missing variable", "clear v;", "null"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(eval(row.command), "");
        ArrayOwner v(engGetVariable(engine_, "v"));
        EXPECT_EQ(describe(v.get()), row.arrives);
        // Put back under another name, it is held by Octave as it was sent and comes back the same.
        if (v.get() == nullptr) continue;
        ASSERT_EQ(engPutVariable(engine_, "w", v.get()), 0);
        EXPECT_EQ(get("w"), row.arrives);
    }
    // Octave reads what was put, and holds no value where none was set.
    ArrayOwner s(mxCreateStructMatrix(1, 2, 0, nullptr));
    mxAddField(s.get(), "power");
    mxSetField(s.get(), 1, "power", mxCreateDoubleScalar(200));
    ASSERT_EQ(engPutVariable(engine_, "s", s.get()), 0);
    EXPECT_EQ(eval("printf('%g %s %d', s(2).power, class(s(1).power), isempty(s(1).power))"), "200 double 1");
}

// Both ways, what lies deeper than the wire carries arrives as the stand-in []; a value sent
// whole to Octave would come back whole.
TEST_F(OneEngine, NestingPastTheLimitEndsInTheStandInBothWays) {
    for (int levels : {63, 64, 1000}) {
        SCOPED_TRACE(levels);
        std::string arrives = levels == 63 ? "double 1x1 [5]" : "double 0x0 []";
        for (int k = 0; k < 63; ++k) arrives = "cell 1x1 (" + arrives + ")";
        ArrayOwner sent(mxCreateDoubleScalar(5));
        for (int k = 0; k < levels; ++k) {
            mxArray* cell = mxCreateCellMatrix(1, 1);
            mxSetCell(cell, 0, sent.release());
            sent.reset(cell);
        }
        ASSERT_EQ(engPutVariable(engine_, "v", sent.get()), 0);
        EXPECT_EQ(get("v"), arrives);
        eval("v = 5; for k = 1:" + std::to_string(levels) + ", v = {v}; end");
        EXPECT_EQ(get("v"), arrives);
    }
}

TEST_F(OneEngine, WhatNoFrameCanCarryOrNoNameCanHoldIsRefusedAndTheEngineGoesOn) {
    const mwSize dims33[33] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
                               1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2};
    struct Row {
        const char* what;
        const char* name;
        mxArray* value;
    } rows[] = {
        {"data past the largest frame", "kept", mxCreateDoubleMatrix(1, (mwSize{1} << 25) + 1, mxREAL)},
        {"an empty array with a dim Octave cannot index", "kept", mxCreateDoubleMatrix(0, mwSize{1} << 63, mxREAL)},
        {"33 dimensions", "kept", mxCreateNumericArray(33, dims33, mxINT8_CLASS, mxREAL)},
        {"no array", "kept", nullptr},
        {"no name", nullptr, mxCreateDoubleScalar(2)},
        {"a name that is not one", "1abc", mxCreateDoubleScalar(2)},
        {"a keyword", "for", mxCreateDoubleScalar(2)},
    };
    // Taken once by the engine, so that the puts of it that follow are not waited for.
    ArrayOwner one(mxCreateDoubleScalar(1));
    ASSERT_EQ(engPutVariable(engine_, "kept", one.get()), 0);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        ArrayOwner value(row.value);
        EXPECT_NE(engPutVariable(engine_, row.name, value.get()), 0);
        EXPECT_EQ(eval("disp(kept)"), "1\n");
    }
    EXPECT_EQ(eval("big = repmat({zeros(1, 2^24)}, 1, 3);"), "");
    EXPECT_EQ(get("big"), "null") << "a value past the largest frame";
    EXPECT_EQ(eval("disp(kept); clear big"), "1\n");
}

TEST_F(OneEngine, CapturesEverythingPrintedInOrder) {
    struct Row {
        const char* what;
        const char* command;
        std::string output;
    } rows[] = {
        {"warning", "warning('careful now')", "warning: careful now\n"},
        {"mixed streams keep their order", "disp(1); fprintf(2, 'e\\n'); disp(2)", "1\ne\n2\n"},
        {"error after printed text", "disp('before'); error('boom %d', 3); disp('after')", "before\nerror: boom 3\n"},
        {"parse error", "a = [1 2", "error: parse error:\n\n  syntax error\n\n\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(eval(row.command), row.output);
    }
}

TEST_F(OneEngine, OutputIsCutToTheBufferOrNotCapturedWithoutOne) {
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
    ASSERT_EQ(engOutputBuffer(engine_, buffer_, sizeof buffer_ - 1), 0);
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

TEST_F(OneEngine, CallsInAnyOrderSeeTheEnginesCurrentValues) {
    const char* const count = "brought = brought + 1;";
    const char* const toggle = "if exist('toggled', 'var'), clear toggled; else, toggled = 7; end";
    const char* const fail = "brought = brought + 1; error('stop');";
    const char* const file_made =
        "d = tempname(); mkdir(d); f = [d '/x.m']; fclose(fopen(f, 'w')); seen = exist(f) + numel(readdir(d));";
    const char* const file_removed = "delete(f); seen = exist(f) + numel(readdir(d)); rmdir(d);";
    const struct {
        const char* name;
        std::vector<Call> calls;
    } rows[] = {
        {"puts in a row end with the last", {{'p', "brought", 1}, {'p', "brought", 2}, {'p', "brought", 3},
                                             {'g', "brought", 3}}},
        {"the same name twice, then a put after the eval that wins",
         {{'p', "brought", 0}, {'e', count, 0}, {'g', "brought", 1}, {'e', count, 0}, {'g', "brought", 2},
          {'g', "brought", 2}, {'e', count, 0}, {'p', "brought", 100}, {'g', "brought", 100}}},
        {"another name after the same eval", {{'p', "brought", 0}, {'p', "other", 9}, {'e', count, 0},
                                              {'g', "brought", 1}, {'e', count, 0}, {'g', "other", 9}}},
        {"an eval that fails after assigning", {{'p', "brought", 0}, {'e', fail, 0}, {'g', "brought", 1},
                                                {'e', fail, 0}, {'g', "brought", 2}}},
        {"a variable that comes and goes", {{'e', "clear toggled", 0}, {'e', toggle, 0}, {'g', "toggled", 7},
                                            {'e', toggle, 0}, {'g', "toggled", NAN}, {'e', toggle, 0},
                                            {'g', "toggled", 7}, {'e', toggle, 0}, {'g', "toggled", NAN}}},
        // seen: exist's 2 for a file, plus the entries of the folder ("." and ".." too)
        {"a file made in a new folder, then removed", {{'e', file_made, 0}, {'g', "seen", 2 + 3},
                                                       {'e', file_removed, 0}, {'g', "seen", 0 + 2}}},
    };
    for (const auto& row : rows) {
        for (std::size_t k = 0; k < row.calls.size(); ++k) {
            const Call& c = row.calls[k];
            SCOPED_TRACE(std::string(row.name) + ", call " + std::to_string(k + 1));
            ArrayOwner number(mxCreateDoubleScalar(c.number));
            if (c.op == 'e')
                engEvalString(engine_, c.text);
            else if (c.op == 'p')
                ASSERT_EQ(engPutVariable(engine_, c.text, number.get()), 0);
            else
                EXPECT_EQ(get(c.text), std::isnan(c.number) ? "null" : describe(number.get()));
        }
    }
}

TEST(EngineLifecycle, TwoEnginesAreIndependentAndAClosedHandleFailsEveryCall) {
    Engine* a = open_engine();
    Engine* b = open_engine();
    ASSERT_TRUE(a != nullptr && b != nullptr);
    EXPECT_NE(tamlo_engGetPid(a), tamlo_engGetPid(b));
    ArrayOwner one(mxCreateDoubleScalar(1)), two(mxCreateDoubleScalar(2));
    ASSERT_EQ(engPutVariable(a, "x", one.get()), 0);
    ASSERT_EQ(engPutVariable(b, "x", two.get()), 0);
    EXPECT_EQ(describe(ArrayOwner(engGetVariable(a, "x")).get()), "double 1x1 [1]");
    EXPECT_EQ(engClose(a), 0);
    // The closed handle is known as closed, whatever is called with it, as null is.
    EXPECT_EQ(engClose(a), 1);
    EXPECT_EQ(engEvalString(a, "1;"), 1);
    EXPECT_EQ(engPutVariable(a, "x", one.get()), 1);
    EXPECT_EQ(engGetVariable(a, "x"), nullptr);
    EXPECT_EQ(engOutputBuffer(a, nullptr, 0), 1);
    EXPECT_EQ(engSetVisible(a, false), 1);
    EXPECT_EQ(tamlo_engSetCallTimeout(a, 1), 1);
    EXPECT_EQ(tamlo_engGetPid(a), -1);
    EXPECT_EQ(describe(ArrayOwner(engGetVariable(b, "x")).get()), "double 1x1 [2]");
    EXPECT_EQ(engClose(b), 0);
}

TEST(EngineLifecycle, BadTimeLimitsAreRefused) {
    for (double bad : {-1.0, std::nan(""), double{INFINITY}}) EXPECT_EQ(tamlo_engSetDefaultCallTimeout(bad), 1) << bad;
}

TEST(EngineFaults, AGoneEngineFailsEveryLaterCallAndSaysWhyOnce) {
    // SIGPIPE keeps its default action here: a write to the dead engine would end this test.
    struct sigaction pipe_action {};
    ::sigaction(SIGPIPE, nullptr, &pipe_action);
    ASSERT_EQ(pipe_action.sa_handler, SIG_DFL);
    const std::string killed = "The MATLAB engine process has ended (killed by signal 9 (SIGKILL)).\n";
    struct Row {
        const char* what;
        bool put_first;  // two puts of x before the fault, the second not waited for
        int signal;      // sent before the call; 0: the call itself ends the engine
        double time_limit;
        char call;  // 'e' eval, 'P' put of 8 MB, 'g' get, 'c' close only
        const char* command;
        std::string buffer;
    } rows[] = {
        {"killed, put larger than the socket buffer", false, SIGKILL, 0, 'P', "", killed},
        {"killed, get", false, SIGKILL, 0, 'g', "", killed},
        {"killed after a put not waited for", true, SIGKILL, 0, 'e', "disp(x)", killed},
        {"stopped, get past its limit", false, SIGSTOP, 0.5, 'g', "",
         "The MATLAB engine process was ended after the call ran past its time limit of 0.5 s.\n"},
        {"stopped, closed", false, SIGSTOP, 0, 'c', "", ""},
        {"user code calls exit", false, 0, 0, 'e', "disp('bye'); exit(3)",
         "bye\nThe MATLAB engine process has ended (quit or exit called, exit status 3).\n"},
    };
    ArrayOwner one(mxCreateDoubleScalar(1)), big(mxCreateDoubleMatrix(1000, 1000, mxREAL));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Engine* ep = open_engine();
        ASSERT_NE(ep, nullptr);
        char buf[256] = "";
        engOutputBuffer(ep, buf, sizeof buf);
        if (row.time_limit > 0) {
            EXPECT_EQ(tamlo_engSetCallTimeout(ep, row.time_limit), 0);
        }
        EXPECT_EQ(tamlo_engSetCallTimeout(ep, -1), 1);
        for (int k = 0; row.put_first && k < 2; ++k) ASSERT_EQ(engPutVariable(ep, "x", one.get()), 0);
        const int pid = tamlo_engGetPid(ep);
        if (row.signal != 0) {
            ASSERT_EQ(::kill(pid, row.signal), 0);
        }
        switch (row.call) {
            case 'e': EXPECT_NE(engEvalString(ep, row.command), 0); break;
            case 'P': EXPECT_NE(engPutVariable(ep, "big", big.get()), 0); break;
            case 'g': EXPECT_EQ(engGetVariable(ep, "x"), nullptr); break;
            default: break;
        }
        if (row.call != 'c') {
            EXPECT_EQ(buf, row.buffer);
            // Reaped at once: no zombie waits for engClose.
            EXPECT_EQ(process_state(pid), 0);
            // Later calls fail too, and the reason is not written again.
            EXPECT_NE(engEvalString(ep, "disp(1)"), 0);
            EXPECT_NE(engPutVariable(ep, "x", one.get()), 0);
            EXPECT_EQ(engGetVariable(ep, "x"), nullptr);
            EXPECT_EQ(buf, row.buffer);
        }
        // Reaped by engClose, stopped or not: not even a zombie is left.
        EXPECT_EQ(engClose(ep), 0);
        EXPECT_EQ(process_state(pid), 0);
    }
    ::sigaction(SIGPIPE, nullptr, &pipe_action);
    EXPECT_EQ(pipe_action.sa_handler, SIG_DFL) << "the host's own signal actions are not libeng's to change";
}

TEST(EngineFaults, EngineDoesNotOutliveItsHost) {
    int pipe_fds[2];
    ASSERT_EQ(::pipe(pipe_fds), 0);
    const pid_t host = ::fork();
    ASSERT_GE(host, 0);
    if (host == 0) {
        // A host that opens an engine, says its pid (-1 for none) and dies without closing it.
        const int pid = tamlo_engGetPid(engOpenSingleUse("", nullptr, nullptr));
        ::_exit(::write(pipe_fds[1], &pid, sizeof pid) == sizeof pid ? 0 : 2);
    }
    ::close(pipe_fds[1]);
    int engine_pid = -1;
    ASSERT_EQ(::read(pipe_fds[0], &engine_pid, sizeof engine_pid), static_cast<ssize_t>(sizeof engine_pid));
    ::close(pipe_fds[0]);
    ASSERT_EQ(::waitpid(host, nullptr, 0), host);
    ASSERT_GT(engine_pid, 0);
    // Gone or a zombie: whoever reaps orphans here may be slow to do so, or not do it at all in
    // a container.
    const auto running = [engine_pid] { return process_state(engine_pid) != 0 && process_state(engine_pid) != 'Z'; };
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (running() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_FALSE(running());
}

}  // namespace
