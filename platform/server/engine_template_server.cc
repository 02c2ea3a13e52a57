// Forks fresh engines from an octave-engine whose interpreter has started and run nothing.
#include "engine_template_server.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

#include "frame_io.h"
#include "wire_codec.h"

namespace tamlo::server {

namespace {

bool send_pid(int template_fd, std::int32_t pid) {
    std::size_t sent = 0;
    while (sent < sizeof pid) {
        const ssize_t n = ::write(template_fd, reinterpret_cast<const char*>(&pid) + sent, sizeof pid - sent);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        sent += static_cast<std::size_t>(n);
    }
    return true;
}

}  // namespace

bool template_requested(int argc, char** argv) {
    for (int k = 1; k + 1 < argc; ++k) {
        if (std::strcmp(argv[k], "--template") == 0) return std::strcmp(argv[k + 1], "0") != 0;
    }
    return false;
}

namespace {

// In a fresh fork: the engine's own life, from its socket on.
int become_engine(int engine_fd) {
    ::fcntl(engine_fd, F_SETFD, 0);
    if (!tamlo::wire::send_frame(engine_fd, tamlo::wire::Writer(tamlo::wire::Kind::ok).finish())) ::_exit(0);
    return engine_fd;
}

// In a fork: detaches from the template's requests, and dies with the template.
void start_fork(int template_fd, pid_t template_pid) {
    ::close(template_fd);
    // The user's code may wait for its own children (system, popen).
    ::signal(SIGCHLD, SIG_DFL);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != template_pid) ::_exit(1);
}

// A fork made before its request; it waits on `channel` for its engine socket.
struct Spare {
    pid_t pid = -1;
    int channel = -1;
};

}  // namespace

int serve_engine_forks(int template_fd, void (*warm_up)()) {
    // Forks are reaped by the system: the host that uses them is not their parent.
    ::signal(SIGCHLD, SIG_IGN);
    const pid_t template_pid = ::getpid();
    Spare spare;
    // Forks the next engine. In the template it returns -1; in the fork, which leaves this loop
    // to serve, its engine socket once a request has passed one.
    auto make_spare = [&]() -> int {
        int pair[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0) return -1;
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::close(pair[0]);
            start_fork(template_fd, template_pid);
            warm_up();
            const int engine_fd = tamlo::wire::receive_socket(pair[1]);
            // The template is gone, or handed the request to a fork of its own.
            if (engine_fd < 0) ::_exit(0);
            ::close(pair[1]);
            return become_engine(engine_fd);
        }
        ::close(pair[1]);
        if (pid < 0) {
            ::close(pair[0]);
            return -1;
        }
        spare = {pid, pair[0]};
        return -1;
    };
    // Hands engine_fd to the spare; false when the spare is not there to take it.
    auto pass_to_spare = [&](int engine_fd) {
        return spare.pid > 0 && tamlo::wire::send_socket(spare.channel, engine_fd);
    };
    if (const int fd = make_spare(); fd >= 0) return fd;
    for (;;) {
        const int engine_fd = tamlo::wire::receive_socket(template_fd);
        if (engine_fd == -1) ::_exit(0);
        if (engine_fd == -2) {
            if (!send_pid(template_fd, -1)) ::_exit(0);
            continue;
        }
        pid_t pid = -1;
        if (pass_to_spare(engine_fd)) {
            pid = spare.pid;
        } else {
            if (spare.pid > 0) ::kill(spare.pid, SIGKILL);
            pid = ::fork();
            if (pid == 0) {
                start_fork(template_fd, template_pid);
                if (spare.channel >= 0) ::close(spare.channel);
                return become_engine(engine_fd);
            }
        }
        if (spare.channel >= 0) ::close(spare.channel);
        spare = {};
        ::close(engine_fd);
        if (!send_pid(template_fd, pid > 0 ? static_cast<std::int32_t>(pid) : -1)) ::_exit(0);
        if (const int fd = make_spare(); fd >= 0) return fd;
    }
}

}  // namespace tamlo::server
