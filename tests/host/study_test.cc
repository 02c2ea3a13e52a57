// Studies: expanding study files, and dispatch-bench study end to end (fresh engines, failing
// cases, workers, resume, and agreement with single runs).
#include <gtest/gtest.h>

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <thread>

#include "engine.h"
#include "input_error.h"
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

// A fresh folder per test, holding the study file written from text.
std::string write_study(const std::string& name, const std::string& text) {
    // Of this process: the plain and sanitized builds' tests may run side by side.
    const fs::path dir = fs::path(testing::TempDir()) / ("study_" + name + "_" + std::to_string(::getpid()));
    fs::remove_all(dir);
    fs::create_directories(dir);
    std::ofstream(dir / "study.json") << text;
    return (dir / "study.json").string();
}

// The body of a study on the fixture scenario with the given "vary" list and extra fields.
std::string study_text(const std::string& vary, const std::string& extra = "") {
    return "{\"scenario\": \"" + fixtures + "/scenario.json\", " + extra + "\"vary\": [" + vary + "]}";
}

const std::string strategies =
    "{\"name\": \"strategy\", \"strategies\": ["
    "{\"label\": \"persistent\", \"path\": \"" + fixtures + "/strategy_a\", \"dispatch\": \"persistent_dispatch\"},"
    "{\"label\": \"global\", \"path\": \"" + fixtures + "/strategy_b\", \"dispatch\": \"global_dispatch\"}]}";
const std::string battery = "{\"name\": \"battery\", \"path\": \"batteries[0].battery_bank_maximum_absolute_soc\", "
                            "\"values\": [100, 250.5, 400]}";

struct ExpansionRow {
    std::string study;
    std::vector<std::string> ids;
};

