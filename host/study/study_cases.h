// The cases of a study: each a complete scenario with a stable, readable id.
#ifndef TAMLO_HOST_STUDY_CASES_H
#define TAMLO_HOST_STUDY_CASES_H

#include <string>
#include <vector>

#include "study_file.h"

namespace tamlo_host {

struct StudyCase {
    std::string id;
    CaseChoice choice;
    std::string scenario_text;  // the case's scenario.json, every path absolute
};

// Expands the study in a fixed order (the product varies the last variation fastest) and
// checks, before anything runs, that the scenario reader takes the base scenario with each
// value of each variation (each listed case whole); a refusal names the study file, the value
// and the scenario reader's own JSON path.
std::vector<StudyCase> expand_study(const Study& study);

// The label of a case's value of variation v, empty where the case keeps the base value.
std::string choice_label(const Study& study, const StudyCase& c, std::size_t v);

// A name made of letters, digits, '.', '_' and '-' only.
std::string sanitize_id_part(const std::string& text);

}  // namespace tamlo_host

#endif
