// The study's one table: summary.csv with a row per case, and the terminal's best and worst.
#ifndef TAMLO_HOST_STUDY_SUMMARY_H
#define TAMLO_HOST_STUDY_SUMMARY_H

#include <string>
#include <vector>

#include "case_result.h"
#include "study_cases.h"

namespace tamlo_host {

// results[i] belongs to cases[i].
std::string summary_csv(const Study& study, const std::vector<StudyCase>& cases, const std::vector<CaseResult>& results);

// The best and worst completed cases by unmet load, then fuel and net cost, and the failures.
std::string best_and_worst(const std::vector<StudyCase>& cases, const std::vector<CaseResult>& results,
                           std::size_t rows = 5);

}  // namespace tamlo_host

#endif