TEST(StudyExpansion, ProductAndListGiveReadableUniqueIds) {
    const ExpansionRow rows[] = {
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
    for (const ExpansionRow& row : rows) {
        const Study study = read_study(write_study("expansion", row.study));
        std::vector<std::string> ids;
        for (const StudyCase& c : expand_study(study)) ids.push_back(c.id);
        EXPECT_EQ(ids, row.ids) << row.study;
    }
}

TEST(StudyExpansion, CaseScenarioCarriesTheValuesAndAbsolutePaths) {
    // Named the way a user in its folder names it: a bare file name.
    const fs::path file = write_study("values", study_text(battery + "," + strategies));
    const fs::path before = fs::current_path();
    fs::current_path(file.parent_path());
    const Study study = read_study(file.filename().string());
    fs::current_path(before);
    const Json scenario = Json::parse(expand_study(study)[3].scenario_text);
    EXPECT_EQ(scenario["batteries"][0]["battery_bank_maximum_absolute_soc"], 250.5);
    EXPECT_EQ(scenario["extension_parameters"][0]["value"], fixtures + "/strategy_b");
    EXPECT_EQ(scenario["extension_parameters"][2]["value"], "global_dispatch");
    EXPECT_TRUE(fs::path(scenario["plant"]["primary_loads"][0]["load"]["file"].get<std::string>()).is_absolute());
}

struct BadStudyRow {
    std::string study;
    std::string message;  // what follows the study file's name
};

TEST(StudyExpansion, BadStudiesNameTheFileAndJsonPath) {
    const BadStudyRow rows[] = {
        {study_text("{\"name\": \"b\", \"path\": \"batteries[3].wear_cost\", \"values\": [1]}"),
         ": vary[0].path: batteries[3] is not there: the list has 1 entries in " + fixtures + "/scenario.json"},
        {study_text("{\"name\": \"b\", \"path\": \"batteries[0].battery_bank_maximum_absolute_soc\", "
                    "\"values\": [100, \"big\"]}"),
         ": vary[0].values[1]: the scenario refuses it: batteries[0].battery_bank_maximum_absolute_soc: expected an "
         "energy from 0 to 1e10 kWh, found the text \"big\""},
        {study_text("{\"name\": \"b\", \"path\": \"batteries[0].colour\", \"values\": [1]}"),
         ": vary[0].values[0]: the scenario refuses it: batteries[0].colour: unknown field"},
        {study_text("{\"name\": \"b\", \"path\": \"batteries[x]\", \"values\": [1]}"),
         ": vary[0].path: the path \"batteries[x]\" has a list index that is not a whole number"},
        {study_text("{\"name\": \"s\", \"strategies\": [{\"path\": \"" + fixtures +
                    "/strategy_a\", \"dispatch\": \"missing_dispatch\"}]}"),
         ": vary[0].strategies[0].dispatch: there is no missing_dispatch.m in " + fixtures + "/strategy_a"},
        {study_text(battery, "\"combine\": \"list\", \"cases\": [{\"battery\": 7}],"),
         ": cases[0].battery: the number 7 is not one of the values of vary[0]"},
        {study_text(battery, "\"combine\": \"list\", \"cases\": [{\"pv\": 100}],"),
         ": cases[0].pv: no variation has this name"},
        {study_text(battery + "," + battery), ": vary[1].name: the name \"battery\" is used twice"},
        {study_text("{\"name\": \"b\", \"values\": [1]}"),
         ": vary[0]: needs exactly one of \"path\", \"parameter\" or \"strategies\""},
        {"{\"scenario\": \"nowhere.json\"}", ": scenario: the file "},
        {study_text(battery, "\"repeat\": 2,"), ": repeat: unknown field"},
    };
    for (const BadStudyRow& row : rows) {
        const std::string file = write_study("bad", row.study);
        try {
            expand_study(read_study(file));
            ADD_FAILURE() << "accepted: " << row.study;
        } catch (const InputError& e) {
            EXPECT_EQ(std::string(e.what()).rfind(file + row.message, 0), 0u) << e.what();
        }
    }
}

pid_t parent_of(pid_t pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
    std::string text;
    std::getline(in, text);
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string state;
    pid_t parent = -1;
    fields >> state >> parent;
    return parent;
}

// What an engine prints for a command.
std::string printed(Engine* engine, const char* command) {
    char buffer[1024] = {};
    engOutputBuffer(engine, buffer, sizeof buffer);
    engEvalString(engine, command);
    return buffer;
}

TEST(WarmEngine, StartsInTheHostFolderWithNothingOfTheEngineBefore) {
    setenv("TAMLO_ENG_WARM", "1", 1);
    Engine* first = engOpenSingleUse("", nullptr, nullptr);
    ASSERT_NE(first, nullptr);
    printed(first, "x = 1; global g; g = 2; cd('/tmp');");
    engClose(first);
    Engine* second = engOpenSingleUse("", nullptr, nullptr);
    ASSERT_NE(second, nullptr);
    // A fork of the template, not an engine this process started itself.
    EXPECT_NE(parent_of(tamlo_engGetPid(second)), getpid());
    EXPECT_EQ(printed(second, "disp(numel(who)); disp(numel(who('global'))); disp(pwd)"),
              "0\n0\n" + fs::current_path().string() + "\n");
    engClose(second);
}

// dispatch-bench itself, as a user runs it.
struct ProgramResult {
    std::string output;
    int status = -1;
};

ProgramResult run_bench(const std::string& arguments) {
    const std::string command = TAMLO_BENCH_PROGRAM " " + arguments + " --extension " TAMLO_EXTENSION_LIBRARY " 2>&1";
    ProgramResult result;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return result;
    char buffer[4096];
    for (std::size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) result.output.append(buffer, n);
    const int status = pclose(pipe);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

ProgramResult run_study(const std::string& study, const std::string& out, const std::string& options = "") {
    return run_bench("study " + study + " --out " + out + " --quiet " + options);
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

TEST(StudyProgram, CasesWithPersistentOrGlobalStateAgreeInEitherOrderAndAlone) {
    const std::string list = study_text(strategies, "\"combine\": \"list\", \"cases\": [" +
                                                        std::string("{\"strategy\": \"persistent\"}, "
                                                                    "{\"strategy\": \"global\"}, "
                                                                    "{\"strategy\": \"persistent\"}, "
                                                                    "{\"strategy\": \"global\"}],"));
    const std::string study = write_study("order", list);
    const std::string out = fs::path(study).parent_path() / "out";
    // One worker runs them one after the other; the study_start fixture refuses a used engine.
    ASSERT_EQ(run_study(study, out, "--jobs 1").status, 0);
    const auto rows = summary_rows(out);
    ASSERT_EQ(rows.size(), 4u);
    for (const auto& [id, row] : rows) EXPECT_EQ(column(row, 2), "completed") << row;
    const auto without_id = [](const std::string& row) { return row.substr(row.find(',')); };
    EXPECT_EQ(without_id(rows.at("strategy=persistent")), without_id(rows.at("strategy=persistent-2")));
    EXPECT_EQ(without_id(rows.at("strategy=global")), without_id(rows.at("strategy=global-2")));
    for (const std::string label : {"global", "persistent"}) {
        const std::string alone = write_study("alone_" + label, study_text(strategies, "\"combine\": \"list\", "
                                                                           "\"cases\": [{\"strategy\": \"" + label + "\"}],"));
        const std::string alone_out = fs::path(alone).parent_path() / "out";
        ASSERT_EQ(run_study(alone, alone_out).status, 0);
        EXPECT_EQ(summary_rows(alone_out).at("strategy=" + label), rows.at("strategy=" + label));
    }
}

TEST(StudyProgram, FailingCasesAreMarkedAndTheOthersComplete) {
    const std::string failing = fixtures + "/failing";
    const std::string study = write_study(
        "failing", study_text("{\"name\": \"s\", \"strategies\": ["
                              "{\"label\": \"ok\", \"path\": \"" + fixtures + "/strategy_a\", \"dispatch\": \"persistent_dispatch\"},"
                              "{\"label\": \"loop\", \"path\": \"" + failing + "\", \"dispatch\": \"loop_dispatch\"},"
                              "{\"label\": \"exit\", \"path\": \"" + failing + "\", \"dispatch\": \"exit_dispatch\"},"
                              "{\"label\": \"error\", \"path\": \"" + failing + "\", \"dispatch\": \"error_dispatch\"},"
                              "{\"label\": \"ok_again\", \"path\": \"" + fixtures + "/strategy_b\", \"dispatch\": \"global_dispatch\"}]}"));
    const std::string out = fs::path(study).parent_path() / "out";
    EXPECT_EQ(run_study(study, out, "--jobs 2 --call-timeout 2").status, 1);
    const std::map<std::string, std::string> expected = {
        {"s=ok", "completed"}, {"s=loop", "timed out"}, {"s=exit", "engine died"},
        {"s=error", "critical error"}, {"s=ok_again", "completed"}};
    const auto rows = summary_rows(out);
    ASSERT_EQ(rows.size(), expected.size());
    for (const auto& [id, status] : expected) EXPECT_EQ(column(rows.at(id), 2), status) << rows.at(id);
}

TEST(StudyProgram, OneAndTwoJobsAgreeAndEachCaseRerunsAloneToTheSameResults) {
    const std::string study = write_study("jobs", study_text(battery + "," + strategies, "\"steps\": 12,"));
    const std::string dir = fs::path(study).parent_path();
    ASSERT_EQ(run_study(study, dir + "/one", "--jobs 1").status, 0);
    ASSERT_EQ(run_study(study, dir + "/two", "--jobs 2").status, 0);
    const auto rows = summary_rows(dir + "/one");
    ASSERT_EQ(rows.size(), 6u);
    EXPECT_EQ(rows, summary_rows(dir + "/two"));
    for (const auto& [id, row] : rows) {
        const std::string c = dir + "/one/cases/" + id;
        ASSERT_EQ(run_bench("run " + c + "/scenario.json --quiet --out " + dir + "/alone.csv").status, 0) << id;
        EXPECT_EQ(read_text(dir + "/alone.csv"), read_text(c + "/results.csv")) << id;
    }
}

TEST(StudyProgram, AKilledStudyResumesWithoutRerunningFinishedCases) {
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
        std::size_t n = 0;
        if (fs::exists(out + "/cases")) n = std::distance(fs::directory_iterator(out + "/cases"), {});
        return n;
    };
    for (int i = 0; i < 12000 && finished() < 2; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    kill(pid, SIGKILL);
    int status = 0;
    waitpid(pid, &status, 0);
    const std::size_t before = finished();
    ASSERT_GE(before, 2u);
    ASSERT_LT(before, 6u);
    std::map<std::string, fs::file_time_type> written;
    for (const auto& c : fs::directory_iterator(out + "/cases")) written[c.path().filename()] = fs::last_write_time(c.path() / "result.json");

    ASSERT_EQ(run_study(study, out, "--jobs 2").status, 0);
    const auto rows = summary_rows(out);
    ASSERT_EQ(rows.size(), 6u);
    for (const auto& [id, time] : written) EXPECT_EQ(fs::last_write_time(out + "/cases/" + id + "/result.json"), time) << id;
    for (const auto& [id, row] : rows) EXPECT_EQ(column(row, 3), "completed") << row;

    // A changed definition runs again: the case's scenario no longer matches.
    const std::string changed = write_study("resume_changed", study_text(battery + "," + strategies, "\"steps\": 12,"));
    fs::copy(fs::path(changed), fs::path(study), fs::copy_options::overwrite_existing);
    ASSERT_EQ(run_study(study, out, "--jobs 2").status, 0);
    for (const auto& [id, row] : summary_rows(out)) EXPECT_EQ(column(row, 4), "12") << row;
}

}  // namespace
}  // namespace tamlo_host
