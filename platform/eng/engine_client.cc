// Our libeng: the MATLAB Engine C API, served by an octave-engine child process that talks
// to us over a private socketpair.
//
// Handles: an Engine* is an opaque token (a number never reused in the process), not the
// address of an object. Every call looks the token up in a table of open sessions, so a call
// on a closed handle, a second engClose included, is detected and fails (engClose returns 1)
// instead of touching freed memory.
//
// engOpenSingleUse status codes: 1 no octave-engine program found beside libeng, 2 the
// socket or process could not be created, 3 the engine did not report ready.
//
// Unattended runs: a call that fails because the engine process is gone (killed, crashed,
// quit, or ended here after running past its time limit) writes one line naming the cause
// into the registered output buffer, where the caller looks for printed errors anyway. The
// process is reaped at once, so no zombie waits for engClose.
#include "engine.h"
#include "tamlo_eng_ext.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cmath>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

#include "engine_template.h"
#include "fetch_plans.h"
#include "frame_io.h"
#include "mx_wire.h"

extern char** environ;

namespace {

using tamlo::wire::Kind;
using tamlo::wire::Reader;
using tamlo::wire::Writer;

constexpr int status_no_server = 1;
constexpr int status_spawn_failed = 2;
constexpr int status_not_ready = 3;

// Octave starts in well under a second; a slow (sanitized, valgrind) build gets far longer.
constexpr int ready_timeout_ms = 120000;
// How long engClose waits for the engine to leave on its own before killing it.
constexpr auto close_grace = std::chrono::seconds(3);
// After an interrupt for running past its time limit, how long the engine has to leave
// before it is killed.
constexpr auto interrupt_grace = std::chrono::seconds(1);
// How long a process whose socket has closed may take to finish exiting.
constexpr auto exit_grace = std::chrono::seconds(2);

// The limit engines opened from now on start with; 0 means none.
std::atomic<double> default_call_timeout{0.0};

bool valid_timeout(double seconds) { return std::isfinite(seconds) && seconds >= 0; }

using Clock = std::chrono::steady_clock;

std::string signal_text(int sig) {
    const char* abbrev = ::sigabbrev_np(sig);
    std::string text = "killed by signal " + std::to_string(sig);
    if (abbrev != nullptr) text += std::string(" (SIG") + abbrev + ")";
    return text;
}

// The line that tells the caller why the engine is gone, from its wait status.
std::string ended_line(bool reaped, int status, bool quit_requested) {
    std::string cause;
    if (!reaped)
        cause.clear();
    else if (WIFSIGNALED(status))
        cause = signal_text(WTERMSIG(status));
    else if (WIFEXITED(status))
        cause = (quit_requested ? "quit or exit called, exit status " : "exit status ") +
                std::to_string(WEXITSTATUS(status));
    if (cause.empty()) return "The MATLAB engine process has ended.";
    return "The MATLAB engine process has ended (" + cause + ").";
}

std::string seconds_text(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", seconds);
    return text;
}

// True while the process is stopped (SIGSTOP, SIGTSTP, a tracer): it will not answer.
bool process_stopped(pid_t pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    if (!std::getline(stat, line)) return false;
    const size_t close_paren = line.rfind(')');
    if (close_paren == std::string::npos || close_paren + 2 >= line.size()) return false;
    const char state = line[close_paren + 2];
    return state == 'T' || state == 't';
}

constexpr const char* server_name = "octave-engine";

class Session {
public:
    Session(int fd, pid_t pid) : fd_(fd), pid_(pid) { set_call_timeout(default_call_timeout.load()); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() { end(); }

    pid_t pid() const { return pid_; }

    void set_output_buffer(char* buffer, int length) {
        output_ = buffer;
        output_length_ = buffer != nullptr && length > 0 ? length : 0;
    }

    void set_call_timeout(double seconds) {
        timeout_seconds_ = seconds;
        // A frame cut off in the middle (the engine stopped while sending, or a full socket
        // to a stopped engine) is bounded too: blocking socket calls give up after the limit.
        timeval tv{};
        if (seconds > 0) {
            const double whole = std::floor(seconds);
            tv.tv_sec = static_cast<time_t>(whole);
            tv.tv_usec = static_cast<suseconds_t>((seconds - whole) * 1e6);
            if (tv.tv_sec == 0 && tv.tv_usec == 0) tv.tv_usec = 1;
        }
        if (fd_ >= 0) {
            ::setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &tv, sizeof tv);
            ::setsockopt(fd_, SOL_SOCKET, SO_SNDTIMEO, &tv, sizeof tv);
        }
    }

