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

int serve_engine_forks(int template_fd) {
    // Forks are reaped by the system: the host that uses them is not their parent.
    ::signal(SIGCHLD, SIG_IGN);
    const pid_t template_pid = ::getpid();
    for (;;) {
        const int engine_fd = tamlo::wire::receive_socket(template_fd);
        if (engine_fd == -1) ::_exit(0);
        if (engine_fd == -2) {
            if (!send_pid(template_fd, -1)) ::_exit(0);
            continue;
        }
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::close(template_fd);
            // The user's code may wait for its own children (system, popen).
            ::signal(SIGCHLD, SIG_DFL);
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (::getppid() != template_pid) ::_exit(1);
            ::fcntl(engine_fd, F_SETFD, 0);
            if (!tamlo::wire::send_frame(engine_fd, tamlo::wire::Writer(tamlo::wire::Kind::ok).finish())) ::_exit(0);
            return engine_fd;
        }
        ::close(engine_fd);
        if (!send_pid(template_fd, pid > 0 ? static_cast<std::int32_t>(pid) : -1)) ::_exit(0);
    }
}

}  // namespace tamlo::server
