// dispatch-bench check: the Octave-only constructs it finds, those it must not, and its report.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "strategy_check.h"

namespace tamlo_host {

// Readable failures: googletest prints a Finding through this.
void PrintTo(const Finding& f, std::ostream* os) {
    *os << f.line << ':' << f.column << ' ' << f.construct << " -> " << f.matlab;
}

namespace {

namespace fs = std::filesystem;

struct Row {
    const char* source;
    std::vector<Finding> expected;
};

const char* const double_quote_form = "'...' (MATLAB reads \"...\" as a string object, not a char array)";

const Row construct_rows[] = {
    {"if a\n  b = 1;\nendif\n", {{3, 1, "endif", "end"}}},
    {"while x\nendwhile", {{2, 1, "endwhile", "end"}}},
    {"for k = 1:3\n  endfor", {{2, 3, "endfor", "end"}}},
    {"function y = f(x)\n  y = x;\nendfunction", {{3, 1, "endfunction", "end"}}},
    {"switch x\n  case 1\nendswitch", {{3, 1, "endswitch", "end"}}},
    {"try\n  a;\ncatch\nend_try_catch", {{4, 1, "end_try_catch", "end"}}},
    {"unwind_protect\n  a;\nunwind_protect_cleanup\n  b;\nend_unwind_protect",
     {{1, 1, "unwind_protect", "try ... catch, or onCleanup"},
      {3, 1, "unwind_protect_cleanup", "catch (then rethrow), or onCleanup"},
      {5, 1, "end_unwind_protect", "end"}}},
    {"if a != b, end", {{1, 6, "!=", "~="}}},
    {"c = !done;", {{1, 5, "!", "~"}}},
    {"k++;", {{1, 2, "++", "x = x + 1"}}},
    {"--k;", {{1, 1, "--", "x = x - 1"}}},
    {"x += 2;", {{1, 3, "+=", "x = x + ..."}}},
    {"x -= 2; x *= 3; x /= 4; x ^= 2;",
     {{1, 3, "-=", "x = x - ..."}, {1, 11, "*=", "x = x * ..."}, {1, 19, "/=", "x = x / ..."},
      {1, 27, "^=", "x = x ^ ..."}}},
    {"v(2) .*= 3;", {{1, 6, ".*=", "x = x .* ..."}}},
    {"y = 2 ** 3 + v .** 2;", {{1, 7, "**", "^"}, {1, 16, ".**", ".^"}}},
    {"x = 1; # note", {{1, 8, "#", "%"}}},
    {"## help text", {{1, 1, "#", "%"}}},
    {"#{\nk++ != here\n#}\nx = 1;", {{1, 1, "#{", "%{"}, {3, 1, "#}", "%}"}}},
    {"  #{\n  #{\n  #}\n  #}", {{1, 3, "#{", "%{"}, {4, 3, "#}", "%}"}}},
    {"disp(\"hello\");", {{1, 6, "\"...\"", double_quote_form}}},
    {"s = \"it's # \\\" != \";", {{1, 5, "\"...\"", double_quote_form}}},
    {"s = \"one \\\ntwo\"; k++;", {{1, 5, "\"...\"", double_quote_form}, {2, 8, "++", "x = x + 1"}}},
    {"printf('%d\\n', 3);", {{1, 1, "printf", "fprintf"}}},
    {"puts('a'); fputs(stdout, 'b'); fdisp(stdout, 3);",
     {{1, 1, "puts", "fprintf"}, {1, 12, "fputs", "fprintf"}, {1, 32, "fdisp", "disp, or fprintf to a file"}}},
    {"do\n  k++;\nuntil k > 3",
     {{1, 1, "do", "while true ... if condition, break, end, end"},
      {2, 4, "++", "x = x + 1"},
      {3, 1, "until", "if condition, break, end (inside while true ... end)"}}},
    {"n = size(m)(2);", {{1, 12, "indexing a call's result: f(...)(...)", "a temporary variable: t = f(...); t(...)"}}},
    {"e = [4 5 6](2); v = f(x){1};",
     {{1, 12, "indexing a call's result: f(...)(...)", "a temporary variable: t = f(...); t(...)"},
      {1, 25, "indexing a call's result: f(...)(...)", "a temporary variable: t = f(...); t(...)"}}},
    {"x = max(1,\n  2);", {{1, 11, "line break inside ( )", "... at the end of the line"}}},
    {"y = 1 + \\\n  2;", {{1, 9, "\\", "..."}}},
    {"y = 1 + \\ % why\n  2;", {{1, 9, "\\", "..."}}},
};

// Texts, comments, field names and transposes hold Octave-looking characters that are not code.
const char* const clean_rows[] = {
    "s = 'a != b # c ++ \"q\"';",
    "q = 'it''s # here';",
    "x = 1; % a != b # endif",
    "%{\nk++; # endif\nprintf(\"x\")\n%}\ny = 1;",
    "v = a'; w = x(1)' + [1 2]' + c{1}' + 3' + a.' + a'';",
    "u = [a' 'text #'];",
    "t = {'a' 'b!'};",
    "disp 'hello != #'",
    "if x == 'a#', end",
    "switch v\n  case 'a#'\nend",
    "y = a(end)';",
    "s.end = 1; s.endif = 2; s.printf = 3; s.do = 4;",
    "x = y ... continuation != #\n  + 1;",
    "x = y + ... % comment != #\n  z;",
    "f = @(x)(x + 1); g = @()(2);",
    "d = c{1}(2); e = c{1}{2}; f = s.('a b'){1}; g = s.(name)(2);",
    "z = x ~= y; n = ~z; m = a - -b;",
    "m = [1 2\n3 4];\nc = {1\n2};",
    "x = 1e-3; y = 2.5e+2i; r = 1./x; p = 2.^x; h = 0x1F;",
    "dot = a.'*b; z = x.^2';",
    "until = 3; do = until;",
};

TEST(StrategyCheck, FindsEachOctaveOnlyConstruct) {
    for (const Row& row : construct_rows) {
        EXPECT_EQ(find_octave_only(row.source), row.expected) << row.source;
    }
}

TEST(StrategyCheck, TextsCommentsFieldsAndTransposesAreNotFindings) {
    for (const char* source : clean_rows) {
        EXPECT_EQ(find_octave_only(source), std::vector<Finding>{}) << source;
    }
}

TEST(StrategyCheck, BundledStrategiesAndFixturesRunInMatlab) {
    for (const char* folder : {"examples/strategies", "tests/e2e/matlab", "tests/host/matlab"}) {
        std::ostringstream out, err;
        EXPECT_EQ(run_check_command(std::string(TAMLO_SOURCE_DIR) + "/" + folder, out, err), 0)
            << folder << "\n" << out.str() << err.str();
    }
    std::ostringstream out, err;
    EXPECT_EQ(run_check_command(std::string(TAMLO_SOURCE_DIR) + "/examples/hybrid_load_following.json", out, err), 0)
        << out.str() << err.str();
}

class CheckCommand : public ::testing::Test {
protected:
    void SetUp() override {
        folder = fs::temp_directory_path() /
                 ("strategy_check_" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
        fs::remove_all(folder);
        fs::create_directories(folder / "strategy");
    }
    void TearDown() override { fs::remove_all(folder); }
    void write(const fs::path& file, const std::string& text) { std::ofstream(folder / file) << text; }
    int check(const fs::path& target) { return run_check_command(target.string(), out, err); }

    fs::path folder;
    std::ostringstream out, err;
};

TEST_F(CheckCommand, ListsFindingsFileByFileThenCounts) {
    const fs::path s = folder / "strategy";
    write("strategy/b_dispatch.m", "function x = b_dispatch(x)\n  x += 1;\nendfunction\n");
    write("strategy/a_start.m", "function a_start()\nend\n");
    write("strategy/notes.txt", "endif\n");
    EXPECT_EQ(check(s), 1);
    EXPECT_EQ(out.str(), (s / "b_dispatch.m").string() + ":2:5: Octave only: +=; MATLAB: x = x + ...\n" +
                             (s / "b_dispatch.m").string() + ":3:1: Octave only: endfunction; MATLAB: end\n" +
                             "2 Octave-only constructs in 1 of 2 files\n");
    EXPECT_EQ(err.str(), "");
}

TEST_F(CheckCommand, CleanFolderOrFileExitsZero) {
    write("strategy/a_start.m", "function a_start()\nend\n");
    EXPECT_EQ(check(folder / "strategy"), 0);
    EXPECT_EQ(check(folder / "strategy" / "a_start.m"), 0);
    EXPECT_EQ(out.str(), "no Octave-only constructs in 1 file\nno Octave-only constructs in 1 file\n");
}

TEST_F(CheckCommand, ScenarioNamesTheFolder) {
    write("strategy/my_dispatch.m", "function s = my_dispatch(s)\n  printf('x');\nend\n");
    write("s.json", R"({"extension_parameters": [{"name": "path", "value": "strategy"},
                                                  {"name": "dispatch", "value": "my_dispatch"}]})");
    EXPECT_EQ(check(folder / "s.json"), 1);
    EXPECT_NE(out.str().find("my_dispatch.m:2:3: Octave only: printf; MATLAB: fprintf\n"), std::string::npos)
        << out.str();
}

TEST_F(CheckCommand, BadInputExitsTwoNamingTheFault) {
    struct BadRow {
        const char* scenario;  // nullptr: check a folder that does not exist
        const char* message;
    };
    const BadRow rows[] = {
        {nullptr, "no such folder or scenario file"},
        {"{}", "extension_parameters: missing, or not a list"},
        {R"({"extension_parameters": [{"name": "dispatch", "value": "d"}]})", "no \"path\" parameter"},
        {R"({"extension_parameters": [{"name": "path", "value": "nowhere"}]})", "does not exist"},
        {R"({"extension_parameters": [{"name": "path", "value": 3}]})", "extension_parameters[0].value: expected a text"},
        {R"({"extension_parameters": [{"name": "path", "value": "strategy"},
                                      {"name": "end simulation", "value": "my_end"}]})",
         "the function my_end has no file"},
        {R"({"extension_parameters": [{"name": "path", "value": "."}]})", "no .m files in the folder"},
        {"{", "not valid JSON"},
    };
    write("strategy/other.m", "x = 1;\n");
    for (const BadRow& row : rows) {
        out.str("");
        err.str("");
        fs::path target = folder / "missing";
        if (row.scenario != nullptr) {
            write("s.json", row.scenario);
            target = folder / "s.json";
        }
        EXPECT_EQ(check(target), 2) << row.message;
        EXPECT_NE(err.str().find(row.message), std::string::npos) << err.str();
        EXPECT_EQ(out.str(), "") << row.message;
    }
}

}  // namespace
}  // namespace tamlo_host