    int eval(const char* command) {
        start_call();
        forget_fetched();
        if (!alive_) return report_gone();
        // The variables fetched after this command last time come back with its reply.
        const std::vector<std::string>& names = plans_.plan_for(command);
        request_.begin(names.empty() ? Kind::eval : Kind::eval_then_get);
        request_.put_u32(output_length_ > 0 ? static_cast<uint32_t>(output_length_ - 1) : 0);
        request_.put_string(command);
        if (!names.empty()) {
            request_.put_u32(static_cast<uint32_t>(names.size()));
            for (const std::string& name : names) request_.put_string(name);
        }
        if (request_.too_long()) return 1;
        Kind kind{};
        if (!exchange(kind)) return report_gone();
        Reader r = reply_body();
        uint8_t status = 0;
        std::string_view text;
        if (kind != Kind::eval_done || !r.get_u8(status, "status") || !r.get_string(text, "output") ||
            !r.expect_end()) {
            broken();
            return report_gone();
        }
        copy_output(text);
        if (status != 0) {
            // The user's code ended the engine (quit/exit): the session is over.
            gone(/*quit_requested=*/true);
            return report_gone();
        }
        for (const std::string& name : names) {
            if (!receive_reply(kind)) return report_gone();
            Fetched f{name, nullptr};
            if (kind == Kind::value) {
                Reader v = reply_body();
                f.value = tamlo::wire::get_mx_array(v);
                if (f.value == nullptr || !v.expect_end()) {
                    broken();
                    return report_gone();
                }
            } else if (kind != Kind::no_variable && kind != Kind::error) {
                broken();
                return report_gone();
            }
            // An error frame leaves the name out: a get asks again and reports it as always.
            if (kind != Kind::error) fetched_.push_back(std::move(f));
        }
        plans_.open_window(command);
        return 0;
    }

    int put(const char* name, const mxArray* value) {
        start_call();
        forget_fetched();
        if (!alive_) return report_gone();
        request_.begin(Kind::put);
        request_.put_string(name);
        std::string error;
        if (!tamlo::wire::put_mx_array(request_, value, error)) return 1;
        // The engine would refuse a longer frame, and could not read on after it.
        if (request_.finish().size() - tamlo::wire::header_length > tamlo::wire::max_frame_length) return 1;
        if (!is_accepted_name(name)) {
            Kind kind{};
            if (!exchange(kind)) return report_gone();
            if (kind != Kind::ok) return 1;
            remember_accepted_name(name);
            return 0;
        }
        // The engine took this name before and the frame is one it reads: the put cannot fail
        // unless the engine itself does. Its reply is read with the next request's, which saves
        // a round trip per time step; a failure found then breaks the session, so no later call
        // ever works on a workspace without this value.
        if (!send_request() || !settle_put_in_flight()) return report_gone();
        put_in_flight_ = true;
        return 0;
    }

    mxArray* get(const char* name) {
        start_call();
        if (!alive_) return report_gone_quietly();
        plans_.note_get(name);
        // Nothing has run in the engine since the eval that brought this value.
        for (auto f = fetched_.begin(); f != fetched_.end(); ++f) {
            if (f->name != name) continue;
            mxArray* value = f->value.release();
            fetched_.erase(f);
            return value;
        }
        request_.begin(Kind::get);
        request_.put_string(name);
        Kind kind{};
        if (!exchange(kind)) return report_gone_quietly();
        if (kind != Kind::value) return nullptr;
        Reader r = reply_body();
        tamlo::wire::ArrayPtr a = tamlo::wire::get_mx_array(r);
        if (a == nullptr || !r.expect_end()) {
            broken();
            return report_gone_quietly();
        }
        return a.release();
    }

    // Asks the engine to leave, closes the socket and reaps the process.
    void end() {
        forget_fetched();
        if (fd_ >= 0) {
            // A stopped engine would only be waited for in vain.
            if (alive_ && pid_ > 0 && process_stopped(pid_)) kill_now();
            start_call();
            settle_put_in_flight();
            if (alive_) {
                request_.begin(Kind::close);
                if (send_request()) wait_for_reply_briefly();
            }
            ::close(fd_);
            fd_ = -1;
        }
        alive_ = false;
        reap();
    }

private:
    // Every call starts its own time limit.
    void start_call() {
        // A limit beyond a year is as good as none, and stays clear of the clock's range.
        constexpr double longest = 365.0 * 24 * 3600;
        deadline_ = timeout_seconds_ > 0 && timeout_seconds_ < longest
                        ? Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                             std::chrono::duration<double>(timeout_seconds_))
                        : Clock::time_point::max();
    }

