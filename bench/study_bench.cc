// Studies: cases per minute for 200 short cases with warm engine opens against a cold start per
// case, on one and two workers; the speed-ups follow the table. Engine opens alone:
// engine_open_bench.
#include <benchmark/benchmark.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "ratio_report.h"

namespace {

namespace fs = std::filesystem;

constexpr int study_cases = 200;

// 200 cases of 24 steps of the minimal fixture strategy, told apart by the battery size only.
std::string write_bench_study() {
    const fs::path dir = fs::temp_directory_path() / "tamlo_study_bench";
    fs::create_directories(dir);
    std::string values;
    for (int i = 0; i < study_cases; ++i) values += (i > 0 ? ", " : "") + std::to_string(100 + i);
    std::ofstream(dir / "study.json")
        << "{\"scenario\": \"" TAMLO_SOURCE_DIR "/bench/fixture_scenario.json\", \"steps\": 24, \"vary\": ["
        << "{\"name\": \"battery\", \"path\": \"batteries[0].battery_bank_maximum_absolute_soc\", \"values\": ["
        << values << "]}]}\n";
    return dir.string();
}

void run_study(benchmark::State& state, int jobs, bool warm) {
    const std::string dir = write_bench_study();
    const std::string command = std::string(warm ? "" : "TAMLO_ENG_WARM=0 ") + TAMLO_BENCH_PROGRAM " study " + dir +
                                "/study.json --out " + dir + "/out --quiet --jobs " + std::to_string(jobs) +
                                " --extension " TAMLO_EXTENSION_LIBRARY " > /dev/null";
    double seconds = 0.0;
    for (auto _ : state) {
        fs::remove_all(dir + "/out");
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
    return tamlo_bench::run_with_ratios(
        argc, argv,
        {{"speed-up of warm engines over cold, one worker", "run_study/cold_jobs_1", "run_study/warm_jobs_1"},
         {"speed-up of two workers over one, warm", "run_study/warm_jobs_1", "run_study/warm_jobs_2"}});
}
