// Registers `study` and the hidden `study-worker` on the bench's command line.
#include "study_command_line.h"

#include <memory>

#include <CLI/CLI.hpp>

#include "run_command.h"
#include "study_command.h"
#include "study_worker.h"

namespace tamlo_host {

Command add_study_command(CLI::App& app) {
    CLI::App* study = app.add_subcommand(
        "study", "Runs every case of a study file on worker processes, each on a fresh engine, and writes "
                 "DIR/summary.csv, DIR/tradeoff.png and a table of the best and worst cases (docs/study.md).");
    auto options = std::make_shared<StudyOptions>();
    auto jobs = std::make_shared<std::string>();
    auto slice = std::make_shared<std::string>();
    auto call_timeout = std::make_shared<std::string>(std::to_string(static_cast<int>(default_call_timeout_seconds)));
    study->add_option("STUDY", options->study_file, "Study JSON file")->required();
    study->add_option("--out", options->out_dir, "Folder of the results; a rerun resumes what it holds")
        ->type_name("DIR")
        ->required();
    study->add_option("--jobs", *jobs, "Worker processes (default: the number of cores)")
        ->type_name("N")
        ->check(whole_number(1, 4096));
    study->add_option("--slice", *slice, "Run only cases K, K+M, K+2M, ... (counted from 1)")->type_name("K/M");
    study->add_option("--extension", options->extension, "Extension library; default as for run");
    study->add_option("--call-timeout", *call_timeout,
                      "Longest time one MATLAB call may take; the case is marked timed out (default 600, 0: none)")
        ->type_name("SECONDS")
        ->check(call_timeout_seconds);
    study->add_flag("--collect", options->collect, "Run nothing: build the summary from what DIR holds");
    study->add_flag("--quiet", options->quiet, "No progress");
    study->add_flag("--any-core", options->any_core,
                    "Let the system move workers and their engines between cores (by default each keeps to one)");
    study->add_flag("--slurm", options->slurm,
                    "Submit a Slurm job array through sbatch instead of running here; every word after --slurm "
                    "goes to sbatch");
    study->footer("Exit status: 0 every case completed, 1 some case did not, 2 bad input or usage.");
    auto rest = std::make_shared<std::vector<std::string>>();
    auto run = [options, jobs, slice, call_timeout, rest] {
        StudyOptions chosen = *options;
        if (!jobs->empty()) chosen.jobs = std::stoul(*jobs);
        if (!slice->empty()) chosen.slice = parse_study_slice(*slice);
        chosen.call_timeout = std::stod(*call_timeout);
        chosen.sbatch_args = *rest;
        return run_study_command(chosen);
    };
    return {study, run, "--slurm", rest};
}

Command add_study_worker_command(CLI::App& app) {
    CLI::App* worker = app.add_subcommand("study-worker", "");
    worker->group("");  // hidden: started by study itself
    worker->prefix_command();
    return {worker, [worker] { return run_study_worker(worker->remaining()); }, nullptr, nullptr};
}

}  // namespace tamlo_host
