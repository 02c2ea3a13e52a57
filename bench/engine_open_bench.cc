// Opening our engine, cold and warm, against the start of octave-cli itself (`octave-cli
// --norc --eval ''`) in the same run; the ratios follow the table.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "engine.h"
#include "octave_cli.h"
#include "ratio_report.h"
#include "tamlo_eng_ext.h"

namespace {

namespace fs = std::filesystem;

// The parent of process pid, or -1 when it cannot be read.
long parent_of(int pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
    std::string text;
    std::getline(in, text);
    const auto close = text.rfind(')');
    if (close == std::string::npos) return -1;
    std::istringstream fields(text.substr(close + 2));
    std::string state;
    long ppid = -1;
    fields >> state >> ppid;
    return ppid;
}

// A warm engine is forked by the template, a cold one spawned by this process. An open that
// quietly took the other road would put one figure under the other's name.
bool started_as(Engine* engine, bool warm) {
    const int pid = tamlo_engGetPid(engine);
    if (pid <= 0) return false;
    const bool child_of_this_process = parent_of(pid) == static_cast<long>(getpid());
    return warm ? !child_of_this_process : child_of_this_process;
}

// engOpenSingleUse until the engine is ready for its first call; the close is left out (or
// timed too, with close), as a host pays it at the end of a run.
void BM_EngineOpen(benchmark::State& bench, bool warm, bool with_close) {
    setenv("TAMLO_ENG_WARM", warm ? "1" : "0", 1);
    if (warm) engClose(engOpenSingleUse("", nullptr, nullptr));  // the template's own start
    for (auto _ : bench) {
        int status = 0;
        Engine* engine = engOpenSingleUse("", nullptr, &status);
        if (engine == nullptr) {
            bench.SkipWithError(("the engine did not start: code " + std::to_string(status)).c_str());
            break;
        }
        if (with_close) {
            engClose(engine);
            continue;
        }
        bench.PauseTiming();
        const bool as_asked = started_as(engine, warm);
        engClose(engine);
        bench.ResumeTiming();
        if (!as_asked) {
            bench.SkipWithError(warm ? "the open was not served by the warm template" : "the open was not cold");
            break;
        }
    }
    setenv("TAMLO_ENG_WARM", "0", 1);
}

// octave-cli from spawn to exit, doing nothing: Octave's own start and end.
void BM_OctaveCliStart(benchmark::State& bench) {
    const std::string output_file =
        (fs::temp_directory_path() / ("tamlo_engine_open_bench_" + std::to_string(getpid()) + ".out")).string();
    for (auto _ : bench) {
        const tamlo_bench::ProcessRun run = tamlo_bench::run_octave_cli({"--norc", "--eval", ""}, output_file);
        if (!run.error.empty()) {
            bench.SkipWithError(run.error.c_str());
            break;
        }
        bench.SetIterationTime(run.seconds);
    }
    std::error_code ignored;
    fs::remove(output_file, ignored);
}

BENCHMARK_CAPTURE(BM_EngineOpen, cold, false, false)->Iterations(15)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_EngineOpen, cold_and_close, false, true)
    ->Iterations(15)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_EngineOpen, warm, true, false)->Iterations(40)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_OctaveCliStart)->Iterations(15)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace

int main(int argc, char** argv) {
    return tamlo_bench::run_with_ratios(
        argc, argv,
        {{"engine open, cold / octave-cli start and exit", "BM_EngineOpen/cold", "BM_OctaveCliStart"},
         {"engine open and close, cold / octave-cli start and exit", "BM_EngineOpen/cold_and_close",
          "BM_OctaveCliStart"},
         {"engine open, warm / octave-cli start and exit", "BM_EngineOpen/warm", "BM_OctaveCliStart"},
         {"engine open, warm / cold", "BM_EngineOpen/warm", "BM_EngineOpen/cold"}});
}
