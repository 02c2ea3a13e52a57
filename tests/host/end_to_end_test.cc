// The bench end to end: the program on a short run against a golden summary, and the
// example year's books through the real extension and engine.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "extension_library.h"
#include "run.h"
#include "scenario.h"

namespace tamlo_host {
namespace {

struct ProgramResult {
    std::string output;
    int status = -1;
};

// Standard output, or both streams with "2>&1" in arguments.
ProgramResult run_program(const std::string& arguments) {
    const std::string command = "cd " TAMLO_SOURCE_DIR " && " TAMLO_BENCH_PROGRAM " " + arguments;
    ProgramResult result;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return result;
    char buffer[4096];
    for (std::size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) result.output.append(buffer, n);
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

std::string read_text(const std::string& file) {
    std::ifstream in(file);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(BenchProgram, ShortRunMatchesTheGoldenSummary) {
    // Standard error may say that the engine library has no time limit; the summary is the same.
    const ProgramResult result = run_program(
        "run tests/host/fixture_scenario.json --steps 48 --quiet --extension " TAMLO_EXTENSION_LIBRARY " 2>/dev/null");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, read_text(TAMLO_SOURCE_DIR "/tests/host/golden/fixture_48_steps.txt"));
}

TEST(BenchProgram, WritesOneResultLinePerStep) {
    const std::string csv = testing::TempDir() + "bench_results.csv";
    const ProgramResult result = run_program("run tests/host/fixture_scenario.json --steps 5 --quiet --out " + csv +
                                             " --extension " TAMLO_EXTENSION_LIBRARY " 2>&1");
    EXPECT_EQ(result.status, 0);
    std::ifstream in(csv);
    std::string header;
    std::getline(in, header);
    EXPECT_EQ(header.rfind("time_step,ac_bus.load_requested,ac_bus.load_served,", 0), 0u);
    std::size_t lines = 0;
    for (std::string line; std::getline(in, line);) ++lines;
    EXPECT_EQ(lines, 5u);
}

TEST(BenchProgram, BadScenarioExitsWithStatusTwoAndOneMessage) {
    const ProgramResult result = run_program("run tests/host/no_such.json 2>&1");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "dispatch-bench: tests/host/no_such.json: cannot open the file\n");
}

TEST(BenchProgram, CriticalErrorSaysWhereTheRunStoppedAndExitsWithStatusOne) {
    // A dispatch function the engine cannot find fails the first step critically.
    const std::string scenario = testing::TempDir() + "critical.json";
    std::string text = read_text(TAMLO_SOURCE_DIR "/tests/host/fixture_scenario.json");
    text.replace(text.find("\"fixture_dispatch\""), 18, "\"no_such_dispatch\"");
    text.replace(text.find("\"matlab\""), 8, "\"" TAMLO_SOURCE_DIR "/tests/host/matlab\"");
    for (std::string::size_type at; (at = text.find("../../examples")) != std::string::npos;) {
        text.replace(at, 14, TAMLO_SOURCE_DIR "/examples");
    }
    std::ofstream(scenario) << text;
    const ProgramResult result =
        run_program("run " + scenario + " --steps 3 --quiet --extension " TAMLO_EXTENSION_LIBRARY " 2>/dev/null");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output.rfind("Scenario " + scenario + ": 0 of 3 time steps of 3600 s\nStopped at time step 1 of 3 "
                                  "(no decisions came back from it on): critical error: MATLAB error while executing "
                                  "'[new_simulation_state, custom_variables] = no_such_dispatch(",
                                  0),
              0u)
        << result.output;
    EXPECT_NE(result.output.find("Result: the run ended in a critical error"), std::string::npos) << result.output;
}

TEST(BenchProgram, EngineThatCannotStartIsACriticalErrorWithTheExtensionsMessage) {
    // The extension and its libraries copied where no octave-engine program lies near them.
    char folder[] = "/tmp/bench-no-engine-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::filesystem::path lib = std::filesystem::path(folder) / "lib";
    std::filesystem::create_directory(lib);
    const std::filesystem::path built = std::filesystem::path(TAMLO_EXTENSION_LIBRARY).parent_path();
    for (const char* name : {"libtamlo_matlab_dispatch.so", "libeng.so", "libmx.so"}) {
        std::filesystem::copy_file(built / name, lib / name);
    }
    const ProgramResult result = run_program("run tests/host/fixture_scenario.json --steps 2 --quiet --extension " +
                                             (lib / "libtamlo_matlab_dispatch.so").string() + " 2>/dev/null");
    std::filesystem::remove_all(folder);
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("Start simulation: critical error: \nCan't start MATLAB engine: code 1\n"),
              std::string::npos)
        << result.output;
}

TEST(ExampleWeek, LoadFollowingBalancesTheBooksWithoutWarnings) {
    const Scenario scenario =
        read_scenario(TAMLO_SOURCE_DIR "/examples/hybrid_load_following.json", 168);
    ExtensionLibrary library(TAMLO_EXTENSION_LIBRARY);
    // The engine library's extras are found through the extension's own handle.
    EXPECT_NE(library.engine_symbol("engOpenSingleUse"), nullptr);
    const RunOutcome outcome = run_scenario(scenario, [&] { return library.create(); });
    EXPECT_FALSE(outcome.critical);
    EXPECT_EQ(outcome.steps_run, 168u);
    EXPECT_EQ(outcome.result_entries, 7u);  // generator, two loads, PV, battery, wind, converter
    EXPECT_TRUE(outcome.errors.empty());
    EXPECT_TRUE(outcome.warnings.empty()) << outcome.warnings.front();
    const Books& b = outcome.books;
    EXPECT_GT(b.energy_requested, 0);
    EXPECT_NEAR(b.energy_served + b.unmet_load, b.energy_requested, 1e-6 * b.energy_requested);
}

}  // namespace
}  // namespace tamlo_host