    // Sends the request being built; a transport failure marks the engine dead.
    bool send_request() {
        if (tamlo::wire::send_frame(fd_, request_.finish())) return true;
        // A send time-out (a full socket to an engine that does not read) counts against the
        // call's limit.
        if (Clock::now() >= deadline_)
            end_for_time_limit();
        else
            gone(false);
        return false;
    }

    // Waits until a reply can be read or the call's time limit has passed; past it the engine
    // is ended and false returned.
    bool wait_for_reply() {
        if (deadline_ == Clock::time_point::max() || replies_.more_waiting(fd_)) return true;
        pollfd p{fd_, POLLIN, 0};
        for (;;) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now()).count();
            if (left <= 0) break;
            const int r = ::poll(&p, 1, static_cast<int>(std::min<long long>(left, INT_MAX)));
            if (r > 0) return true;
            if (r < 0 && errno != EINTR) return true;  // let the receive report the failure
        }
        end_for_time_limit();
        return false;
    }

    // Receives one reply; false (the engine marked dead or broken) for a transport failure or
    // a reply of an unknown kind.
    bool receive_reply(Kind& kind) {
        if (!wait_for_reply()) return false;
        std::string error;
        if (replies_.receive(fd_, error) != tamlo::wire::ReceiveStatus::ok) {
            // A socket time-out inside a frame counts against the call's limit.
            if (Clock::now() >= deadline_)
                end_for_time_limit();
            else
                gone(false);
            return false;
        }
        const std::string_view payload = replies_.payload();
        Reader r(payload.data(), payload.size());
        if (!tamlo::wire::read_kind(r, kind)) {
            broken();
            return false;
        }
        return true;
    }

    // Reads the reply of a put sent without waiting. Anything but ok breaks the session.
    bool settle_put_in_flight() {
        if (!put_in_flight_) return true;
        put_in_flight_ = false;
        if (!alive_) return false;
        Kind kind{};
        if (!receive_reply(kind)) return false;
        if (kind != Kind::ok) {
            broken();
            return false;
        }
        return true;
    }

    // Sends the request being built and receives its reply, after the reply of a put still in
    // flight.
    bool exchange(Kind& kind) { return send_request() && settle_put_in_flight() && receive_reply(kind); }

    // The last reply after its kind byte.
    Reader reply_body() const {
        const std::string_view payload = replies_.payload();
        return Reader(payload.data() + 1, payload.size() - 1);
    }

    bool is_accepted_name(const char* name) const {
        for (const std::string& n : accepted_names_)
            if (n == name) return true;
        return false;
    }
    void remember_accepted_name(const char* name) {
        // A host puts the same few names step after step; others simply wait for their reply.
        if (accepted_names_.size() < max_accepted_names) accepted_names_.emplace_back(name);
    }

    // Values an eval brought along are only good until the next call that can change the
    // workspace.
    void forget_fetched() {
        plans_.close_window();
        fetched_.clear();
    }

    // The engine answered nonsense: it cannot be trusted with another request.
    void broken() {
        if (!alive_) return;
        kill_now();
        reason_ = "The MATLAB engine process was ended after it sent a reply that could not be read.";
    }

    // The call ran past its limit: interrupt, a short grace, then kill.
    void end_for_time_limit() {
        if (!alive_) return;
        alive_ = false;
        if (pid_ > 0) {
            ::kill(pid_, SIGINT);
            // Closing our side lets the interrupted engine leave on its own.
            ::shutdown(fd_, SHUT_RDWR);
            int status = 0;
            if (wait_for_exit(interrupt_grace, status) == Exit::running) kill_now();
        }
        reap();
        reason_ = "The MATLAB engine process was ended after the call ran past its time limit of " +
                  seconds_text(timeout_seconds_) + " s.";
    }

    void kill_now() {
        alive_ = false;
        if (pid_ <= 0) return;
        ::kill(pid_, SIGKILL);
        int status = 0;
        while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
        }
        pid_ = -1;
    }

    // The socket failed or the engine said it is quitting: learn how the process ended.
    void gone(bool quit_requested) {
        if (!alive_) return;
        alive_ = false;
        put_in_flight_ = false;
        int status = 0;
        const Exit exit = pid_ > 0 ? wait_for_exit(exit_grace, status) : Exit::not_ours;
        if (exit == Exit::running) {
            // Its socket is gone but the process lingers: it is of no further use.
            kill_now();
            reason_ = "The MATLAB engine process closed its connection and was ended.";
            return;
        }
        reason_ = ended_line(exit == Exit::reaped, status, quit_requested);
    }

    enum class Exit { reaped, running, not_ours };

    // Waits for the process to end, at most `limit`. When reaped here, status holds its wait
    // status.
    Exit wait_for_exit(Clock::duration limit, int& status) {
        const auto until = Clock::now() + limit;
        for (;;) {
            const pid_t r = ::waitpid(pid_, &status, WNOHANG);
            if (r == pid_) {
                pid_ = -1;
                return Exit::reaped;
            }
            if (r < 0 && errno != EINTR) {
                pid_ = -1;  // the host reaps its children itself
                return Exit::not_ours;
            }
            if (Clock::now() >= until) return Exit::running;
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    }

    // A failed call on a gone engine: the reason goes into the output buffer.
    int report_gone() {
        if (!alive_) append_reason();
        return 1;
    }
    // engGetVariable: only into an empty buffer, as eval has usually reported it already.
    mxArray* report_gone_quietly() {
        if (!alive_ && output_length_ > 0 && output_[0] == '\0') append_reason();
        return nullptr;
    }

    // Appends the reason as one line after what the buffer holds, unless it already ends with
    // it; earlier text is cut, not the reason, when both do not fit.
    void append_reason() {
        if (output_length_ <= 0) return;
        if (reason_.empty()) reason_ = ended_line(false, 0, false);
        const std::string line = reason_ + "\n";
        const size_t room = static_cast<size_t>(output_length_ - 1);
        size_t held = ::strnlen(output_, room);
        if (held >= line.size() && std::memcmp(output_ + held - line.size(), line.data(), line.size()) == 0) return;
        if (held + line.size() > room) held = line.size() > room ? 0 : room - line.size();
        const size_t n = std::min(line.size(), room - held);
        std::memcpy(output_ + held, line.data(), n);
        output_[held + n] = '\0';
    }

    void copy_output(std::string_view text) {
        if (output_length_ <= 0) return;
        size_t n = std::min(text.size(), static_cast<size_t>(output_length_ - 1));
        std::memcpy(output_, text.data(), n);
        output_[n] = '\0';
    }

    void wait_for_reply_briefly() {
        pollfd p{fd_, POLLIN, 0};
        auto grace = std::chrono::duration_cast<std::chrono::milliseconds>(close_grace).count();
        if (timeout_seconds_ > 0) grace = std::min<long long>(grace, static_cast<long long>(timeout_seconds_ * 1000) + 1);
        while (::poll(&p, 1, static_cast<int>(grace)) < 0 && errno == EINTR) {
        }
    }

    void reap() {
        if (pid_ <= 0) return;
        const auto deadline = std::chrono::steady_clock::now() + close_grace;
        for (;;) {
            int status = 0;
            pid_t r = ::waitpid(pid_, &status, WNOHANG);
            if (r == pid_ || (r < 0 && errno != EINTR)) break;  // reaped, or not ours to reap
            if (r == 0 && std::chrono::steady_clock::now() >= deadline) {
                ::kill(pid_, SIGKILL);
                while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
                }
                break;
            }
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        pid_ = -1;
    }

    static constexpr size_t max_accepted_names = 64;

    int fd_;
    pid_t pid_;
    bool alive_ = true;
    double timeout_seconds_ = 0;
    Clock::time_point deadline_ = Clock::time_point::max();
    std::string reason_;  // why the engine is gone, once it is
    bool put_in_flight_ = false;
    char* output_ = nullptr;
    int output_length_ = 0;
    Writer request_;  // kept, so that its buffer is reused from request to request
    tamlo::wire::FrameReceiver replies_;
    std::vector<std::string> accepted_names_;  // names the engine has taken in a put
    struct Fetched {
        std::string name;
        tamlo::wire::ArrayPtr value;  // null: the engine has no such variable
    };
    std::vector<Fetched> fetched_;  // what the last eval brought along, until a get takes it
    tamlo::eng::FetchPlans plans_;
};

