// The scenario reader and the command line: tables of bad inputs and the one message each must
// give, and what a good scenario becomes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "command_line.h"
#include "input_error.h"
#include "json_reader.h"
#include "row_name.h"
#include "scenario.h"

namespace tamlo_host {
namespace {

using tamlo_test::PrintTo;

const char* const base_scenario = R"({
  "timestep_size_in_seconds": 3600,
  "number_of_timesteps": 3,
  "extension_parameters": [{"name": "path", "value": "."}, {"name": "dispatch", "value": "d"}],
  "generators": [{"name": "g", "rated_capacity": 10, "minimum_load": 0, "fuel": {"cost": 1}}],
  "primary_loads": [{"name": "ac", "is_AC": true}],
  "batteries": [{"fractional_charge_efficiency": 0.9, "fractional_discharge_efficiency": 0.9,
                 "battery_bank_maximum_absolute_soc": 10, "dedicated_converter": {"inverter_capacity": 5}}],
  "grids": [{"technical_model": {"model_type": "Scheduled", "grid_rate": [{"power_price": 0.1}],
                                 "grid_rate_index": [0, 0, 0]},
             "limit_net_grid_purchases": true, "max_net_grid_purchases": 5}],
  "plant": {"primary_loads": [{"load": {"file": "loads.csv", "column": "ac"}}],
            "grids": [{"max_grid_sales": 1}]}
})";

class ScenarioFiles : public ::testing::Test {
protected:
    void SetUp() override {
        char name[] = "/tmp/bench-scenario-XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        dir_ = name;
        write("loads.csv", "hour,ac\n0,1\n1,2\n2,3\n");
        write("short.csv", "hour,ac\n0,1\n1,2\n");
        write("text.csv", "# comment line\nhour,ac\n0,1\n1,.\n2,3\n");
        write("index.csv", "hour,rate\n0,0\n1,0\n2,1\n");
        write("duplicate.csv", "hour,ac,ac\n0,1,1\n1,2,2\n2,3,3\n");
        write("huge.csv", "hour,ac\n0,1\n1,2\n2,1e400\n");
        write("bytes.csv", "hour,ac\n0,1\n1,ab\xff\x01\n2,3\n");
        std::filesystem::create_directory(dir_ / "it's");
    }
    void TearDown() override { std::filesystem::remove_all(dir_); }

    void write(const std::string& file, const std::string& text) const { std::ofstream(dir_ / file) << text; }

    std::string scenario_with(const std::string& patch) const {
        Json document = Json::parse(base_scenario);
        if (!patch.empty()) document = document.patch(Json::parse(patch));
        write("s.json", document.dump(2));
        return (dir_ / "s.json").string();
    }

    std::string expand(std::string text) const {
        for (std::string::size_type at; (at = text.find("{dir}")) != std::string::npos;) {
            text.replace(at, 5, dir_.string());
        }
        return text;
    }

    std::filesystem::path dir_;
};

// --steps shortening a scenario is the golden run's (program_test.cc).
TEST_F(ScenarioFiles, BaseScenarioReadsWithDerivedValues) {
    const Scenario s = read_scenario(scenario_with(""));
    EXPECT_EQ(s.plant.loads[0], (std::vector<double>{1, 2, 3}));
    EXPECT_DOUBLE_EQ(s.parameters.primary_load_list[0].peak_load, 3);
    EXPECT_EQ(s.parameters.extension_parameters[0].text_value, dir_.string());
    EXPECT_DOUBLE_EQ(s.parameters.battery_list[0].dedicated_converter.inverter_capacity, 5);
    EXPECT_DOUBLE_EQ(s.plant.batteries[0].initial_state_of_charge_percent, 100);
}

struct BadInput {
    std::string name;
    std::string pointer;  // where in the base scenario
    std::string value;    // JSON put there; empty: the field is removed
    std::string message;
};

class BadScenario : public ScenarioFiles, public ::testing::WithParamInterface<BadInput> {};

