// Runs Debian's octave-cli as a child process and times it, the yardstick our engine's start
// and calls are held against.
#ifndef TAMLO_BENCH_OCTAVE_CLI_H
#define TAMLO_BENCH_OCTAVE_CLI_H

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern char** environ;

namespace tamlo_bench {

struct ProcessRun {
    std::string error;  // empty when the process started and exited with status 0
    double seconds = 0.0;
    std::string output;  // stdout and stderr together
};

// octave-cli (from PATH) with arguments, from spawn to exit. The output goes to a file rather
// than a pipe so that reading it cannot hold the child up or add to its time.
inline ProcessRun run_octave_cli(const std::vector<std::string>& arguments, const std::string& output_file) {
    ProcessRun run;
    std::vector<std::string> words{"octave-cli"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, output_file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);

    const auto start = std::chrono::steady_clock::now();
    pid_t pid = 0;
    const int spawned = posix_spawnp(&pid, "octave-cli", &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        run.error = "cannot start octave-cli: " + std::string(std::strerror(spawned));
        return run;
    }
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    std::ifstream in(output_file);
    run.output.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        run.error = "octave-cli failed (status " + std::to_string(status) + "): " + run.output;
    }
    return run;
}

}  // namespace tamlo_bench

#endif
