// The bench end to end: the program on a short run against a golden summary, and the
// example year's books through the real extension and engine.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
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

bool is_png(const std::string& file) {
    const std::string head = read_text(file).substr(0, 8);
    return head == "\x89PNG\r\n\x1a\n";
}

// The terminal line of a figure, as format_summary writes it.
std::string summary_line(const std::string& label, double value, int decimals = 1) {
    char text[128];
    std::snprintf(text, sizeof text, "  %-26s%.*f", label.c_str(), decimals, value);
    return text;
}

TEST(BenchProgram, SummaryJsonHoldsTheFiguresOfTheTerminalSummaryAndThePlotsArePngs) {
    const std::string json_file = testing::TempDir() + "bench_summary.json";
    const std::string week_png = testing::TempDir() + "bench_week.png";
    const std::string year_png = testing::TempDir() + "bench_year.png";
    std::filesystem::remove(week_png);
    std::filesystem::remove(year_png);
    const ProgramResult result =
        run_program("run tests/host/fixture_scenario.json --steps 48 --quiet --summary-json " + json_file +
                    " --plot " + week_png + " --plot-year " + year_png +
                    " --extension " TAMLO_EXTENSION_LIBRARY " 2>/dev/null");
    ASSERT_EQ(result.status, 0) << result.output;
    const nlohmann::json j = nlohmann::json::parse(read_text(json_file));
    struct Figure {
        std::string label;
        double value;
        int decimals;
    };
    for (const Figure& f : {Figure{"served", j["load_kwh"]["served"].get<double>(), 1},
                            Figure{"unmet", j["load_kwh"]["unmet"].get<double>(), 1},
                            Figure{"PV", j["pv_kwh"].get<double>(), 1},
                            Figure{"throughput", j["battery_kwh"]["throughput"].get<double>(), 1},
                            Figure{"bought (kWh)", j["grid"]["bought_kwh"].get<double>(), 1},
                            Figure{"net cost", j["grid"]["net_cost"].get<double>(), 2},
                            Figure{"renewable fraction", 100 * j["renewable_fraction"].get<double>(), 1}}) {
        EXPECT_NE(result.output.find(summary_line(f.label, f.value, f.decimals) + (f.label == "renewable fraction" ? " %\n" : "\n")),
                  std::string::npos)
            << f.label << " " << f.value << "\n" << result.output;
    }
    EXPECT_EQ(j["steps_run"], 48);
    EXPECT_EQ(j["generators"][0]["name"], "Diesel");
    EXPECT_EQ(j["warnings_by_rule"]["B3"]["count"], 5);
    EXPECT_EQ(j["warnings"].size(), 12u);
    EXPECT_TRUE(j["errors"].empty());
    EXPECT_TRUE(j["stopped_at_step"].is_null());
    EXPECT_EQ(j["start_error"]["severity"], "none");
    EXPECT_EQ(j["result"], "completed");
    EXPECT_GT(j["wall_seconds"].get<double>(), 0);
    EXPECT_TRUE(is_png(week_png));
    EXPECT_TRUE(is_png(year_png));
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
    const std::string json_file = testing::TempDir() + "critical_summary.json";
    const ProgramResult result = run_program("run " + scenario + " --steps 3 --quiet --summary-json " + json_file +
                                             " --extension " TAMLO_EXTENSION_LIBRARY " 2>/dev/null");
    EXPECT_EQ(result.status, 1);
    const nlohmann::json j = nlohmann::json::parse(read_text(json_file));
    EXPECT_EQ(j["stopped_at_step"], 1);
    EXPECT_EQ(j["steps_run"], 0);
    EXPECT_EQ(j["result"], "critical error");
    ASSERT_FALSE(j["errors"].empty());
    EXPECT_NE(result.output.find("critical error: " + j["errors"].back().get<std::string>() + "\n"), std::string::npos);
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
