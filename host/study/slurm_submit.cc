// Writes the job array script and hands it to sbatch.
#include "slurm_submit.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "input_error.h"

extern char** environ;

namespace tamlo_host {

namespace fs = std::filesystem;

namespace {

// Quotes a word for bash.
std::string shell_word(const std::string& word) {
    std::string q = "'";
    for (char c : word) {
        if (c == '\'') {
            q += "'\\''";
        } else {
            q += c;
        }
    }
    return q + "'";
}

}  // namespace

std::string slurm_job_script(const StudyOptions& options, const std::string& program, const std::string& out_dir,
                             std::size_t tasks) {
    std::string s = "#!/bin/bash\n";
    s += "#SBATCH --job-name=dispatch-study\n";
    s += "#SBATCH --array=1-" + std::to_string(tasks) + "\n";
    s += "#SBATCH --output=" + out_dir + "/slurm/task-%a.log\n";
    s += "# Each task runs one slice of the cases; the folder is shared by every node, and the\n";
    s += "# task that finds every case done writes the summary.\n";
    s += "exec " + shell_word(program) + " study " + shell_word(fs::absolute(options.study_file).string()) +
         " --out " + shell_word(out_dir) +
         // The array may be given on sbatch's command line instead: the slice follows the array.
         " --slice \"$((SLURM_ARRAY_TASK_ID - SLURM_ARRAY_TASK_MIN + 1))/${SLURM_ARRAY_TASK_COUNT}\"";
    // As many workers as the task was given cores.
    s += " --jobs " + (options.jobs > 0 ? std::to_string(options.jobs)
                                        : std::string("\"${SLURM_CPUS_PER_TASK:-${SLURM_CPUS_ON_NODE:-1}}\""));
    if (!options.extension.empty()) s += " --extension " + shell_word(fs::absolute(options.extension).string());
    if (options.call_timeout > 0.0) {
        char text[64];
        std::snprintf(text, sizeof text, "%.17g", options.call_timeout);
        s += " --call-timeout " + std::string(text);
    }
    if (options.any_core) s += " --any-core";
    s += " --quiet\n";
    return s;
}

std::string submit_slurm_study(const StudyOptions& options, const std::string& program, const std::string& out_dir,
                               std::size_t case_count) {
    std::size_t tasks = options.slurm_tasks;
    if (tasks == 0) tasks = std::clamp<std::size_t>((case_count + 24) / 25, 1, 100);
    tasks = std::min(tasks, std::max<std::size_t>(case_count, 1));
    const fs::path slurm_dir = fs::path(out_dir) / "slurm";
    std::error_code error;
    fs::create_directories(slurm_dir, error);
    if (error) throw InputError(slurm_dir.string() + ": cannot create the folder: " + error.message());
    const std::string script = (slurm_dir / "study.sbatch").string();
    std::ofstream(script) << slurm_job_script(options, program, out_dir, tasks);

    std::vector<std::string> words = {"sbatch", "--parsable"};
    words.insert(words.end(), options.sbatch_args.begin(), options.sbatch_args.end());
    words.push_back(script);
    std::vector<char*> argv;
    for (std::string& w : words) argv.push_back(w.data());
    argv.push_back(nullptr);

    int out[2];
    if (::pipe2(out, O_CLOEXEC) != 0) throw InputError(std::string("cannot make a pipe: ") + std::strerror(errno));
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    pid_t child = 0;
    const int spawned = posix_spawnp(&child, "sbatch", &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(out[1]);
    if (spawned != 0) {
        ::close(out[0]);
        throw InputError(spawned == ENOENT ? std::string("--slurm: sbatch was not found (install Slurm's client, "
                                                         "Debian package slurm-client)")
                                           : std::string("--slurm: cannot start sbatch: ") + std::strerror(spawned));
    }
    std::string printed;
    char buffer[256];
    ssize_t n;
    while ((n = ::read(out[0], buffer, sizeof buffer)) != 0) {
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) break;
        printed.append(buffer, static_cast<std::size_t>(n));
    }
    ::close(out[0]);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw InputError("--slurm: sbatch refused the job " + script);
    while (!printed.empty() && (printed.back() == '\n' || printed.back() == '\r')) printed.pop_back();
    // --parsable prints "jobid" or "jobid;cluster".
    return printed.substr(0, printed.find(';'));
}

}  // namespace tamlo_host
