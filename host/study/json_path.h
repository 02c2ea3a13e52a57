// Dotted JSON paths into a scenario (batteries[0].battery_bank_maximum_absolute_soc): parsing
// them and setting the value they name.
#ifndef TAMLO_HOST_STUDY_JSON_PATH_H
#define TAMLO_HOST_STUDY_JSON_PATH_H

#include <cstddef>
#include <string>
#include <variant>
#include <vector>

#include "json_reader.h"

namespace tamlo_host {

// One step of a path: an object key or a list index.
using PathStep = std::variant<std::string, std::size_t>;

// Throws InputError(where + ": ...") for a malformed path.
std::vector<PathStep> parse_json_path(const std::string& path, const std::string& where);

// Replaces the value at path in document. Every step but the last must exist; the last may
// add a key to an object (the scenario reader then judges the field). Returns an empty text on
// success, else what is missing ("batteries[2] is not there: the list has 1 entries").
std::string set_at_json_path(Json& document, const std::vector<PathStep>& path, const Json& value);

}  // namespace tamlo_host

#endif
