// Starts workers with fork and exec, feeds them through pipes, and replaces the ones that die.
#include "worker_pool.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <deque>

#include "core_placement.h"
#include "input_error.h"

namespace tamlo_host {

namespace {

struct Worker {
    pid_t pid = -1;
    int to_worker = -1;    // its standard input
    int from_worker = -1;  // its standard output
    std::string received;
    std::deque<std::size_t> folders;  // handed over and not yet done; it runs the first
    int core = -1;                    // the one core it and its engines run on, or -1
};

// A worker holds its next folder while it runs one, so that it goes on without waiting for the
// study to take its reply.
constexpr std::size_t folders_ahead = 2;

// With one worker for each core the study may use, each worker and the engines it starts keep to
// the core given here. With fewer, a worker keeps by itself to the core the system started it on.
std::vector<int> cores_to_pin(std::size_t jobs, bool pin) {
    if (!pin) return {};
    std::vector<int> cores = allowed_cores();
    if (cores.size() != jobs) return {};
    return cores;
}

Worker start_worker(const WorkerCommand& command, int core) {
    int in[2], out[2];
    if (::pipe2(in, O_CLOEXEC) != 0) throw InputError(std::string("cannot make a pipe: ") + std::strerror(errno));
    if (::pipe2(out, O_CLOEXEC) != 0) {
        ::close(in[0]);
        ::close(in[1]);
        throw InputError(std::string("cannot make a pipe: ") + std::strerror(errno));
    }
    std::vector<char*> argv;
    for (const std::string& a : command.argv) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid == 0) {
        // A worker never outlives the study that feeds it.
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent) ::_exit(127);
        ::signal(SIGPIPE, SIG_DFL);
        if (core >= 0) keep_to_core(core);
        ::dup2(in[0], STDIN_FILENO);
        ::dup2(out[1], STDOUT_FILENO);
        ::execv(command.program.c_str(), argv.data());
        ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    if (pid < 0) {
        ::close(in[1]);
        ::close(out[0]);
        throw InputError(std::string("cannot start a worker: ") + std::strerror(errno));
    }
    Worker w;
    w.pid = pid;
    w.core = core;
    w.to_worker = in[1];
    w.from_worker = out[0];
    return w;
}

std::string reap(Worker& w) {
    ::close(w.to_worker);
    ::close(w.from_worker);
    int status = 0;
    while (::waitpid(w.pid, &status, 0) < 0 && errno == EINTR) {
    }
    w.pid = -1;
    if (WIFSIGNALED(status)) return "worker died: signal " + std::to_string(WTERMSIG(status));
    return "worker died: exit status " + std::to_string(WEXITSTATUS(status));
}

bool hand_over(Worker& w, const std::string& folder) {
    const std::string line = folder + "\n";
    std::size_t sent = 0;
    while (sent < line.size()) {
        const ssize_t n = ::write(w.to_worker, line.data() + sent, line.size() - sent);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        sent += static_cast<std::size_t>(n);
    }
    return true;
}

}  // namespace

void run_on_workers(const WorkerCommand& command, std::size_t jobs, bool pin, const std::vector<std::string>& folders,
                    const FolderDone& done) {
    // A worker that dies mid-write must not take the study with it.
    struct sigaction ignore {}, previous{};
    ignore.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &ignore, &previous);

    const std::vector<int> cores = cores_to_pin(jobs, pin);
    auto free_core = [&](const std::vector<Worker>& running) {
        for (const int c : cores) {
            if (std::none_of(running.begin(), running.end(), [c](const Worker& w) { return w.core == c; })) return c;
        }
        return -1;
    };
    std::vector<Worker> workers;
    std::size_t next = 0;
    std::deque<std::size_t> handed_back;  // held by a worker that died before it began them
    std::size_t finished = 0;
    auto waiting = [&] { return handed_back.size() + (folders.size() - next); };
    auto give_work = [&](Worker& w) {
        // Near the end each worker holds one folder only, so that none waits behind a long case.
        while (waiting() > 0 && (w.folders.empty() || (w.folders.size() < folders_ahead && waiting() >= jobs))) {
            std::size_t index = 0;
            if (!handed_back.empty()) {
                index = handed_back.front();
                handed_back.pop_front();
            } else {
                index = next++;
            }
            w.folders.push_back(index);
            if (!hand_over(w, folders[index])) return;  // the read side reports the death
        }
    };
    while (finished < folders.size()) {
        while (workers.size() < jobs && waiting() > 0) {
            workers.push_back(start_worker(command, free_core(workers)));
            give_work(workers.back());
        }
        std::vector<pollfd> fds;
        for (const Worker& w : workers) fds.push_back({w.from_worker, POLLIN, 0});
        if (::poll(fds.data(), fds.size(), -1) < 0) {
            if (errno == EINTR) continue;
            throw InputError(std::string("poll: ") + std::strerror(errno));
        }
        for (std::size_t k = workers.size(); k-- > 0;) {
            if (fds[k].revents == 0) continue;
            Worker& w = workers[k];
            char buffer[256];
            const ssize_t n = ::read(w.from_worker, buffer, sizeof buffer);
            if (n < 0 && errno == EINTR) continue;
            if (n > 0) {
                w.received.append(buffer, static_cast<std::size_t>(n));
                std::string::size_type eol;
                while ((eol = w.received.find('\n')) != std::string::npos) {
                    w.received.erase(0, eol + 1);
                    if (w.folders.empty()) continue;
                    const std::size_t index = w.folders.front();
                    w.folders.pop_front();
                    ++finished;
                    done(index, {});
                    give_work(w);
                }
                if (w.folders.empty() && waiting() == 0) {
                    reap(w);  // closing its input lets it leave
                    workers.erase(workers.begin() + static_cast<std::ptrdiff_t>(k));
                }
                continue;
            }
            const std::string death = reap(w);
            if (!w.folders.empty()) {
                ++finished;
                done(w.folders.front(), death);
                handed_back.insert(handed_back.begin(), w.folders.begin() + 1, w.folders.end());
            }
            workers.erase(workers.begin() + static_cast<std::ptrdiff_t>(k));
        }
    }
    for (Worker& w : workers) reap(w);
    ::sigaction(SIGPIPE, &previous, nullptr);
}

}  // namespace tamlo_host
