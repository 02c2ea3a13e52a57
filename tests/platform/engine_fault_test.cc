// Engine lifecycle and faults: a gone engine fails every call without hanging and says why,
// closing reaps the process, and the host's signals and other engines are untouched.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>

#include "array_text.h"
#include "engine.h"
#include "tamlo_eng_ext.h"

namespace {

using tamlo_test::ArrayOwner;

Engine* open_engine() {
    int status = -1;
    Engine* ep = engOpenSingleUse("", nullptr, &status);
    EXPECT_NE(ep, nullptr) << "status " << status;
    return ep;
}

// True when no process with this id exists any more (a zombie still counts as existing).
bool process_gone(int pid) {
    struct stat st;
    return ::stat(("/proc/" + std::to_string(pid)).c_str(), &st) != 0;
}

TEST(EngineLifecycle, TwoEnginesAreIndependentAndCloseReapsEachOnce) {
    const int signals[] = {SIGPIPE, SIGCHLD, SIGINT, SIGTERM};
    struct sigaction before[4], after[4];
    for (int k = 0; k < 4; ++k) ::sigaction(signals[k], nullptr, &before[k]);
    Engine* a = open_engine();
    Engine* b = open_engine();
    ASSERT_TRUE(a != nullptr && b != nullptr);
    const int pid = tamlo_engGetPid(a);
    EXPECT_NE(pid, tamlo_engGetPid(b));
    ArrayOwner one(mxCreateDoubleScalar(1)), two(mxCreateDoubleScalar(2));
    ASSERT_EQ(engPutVariable(a, "x", one.get()), 0);
    ASSERT_EQ(engPutVariable(b, "x", two.get()), 0);
    ArrayOwner xa(engGetVariable(a, "x"));
    EXPECT_EQ(mxGetScalar(xa.get()), 1.0);
    EXPECT_EQ(engClose(a), 0);
    // Reaped by engClose: not even a zombie is left.
    EXPECT_TRUE(process_gone(pid));
    // The closed handle is known as closed, whatever is called with it.
    EXPECT_EQ(engClose(a), 1);
    EXPECT_NE(engEvalString(a, "1;"), 0);
    EXPECT_EQ(engSetVisible(a, false), 1);
    EXPECT_EQ(tamlo_engGetPid(a), -1);
    ArrayOwner xb(engGetVariable(b, "x"));
    EXPECT_EQ(mxGetScalar(xb.get()), 2.0);
    EXPECT_EQ(engClose(b), 0);
    for (int k = 0; k < 4; ++k) {
        ::sigaction(signals[k], nullptr, &after[k]);
        EXPECT_EQ(before[k].sa_handler, after[k].sa_handler) << "signal " << signals[k];
    }
}

TEST(EngineLifecycle, NullHandleAndBadTimeLimitsAreRefused) {
    ArrayOwner one(mxCreateDoubleScalar(1));
    char buf[4];
    EXPECT_EQ(engClose(nullptr), 1);
    EXPECT_EQ(engEvalString(nullptr, "1;"), 1);
    EXPECT_EQ(engPutVariable(nullptr, "x", one.get()), 1);
    EXPECT_EQ(engGetVariable(nullptr, "x"), nullptr);
    EXPECT_EQ(engOutputBuffer(nullptr, buf, sizeof buf), 1);
    EXPECT_EQ(engSetVisible(nullptr, false), 1);
    EXPECT_EQ(tamlo_engSetCallTimeout(nullptr, 1), 1);
    for (double bad : {-1.0, std::nan(""), double{INFINITY}}) {
        SCOPED_TRACE(bad);
        EXPECT_EQ(tamlo_engSetDefaultCallTimeout(bad), 1);
    }
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
        char call;  // 'e' eval, 'p' put, 'P' put of 8 MB, 'g' get, 'c' close only
        const char* command;
        std::string buffer;
    } rows[] = {
        {"killed, eval", false, SIGKILL, 0, 'e', "x = 1;", killed},
        {"killed, put", false, SIGKILL, 0, 'p', "", killed},
        {"killed, put larger than the socket buffer", false, SIGKILL, 0, 'P', "", killed},
        {"killed, get", false, SIGKILL, 0, 'g', "", killed},
        {"killed after a put not waited for", true, SIGKILL, 0, 'e', "disp(x)", killed},
        {"stopped, eval past its limit", false, SIGSTOP, 1, 'e', "x = 1;",
         "The MATLAB engine process was ended after the call ran past its time limit of 1 s.\n"},
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
            case 'p': EXPECT_NE(engPutVariable(ep, "x", one.get()), 0); break;
            case 'P': EXPECT_NE(engPutVariable(ep, "big", big.get()), 0); break;
            case 'g': EXPECT_EQ(engGetVariable(ep, "x"), nullptr); break;
            default: break;
        }
        if (row.call != 'c') {
            EXPECT_EQ(buf, row.buffer);
            // Reaped at once: no zombie waits for engClose.
            EXPECT_TRUE(process_gone(pid));
            // Later calls fail too, and the reason is not written again.
            EXPECT_NE(engEvalString(ep, "disp(1)"), 0);
            EXPECT_NE(engPutVariable(ep, "x", one.get()), 0);
            EXPECT_EQ(engGetVariable(ep, "x"), nullptr);
            EXPECT_EQ(buf, row.buffer);
        }
        EXPECT_EQ(engClose(ep), 0);
        EXPECT_TRUE(process_gone(pid));
    }
}

// True while the process exists and is not a zombie (whoever reaps orphans here may be slow
// to do so, or not do it at all in a container).
bool process_running(int pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    if (!std::getline(stat, line)) return false;
    const size_t close_paren = line.rfind(')');
    return close_paren != std::string::npos && close_paren + 2 < line.size() && line[close_paren + 2] != 'Z';
}

TEST(EngineFaults, EngineDoesNotOutliveItsHost) {
    int pipe_fds[2];
    ASSERT_EQ(::pipe(pipe_fds), 0);
    const pid_t host = ::fork();
    ASSERT_GE(host, 0);
    if (host == 0) {
        // A host that opens an engine and dies without closing it.
        ::close(pipe_fds[0]);
        int status = 0;
        Engine* ep = engOpenSingleUse("", nullptr, &status);
        int pid = ep != nullptr ? tamlo_engGetPid(ep) : -1;
        if (::write(pipe_fds[1], &pid, sizeof pid) != sizeof pid) ::_exit(2);
        ::_exit(0);
    }
    ::close(pipe_fds[1]);
    int engine_pid = -1;
    ASSERT_EQ(::read(pipe_fds[0], &engine_pid, sizeof engine_pid), static_cast<ssize_t>(sizeof engine_pid));
    ::close(pipe_fds[0]);
    int status = 0;
    ASSERT_EQ(::waitpid(host, &status, 0), host);
    ASSERT_GT(engine_pid, 0);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (process_running(engine_pid) && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_FALSE(process_running(engine_pid));
}

}  // namespace
