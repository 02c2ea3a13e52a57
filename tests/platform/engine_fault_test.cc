// Engine lifecycle and faults: a dead engine fails every call without hanging, closing
// reaps the process, and the host's signals and other engines are untouched.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <chrono>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>

#include "engine.h"
#include "matrix.h"
#include "tamlo_eng_ext.h"

namespace {

struct ArrayOwner {
    explicit ArrayOwner(mxArray* a) : a(a) {}
    ~ArrayOwner() { mxDestroyArray(a); }
    mxArray* a;
};

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

// True while the process exists and is not a zombie (whoever reaps orphans here may be slow
// to do so, or not do it at all in a container).
bool process_running(int pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    if (!std::getline(stat, line)) return false;
    const size_t close_paren = line.rfind(')');
    return close_paren != std::string::npos && close_paren + 2 < line.size() && line[close_paren + 2] != 'Z';
}

bool wait_until_stopped(int pid, std::chrono::seconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (process_running(pid)) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

TEST(EngineLifecycle, ServerIsFoundBesideTheLibraryWithoutEnvironment) {
    const char* path = tamlo_engServerPath();
    ASSERT_NE(path, nullptr);
    const std::string p(path);
    EXPECT_EQ(p.substr(p.size() - std::strlen("/octave-engine")), "/octave-engine");
    EXPECT_EQ(::access(path, X_OK), 0);
    // The program found is one of the places listed, one per line.
    const std::string places = std::string("\n").append(tamlo_engServerCandidates());
    EXPECT_NE(places.find("\n" + p + "\n"), std::string::npos) << places;
}

TEST(EngineLifecycle, CloseEndsAndReapsTheEngine) {
    Engine* ep = open_engine();
    ASSERT_NE(ep, nullptr);
    const int pid = tamlo_engGetPid(ep);
    ASSERT_GT(pid, 0);
    EXPECT_FALSE(process_gone(pid));
    EXPECT_EQ(engClose(ep), 0);
    // Reaped by engClose: not even a zombie is left, and it is no longer our child.
    EXPECT_TRUE(process_gone(pid));
    int status = 0;
    EXPECT_EQ(::waitpid(pid, &status, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST(EngineLifecycle, SecondCloseOfAHandleIsDetectedAndFails) {
    Engine* ep = open_engine();
    ASSERT_NE(ep, nullptr);
    EXPECT_EQ(engClose(ep), 0);
    EXPECT_EQ(engClose(ep), 1);
    EXPECT_NE(engEvalString(ep, "1;"), 0);
    EXPECT_EQ(tamlo_engGetPid(ep), -1);
}

TEST(EngineLifecycle, NullHandleFailsEveryCall) {
    ArrayOwner one(mxCreateDoubleScalar(1));
    char buf[4];
    EXPECT_EQ(engClose(nullptr), 1);
    EXPECT_EQ(engEvalString(nullptr, "1;"), 1);
    EXPECT_EQ(engPutVariable(nullptr, "x", one.a), 1);
    EXPECT_EQ(engGetVariable(nullptr, "x"), nullptr);
    EXPECT_EQ(engOutputBuffer(nullptr, buf, sizeof buf), 1);
    EXPECT_EQ(engSetVisible(nullptr, false), 1);
}

TEST(EngineLifecycle, TwoEnginesAreIndependent) {
    Engine* a = open_engine();
    Engine* b = open_engine();
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    EXPECT_NE(tamlo_engGetPid(a), tamlo_engGetPid(b));
    ArrayOwner one(mxCreateDoubleScalar(1)), two(mxCreateDoubleScalar(2));
    ASSERT_EQ(engPutVariable(a, "x", one.a), 0);
    ASSERT_EQ(engPutVariable(b, "x", two.a), 0);
    ArrayOwner xa(engGetVariable(a, "x"));
    EXPECT_EQ(mxGetScalar(xa.a), 1.0);
    EXPECT_EQ(engClose(a), 0);
    ArrayOwner xb(engGetVariable(b, "x"));
    EXPECT_EQ(mxGetScalar(xb.a), 2.0);
    EXPECT_EQ(engClose(b), 0);
}

TEST(EngineFaults, KilledEngineFailsEveryLaterCallQuickly) {
    Engine* ep = open_engine();
    ASSERT_NE(ep, nullptr);
    char buf[64] = "";
    engOutputBuffer(ep, buf, sizeof buf);
    const int pid = tamlo_engGetPid(ep);
    ASSERT_EQ(::kill(pid, SIGKILL), 0);
    ArrayOwner one(mxCreateDoubleScalar(1));
    EXPECT_NE(engEvalString(ep, "disp(1)"), 0);
    EXPECT_NE(engPutVariable(ep, "x", one.a), 0);
    EXPECT_EQ(engGetVariable(ep, "x"), nullptr);
    EXPECT_NE(engEvalString(ep, "disp(1)"), 0);
    EXPECT_EQ(engClose(ep), 0);
    EXPECT_TRUE(process_gone(pid));
}

TEST(EngineFaults, AGoneEngineLeavesItsCauseInTheOutputBuffer) {
    const std::string killed = "The MATLAB engine process has ended (killed by signal 9 (SIGKILL)).\n";
    struct Row {
        const char* what;
        int signal;
        double time_limit;
        int call;  // 0 eval, 1 put, 2 get
        std::string buffer;
    } rows[] = {
        {"killed, eval", SIGKILL, 0, 0, killed},
        {"killed, put", SIGKILL, 0, 1, killed},
        {"killed, get", SIGKILL, 0, 2, killed},
        {"stopped, eval past its limit", SIGSTOP, 1, 0,
         "The MATLAB engine process was ended after the call ran past its time limit of 1 s.\n"},
        {"stopped, get past its limit", SIGSTOP, 0.5, 2,
         "The MATLAB engine process was ended after the call ran past its time limit of 0.5 s.\n"},
    };
    ArrayOwner one(mxCreateDoubleScalar(1));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Engine* ep = open_engine();
        ASSERT_NE(ep, nullptr);
        char buf[256] = "";
        engOutputBuffer(ep, buf, sizeof buf);
        EXPECT_EQ(tamlo_engSetCallTimeout(ep, row.time_limit), 0);
        const int pid = tamlo_engGetPid(ep);
        ASSERT_EQ(::kill(pid, row.signal), 0);
        switch (row.call) {
            case 0: EXPECT_NE(engEvalString(ep, "x = 1;"), 0); break;
            case 1: EXPECT_NE(engPutVariable(ep, "x", one.a), 0); break;
            default: EXPECT_EQ(engGetVariable(ep, "x"), nullptr); break;
        }
        EXPECT_EQ(buf, row.buffer);
        // Reaped at once: no zombie waits for engClose.
        EXPECT_TRUE(process_gone(pid));
        EXPECT_EQ(engClose(ep), 0);
    }
}

TEST(EngineFaults, TimeLimitsAreCheckedAndAStoppedEngineStillCloses) {
    EXPECT_EQ(tamlo_engSetDefaultCallTimeout(-1), 1);
    EXPECT_EQ(tamlo_engSetDefaultCallTimeout(std::nan("")), 1);
    EXPECT_EQ(tamlo_engSetCallTimeout(nullptr, 1), 1);
    Engine* ep = open_engine();
    ASSERT_NE(ep, nullptr);
    EXPECT_EQ(tamlo_engSetCallTimeout(ep, -1), 1);
    const int pid = tamlo_engGetPid(ep);
    ASSERT_EQ(::kill(pid, SIGSTOP), 0);
    EXPECT_EQ(engClose(ep), 0);
    EXPECT_TRUE(process_gone(pid));
}

TEST(EngineFaults, LargePutToADeadEngineRaisesNoSigpipe) {
    // SIGPIPE keeps its default action here, which would end this test process.
    struct sigaction before {};
    ::sigaction(SIGPIPE, nullptr, &before);
    ASSERT_EQ(before.sa_handler, SIG_DFL);
    Engine* ep = open_engine();
    ASSERT_NE(ep, nullptr);
    ASSERT_EQ(::kill(tamlo_engGetPid(ep), SIGKILL), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ArrayOwner big(mxCreateDoubleMatrix(1000, 1000, mxREAL));
    EXPECT_NE(engPutVariable(ep, "big", big.a), 0);
    EXPECT_EQ(engClose(ep), 0);
}

TEST(EngineFaults, HostSignalHandlersAreNotChanged) {
    const int signals[] = {SIGPIPE, SIGCHLD, SIGINT, SIGTERM};
    struct sigaction before[4], after[4];
    for (int k = 0; k < 4; ++k) ::sigaction(signals[k], nullptr, &before[k]);
    Engine* ep = open_engine();
    ASSERT_NE(ep, nullptr);
    EXPECT_EQ(engEvalString(ep, "x = 1;"), 0);
    EXPECT_EQ(engClose(ep), 0);
    for (int k = 0; k < 4; ++k) {
        ::sigaction(signals[k], nullptr, &after[k]);
        EXPECT_EQ(before[k].sa_handler, after[k].sa_handler) << "signal " << signals[k];
    }
}

TEST(EngineFaults, UserCodeCallingExitEndsOnlyTheEngine) {
    Engine* ep = open_engine();
    ASSERT_NE(ep, nullptr);
    const int pid = tamlo_engGetPid(ep);
    char buf[256] = "";
    engOutputBuffer(ep, buf, sizeof buf);
    EXPECT_NE(engEvalString(ep, "disp('bye'); exit(3)"), 0);
    // What was printed stays, the reason follows, and later calls do not repeat it.
    const char* said = "bye\nThe MATLAB engine process has ended (quit or exit called, exit status 3).\n";
    EXPECT_STREQ(buf, said);
    EXPECT_NE(engEvalString(ep, "disp(1)"), 0);
    EXPECT_EQ(engGetVariable(ep, "x"), nullptr);
    EXPECT_STREQ(buf, said);
    EXPECT_EQ(engClose(ep), 0);
    EXPECT_TRUE(process_gone(pid));
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
    EXPECT_TRUE(wait_until_stopped(engine_pid, std::chrono::seconds(10)));
}

}  // namespace
