// The study's output folder: DIR/cases/<id>/ per finished case (scenario.json, results.csv,
// summary.txt, result.json), written in DIR/staging/ and renamed into place whole.
#ifndef TAMLO_HOST_STUDY_FOLDER_H
#define TAMLO_HOST_STUDY_FOLDER_H

#include <optional>
#include <string>

#include "case_result.h"
#include "study_cases.h"

namespace tamlo_host {

class StudyFolder {
public:
    // Creates DIR, DIR/cases and DIR/staging as needed; throws InputError.
    explicit StudyFolder(const std::string& dir);

    const std::string& dir() const { return dir_; }
    std::string case_folder(const StudyCase& c) const;

    // The finished result of a case whose scenario.json equals the case's definition.
    std::optional<CaseResult> finished(const StudyCase& c) const;

    // Removes what interrupted studies left in staging/; only for a study that runs alone on DIR.
    void clear_staging() const;
    // A new staging folder holding the case's scenario.json; unique to this process.
    std::string stage(const StudyCase& c);
    // Records a failure that left no result.json (a dead worker, a refused case).
    static void record_failure(const std::string& staging, CaseStatus status, const std::string& message);
    // Moves a staging folder whole into cases/<id>, replacing an older one.
    void commit(const std::string& staging, const StudyCase& c) const;

    // Writes DIR/<name> through a temporary file and a rename.
    void write_file(const std::string& name, const std::string& text) const;

private:
    std::string dir_;
    std::string staging_prefix_;
    std::size_t staged_ = 0;
};

}  // namespace tamlo_host

#endif
