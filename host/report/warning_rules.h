// Sorts the extension's warning texts by the rule that produced them.
#ifndef TAMLO_HOST_WARNING_RULES_H
#define TAMLO_HOST_WARNING_RULES_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace tamlo_host {

struct WarningRule {
    const char* id;           // short name shown in the report, e.g. "G1"
    const char* description;  // what the rule checks
    const char* lead;         // fixed text the warning starts with
    const char* contains;     // further fixed text inside it, or nullptr
};

// The rule of a warning text; the rule "other" when no rule matches.
const WarningRule& classify_warning(const std::string& text);

// Counts per rule, in the order of the rule table, rules without warnings left out.
std::vector<std::pair<const WarningRule*, std::size_t>> count_warnings(const std::vector<std::string>& warnings);

}  // namespace tamlo_host

#endif
