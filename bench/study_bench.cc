// Studies: cases per minute for 200 short cases with warm engine opens against a cold start per
// case, on one and two workers; the speed-ups follow the table. Engine opens alone:
// engine_open_bench.
#include <benchmark/benchmark.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "ratio_report.h"

namespace {

namespace fs = std::filesystem;

constexpr int study_cases = 200;

// One folder per bench process, removed when it ends, in memory where the system offers it.
// Each timed study writes a folder of its own. On an ext4 without a journal (these VMs' disks),
// a file made within minutes of other deletions costs far more (the allocator steps over every
// recently freed inode), so on disk the figures would depend on what was deleted before.
const fs::path& bench_dir() {
    static const fs::path dir = [] {
        const fs::path base = ::access("/dev/shm", W_OK) == 0 ? fs::path("/dev/shm") : fs::temp_directory_path();
        fs::path d = base / ("tamlo_study_bench_" + std::to_string(getpid()));
        fs::create_directories(d);
        return d;
    }();
    return dir;
}

// 200 cases of 24 steps of the minimal fixture strategy, told apart by the battery size only.
std::string write_bench_study() {
    const fs::path file = bench_dir() / "study.json";
    std::string values;
    for (int i = 0; i < study_cases; ++i) values += (i > 0 ? ", " : "") + std::to_string(100 + i);
    std::ofstream(file) << "{\"scenario\": \"" TAMLO_SOURCE_DIR
                           "/bench/fixture_scenario.json\", \"steps\": 24, \"vary\": ["
                        << "{\"name\": \"battery\", \"path\": \"batteries[0].battery_bank_maximum_absolute_soc\", "
                           "\"values\": ["
                        << values << "]}]}\n";
    return file.string();
}

// A folder no earlier study of this process wrote.
std::string fresh_out_dir() {
    static int runs = 0;
    return (bench_dir() / ("out" + std::to_string(++runs))).string();
}

void run_study(benchmark::State& state, int jobs, bool warm) {
    const std::string study = write_bench_study();
    double seconds = 0.0;
    for (auto _ : state) {
        const std::string command = std::string(warm ? "" : "TAMLO_ENG_WARM=0 ") + TAMLO_BENCH_PROGRAM " study " +
                                    study + " --out " + fresh_out_dir() +
                                    " --quiet --jobs " + std::to_string(jobs) +
                                    " --extension " TAMLO_EXTENSION_LIBRARY " > /dev/null";
        const auto start = std::chrono::steady_clock::now();
        const int status = std::system(command.c_str());
        seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) state.SkipWithError("the study failed");
    }
    state.counters["cases_per_minute"] = 60.0 * study_cases / seconds;
}

BENCHMARK_CAPTURE(run_study, cold_jobs_1, 1, false)->Unit(benchmark::kSecond)->UseRealTime()->Iterations(1);
BENCHMARK_CAPTURE(run_study, warm_jobs_1, 1, true)->Unit(benchmark::kSecond)->UseRealTime()->Iterations(1);
BENCHMARK_CAPTURE(run_study, warm_jobs_2, 2, true)->Unit(benchmark::kSecond)->UseRealTime()->Iterations(1);

}  // namespace

// Each a time over a time of the same study size: how many times faster the second runs.
int main(int argc, char** argv) {
    // Three runs of each, interleaved, unless the command line says otherwise: on a shared VM the
    // speed drifts by tens of percent within minutes, and a ratio of medians sees far less of it.
    char repetitions[] = "--benchmark_repetitions=3";
    char interleaved[] = "--benchmark_enable_random_interleaving=true";
    std::vector<char*> args(argv, argv + argc);
    args.insert(args.begin() + 1, {repetitions, interleaved});
    int count = static_cast<int>(args.size());
    const int status = tamlo_bench::run_with_ratios(
        count, args.data(),
        {{"speed-up of warm engines over cold, one worker", "run_study/cold_jobs_1", "run_study/warm_jobs_1"},
         {"speed-up of two workers over one, warm", "run_study/warm_jobs_1", "run_study/warm_jobs_2"}});
    std::error_code ignored;
    fs::remove_all(bench_dir(), ignored);
    return status;
}