TEST_P(BadScenario, GivesOneMessageNamingTheFault) {
    const BadInput& c = GetParam();
    const Json op = c.value.empty() ? Json{{"op", "remove"}, {"path", c.pointer}}
                                    : Json{{"op", "add"}, {"path", c.pointer}, {"value", Json::parse(c.value)}};
    const std::string file = scenario_with(Json::array({op}).dump());
    try {
        read_scenario(file);
        FAIL() << c.name << ": no error";
    } catch (const InputError& e) {
        EXPECT_EQ(std::string(e.what()), expand(c.message)) << c.name;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Table, BadScenario,
    ::testing::Values(
        BadInput{"long text where a plain number is expected, cut in the message", "/generators/0/emissions_factor_CO",
                 '"' + std::string(300, 'x') + '"',
                 "{dir}/s.json: generators[0].emissions_factor_CO: expected a number, found the text \"" +
                     std::string(200, 'x') + "...\""},
        BadInput{"unknown component field", "/generators/0/fuel/price", "1",
                 "{dir}/s.json: generators[0].fuel.price: unknown field"},
        BadInput{"missing required field", "/generators/0/rated_capacity", "",
                 "{dir}/s.json: generators[0].rated_capacity: missing; this field is required"},
        BadInput{"boolean expected", "/primary_loads/0/is_AC", "1",
                 "{dir}/s.json: primary_loads[0].is_AC: expected true or false, found the number 1"},
        BadInput{"missing series file", "/plant/primary_loads/0/load/file", R"("none.csv")",
                 "{dir}/none.csv: cannot open the file (named at plant.primary_loads[0].load in {dir}/s.json)"},
        BadInput{"series shorter than the run", "/plant/primary_loads/0/load/file", R"("short.csv")",
                 "{dir}/short.csv: column \"ac\" has 2 values but the run has 3 time steps (named at "
                 "plant.primary_loads[0].load in {dir}/s.json)"},
        BadInput{"text in a series", "/plant/primary_loads/0/load/file", R"("text.csv")",
                 "{dir}/text.csv:4: column \"ac\": \".\" is not a decimal number (like 12, -0.5 or 1e5)"},
        BadInput{"unknown column", "/plant/primary_loads/0/load/column", R"("dc")",
                 "{dir}/loads.csv: no column \"dc\" in the header line (named at plant.primary_loads[0].load in "
                 "{dir}/s.json)"},
        BadInput{"lists that disagree", "/plant/primary_loads/1", R"({"load": {"file": "loads.csv", "column": "ac"}})",
                 "{dir}/s.json: plant.primary_loads: has 2 entries but primary_loads has 1; the two lists must agree"},
        BadInput{"index out of range in a series", "/grids/0/technical_model/grid_rate_index",
                 R"({"file": "index.csv", "column": "rate"})",
                 "{dir}/index.csv:4: column \"rate\": 1 is not allowed here; it needs a whole number from 0 to 0 (a "
                 "zero-based index into grid_rate)"},
        BadInput{"unknown grid model", "/grids/0/technical_model/model_type", R"("Flat")",
                 "{dir}/s.json: grids[0].technical_model.model_type: expected \"RealTime\", \"Scheduled\" or "
                 "\"ComplexUtility\", found \"Flat\""},
        BadInput{"efficiency out of range", "/batteries/0/fractional_charge_efficiency", "90",
                 "{dir}/s.json: batteries[0].fractional_charge_efficiency: must be a fraction above 0 and at most 1"},
        BadInput{"missing strategy folder", "/extension_parameters/0/value", R"("strategies")",
                 "{dir}/s.json: extension_parameters[0].value: the folder {dir}/strategies does not exist"},
        BadInput{"quote in the strategy folder", "/extension_parameters/0/value", R"("it's")",
                 "{dir}/s.json: extension_parameters[0].value: the folder {dir}/it's has a single quote in its name; "
                 "MATLAB's cd receives the folder as it is, so that character would break the command or run what "
                 "follows it as code; rename the folder"},
        BadInput{"code in a function name", "/extension_parameters/1/value",
                 R"("strategies'); system('touch X'); cd('strategies")",
                 "{dir}/s.json: extension_parameters[1].value: \"strategies'); system('touch X'); cd('strategies\" is "
                 "not a MATLAB function name; it needs a letter, then letters, digits or underscores, at most 63 "
                 "characters, and no keyword"},
        BadInput{"absurd capacity", "/generators/0/rated_capacity", "1e308",
                 "{dir}/s.json: generators[0].rated_capacity: 1e+308 is not allowed here; it needs a power from 0 to "
                 "1e10 kW"},
        BadInput{"minimum load above rating", "/generators/0/minimum_load", "12",
                 "{dir}/s.json: generators[0].minimum_load: must be at most rated_capacity (10.0)"},
        BadInput{"count beyond its record's range", "/flywheels", R"([{"quantity": 1099511627776}])",
                 "{dir}/s.json: flywheels[0].quantity: expected a whole number from 0 to 2147483647, found the number "
                 "1099511627776"},
        BadInput{"duplicate series columns", "/plant/primary_loads/0/load/file", R"("duplicate.csv")",
                 "{dir}/duplicate.csv:1: column \"ac\" appears twice in the header line (fields 2 and 3)"},
        BadInput{"overflowing number in a series", "/plant/primary_loads/0/load/file", R"("huge.csv")",
                 "{dir}/huge.csv:4: column \"ac\": 1e400 is beyond the range of numbers"},
        BadInput{"invalid bytes in a series", "/plant/primary_loads/0/load/file", R"("bytes.csv")",
                 "{dir}/bytes.csv:3: column \"ac\": \"ab\\xFF\\x01\" is not a decimal number (like 12, -0.5 or 1e5)"},
        BadInput{"fraction where a count is expected", "/generators/0/component_number", "1.5",
                 "{dir}/s.json: generators[0].component_number: expected a whole number from 0 to 9007199254740992 "
                 "(MATLAB receives it as a double), found the number 1.5"},
        BadInput{"point of a curve that is not two numbers", "/wind_turbines",
                 R"([{"power_curve": [[0, 0], [3, "x"]]}])",
                 "{dir}/s.json: wind_turbines[0].power_curve[1]: expected a point [x, y] of two numbers, found "
                 "[3,\"x\"]"}),
    tamlo_test::row_name);

struct BadCommandLine {
    const char* name;
    const char* arguments;  // after "dispatch-bench run {dir}/s.json"
    const char* message;    // what goes to the error stream
};

class BadOption : public ScenarioFiles, public ::testing::WithParamInterface<BadCommandLine> {};

// Runs the command line in this process: every row must stop before any extension is loaded.
TEST_P(BadOption, ExitsWithStatusTwoAndOneMessage) {
    const BadCommandLine& c = GetParam();
    scenario_with("");
    std::vector<std::string> words{"dispatch-bench", "run", expand("{dir}/s.json")};
    std::istringstream arguments(expand(c.arguments));
    for (std::string word; arguments >> word;) words.push_back(word);
    if (words[3] == "--instead") words.erase(words.begin() + 2, words.begin() + 4);
    std::vector<const char*> argv;
    for (const std::string& w : words) argv.push_back(w.c_str());
    std::ostringstream out, err;
    EXPECT_EQ(run_command_line(static_cast<int>(argv.size()), argv.data(), out, err), exit_bad_input) << c.name;
    EXPECT_EQ(err.str(), expand(c.message)) << c.name;
    EXPECT_EQ(out.str(), "") << c.name;
}

INSTANTIATE_TEST_SUITE_P(
    Table, BadOption,
    ::testing::Values(
        BadCommandLine{"steps one past the largest whole number", "--steps 18446744073709551617",
                       "--steps: 18446744073709551617 is out of range; expected 1 to 9007199254740992\n"
                       "Run with --help for more information.\n"},
        BadCommandLine{"hexadecimal steps", "--steps 0x1A",
                       "--steps: expected a whole number, found \"0x1A\"\nRun with --help for more information.\n"},
        BadCommandLine{"negative time limit", "--call-timeout -1",
                       "--call-timeout: -1 is out of range; expected 0 (no limit) to 604800 seconds (a week)\n"
                       "Run with --help for more information.\n"},
        BadCommandLine{"nan time limit", "--call-timeout nan",
                       "--call-timeout: expected a number of seconds, found \"nan\"\n"
                       "Run with --help for more information.\n"},
        BadCommandLine{"week without plot", "--week 2", "--week requires --plot\nRun with --help for more information.\n"},
        BadCommandLine{"folder given as scenario", "--instead {dir}",
                       "dispatch-bench: {dir}: is a folder; name a scenario file such as {dir}/s.json\n"},
        BadCommandLine{"results over a series", "--out {dir}/loads.csv",
                       "dispatch-bench: --out {dir}/loads.csv: this is a series file of the run ({dir}/loads.csv); "
                       "writing to it would overwrite it; choose another file\n"},
        BadCommandLine{"plot over the results", "--out {dir}/r.csv --plot {dir}/r.csv",
                       "dispatch-bench: --plot {dir}/r.csv: this is the --out file of the run ({dir}/r.csv); writing to "
                       "it would overwrite it; choose another file\n"},
        BadCommandLine{"results in a missing folder", "--out {dir}/missing/r.csv",
                       "dispatch-bench: --out {dir}/missing/r.csv: the folder {dir}/missing does not exist; create it "
                       "first\n"}),
    tamlo_test::row_name);

TEST_F(ScenarioFiles, SyntaxErrorNamesLineAndColumn) {
    write("broken.json", "{\n  \"number_of_timesteps\": 3,\n  oops\n}\n");
    try {
        read_scenario((dir_ / "broken.json").string());
        FAIL();
    } catch (const InputError& e) {
        const std::string what = e.what();
        EXPECT_EQ(what.rfind(expand("{dir}/broken.json: not valid JSON: parse error at line 3, column 3"), 0), 0u)
            << what;
    }
}

}  // namespace
}  // namespace tamlo_host
