// The hidden worker of a study: a process of its own that runs the cases it is handed, each
// on a fresh extension object and so a fresh engine.
//
// Command line: dispatch-bench study-worker [--extension PATH] [--call-timeout SECONDS] [--any-core]
// Standard input: one line per case, the absolute path of a folder that holds scenario.json.
// For each, the worker writes results.csv, summary.txt and result.json into that folder, then
// one line "done" on standard output. It leaves when its standard input ends.
#ifndef TAMLO_HOST_STUDY_WORKER_H
#define TAMLO_HOST_STUDY_WORKER_H

#include <string>
#include <vector>

namespace tamlo_host {

struct WorkerOptions {
    std::string extension;      // empty: the default places
    double call_timeout = 0.0;  // seconds per engine call, 0 for none
    bool any_core = false;      // leave itself and its engines to the system's placing
};

// The worker's arguments as the study passes them, and back; parse throws InputError.
std::vector<std::string> worker_arguments(const WorkerOptions& options);
WorkerOptions parse_worker_arguments(const std::vector<std::string>& args);

// args: what follows "study-worker" on the command line. Returns the exit status.
int run_study_worker(const std::vector<std::string>& args);

}  // namespace tamlo_host

#endif
