// dispatch-bench study: runs every case of a study file on worker processes (or submits them
// to Slurm), then writes summary.csv, the trade-off PNG and a table of the best and worst cases.
//
//   dispatch-bench study STUDY.json --out DIR [--jobs N] [--slice K/M] [--extension PATH]
//                        [--call-timeout SECONDS] [--slurm [SBATCH OPTION...]] [--collect]
//
// Exit status: 0 every case completed, 1 some case did not, 2 bad input or usage.
#ifndef TAMLO_HOST_STUDY_COMMAND_H
#define TAMLO_HOST_STUDY_COMMAND_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tamlo_host {

struct StudySlice {
    std::size_t index = 1;  // K, from 1
    std::size_t count = 1;  // M
};

struct StudyOptions {
    std::string study_file;
    std::string out_dir;
    std::size_t jobs = 0;             // 0: the number of cores this process may use
    std::optional<StudySlice> slice;  // run only cases i with i % M == K - 1
    bool slurm = false;               // submit a job array instead of running
    std::vector<std::string> sbatch_args;  // passed to sbatch before the job script
    std::size_t slurm_tasks = 0;      // array size; 0: one per 25 cases, 1 to 100
    bool collect = false;             // only build the summary from what DIR holds
    std::string extension;            // empty: the default places
    double call_timeout = 0.0;        // seconds per engine call, 0 for none
    bool quiet = false;               // no progress
    bool any_core = false;            // no worker keeps to a core
};

// "K/M" with 1 <= K <= M; throws InputError.
StudySlice parse_study_slice(const std::string& text);

int run_study_command(const StudyOptions& options);

// The number of cores this process may run on.
std::size_t available_cores();

}  // namespace tamlo_host

#endif
