// Reads a study file, resolving every file it names against the study file's own folder.
#include "study_file.h"

#include <cmath>
#include <filesystem>
#include <set>

#include "input_error.h"

namespace tamlo_host {

namespace fs = std::filesystem;

namespace {

std::string number_label(const Json& v) {
    if (v.is_number_integer() || v.is_number_unsigned()) return v.dump();
    const double d = v.get<double>();
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.12g", d);
    return buffer;
}

// A series object reads as its file's stem and column, other values as themselves.
std::string value_label(const Json& v) {
    if (v.is_number()) return number_label(v);
    if (v.is_string()) return v.get<std::string>();
    if (v.is_boolean()) return v.get<bool>() ? "true" : "false";
    if (v.is_object() && v.contains("label") && v["label"].is_string()) return v["label"].get<std::string>();
    if (v.is_object() && v.contains("file") && v["file"].is_string()) {
        std::string label = fs::path(v["file"].get<std::string>()).stem().string();
        if (v.contains("column") && v["column"].is_string()) label += ":" + v["column"].get<std::string>();
        return label;
    }
    return v.dump();
}

// Series files named in a value are relative to the study file; the case scenario lives elsewhere.
void resolve_files(Json& value, const fs::path& folder) {
    if (value.is_object()) {
        for (auto& [key, child] : value.items()) {
            if (key == "file" && child.is_string()) {
                child = fs::absolute(folder / child.get<std::string>()).lexically_normal().string();
            } else {
                resolve_files(child, folder);
            }
        }
    } else if (value.is_array()) {
        for (Json& child : value) resolve_files(child, folder);
    }
}

void read_strategy(ObjectReader& r, const fs::path& folder, Variation& variation, std::size_t index) {
    StrategyChoice s;
    std::string label;
    r.require("path");
    r.require("dispatch");
    r.read("label", label);
    std::string path;
    r.read("path", path);
    r.read("start simulation", s.start_function);
    r.read("dispatch", s.dispatch_function);
    r.read("end simulation", s.end_function);
    s.folder = fs::absolute(folder / path).lexically_normal().string();
    if (!fs::is_directory(s.folder)) r.fail(r.child_path("path"), "the folder " + s.folder + " does not exist");
    for (const auto& [key, name] : {std::pair{"start simulation", &s.start_function},
                                    std::pair{"dispatch", &s.dispatch_function},
                                    std::pair{"end simulation", &s.end_function}}) {
        if (!r.has(key)) continue;
        if (!fs::exists(fs::path(s.folder) / (*name + ".m"))) {
            r.fail(r.child_path(key), "there is no " + *name + ".m in " + s.folder);
        }
    }
    variation.labels.push_back(label.empty() ? s.dispatch_function : label);
    variation.values.push_back(Json(variation.labels.back()));
    variation.strategies.push_back(std::move(s));
    (void)index;
}

Variation read_variation(ObjectReader& r, const fs::path& folder) {
    Variation v;
    v.where = r.path();
    r.require("name");
    r.read("name", v.name);
    if (v.name.empty()) r.fail(r.child_path("name"), "must not be empty");
    const int kinds = int(r.has("path")) + int(r.has("parameter")) + int(r.has("strategies"));
    if (kinds != 1) r.fail(r.path(), "needs exactly one of \"path\", \"parameter\" or \"strategies\"");
    if (r.has("strategies")) {
        v.kind = VariationKind::strategy;
        const std::size_t n = r.list("strategies", [&](ObjectReader& s, std::size_t i) { read_strategy(s, folder, v, i); });
        if (n == 0) r.fail(r.child_path("strategies"), "needs at least one strategy");
        std::set<std::string> seen;
        for (std::size_t i = 0; i < v.labels.size(); ++i) {
            if (!seen.insert(v.labels[i]).second) {
                r.fail(r.child_path("strategies") + "[" + std::to_string(i) + "]",
                       "the label \"" + v.labels[i] + "\" is used twice");
            }
        }
        return v;
    }
    if (r.has("path")) {
        v.kind = VariationKind::scenario_path;
        r.read("path", v.target);
        v.path = parse_json_path(v.target, r.file() + ": " + r.child_path("path"));
    } else {
        v.kind = VariationKind::extension_parameter;
        r.read("parameter", v.target);
        if (v.target.empty()) r.fail(r.child_path("parameter"), "must not be empty");
    }
    r.require("values");
    const Json* values = r.take("values");
    if (!values->is_array() || values->empty()) r.fail(r.child_path("values"), "expected a list of at least one value");
    for (std::size_t i = 0; i < values->size(); ++i) {
        Json value = (*values)[i];
        const std::string at = r.child_path("values") + "[" + std::to_string(i) + "]";
        if (value.is_null()) r.fail(at, "null is not a value");
        if (v.kind == VariationKind::extension_parameter && !(value.is_string() || value.is_number() ||
                                                              value.is_boolean() || value.is_array())) {
            r.fail(at, "an extension parameter takes a text, number, boolean or list of numbers, found " +
                           ObjectReader::describe(value));
        }
        resolve_files(value, folder);
        v.labels.push_back(value_label((*values)[i]));
        v.values.push_back(std::move(value));
    }
    return v;
}

// A listed case names each variation it sets by name, with one of that variation's values
// (or its label); the others keep the base scenario's value.
CaseChoice read_listed_case(const Json& entry, const std::string& at, const Study& study) {
    if (!entry.is_object()) {
        throw InputError(study.file + ": " + at + ": expected an object, found " + ObjectReader::describe(entry));
    }
    CaseChoice choice(study.variations.size());
    for (const auto& [key, value] : entry.items()) {
        std::size_t v = 0;
        while (v < study.variations.size() && study.variations[v].name != key) ++v;
        if (v == study.variations.size()) {
            throw InputError(study.file + ": " + at + "." + key + ": no variation has this name");
        }
        const Variation& variation = study.variations[v];
        for (std::size_t i = 0; i < variation.values.size() && !choice[v]; ++i) {
            Json given = value;
            resolve_files(given, fs::absolute(study.file).parent_path());
            if (given == variation.values[i] || (value.is_string() && value.get<std::string>() == variation.labels[i])) {
                choice[v] = i;
            }
        }
        if (!choice[v]) {
            throw InputError(study.file + ": " + at + "." + key + ": " + ObjectReader::describe(value) +
                             " is not one of the values of " + variation.where);
        }
    }
    return choice;
}

}  // namespace

Study read_study(const std::string& file) {
    const Json document = parse_json_file(file);
    Study study;
    study.file = file;
    // absolute() first: a bare file name has an empty parent, which absolute() refuses.
    const fs::path folder = fs::absolute(file).parent_path();
    ObjectReader top(document, "", file);
    top.require("scenario");
    std::string scenario;
    top.read("scenario", scenario);
    study.scenario_file = (folder / scenario).lexically_normal().string();
    if (!fs::is_regular_file(study.scenario_file)) {
        top.fail("scenario", "the file " + study.scenario_file + " does not exist");
    }
    if (top.has("steps")) {
        std::uint64_t steps = 0;
        top.read("steps", steps);
        if (steps == 0) top.fail("steps", "must be above 0");
        study.steps = steps;
    }
    top.list("vary", [&](ObjectReader& r, std::size_t) { study.variations.push_back(read_variation(r, folder)); });
    std::set<std::string> names;
    for (const Variation& v : study.variations) {
        if (!names.insert(v.name).second) top.fail(v.where + ".name", "the name \"" + v.name + "\" is used twice");
    }
    std::string combine = "product";
    top.read("combine", combine);
    if (combine != "product" && combine != "list") top.fail("combine", "expected \"product\" or \"list\"");
    study.product = combine == "product";
    if (const Json* cases = top.take("cases")) {
        if (study.product) top.fail("cases", "a list of cases needs \"combine\": \"list\"");
        if (!cases->is_array() || cases->empty()) top.fail("cases", "expected a list of at least one case");
        for (std::size_t i = 0; i < cases->size(); ++i) {
            study.listed_cases.push_back(read_listed_case((*cases)[i], "cases[" + std::to_string(i) + "]", study));
        }
    } else if (!study.product) {
        top.fail("cases", "\"combine\": \"list\" needs a list of cases");
    }
    top.finish();
    return study;
}

}  // namespace tamlo_host
