// Path-naming, type-checking reads of JSON objects for the scenario reader.
#include "json_reader.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>

#include <filesystem>

#include "input_error.h"
#include "message_text.h"

namespace tamlo_host {

namespace {

// Names up to a few JSON files of a folder given where a scenario file was expected.
std::string json_files_in(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        if (entry.path().extension() == ".json") names.push_back(entry.path().string());
    }
    std::sort(names.begin(), names.end());
    std::string text;
    for (std::size_t i = 0; i < names.size() && i < 4; ++i) text += (i == 0 ? "" : ", ") + display_text(names[i]);
    if (names.size() > 4) text += ", ...";
    return text;
}

}  // namespace

Json parse_json_file(const std::string& file) {
    const std::string shown = display_text(file);
    if (std::filesystem::is_directory(file)) {
        const std::string files = json_files_in(file);
        throw InputError(shown + ": is a folder; name a scenario file" + (files.empty() ? "" : " such as " + files));
    }
    std::ifstream in(file);
    if (!in) throw InputError(shown + ": cannot open the file");
    try {
        return Json::parse(in);
    } catch (const Json::exception& e) {
        // The library's text carries the line and column after its own bracketed tag, and
        // echoes the token it stopped at, which may be long or hold any byte.
        std::string what = e.what();
        const std::string::size_type tag_end = what.find("] ");
        if (tag_end != std::string::npos) what = what.substr(tag_end + 2);
        throw InputError(shown + ": not valid JSON: " + display_text(what, 2 * echo_limit));
    }
}

ObjectReader::ObjectReader(const Json& value, std::string path, std::string file)
    : value_(value), path_(std::move(path)), file_(std::move(file)) {
    if (!value_.is_object()) {
        fail(path_, "expected an object, found " + describe(value_));
    }
}

std::string ObjectReader::describe(const Json& value) {
    if (value.is_string()) return "the text \"" + display_text(value.get_ref<const std::string&>()) + "\"";
    if (value.is_boolean()) return std::string("the boolean ") + (value.get<bool>() ? "true" : "false");
    if (value.is_number()) return "the number " + value.dump();
    if (value.is_null()) return "null";
    if (value.is_array()) return "a list";
    return "an object";
}

std::string ObjectReader::child_path(const char* key) const {
    return path_.empty() ? std::string(key) : path_ + "." + key;
}

void ObjectReader::fail(const std::string& path, const std::string& problem) const {
    throw InputError(display_text(file_) + ": " + (path.empty() ? std::string("top level") : display_text(path)) + ": " +
                     problem);
}

bool ObjectReader::has(const char* key) const { return value_.contains(key); }

const Json* ObjectReader::take(const char* key) {
    auto it = value_.find(key);
    if (it == value_.end()) return nullptr;
    used_.insert(key);
    return &*it;
}

const Json* ObjectReader::element(const char* key) { return take(key); }

void ObjectReader::require(const char* key) const {
    if (!has(key)) fail(child_path(key), "missing; this field is required");
}

void ObjectReader::read(const char* key, double& target) {
    const Json* v = element(key);
    if (v == nullptr) return;
    if (!v->is_number()) fail(child_path(key), "expected a number, found " + describe(*v));
    target = v->get<double>();
}

void ObjectReader::read(const char* key, double& target, const ValueRule& rule) {
    const Json* v = element(key);
    if (v == nullptr) return;
    if (!v->is_number()) fail(child_path(key), "expected " + rule.needs + ", found " + describe(*v));
    const double value = v->get<double>();
    if (!rule.accepts(value)) fail(child_path(key), v->dump() + " is not allowed here; it needs " + rule.needs);
    target = value;
}

void ObjectReader::read(const char* key, bool& target) {
    const Json* v = element(key);
    if (v == nullptr) return;
    if (!v->is_boolean()) fail(child_path(key), "expected true or false, found " + describe(*v));
    target = v->get<bool>();
}

void ObjectReader::read(const char* key, std::string& target) {
    const Json* v = element(key);
    if (v == nullptr) return;
    if (!v->is_string()) fail(child_path(key), "expected a text, found " + describe(*v));
    target = v->get<std::string>();
}

void ObjectReader::read(const char* key, std::uint64_t& target) {
    const Json* v = element(key);
    if (v == nullptr) return;
    if (v->is_number_unsigned() && v->get<std::uint64_t>() <= largest_exact_count) {
        target = v->get<std::uint64_t>();
        return;
    }
    if (v->is_number_float()) {
        const double d = v->get<double>();
        if (d >= 0 && d <= static_cast<double>(largest_exact_count) && std::floor(d) == d) {
            target = static_cast<std::uint64_t>(d);
            return;
        }
    }
    fail(child_path(key), "expected a whole number from 0 to " + std::to_string(largest_exact_count) +
                              " (MATLAB receives it as a double), found " + describe(*v));
}

void ObjectReader::read(const char* key, std::int32_t& target, std::int32_t least) {
    const Json* v = element(key);
    if (v == nullptr) return;
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    if (v->is_number()) {
        const double d = v->get<double>();
        if (std::floor(d) == d && d >= least && d <= most) {
            target = static_cast<std::int32_t>(d);
            return;
        }
    }
    fail(child_path(key), "expected a whole number from " + std::to_string(least) + " to " + std::to_string(most) +
                              ", found " + describe(*v));
}

void ObjectReader::read(const char* key, std::vector<std::pair<double, double>>& target, const ValueRule& x_rule,
                        const ValueRule& y_rule) {
    const Json* v = element(key);
    if (v == nullptr) return;
    const std::string path = child_path(key);
    if (!v->is_array()) fail(path, "expected a list of [x, y] points, found " + describe(*v));
    target.clear();
    for (std::size_t i = 0; i < v->size(); ++i) {
        const Json& point = (*v)[i];
        const std::string point_path = path + "[" + std::to_string(i) + "]";
        if (!point.is_array() || point.size() != 2 || !point[0].is_number() || !point[1].is_number()) {
            fail(point_path, "expected a point [x, y] of two numbers, found " +
                                 (point.is_array() ? point.dump() : describe(point)));
        }
        const double x = point[0].get<double>();
        const double y = point[1].get<double>();
        if (!x_rule.accepts(x)) fail(point_path + "[0]", point[0].dump() + " is not allowed here; it needs " + x_rule.needs);
        if (!y_rule.accepts(y)) fail(point_path + "[1]", point[1].dump() + " is not allowed here; it needs " + y_rule.needs);
        target.emplace_back(x, y);
    }
}

void ObjectReader::finish() const {
    for (auto it = value_.begin(); it != value_.end(); ++it) {
        if (used_.count(it.key()) == 0) fail(child_path(it.key().c_str()), "unknown field");
    }
}

}  // namespace tamlo_host
