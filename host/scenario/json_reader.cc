// Path-naming, type-checking reads of JSON objects for the scenario reader.
#include "json_reader.h"

#include <cmath>
#include <fstream>
#include <limits>

#include "input_error.h"

namespace tamlo_host {

Json parse_json_file(const std::string& file) {
    std::ifstream in(file);
    if (!in) throw InputError(file + ": cannot open the file");
    try {
        return Json::parse(in);
    } catch (const Json::parse_error& e) {
        // The library's text carries the line and column after its own bracketed tag.
        std::string what = e.what();
        const std::string::size_type tag_end = what.find("] ");
        if (tag_end != std::string::npos) what = what.substr(tag_end + 2);
        throw InputError(file + ": not valid JSON: " + what);
    }
}

ObjectReader::ObjectReader(const Json& value, std::string path, std::string file)
    : value_(value), path_(std::move(path)), file_(std::move(file)) {
    if (!value_.is_object()) {
        fail(path_, "expected an object, found " + describe(value_));
    }
}

std::string ObjectReader::describe(const Json& value) {
    if (value.is_string()) return "the text \"" + value.get<std::string>() + "\"";
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
    throw InputError(file_ + ": " + (path.empty() ? std::string("top level") : path) + ": " + problem);
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
    if (v->is_number_unsigned()) {
        target = v->get<std::uint64_t>();
        return;
    }
    if (v->is_number_float()) {
        const double d = v->get<double>();
        if (d >= 0 && d < 1.8e19 && std::floor(d) == d) {
            target = static_cast<std::uint64_t>(d);
            return;
        }
    }
    fail(child_path(key), "expected a whole number of 0 or more, found " + describe(*v));
}

void ObjectReader::read(const char* key, std::int32_t& target) {
    const Json* v = element(key);
    if (v == nullptr) return;
    if (v->is_number()) {
        const double d = v->get<double>();
        if (std::floor(d) == d && d >= std::numeric_limits<std::int32_t>::min() &&
            d <= std::numeric_limits<std::int32_t>::max()) {
            target = static_cast<std::int32_t>(d);
            return;
        }
    }
    fail(child_path(key), "expected a whole number, found " + describe(*v));
}

void ObjectReader::read(const char* key, std::vector<std::pair<double, double>>& target) {
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
        target.emplace_back(point[0].get<double>(), point[1].get<double>());
    }
}

void ObjectReader::finish() const {
    for (auto it = value_.begin(); it != value_.end(); ++it) {
        if (used_.count(it.key()) == 0) fail(child_path(it.key().c_str()), "unknown field");
    }
}

}  // namespace tamlo_host
