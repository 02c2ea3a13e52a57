// The study command: expand, skip what is done, run the rest on workers, then summarise.
#include "study_command.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <thread>

#include "core_placement.h"
#include "input_error.h"
#include "slurm_submit.h"
#include "study_cases.h"
#include "study_folder.h"
#include "study_progress.h"
#include "study_summary.h"
#include "study_worker.h"
#include "tradeoff_plot.h"
#include "worker_pool.h"

namespace tamlo_host {

namespace fs = std::filesystem;

namespace {

std::string this_program() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (error) throw InputError("cannot find this program's own path: " + error.message());
    return program.string();
}

bool in_slice(std::size_t index, const std::optional<StudySlice>& slice) {
    return !slice || index % slice->count == slice->index - 1;
}

// A worker that left no result.json: the reason it gave, or how it died.
void record_missing_result(const std::string& staging, const std::string& death) {
    if (fs::exists(fs::path(staging) / "result.json")) return;
    std::ifstream refused(fs::path(staging) / "worker_error.txt");
    std::string message;
    if (refused && std::getline(refused, message)) {
        StudyFolder::record_failure(staging, CaseStatus::critical_error, message);
    } else {
        StudyFolder::record_failure(staging, CaseStatus::worker_died, death.empty() ? "worker died" : death);
    }
}

// Builds summary.csv, the PNG and the table from every finished case in the folder.
bool collect(const Study& study, const std::vector<StudyCase>& cases, const StudyFolder& folder, bool print) {
    std::vector<CaseResult> results;
    bool all_completed = true;
    for (const StudyCase& c : cases) {
        results.push_back(folder.finished(c).value_or(CaseResult{}));
        all_completed = all_completed && results.back().status == CaseStatus::completed;
    }
    folder.write_file("summary.csv", summary_csv(study, cases, results));
    const std::string png = folder.dir() + "/tradeoff.png";
    try {
        const fs::path plot_dir = fs::path(folder.dir()) / "plot";
        fs::create_directories(plot_dir);
        write_tradeoff_png(tradeoff_data(study, cases, results), plot_dir.string(), png);
    } catch (const std::exception& e) {
        std::cerr << "dispatch-bench: no trade-off plot: " << e.what() << '\n';
    }
    if (print) {
        std::cout << best_and_worst(cases, results) << "\nWrote " << folder.dir() << "/summary.csv and " << png
                  << "\n" << std::flush;
    }
    return all_completed;
}

bool every_case_finished(const std::vector<StudyCase>& cases, const StudyFolder& folder) {
    for (const StudyCase& c : cases) {
        if (!folder.finished(c)) return false;
    }
    return true;
}

int run_study(const StudyOptions& options) {
    if (options.out_dir.empty()) throw InputError("study: --out DIR is required");
    if (options.slice && (options.slice->index == 0 || options.slice->index > options.slice->count)) {
        throw InputError("study: --slice K/M needs 1 <= K <= M");
    }
    const Study study = read_study(options.study_file);
    const std::vector<StudyCase> cases = expand_study(study);

    if (options.slurm) {
        const std::string dir = fs::absolute(options.out_dir).lexically_normal().string();
        const std::string job = submit_slurm_study(options, this_program(), dir, cases.size());
        std::cout << "Submitted Slurm job " << job << " for " << cases.size() << " cases; results in " << dir
                  << " (logs in " << dir << "/slurm)\n";
        return 0;
    }

    StudyFolder folder(options.out_dir);
    if (options.collect) return collect(study, cases, folder, true) ? 0 : 1;

    std::vector<std::size_t> pending;
    std::size_t covered = 0;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        if (!in_slice(i, options.slice)) continue;
        ++covered;
        if (!folder.finished(cases[i])) pending.push_back(i);
    }
    // Slurm tasks share DIR and stage at the same time; a study of its own clears what a killed
    // one left behind.
    if (!options.slice) folder.clear_staging();
    std::vector<std::string> staging;
    for (std::size_t i : pending) staging.push_back(folder.stage(cases[i]));

    WorkerOptions worker;
    worker.extension = options.extension.empty() ? std::string() : fs::absolute(options.extension).string();
    worker.call_timeout = options.call_timeout;
    worker.any_core = options.any_core;
    WorkerCommand command;
    command.program = this_program();
    command.argv = {command.program, "study-worker"};
    for (std::string& a : worker_arguments(worker)) command.argv.push_back(std::move(a));

    const std::size_t jobs = options.jobs > 0 ? options.jobs : available_cores();
    StudyProgress progress(stderr, !options.quiet, covered - pending.size(), covered);
    run_on_workers(command, jobs, !options.any_core, staging, [&](std::size_t k, const std::string& death) {
        record_missing_result(staging[k], death);
        folder.commit(staging[k], cases[pending[k]]);
        const std::optional<CaseResult> result = folder.finished(cases[pending[k]]);
        progress.case_done(!result || result->status != CaseStatus::completed);
    });
    progress.finish();

    if (!options.slice) return collect(study, cases, folder, true) ? 0 : 1;
    // The task that finds every case done builds the summary for the whole study.
    if (every_case_finished(cases, folder)) collect(study, cases, folder, !options.quiet);
    bool slice_completed = true;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        if (!in_slice(i, options.slice)) continue;
        const std::optional<CaseResult> r = folder.finished(cases[i]);
        slice_completed = slice_completed && r && r->status == CaseStatus::completed;
    }
    return slice_completed ? 0 : 1;
}

}  // namespace

std::size_t available_cores() {
    if (const std::size_t allowed = allowed_cores().size(); allowed > 0) return allowed;
    const unsigned n = std::thread::hardware_concurrency();
    return n > 0 ? n : 1;
}

StudySlice parse_study_slice(const std::string& text) {
    const std::string::size_type slash = text.find('/');
    auto whole = [&](const std::string& part) -> std::size_t {
        if (part.empty() || part.find_first_not_of("0123456789") != std::string::npos || part.size() > 9) {
            throw InputError("--slice: expected K/M with whole numbers, found \"" + text + "\"");
        }
        return std::stoul(part);
    };
    if (slash == std::string::npos) throw InputError("--slice: expected K/M, found \"" + text + "\"");
    StudySlice slice{whole(text.substr(0, slash)), whole(text.substr(slash + 1))};
    if (slice.index == 0 || slice.index > slice.count) {
        throw InputError("--slice: K must be between 1 and M, found \"" + text + "\"");
    }
    return slice;
}

int run_study_command(const StudyOptions& options) {
    try {
        return run_study(options);
    } catch (const InputError& e) {
        std::cerr << "dispatch-bench: " << e.what() << '\n';
        return 2;
    } catch (const std::exception& e) {
        std::cerr << "dispatch-bench: " << e.what() << '\n';
        return 2;
    }
}

}  // namespace tamlo_host
