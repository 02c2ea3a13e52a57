// Finds a strategy folder (given, or named by a scenario), reads its .m files and reports
// the Octave-only constructs in them.
#include "strategy_check.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>
#include <vector>

#include "input_error.h"
#include "json_reader.h"

namespace tamlo_host {
namespace {

namespace fs = std::filesystem;

// The extension parameters that name the strategy's functions, as a scenario writes them.
constexpr const char* function_parameters[] = {"start simulation", "dispatch", "end simulation"};

// The folder a scenario's "path" names, once every function it names has its file there.
// Only the parameters this command needs are read; `dispatch-bench run` checks the rest.
fs::path folder_of_scenario(const fs::path& file) {
    const Json scenario = parse_json_file(file.string());
    const std::string where = file.string() + ": extension_parameters";
    const Json* parameters = scenario.is_object() && scenario.contains("extension_parameters")
                                 ? &scenario["extension_parameters"]
                                 : nullptr;
    if (parameters == nullptr || !parameters->is_array()) {
        throw InputError(where + ": missing, or not a list; it must hold a \"path\" naming the strategy folder");
    }
    fs::path folder;
    std::vector<std::string> functions;
    bool has_path = false;
    for (std::size_t i = 0; i < parameters->size(); ++i) {
        const Json& p = (*parameters)[i];
        if (!p.is_object() || !p.contains("name") || !p["name"].is_string()) continue;
        const std::string name = p["name"].get<std::string>();
        const bool wanted = name == "path" || std::find(std::begin(function_parameters), std::end(function_parameters),
                                                        name) != std::end(function_parameters);
        if (!wanted) continue;
        if (!p.contains("value") || !p["value"].is_string()) {
            throw InputError(where + "[" + std::to_string(i) + "].value: expected a text for \"" + name + "\"");
        }
        const std::string value = p["value"].get<std::string>();
        if (name == "path") {
            folder = (file.parent_path() / value).lexically_normal();
            has_path = true;
        } else if (!value.empty()) {
            functions.push_back(value);
        }
    }
    if (!has_path) throw InputError(where + ": no \"path\" parameter names the strategy folder");
    std::error_code ec;
    if (!fs::is_directory(folder, ec)) {
        throw InputError(where + ": \"path\": the folder " + folder.string() + " does not exist");
    }
    for (const std::string& function : functions) {
        const fs::path m_file = folder / (function + ".m");
        if (!fs::is_regular_file(m_file, ec)) {
            throw InputError(file.string() + ": the function " + function + " has no file " + m_file.string());
        }
    }
    return folder;
}

std::vector<fs::path> m_files(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code ec;
    for (const fs::directory_entry& e : fs::directory_iterator(folder, ec)) {
        if (e.path().extension() == ".m" && e.is_regular_file()) files.push_back(e.path());
    }
    if (ec) throw InputError(folder.string() + ": cannot list the folder: " + ec.message());
    if (files.empty()) throw InputError(folder.string() + ": no .m files in the folder");
    std::sort(files.begin(), files.end());
    return files;
}

// A folder, one .m file, or a scenario naming the folder.
std::vector<fs::path> files_to_check(const std::string& target) {
    const fs::path given(target);
    std::error_code ec;
    if (fs::is_directory(given, ec)) return m_files(given);
    if (!fs::is_regular_file(given, ec)) throw InputError(target + ": no such folder or scenario file");
    if (given.extension() == ".m") return {given};
    return m_files(folder_of_scenario(given));
}

std::string read_source(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    if (in) text << in.rdbuf();
    if (!in || in.bad()) throw InputError(file.string() + ": cannot read the file");
    return text.str();
}

std::string plural(std::size_t n, const char* one, const char* many) {
    return std::to_string(n) + " " + (n == 1 ? one : many);
}

}  // namespace

int run_check_command(const std::string& folder_or_scenario, std::ostream& out, std::ostream& err) {
    struct Checked {
        fs::path file;
        std::vector<Finding> findings;
    };
    std::vector<Checked> checked;
    try {
        // Every file is read before anything is printed, so bad input never leaves half a report.
        for (const fs::path& file : files_to_check(folder_or_scenario)) {
            checked.push_back({file, find_octave_only(read_source(file))});
        }
    } catch (const InputError& e) {
        err << "dispatch-bench check: " << e.what() << '\n';
        return 2;
    } catch (const fs::filesystem_error& e) {
        // A folder that vanishes or turns unreadable while being listed.
        err << "dispatch-bench check: " << e.what() << '\n';
        return 2;
    }
    std::size_t findings = 0;
    std::size_t files_with_findings = 0;
    for (const Checked& c : checked) {
        for (const Finding& f : c.findings) {
            out << c.file.string() << ':' << f.line << ':' << f.column << ": Octave only: " << f.construct
                << "; MATLAB: " << f.matlab << '\n';
        }
        findings += c.findings.size();
        files_with_findings += c.findings.empty() ? 0 : 1;
    }
    if (findings == 0) {
        out << "no Octave-only constructs in " << plural(checked.size(), "file", "files") << '\n';
        return 0;
    }
    out << plural(findings, "Octave-only construct", "Octave-only constructs") << " in " << files_with_findings
        << " of " << plural(checked.size(), "file", "files") << '\n';
    return 1;
}

}  // namespace tamlo_host
