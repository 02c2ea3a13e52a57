// dispatch-bench end to end on the real extension and engine: a run against a golden summary, a
// run that fails, and studies (expansion, failing cases, workers, resume; agreement with single
// runs and Slurm is study/slurm_study_test.sh).
#include <gtest/gtest.h>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "engine.h"
#include "study_cases.h"
#include "study_file.h"
#include "tamlo_eng_ext.h"

extern char** environ;

namespace tamlo_host {
namespace {

namespace fs = std::filesystem;

const std::string fixtures = TAMLO_SOURCE_DIR "/tests/host/study";

std::string read_text(const std::string& file) {
    std::ifstream in(file);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

struct ProgramResult {
    std::string output;
    int status = -1;
};

// dispatch-bench run from the source folder with the built extension; standard output, or both
// streams with "2>&1" in arguments.
ProgramResult run_bench(const std::string& arguments) {
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

const std::string extension = " --extension " TAMLO_EXTENSION_LIBRARY;

TEST(BenchRun, ShortRunsMatchTheGoldenSummariesAndWriteJsonResultsAndPlots) {
    // Standard error may say that the engine library has no time limit; the summary is the same.
    const std::string out = testing::TempDir() + "bench_run_" + std::to_string(::getpid());
    const ProgramResult result =
        run_bench("run examples/hybrid_load_following.json --steps 48 --quiet --summary-json " + out + ".json --out " +
                  out + ".csv --plot " + out + "_week.png --plot-year " + out + "_year.png" + extension + " 2>/dev/null");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, read_text(TAMLO_SOURCE_DIR "/tests/host/golden/load_following_48_steps.txt"));
    // The other bundled strategy: what it chooses (running the generator full, charging to its
    // set point) shows in the books, not in any warning.
    EXPECT_EQ(run_bench("run examples/hybrid_cycle_charging.json --steps 48 --quiet" + extension + " 2>/dev/null").output,
              read_text(TAMLO_SOURCE_DIR "/tests/host/golden/cycle_charging_48_steps.txt"));
    const nlohmann::json j = nlohmann::json::parse(read_text(out + ".json"));
    EXPECT_NEAR(j["grid"]["net_cost"].get<double>(), 192.84, 0.005);  // the golden summary's figure
    EXPECT_EQ(j["steps_run"], 48);
    EXPECT_EQ(j["result"], "completed");
    for (const char* plot : {"_week.png", "_year.png"}) EXPECT_EQ(read_text(out + plot).substr(0, 8), "\x89PNG\r\n\x1a\n");
    std::ifstream csv(out + ".csv");
    std::string header;
    std::getline(csv, header);
    for (const char* columns : {"time_step,ac_bus.load_requested,ac_bus.load_served,",
                                ".operating_capacity_requested,ac_bus.operating_capacity_served,ac_bus.capacity_shortage,",
                                ",generators(1).power_available,"}) {
        EXPECT_NE(header.find(columns), std::string::npos) << columns << "\n" << header;
    }
    std::size_t lines = 0;
    for (std::string row; std::getline(csv, row);) ++lines;
    EXPECT_EQ(lines, 48u);
}

// A fresh folder per study, holding the study file written from text; of this process, as the
// plain and sanitized builds' tests may run side by side.
std::string write_study(const std::string& name, const std::string& text) {
    const fs::path dir = fs::path(testing::TempDir()) / ("study_" + name + "_" + std::to_string(::getpid()));
    fs::remove_all(dir);
    fs::create_directories(dir);
    std::ofstream(dir / "study.json") << text;
    return (dir / "study.json").string();
}

// A study of the fixture scenario with the given "vary" list and extra fields.
std::string study_text(const std::string& vary, const std::string& extra = "") {
    return "{\"scenario\": \"" + fixtures + "/scenario.json\", " + extra + "\"vary\": [" + vary + "]}";
}

std::string strategy(const std::string& label, const std::string& dispatch) {
    return "{\"label\": \"" + label + "\", \"path\": \"" + fixtures + "/strategies\", \"dispatch\": \"" + dispatch + "\"}";
}

const std::string strategies = "{\"name\": \"strategy\", \"strategies\": [" + strategy("persistent", "persistent_dispatch") +
                               ", " + strategy("global", "global_dispatch") + "]}";
const std::string battery =
    "{\"name\": \"battery\", \"path\": \"batteries[0].battery_bank_maximum_absolute_soc\", \"values\": [100, 250.5, 400]}";

TEST(StudyExpansion, ProductAndListGiveReadableUniqueIds) {
    const std::pair<std::string, std::vector<std::string>> rows[] = {
        {study_text(battery + "," + strategies),
         {"battery=100+strategy=persistent", "battery=100+strategy=global", "battery=250.5+strategy=persistent",
          "battery=250.5+strategy=global", "battery=400+strategy=persistent", "battery=400+strategy=global"}},
        {study_text(battery + "," + strategies, "\"combine\": \"list\", \"cases\": [{\"battery\": 400}, "
                                                "{\"strategy\": \"global\", \"battery\": 100}, {\"battery\": 400}],"),
         {"battery=400", "battery=100+strategy=global", "battery=400-2"}},
        {study_text("{\"name\": \"soc floor\", \"parameter\": \"soc floor/percent\", \"values\": [\"low\", 20]}"),
         {"soc_floor=low", "soc_floor=20"}},
        {study_text(""), {"base"}},
    };
    for (const auto& [text, expected] : rows) {
        std::vector<std::string> ids;
        for (const StudyCase& c : expand_study(read_study(write_study("expansion", text)))) ids.push_back(c.id);
        EXPECT_EQ(ids, expected) << text;
    }
}

TEST(StudyExpansion, BadStudiesNameTheFileAndJsonPathBeforeAnythingRuns) {
    const std::string soc = "{\"name\": \"b\", \"path\": \"batteries[0].battery_bank_maximum_absolute_soc\", ";
    const std::pair<std::string, std::string> rows[] = {  // the study, what follows its file name
        {study_text("{\"name\": \"b\", \"path\": \"batteries[3].wear_cost\", \"values\": [1]}"),
         ": vary[0].path: batteries[3] is not there: the list has 1 entries in " + fixtures + "/scenario.json"},
        {study_text(soc + "\"values\": [100, \"big\"]}"),
         ": vary[0].values[1]: the scenario refuses it: batteries[0].battery_bank_maximum_absolute_soc: expected an "
         "energy from 0 to 1e10 kWh, found the text \"big\""},
        {study_text("{\"name\": \"b\", \"path\": \"batteries[x]\", \"values\": [1]}"),
         ": vary[0].path: the path \"batteries[x]\" has a list index that is not a whole number"},
        {study_text("{\"name\": \"s\", \"strategies\": [" + strategy("x", "missing_dispatch") + "]}"),
         ": vary[0].strategies[0].dispatch: there is no missing_dispatch.m in " + fixtures + "/strategies"},
        {study_text(battery, "\"combine\": \"list\", \"cases\": [{\"battery\": 7}],"),
         ": cases[0].battery: the number 7 is not one of the values of vary[0]"},
        {study_text(battery, "\"combine\": \"list\", \"cases\": [{\"pv\": 100}],"),
         ": cases[0].pv: no variation has this name"},
        {study_text(battery + "," + battery), ": vary[1].name: the name \"battery\" is used twice"},
        {study_text("{\"name\": \"b\", \"values\": [1]}"),
         ": vary[0]: needs exactly one of \"path\", \"parameter\" or \"strategies\""},
        {study_text(battery, "\"repeat\": 2,"), ": repeat: unknown field"},
    };
    for (const auto& [text, message] : rows) {
        const std::string file = write_study("bad", text);
        const ProgramResult result = run_bench("study " + file + " --out " + file + ".out" + extension + " 2>&1");
        EXPECT_EQ(result.status, 2) << text;
        EXPECT_EQ(result.output.rfind("dispatch-bench: " + file + message, 0), 0u) << result.output;
        EXPECT_FALSE(fs::exists(file + ".out")) << text;
    }
}

ProgramResult run_study(const std::string& study, const std::string& out, const std::string& options = "") {
    return run_bench("study " + study + " --out " + out + " --quiet " + options + extension + " 2>&1");
}

// summary.csv by case id, each row without its wall time (the last column).
std::map<std::string, std::string> summary_rows(const std::string& out) {
    std::map<std::string, std::string> rows;
    std::ifstream in(out + "/summary.csv");
    std::string line;
    std::getline(in, line);
    while (std::getline(in, line)) rows[line.substr(0, line.find(','))] = line.substr(0, line.rfind(','));
    return rows;
}

std::string column(const std::string& row, std::size_t index) {
    std::stringstream fields(row);
    std::string field;
    for (std::size_t i = 0; i <= index; ++i) std::getline(fields, field, ',');
    return field;
}

TEST(StudyRun, FailingCasesAreMarkedAndTheOthersComplete) {
    const std::string study = write_study(
        "failing", study_text("{\"name\": \"s\", \"strategies\": [" + strategy("kill", "kill_worker_dispatch") + ", " +
                              strategy("ok", "persistent_dispatch") + ", " + strategy("loop", "loop_dispatch") + ", " +
                              strategy("exit", "exit_dispatch") + ", " + strategy("error", "error_dispatch") + ", " +
                              strategy("ok_again", "global_dispatch") + "]}"));
    const std::string out = fs::path(study).parent_path() / "out";
    EXPECT_EQ(run_study(study, out, "--jobs 2 --call-timeout 2").status, 1);
    // The killed worker held the next case too: it goes to the worker that replaces it.
    const std::map<std::string, std::string> expected = {
        {"s=kill", "worker died"},    {"s=ok", "completed"},          {"s=loop", "timed out"},
        {"s=exit", "engine died"},    {"s=error", "critical error"}, {"s=ok_again", "completed"}};
    const auto rows = summary_rows(out);
    ASSERT_EQ(rows.size(), expected.size());
    for (const auto& [id, status] : expected) EXPECT_EQ(column(rows.at(id), 2), status) << rows.at(id);
    // The failing case run alone says where it stopped and exits with status one.
    const std::string scenario = out + "/cases/s=error/scenario.json";
    const ProgramResult run = run_bench("run " + scenario + " --steps 3 --quiet" + extension + " 2>/dev/null");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.output.rfind("Scenario " + scenario + ": 0 of 3 time steps of 3600 s\nStopped at time step 1 of 3 "
                               "(no decisions came back from it on): critical error: MATLAB error while executing "
                               "'[new_simulation_state, custom_variables] = error_dispatch(",
                               0),
              0u)
        << run.output;
    EXPECT_NE(run.output.find("Result: the run ended in a critical error"), std::string::npos) << run.output;
}

TEST(StudyRun, AKilledStudyResumesWithoutRerunningFinishedCasesAndOneOrTwoJobsAgree) {
    // Long enough cases that the study is still running when two of them are done.
    const std::string study = write_study("resume", study_text(battery + "," + strategies, "\"steps\": 300,"));
    const std::string out = fs::path(study).parent_path() / "out";
    std::vector<std::string> words = {TAMLO_BENCH_PROGRAM, "study", study, "--out", out, "--jobs", "1", "--quiet",
                                      "--extension", TAMLO_EXTENSION_LIBRARY};
    std::vector<char*> argv;
    for (std::string& w : words) argv.push_back(w.data());
    argv.push_back(nullptr);
    pid_t pid = 0;
    ASSERT_EQ(posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), environ), 0);
    const auto finished = [&] {
        return fs::exists(out + "/cases") ? std::distance(fs::directory_iterator(out + "/cases"), {}) : 0;
    };
    for (int i = 0; i < 12000 && finished() < 2; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    ASSERT_GE(finished(), 2);
    ASSERT_LT(finished(), 6);
    std::map<std::string, fs::file_time_type> written;
    for (const auto& c : fs::directory_iterator(out + "/cases")) written[c.path().filename()] = fs::last_write_time(c.path() / "result.json");

    ASSERT_EQ(run_study(study, out, "--jobs 2").status, 0);
    const auto rows = summary_rows(out);
    ASSERT_EQ(rows.size(), 6u);
    for (const auto& [id, time] : written) EXPECT_EQ(fs::last_write_time(out + "/cases/" + id + "/result.json"), time) << id;
    for (const auto& [id, row] : rows) EXPECT_EQ(column(row, 3), "completed") << row;

    // A changed definition runs again: the case's scenario no longer matches. One worker, which
    // runs the cases one after the other on warm engines (study_start refuses an engine that is not
    // fresh and in its case's folder), gives the same summary as two; persistent_dispatch's
    // counter would change the figures if an engine carried it over. Each case's own scenario
    // carries its values.
    std::ofstream(study) << study_text(battery + "," + strategies, "\"steps\": 12,");
    ASSERT_EQ(run_study(study, out, "--jobs 2").status, 0);
    for (const auto& [id, row] : summary_rows(out)) {
        EXPECT_EQ(column(row, 3), "completed") << row;
        EXPECT_EQ(column(row, 4), "12") << row;
    }
    ASSERT_EQ(run_study(study, out + "_one", "--jobs 1").status, 0);
    EXPECT_EQ(summary_rows(out + "_one"), summary_rows(out));
    const auto scenario = nlohmann::json::parse(read_text(out + "/cases/battery=250.5+strategy=global/scenario.json"));
    EXPECT_EQ(scenario["batteries"][0]["battery_bank_maximum_absolute_soc"], 250.5);
    EXPECT_EQ(scenario["extension_parameters"][2]["value"], "global_dispatch");
}

// What an engine prints for a command.
std::string printed(Engine* engine, const char* command) {
    char buffer[1024] = {};
    engOutputBuffer(engine, buffer, sizeof buffer);
    engEvalString(engine, command);
    return buffer;
}

// Last: warm engines stay asked for in this process from here on.
TEST(WarmEngine, IsAForkOfTheTemplateInTheHostFolderWithNothingOfTheEngineBefore) {
    setenv("TAMLO_ENG_WARM", "1", 1);
    Engine* first = engOpenSingleUse("", nullptr, nullptr);
    ASSERT_NE(first, nullptr);
    printed(first, "x = 1; global g; g = 2; cd('/tmp');");
    engClose(first);
    Engine* second = engOpenSingleUse("", nullptr, nullptr);
    ASSERT_NE(second, nullptr);
    // Its parent (the field after the state in /proc/PID/stat) is the template, not this process.
    std::ifstream stat("/proc/" + std::to_string(tamlo_engGetPid(second)) + "/stat");
    std::string text, state;
    std::getline(stat, text);
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    pid_t parent = -1;
    fields >> state >> parent;
    EXPECT_NE(parent, ::getpid());
    // Nor the template's own LD_BIND_NOW (unless this process had set it).
    const char* bind_now = std::getenv("LD_BIND_NOW");
    EXPECT_EQ(printed(second, "disp(numel(who)); disp(numel(who('global'))); disp(getenv('LD_BIND_NOW')); disp(pwd)"),
              "0\n0\n" + std::string(bind_now != nullptr ? bind_now : "") + "\n" + fs::current_path().string() + "\n");
    engClose(second);
}

}  // namespace
}  // namespace tamlo_host
