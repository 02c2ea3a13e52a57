// Parses dotted JSON paths and writes values at them.
#include "json_path.h"

#include <cctype>

#include "input_error.h"

namespace tamlo_host {

std::vector<PathStep> parse_json_path(const std::string& path, const std::string& where) {
    std::vector<PathStep> steps;
    auto bad = [&](const std::string& why) -> InputError {
        return InputError(where + ": the path \"" + path + "\" " + why);
    };
    std::size_t i = 0;
    while (i < path.size()) {
        if (path[i] == '[') {
            const std::size_t close = path.find(']', i);
            if (close == std::string::npos || close == i + 1) throw bad("has an unclosed or empty [ ]");
            std::size_t index = 0;
            for (std::size_t k = i + 1; k < close; ++k) {
                if (!std::isdigit(static_cast<unsigned char>(path[k]))) throw bad("has a list index that is not a whole number");
                index = index * 10 + static_cast<std::size_t>(path[k] - '0');
            }
            if (steps.empty()) throw bad("must start with a field name");
            steps.emplace_back(index);
            i = close + 1;
            if (i < path.size() && path[i] != '.' && path[i] != '[') throw bad("needs a . after ]");
            if (i < path.size() && path[i] == '.') ++i;
            if (i == path.size() && path.back() == '.') throw bad("ends with a .");
            continue;
        }
        std::size_t end = i;
        while (end < path.size() && path[end] != '.' && path[end] != '[') ++end;
        if (end == i) throw bad("has an empty field name");
        steps.emplace_back(path.substr(i, end - i));
        i = end;
        if (i < path.size() && path[i] == '.') {
            ++i;
            if (i == path.size()) throw bad("ends with a .");
        }
    }
    if (steps.empty()) throw bad("is empty");
    return steps;
}

std::string set_at_json_path(Json& document, const std::vector<PathStep>& path, const Json& value) {
    Json* node = &document;
    std::string walked;
    for (std::size_t s = 0; s < path.size(); ++s) {
        const bool last = s + 1 == path.size();
        if (const auto* key = std::get_if<std::string>(&path[s])) {
            const std::string here = walked.empty() ? *key : walked + "." + *key;
            if (!node->is_object()) return (walked.empty() ? std::string("the top level") : walked) + " is not an object";
            if (!last && !node->contains(*key)) return here + " is not there";
            node = &(*node)[*key];
            walked = here;
        } else {
            const std::size_t index = std::get<std::size_t>(path[s]);
            const std::string here = walked + "[" + std::to_string(index) + "]";
            if (!node->is_array()) return walked + " is not a list";
            if (index >= node->size()) {
                return here + " is not there: the list has " + std::to_string(node->size()) + " entries";
            }
            node = &(*node)[index];
            walked = here;
        }
    }
    *node = value;
    return {};
}

}  // namespace tamlo_host
