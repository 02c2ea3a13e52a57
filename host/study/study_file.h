// A study file: a base scenario and what varies across its cases (scenario values at JSON
// paths, extension parameters, whole strategies), combined as a product or listed case by case.
#ifndef TAMLO_HOST_STUDY_FILE_H
#define TAMLO_HOST_STUDY_FILE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "json_path.h"
#include "json_reader.h"

namespace tamlo_host {

enum class VariationKind { scenario_path, extension_parameter, strategy };

struct StrategyChoice {
    std::string folder;  // absolute
    std::string start_function;
    std::string dispatch_function;
    std::string end_function;
};

struct Variation {
    std::string name;        // column of summary.csv and part of case ids
    VariationKind kind = VariationKind::scenario_path;
    std::string target;      // the JSON path or the extension parameter's name
    std::vector<PathStep> path;
    std::string where;       // "vary[2]" in the study file
    std::vector<Json> values;         // series "file" entries already absolute
    std::vector<std::string> labels;  // one per value, as shown in ids and tables
    std::vector<StrategyChoice> strategies;  // for strategy variations, one per value
};

// Per variation, the index of its value, or none to keep the base scenario's.
using CaseChoice = std::vector<std::optional<std::size_t>>;

struct Study {
    std::string file;
    std::string scenario_file;  // absolute
    std::optional<std::uint64_t> steps;
    std::vector<Variation> variations;
    bool product = true;
    std::vector<CaseChoice> listed_cases;  // when product is false
};

// Reads and checks a study file; throws InputError naming the file and JSON path at fault.
Study read_study(const std::string& file);

}  // namespace tamlo_host

#endif