// Open sessions by token. Tokens are never reused, so a stale handle never finds a session.
class SessionTable {
public:
    Engine* add(std::shared_ptr<Session> s) {
        std::lock_guard<std::mutex> lock(mutex_);
        next_ += 16;
        sessions_.emplace(next_, std::move(s));
        return reinterpret_cast<Engine*>(next_);
    }
    std::shared_ptr<Session> find(Engine* ep) {
        std::lock_guard<std::mutex> lock(mutex_);
        auto it = sessions_.find(reinterpret_cast<uintptr_t>(ep));
        return it != sessions_.end() ? it->second : nullptr;
    }
    std::shared_ptr<Session> remove(Engine* ep) {
        std::lock_guard<std::mutex> lock(mutex_);
        auto it = sessions_.find(reinterpret_cast<uintptr_t>(ep));
        if (it == sessions_.end()) return nullptr;
        std::shared_ptr<Session> s = std::move(it->second);
        sessions_.erase(it);
        return s;
    }

private:
    std::mutex mutex_;
    uintptr_t next_ = 0x1000;
    std::unordered_map<uintptr_t, std::shared_ptr<Session>> sessions_;
};

SessionTable& sessions() {
    // Never destroyed: engines may still be closed from other libraries' static destructors.
    static SessionTable* table = new SessionTable;
    return *table;
}

