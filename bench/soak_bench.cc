// Soak: the bench's fixture system for a year of one-minute steps (525,600) with its minimal
// strategy, sampling the resident memory of host and engine from /proc over the run. Memory
// that keeps growing step after step shows as a last figure well above the first.
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "extension_library.h"
#include "run.h"
#include "scenario.h"

namespace {

using namespace tamlo_host;

constexpr std::size_t minutes_per_hour = 60;
constexpr std::size_t steps = 8760 * minutes_per_hour;
constexpr std::size_t samples = 100;

// Resident set size of a process in kB, from /proc/<pid>/status; 0 when unknown.
long rss_kb(const std::string& pid) {
    std::ifstream status("/proc/" + pid + "/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmRSS:", 0) == 0) return std::atol(line.c_str() + 6);
    return 0;
}

// The engine: this process's only child while a run is on.
std::string engine_pid() {
    DIR* tasks = opendir("/proc/self/task");
    if (tasks == nullptr) return {};
    std::string found;
    while (dirent* entry = readdir(tasks)) {
        if (entry->d_name[0] == '.') continue;
        std::ifstream children(std::string("/proc/self/task/") + entry->d_name + "/children");
        std::string pid;
        if (children >> pid) found = pid;
    }
    closedir(tasks);
    return found;
}

// The hourly example series with each hour's line repeated for its 60 minutes.
void write_minute_series(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::ifstream in(from);
    std::ofstream out(to);
    std::string line;
    bool header = true;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#' || header) {
            out << line << '\n';
            if (!line.empty() && line[0] != '#') header = false;
            continue;
        }
        for (std::size_t m = 0; m < minutes_per_hour; ++m) out << line << '\n';
    }
}

// The fixture scenario at one-minute steps, written to a scratch folder.
std::string write_minute_scenario(const std::filesystem::path& dir) {
    const std::filesystem::path source(TAMLO_SOURCE_DIR);
    std::filesystem::create_directories(dir);
    for (const char* name : {"diesel_schedule.csv", "grid.csv", "loads.csv", "weather.csv"})
        write_minute_series(source / "examples/series" / name, dir / name);
    std::ifstream in(source / "bench/fixture_scenario.json");
    std::stringstream text;
    text << in.rdbuf();
    std::string json = text.str();
    auto replace_all = [&json](const std::string& from, const std::string& to) {
        for (std::size_t at = json.find(from); at != std::string::npos; at = json.find(from, at + to.size()))
            json.replace(at, from.size(), to);
    };
    replace_all("../examples/series/", dir.string() + "/");
    replace_all("\"value\": \"matlab\"", "\"value\": \"" + (source / "bench/matlab").string() + "\"");
    replace_all("\"timestep_size_in_seconds\": 3600", "\"timestep_size_in_seconds\": 60");
    const std::filesystem::path file = dir / "soak_scenario.json";
    std::ofstream(file) << json;
    return file.string();
}

void soak_year_of_minutes(benchmark::State& state) {
    const std::filesystem::path dir =
        std::filesystem::temp_directory_path() / ("tamlo_soak_" + std::to_string(::getpid()));
    const Scenario scenario = read_scenario(write_minute_scenario(dir), steps);
    ExtensionLibrary library(TAMLO_EXTENSION_LIBRARY);
    std::vector<long> host_rss, engine_rss;
    RunOutcome last(0);
    for (auto _ : state) {
        std::string engine;
        RunHooks hooks;
        hooks.on_step = [&](std::size_t step, const tamlo_dispatch::SimulationState&) {
            if (step % (steps / samples) != 0 && step + 1 != steps) return;
            if (engine.empty()) engine = engine_pid();
            host_rss.push_back(rss_kb("self"));
            engine_rss.push_back(engine.empty() ? 0 : rss_kb(engine));
        };
        last = run_scenario(scenario, [&] { return library.create(); }, hooks);
    }
    std::filesystem::remove_all(dir);
    if (host_rss.empty()) {
        state.SkipWithError("no step ran");
        return;
    }
    std::printf("soak: %zu steps; RSS host %ld -> %ld kB, engine %ld -> %ld kB (first and last of %zu samples)\n",
                last.steps_run, host_rss.front(), host_rss.back(), engine_rss.front(), engine_rss.back(),
                host_rss.size());
    state.counters["steps"] = static_cast<double>(last.steps_run);
    state.counters["host_rss_first_kB"] = static_cast<double>(host_rss.front());
    state.counters["host_rss_last_kB"] = static_cast<double>(host_rss.back());
    state.counters["engine_rss_first_kB"] = static_cast<double>(engine_rss.front());
    state.counters["engine_rss_last_kB"] = static_cast<double>(engine_rss.back());
    state.counters["us_per_step"] = (last.times.plant_seconds + last.times.dispatch_seconds) * 1e6 /
                                    static_cast<double>(last.steps_run);
}

BENCHMARK(soak_year_of_minutes)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
