// Reads one JSON object field by field, naming the path of every faulty element
// (generators[0].fuel.cost) and refusing fields nobody asked for.
#ifndef TAMLO_HOST_JSON_READER_H
#define TAMLO_HOST_JSON_READER_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "value_rules.h"

namespace tamlo_host {

using Json = nlohmann::ordered_json;

// Reads the JSON document in file; a syntax error names the file, line and column.
Json parse_json_file(const std::string& file);

class ObjectReader {
public:
    // Throws InputError when value is not an object.
    ObjectReader(const Json& value, std::string path, std::string file);

    bool has(const char* key) const;
    // A missing key leaves the target as it is.
    void read(const char* key, double& target);
    // A number that rule must accept.
    void read(const char* key, double& target, const ValueRule& rule);
    void read(const char* key, bool& target);
    void read(const char* key, std::string& target);
    // From 0 to largest_exact_count.
    void read(const char* key, std::uint64_t& target);
    void read(const char* key, std::int32_t& target, std::int32_t least = std::numeric_limits<std::int32_t>::min());
    // [[x, y], ...] with each x and y accepted by its rule.
    void read(const char* key, std::vector<std::pair<double, double>>& target, const ValueRule& x_rule,
              const ValueRule& y_rule);
    // Like read, but a missing key is an error.
    void require(const char* key) const;

    // The raw element under key (marked as used), or nullptr when it is absent.
    const Json* take(const char* key);

    // Calls f(ObjectReader&) on the object under key, if present.
    template <class F>
    void object(const char* key, F&& f) {
        if (const Json* v = take(key)) {
            ObjectReader child(*v, child_path(key), file_);
            f(child);
            child.finish();
        }
    }

    // Calls f(ObjectReader&, index) on each element (objects) of the list under key, if
    // present; returns the number of elements.
    template <class F>
    std::size_t list(const char* key, F&& f) {
        const Json* v = take(key);
        if (v == nullptr) return 0;
        if (!v->is_array()) fail(child_path(key), "expected a list, found " + describe(*v));
        for (std::size_t i = 0; i < v->size(); ++i) {
            ObjectReader element((*v)[i], child_path(key) + "[" + std::to_string(i) + "]", file_);
            f(element, i);
            element.finish();
        }
        return v->size();
    }

    // Throws for the first field of the object that no read asked for.
    void finish() const;

    std::string child_path(const char* key) const;
    const std::string& path() const { return path_; }
    const std::string& file() const { return file_; }

    [[noreturn]] void fail(const std::string& path, const std::string& problem) const;
    static std::string describe(const Json& value);
    // A number as JSON writes it.
    static std::string number_text(double value) { return Json(value).dump(); }

private:
    const Json* element(const char* key);

    const Json& value_;
    std::string path_;
    std::string file_;
    std::set<std::string> used_;
};

}  // namespace tamlo_host

#endif
