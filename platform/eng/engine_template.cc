// The host side of warm engines: starts the template engine, asks it for forks over a socket
// of its own, passing each new engine's socket with SCM_RIGHTS.
#include "engine_template.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

#include "frame_io.h"
#include "wire_codec.h"

extern char** environ;

namespace tamlo::eng {

namespace {

// Octave starts in well under a second; a slow (sanitized, valgrind) build gets far longer.
constexpr int template_ready_timeout_ms = 120000;
// A fork of the started interpreter takes milliseconds; past this the template is not trusted.
constexpr int fork_reply_timeout_ms = 10000;

bool warm_engines_wanted() {
    // Off unless asked for: a forked engine is the template's child, not the host's, which a
    // host that waits for its engine's exit status would notice.
    const char* setting = std::getenv("TAMLO_ENG_WARM");
    return setting != nullptr && std::strcmp(setting, "1") == 0;
}

bool wait_readable(int fd, int timeout_ms) {
    pollfd p{fd, POLLIN, 0};
    int r;
    while ((r = ::poll(&p, 1, timeout_ms)) < 0 && errno == EINTR) {
    }
    return r > 0;
}

class Template {
public:
    bool open(const std::string& server, int engine_fd, pid_t& pid) {
        std::lock_guard<std::mutex> lock(mutex_);
        // A host that forked after the template started must not share its socket with its parent.
        if (fd_ >= 0 && owner_ != ::getpid()) forget();
        if (fd_ < 0 && (failed_ || !start(server))) return false;
        if (ask_for_fork(engine_fd, pid)) return true;
        stop();
        // One more template, in case this one was killed from outside; then cold engines only.
        if (!start(server) || !ask_for_fork(engine_fd, pid)) {
            stop();
            failed_ = true;
            return false;
        }
        return true;
    }

private:
    bool start(const std::string& server) {
        int sv[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sv) != 0) return false;
        posix_spawn_file_actions_t actions;
        posix_spawnattr_t attr;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawnattr_init(&attr);
        // As for a spawned engine: the protocol on fd 3, no terminal, default signals.
        ::posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_adddup2(&actions, sv[1], 3);
        ::posix_spawn_file_actions_addclosefrom_np(&actions, 4);
        sigset_t all, none;
        sigfillset(&all);
        sigemptyset(&none);
        ::posix_spawnattr_setsigdefault(&attr, &all);
        ::posix_spawnattr_setsigmask(&attr, &none);
        ::posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
        std::string parent = std::to_string(::getpid());
        // The template resolves every symbol of Octave's libraries as it starts, so that no fork
        // binds one lazily (a search of Octave's symbol tables and a copied page each time). It
        // removes the setting again before it forks, unless it was the caller's own.
        std::vector<char*> env;
        bool bind_now_set = false;
        for (char** e = environ; *e != nullptr; ++e) {
            bind_now_set = bind_now_set || std::strncmp(*e, "LD_BIND_NOW=", 12) == 0;
            env.push_back(*e);
        }
        static char bind_now[] = "LD_BIND_NOW=1";
        if (!bind_now_set) env.push_back(bind_now);
        env.push_back(nullptr);
        char* argv[] = {const_cast<char*>(server.c_str()), const_cast<char*>("--fd"), const_cast<char*>("3"),
                        const_cast<char*>("--parent"), parent.data(), const_cast<char*>("--template"),
                        const_cast<char*>(bind_now_set ? "1" : "bind-now"), nullptr};
        pid_t pid = -1;
        const int spawned = ::posix_spawn(&pid, server.c_str(), &actions, &attr, argv, env.data());
        ::posix_spawn_file_actions_destroy(&actions);
        ::posix_spawnattr_destroy(&attr);
        ::close(sv[1]);
        if (spawned != 0) {
            ::close(sv[0]);
            return false;
        }
        fd_ = sv[0];
        pid_ = pid;
        owner_ = ::getpid();
        if (!ready()) {
            stop();
            return false;
        }
        return true;
    }

    bool ready() {
        if (!wait_readable(fd_, template_ready_timeout_ms)) return false;
        tamlo::wire::FrameReceiver receiver;
        std::string error;
        if (receiver.receive(fd_, error) != tamlo::wire::ReceiveStatus::ok) return false;
        const std::string_view payload = receiver.payload();
        tamlo::wire::Reader reader(payload.data(), payload.size());
        tamlo::wire::Kind kind{};
        return tamlo::wire::read_kind(reader, kind) && kind == tamlo::wire::Kind::ok && reader.expect_end();
    }

    // One byte with the engine's socket attached; the template answers with the fork's pid.
    bool ask_for_fork(int engine_fd, pid_t& pid) {
        if (!tamlo::wire::send_socket(fd_, engine_fd)) return false;
        std::int32_t reply = -1;
        std::size_t got = 0;
        while (got < sizeof reply) {
            if (!wait_readable(fd_, fork_reply_timeout_ms)) return false;
            const ssize_t n = ::read(fd_, reinterpret_cast<char*>(&reply) + got, sizeof reply - got);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) return false;
            got += static_cast<std::size_t>(n);
        }
        if (reply <= 0) return false;
        pid = static_cast<pid_t>(reply);
        return true;
    }

    void stop() {
        if (fd_ < 0) return;
        ::close(fd_);  // the template leaves when its socket ends
        ::kill(pid_, SIGKILL);
        int status = 0;
        while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
        }
        fd_ = -1;
        pid_ = -1;
    }

    void forget() {
        fd_ = -1;
        pid_ = -1;
        failed_ = false;
    }

    std::mutex mutex_;
    int fd_ = -1;
    pid_t pid_ = -1;
    pid_t owner_ = -1;
    bool failed_ = false;
};

}  // namespace

bool open_warm_engine(const std::string& server, int engine_fd, pid_t& pid) {
    if (!warm_engines_wanted()) return false;
    // Never destroyed: engines may be opened from other libraries' static destructors.
    static Template* warm = new Template;
    return warm->open(server, engine_fd, pid);
}

}  // namespace tamlo::eng
