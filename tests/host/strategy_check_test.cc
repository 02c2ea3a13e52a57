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

const char* const call_index = "indexing a call's result: f(...)(...)";
const char* const temporary = "a temporary variable: t = f(...); t(...)";

// Texts, comments, field names and transposes hold Octave-looking characters that are not code:
// the rows without findings.
const Row rows[] = {
    {"if a\n  b = 1;\nendif\nfor k = 1:3\n  end_try_catch", {{3, 1, "endif", "end"}, {5, 3, "end_try_catch", "end"}}},
    {"unwind_protect\n  a;\nunwind_protect_cleanup\n  b;\nend_unwind_protect",
     {{1, 1, "unwind_protect", "try ... catch, or onCleanup"},
      {3, 1, "unwind_protect_cleanup", "catch (then rethrow), or onCleanup"},
      {5, 1, "end_unwind_protect", "end"}}},
    {"if a != b, end\nc = !done;\nk++;\n--k;", {{1, 6, "!=", "~="}, {2, 5, "!", "~"}, {3, 2, "++", "x = x + 1"},
                                               {4, 1, "--", "x = x - 1"}}},
    {"x += 2; x ^= 2;\nv(2) .*= 3;",
     {{1, 3, "+=", "x = x + ..."}, {1, 11, "^=", "x = x ^ ..."}, {2, 6, ".*=", "x = x .* ..."}}},
    {"y = 2 ** 3 + v .** 2;", {{1, 7, "**", "^"}, {1, 16, ".**", ".^"}}},
    {"x = 1; # note\n## help text", {{1, 8, "#", "%"}, {2, 1, "#", "%"}}},
    {"#{\nk++ != here\n#}\nx = 1;\n  #{\n  #{\n  #}\n  #}",
     {{1, 1, "#{", "%{"}, {3, 1, "#}", "%}"}, {5, 3, "#{", "%{"}, {8, 3, "#}", "%}"}}},
    {"disp(\"hello\");\ns = \"it's # \\\" != \";", {{1, 6, "\"...\"", double_quote_form}, {2, 5, "\"...\"", double_quote_form}}},
    {"s = \"one \\\ntwo\"; k++;", {{1, 5, "\"...\"", double_quote_form}, {2, 8, "++", "x = x + 1"}}},
    {"printf('%d\\n', 3);\nfdisp(stdout, 3);",
     {{1, 1, "printf", "fprintf"}, {2, 1, "fdisp", "disp, or fprintf to a file"}}},
    {"do\n  k++;\nuntil k > 3",
     {{1, 1, "do", "while true ... if condition, break, end, end"},
      {2, 4, "++", "x = x + 1"},
      {3, 1, "until", "if condition, break, end (inside while true ... end)"}}},
    {"n = size(m)(2);\ne = [4 5 6](2); v = f(x){1};",
     {{1, 12, call_index, temporary}, {2, 12, call_index, temporary}, {2, 25, call_index, temporary}}},
    {"x = max(1,\n  2);\ny = 1 + \\\n  2;\ny = 1 + \\ % why\n  2;",
     {{1, 11, "line break inside ( )", "... at the end of the line"}, {3, 9, "\\", "..."}, {5, 9, "\\", "..."}}},
    {"s = 'a != b # c ++ \"q\"';\nq = 'it''s # here';\nx = 1; % a != b # endif\nt = {'a' 'b!'};\ndisp 'hello != #'", {}},
    {"%{\nk++; # endif\nprintf(\"x\")\n%}\ny = 1;", {}},
    {"v = a'; w = x(1)' + [1 2]' + c{1}' + 3' + a.' + a'';\nu = [a' 'text #'];\ny = a(end)';", {}},
    {"if x == 'a#', end\nswitch v\n  case 'a#'\nend", {}},
    {"s.end = 1; s.endif = 2; s.printf = 3; s.do = 4;\nuntil = 3; do = until;", {}},
    {"x = y ... continuation != #\n  + 1;\nx = y + ... % comment != #\n  z;", {}},
    {"f = @(x)(x + 1); g = @()(2);\nd = c{1}(2); e = c{1}{2}; f = s.('a b'){1}; g = s.(name)(2);", {}},
    {"z = x ~= y; n = ~z; m = a - -b;\nm = [1 2\n3 4];\nc = {1\n2};", {}},
    {"x = 1e-3; y = 2.5e+2i; r = 1./x; p = 2.^x; h = 0x1F;\ndot = a.'*b; z = x.^2';", {}},
};

TEST(StrategyCheck, FindsEachOctaveOnlyConstructAndNothingInTextsCommentsFieldsOrTransposes) {
    for (const Row& row : rows) EXPECT_EQ(find_octave_only(row.source), row.expected) << row.source;
}

// The scenario stands for its strategy folder.
TEST(StrategyCheck, BundledStrategiesAndFixturesRunInMatlab) {
    for (const char* target : {"examples/strategies", "tests/e2e/matlab",
                               "tests/host/study/strategies", "examples/hybrid_load_following.json"}) {
        std::ostringstream out, err;
        EXPECT_EQ(run_check_command(std::string(TAMLO_SOURCE_DIR) + "/" + target, out, err), 0)
            << target << "\n" << out.str() << err.str();
    }
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
        {R"({"extension_parameters": [{"name": "path", "value": "strategy"},
                                      {"name": "end simulation", "value": "my_end"}]})",
         "the function my_end has no file"},
        {R"({"extension_parameters": [{"name": "path", "value": "."}]})", "no .m files in the folder"},
        {R"({"extension_parameters": [{"name": "path", "value": 3}]})", "extension_parameters[0].value: expected a text"},
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