std::string directory_of_this_library() {
    Dl_info info{};
    if (::dladdr(reinterpret_cast<void*>(&engOpenSingleUse), &info) == 0 || info.dli_fname == nullptr) return {};
    char resolved[PATH_MAX];
    if (::realpath(info.dli_fname, resolved) == nullptr) return {};
    std::string path(resolved);
    size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string(".") : path.substr(0, slash);
}

// Build tree: lib/libeng.so beside bin/octave-engine. Installed tree: lib/ beside
// libexec/tamlo_matlab_dispatch/. Or both in one folder.
std::vector<std::string> server_candidates() {
    const std::string dir = directory_of_this_library();
    if (dir.empty()) return {};
    return {
        dir + "/" + server_name,
        dir + "/../bin/" + server_name,
        dir + "/../libexec/tamlo_matlab_dispatch/" + server_name,
    };
}

std::string find_server() {
    for (const std::string& c : server_candidates())
        if (::access(c.c_str(), X_OK) == 0) return c;
    return {};
}

// Waits for the engine's ready frame.
bool wait_until_ready(int fd) {
    pollfd p{fd, POLLIN, 0};
    int r;
    while ((r = ::poll(&p, 1, ready_timeout_ms)) < 0 && errno == EINTR) {
    }
    if (r <= 0) return false;
    tamlo::wire::FrameReceiver receiver;
    std::string error;
    if (receiver.receive(fd, error) != tamlo::wire::ReceiveStatus::ok) return false;
    const std::string_view payload = receiver.payload();
    Reader reader(payload.data(), payload.size());
    Kind kind{};
    return tamlo::wire::read_kind(reader, kind) && kind == Kind::ok && reader.expect_end();
}

