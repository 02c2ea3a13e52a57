// Holds docs/reference/fields.md against what MATLAB really receives: a fixture dumps every
// field of simulation_parameters and simulation_state (path, class, size) from inside the
// engine, for the numbered system, which has every component kind and all three grid models.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "loaded_extension.h"
#include "numbered_system.h"

namespace tamlo_strategies {
namespace {

using namespace tamlo_dispatch;

// In the dump a class and a size ("3x1"); in the reference the classes and sizes a field may
// have ("double or logical", "N×1").
struct Field {
    std::string path;
    std::string matlab_class;
    std::string size;
};

std::vector<Field> read_dump(const std::filesystem::path& file) {
    std::ifstream in(file);
    std::vector<Field> fields;
    for (std::string path, matlab_class, size; std::getline(in, path, '\t') && std::getline(in, matlab_class, '\t') &&
                                               std::getline(in, size);) {
        fields.push_back({path, matlab_class, size});
    }
    return fields;
}

// The rows of the reference's tables whose first cell names a field, without "(i)".
std::vector<Field> read_reference(const std::string& file) {
    static const std::regex row(R"(^\| `(simulation_[^`]*)` \| ([^|]*[^ |]) +\| ([^|]*[^ |]) +\|)");
    std::ifstream in(file);
    std::vector<Field> fields;
    std::smatch cells;
    for (std::string line; std::getline(in, line);) {
        if (std::regex_search(line, cells, row)) {
            fields.push_back({std::regex_replace(cells[1].str(), std::regex(R"(\(i\))"), ""), cells[2],
                              std::regex_replace(cells[3].str(), std::regex("×"), "x")});
        }
    }
    return fields;
}

// The paths struct by struct, each struct's fields in their order: two lists give the same
// text when they hold the same fields in the same order within each struct.
std::string by_struct(const std::vector<Field>& fields) {
    std::vector<std::string> paths;
    for (const Field& field : fields) {
        if (std::find(paths.begin(), paths.end(), field.path) == paths.end()) paths.push_back(field.path);
    }
    const auto parent = [](const std::string& path) { return path.substr(0, path.rfind('.')); };
    std::stable_sort(paths.begin(), paths.end(),
                     [&](const std::string& a, const std::string& b) { return parent(a) < parent(b); });
    std::string text;
    for (const std::string& path : paths) text += path + "\n";
    return text;
}

// "N×1 or 1×L": a letter stands for any count.
bool size_matches(const std::string& sizes, const std::string& size) {
    const std::string pattern = std::regex_replace(std::regex_replace(sizes, std::regex("[A-Z]"), "[0-9]+"),
                                                   std::regex(" or "), "|");
    return std::regex_match(size, std::regex(pattern));
}

TEST(FieldReference, ListsEveryFieldMatlabReceivesInOrderWithItsClassAndSize) {
    char folder[] = "/tmp/tamlo_field_dump_XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    const std::filesystem::path dump_file = std::filesystem::path(folder) / "fields.txt";
    tamlo_numbered::Numbering numbering;
    SimulationParameters parameters = tamlo_numbered::numbered_system(numbering);
    SimulationState state = tamlo_numbered::numbered_state(numbering);
    const auto dump_settings = settings(TAMLO_FIXTURE_DIR, "field_dump", dump_file.string());
    std::vector<ExtensionParameter>& extension_parameters = parameters.extension_parameters;
    extension_parameters.insert(extension_parameters.end(), dump_settings.begin(), dump_settings.end());
    ExtensionPtr extension = create_extension();
    const auto started = extension->start_simulation(parameters);
    ASSERT_EQ(started->severity, DISPATCH_NO_ERROR) << started->message;
    extension->dispatch(state);
    const auto messages = extension->end_simulation();
    ASSERT_TRUE(messages->simulation_errors.empty()) << messages->simulation_errors.front();
    const std::vector<Field> dump = read_dump(dump_file);
    std::filesystem::remove_all(folder);
    const std::vector<Field> reference = read_reference(TAMLO_FIELD_REFERENCE);

    // A failure shows the difference line by line: "-" the reference, "+" MATLAB.
    EXPECT_EQ(by_struct(reference), by_struct(dump));
    std::map<std::string, const Field*> rows;
    for (const Field& row : reference) rows[row.path] = &row;
    for (const Field& seen : dump) {
        const auto row = rows.find(seen.path);
        if (row == rows.end()) continue;  // named by the difference above
        EXPECT_NE((" or " + row->second->matlab_class + " or ").find(" or " + seen.matlab_class + " or "),
                  std::string::npos)
            << seen.path << " is " << seen.matlab_class << " in MATLAB";
        EXPECT_TRUE(size_matches(row->second->size, seen.size)) << seen.path << " is " << seen.size << " in MATLAB";
    }
}

}  // namespace
}  // namespace tamlo_strategies
