// Reads and writes a study's output folder so that a killed study leaves only whole cases.
#include "study_folder.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "input_error.h"

namespace tamlo_host {

namespace fs = std::filesystem;

namespace {

std::optional<std::string> read_text(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void write_text(const fs::path& file, const std::string& text) {
    std::ofstream out(file, std::ios::binary);
    out << text;
    if (!out.flush()) throw InputError(file.string() + ": cannot write the file");
}

std::string host_name() {
    char name[256] = {};
    if (::gethostname(name, sizeof name - 1) != 0) return "host";
    return name;
}

}  // namespace

StudyFolder::StudyFolder(const std::string& dir) : dir_(fs::absolute(dir).lexically_normal().string()) {
    std::error_code error;
    for (const char* sub : {"cases", "staging"}) {
        fs::create_directories(fs::path(dir_) / sub, error);
        if (error) throw InputError(dir_ + "/" + sub + ": cannot create the folder: " + error.message());
    }
    // Slurm tasks on different nodes share DIR: the host and process keep their names apart.
    staging_prefix_ = (fs::path(dir_) / "staging" / (host_name() + "." + std::to_string(::getpid()) + ".")).string();
}

std::string StudyFolder::case_folder(const StudyCase& c) const { return (fs::path(dir_) / "cases" / c.id).string(); }

std::optional<CaseResult> StudyFolder::finished(const StudyCase& c) const {
    const fs::path folder = case_folder(c);
    const std::optional<std::string> scenario = read_text(folder / "scenario.json");
    if (!scenario || *scenario != c.scenario_text) return std::nullopt;
    const std::optional<std::string> result = read_text(folder / "result.json");
    if (!result) return std::nullopt;
    try {
        return case_result_from_json(Json::parse(*result), (folder / "result.json").string());
    } catch (const std::exception&) {
        return std::nullopt;  // unreadable: the case runs again
    }
}

void StudyFolder::clear_staging() const {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(fs::path(dir_) / "staging", error)) fs::remove_all(entry.path(), error);
}

std::string StudyFolder::stage(const StudyCase& c) {
    const fs::path folder = staging_prefix_ + std::to_string(staged_++) + "." + c.id;
    std::error_code error;
    fs::remove_all(folder, error);
    fs::create_directories(folder, error);
    if (error) throw InputError(folder.string() + ": cannot create the folder: " + error.message());
    write_text(folder / "scenario.json", c.scenario_text);
    return folder.string();
}

void StudyFolder::record_failure(const std::string& staging, CaseStatus status, const std::string& message) {
    CaseResult r;
    r.status = status;
    r.message = message;
    write_text(fs::path(staging) / "result.json", case_result_to_json(r).dump(2) + "\n");
}

void StudyFolder::commit(const std::string& staging, const StudyCase& c) const {
    const fs::path target = case_folder(c);
    std::error_code error;
    if (fs::exists(target)) {
        // Out of the way first: rename cannot replace a folder that has files in it.
        const fs::path old = staging + ".old";
        fs::rename(target, old, error);
        fs::remove_all(old, error);
    }
    fs::rename(staging, target, error);
    if (error) throw InputError(target.string() + ": cannot move the finished case into place: " + error.message());
}

void StudyFolder::write_file(const std::string& name, const std::string& text) const {
    const fs::path target = fs::path(dir_) / name;
    const fs::path temporary = staging_prefix_ + name + ".tmp";
    write_text(temporary, text);
    std::error_code error;
    fs::rename(temporary, target, error);
    if (error) throw InputError(target.string() + ": cannot write the file: " + error.message());
}

}  // namespace tamlo_host