class SpawnSetup {
public:
    SpawnSetup() {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawnattr_init(&attr_);
    }
    ~SpawnSetup() {
        ::posix_spawn_file_actions_destroy(&actions_);
        ::posix_spawnattr_destroy(&attr_);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;

    bool prepare(int child_fd) {
        // The engine's own streams must never carry the protocol or block: stdin and stdout
        // are /dev/null, stderr stays the host's for fatal startup messages.
        if (::posix_spawn_file_actions_addopen(&actions_, 0, "/dev/null", O_RDONLY, 0) != 0) return false;
        if (::posix_spawn_file_actions_addopen(&actions_, 1, "/dev/null", O_WRONLY, 0) != 0) return false;
        // dup2 onto 3 also clears close-on-exec when child_fd already is 3.
        if (::posix_spawn_file_actions_adddup2(&actions_, child_fd, 3) != 0) return false;
        if (::posix_spawn_file_actions_addclosefrom_np(&actions_, 4) != 0) return false;
        // The child starts with default signal dispositions and an empty mask, whatever the
        // host has set up for itself.
        sigset_t all, none;
        sigfillset(&all);
        sigemptyset(&none);
        if (::posix_spawnattr_setsigdefault(&attr_, &all) != 0) return false;
        if (::posix_spawnattr_setsigmask(&attr_, &none) != 0) return false;
        return ::posix_spawnattr_setflags(&attr_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK) == 0;
    }

    pid_t spawn(const std::string& path) {
        std::string parent = std::to_string(::getpid());
        char* argv[] = {const_cast<char*>(path.c_str()), const_cast<char*>("--fd"), const_cast<char*>("3"),
                        const_cast<char*>("--parent"), parent.data(), nullptr};
        pid_t pid = -1;
        if (::posix_spawn(&pid, path.c_str(), &actions_, &attr_, argv, environ) != 0) return -1;
        return pid;
    }

private:
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attr_;
};

Engine* open_engine(int* retstatus) {
    auto fail = [retstatus](int code) -> Engine* {
        if (retstatus != nullptr) *retstatus = code;
        return nullptr;
    };
    const std::string server = find_server();
    if (server.empty()) return fail(status_no_server);
    int sv[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sv) != 0) return fail(status_spawn_failed);
    SpawnSetup setup;
    // A fork of this process's warm template engine when it can; else an engine of its own.
    pid_t pid = -1;
    if (!tamlo::eng::open_warm_engine(server, sv[1], pid)) pid = setup.prepare(sv[1]) ? setup.spawn(server) : -1;
    ::close(sv[1]);
    if (pid < 0) {
        ::close(sv[0]);
        return fail(status_spawn_failed);
    }
    auto session = std::make_shared<Session>(sv[0], pid);
    if (!wait_until_ready(sv[0])) {
        session.reset();  // closes the socket, kills and reaps the child
        return fail(status_not_ready);
    }
    if (retstatus != nullptr) *retstatus = 0;
    return sessions().add(std::move(session));
}

}  // namespace

extern "C" {

Engine* engOpenSingleUse(const char* /*startcmd: the engine program is always ours*/, void* /*reserved*/,
                         int* retstatus) {
    try {
        return open_engine(retstatus);
    } catch (const std::bad_alloc&) {
        if (retstatus != nullptr) *retstatus = status_spawn_failed;
        return nullptr;
    }
}

int engClose(Engine* ep) {
    std::shared_ptr<Session> s = sessions().remove(ep);
    if (s == nullptr) return 1;
    s->end();
    return 0;
}

int engEvalString(Engine* ep, const char* string) {
    std::shared_ptr<Session> s = sessions().find(ep);
    if (s == nullptr || string == nullptr) return 1;
    try {
        return s->eval(string);
    } catch (const std::bad_alloc&) {
        return 1;
    }
}

int engPutVariable(Engine* ep, const char* var_name, const mxArray* ap) {
    std::shared_ptr<Session> s = sessions().find(ep);
    if (s == nullptr || var_name == nullptr || ap == nullptr) return 1;
    try {
        return s->put(var_name, ap);
    } catch (const std::bad_alloc&) {
        return 1;
    }
}

mxArray* engGetVariable(Engine* ep, const char* name) {
    std::shared_ptr<Session> s = sessions().find(ep);
    if (s == nullptr || name == nullptr) return nullptr;
    try {
        return s->get(name);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

int engOutputBuffer(Engine* ep, char* buffer, int buflen) {
    std::shared_ptr<Session> s = sessions().find(ep);
    if (s == nullptr) return 1;
    s->set_output_buffer(buffer, buflen);
    return 0;
}

// There is no window to show or hide.
int engSetVisible(Engine* ep, bool /*newVal*/) { return sessions().find(ep) != nullptr ? 0 : 1; }

int tamlo_engGetPid(Engine* ep) {
    std::shared_ptr<Session> s = sessions().find(ep);
    return s != nullptr ? static_cast<int>(s->pid()) : -1;
}

const char* tamlo_engServerPath(void) {
    thread_local std::string path;
    path = find_server();
    return path.empty() ? nullptr : path.c_str();
}

int tamlo_engSetCallTimeout(Engine* ep, double seconds) {
    std::shared_ptr<Session> s = sessions().find(ep);
    if (s == nullptr || !valid_timeout(seconds)) return 1;
    s->set_call_timeout(seconds);
    return 0;
}

int tamlo_engSetDefaultCallTimeout(double seconds) {
    if (!valid_timeout(seconds)) return 1;
    default_call_timeout.store(seconds);
    return 0;
}

const char* tamlo_engServerCandidates(void) {
    thread_local std::string text;
    text.clear();
    for (const std::string& c : server_candidates()) text += c + "\n";
    return text.c_str();
}

}  // extern "C"
