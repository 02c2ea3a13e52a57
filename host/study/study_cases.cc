// Builds each case's scenario from the base scenario and the case's values, and names it.
#include "study_cases.h"

#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>

#include "input_error.h"
#include "scenario.h"

namespace tamlo_host {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t max_id_length = 120;

// The case scenario is written elsewhere, so every file it names must stay found.
void make_paths_absolute(Json& scenario, const fs::path& folder) {
    std::function<void(Json&)> walk = [&](Json& node) {
        if (node.is_object()) {
            for (auto& [key, child] : node.items()) {
                if (key == "file" && child.is_string()) {
                    child = fs::absolute(folder / child.get<std::string>()).lexically_normal().string();
                } else {
                    walk(child);
                }
            }
        } else if (node.is_array()) {
            for (Json& child : node) walk(child);
        }
    };
    walk(scenario);
    if (scenario.contains("extension_parameters") && scenario["extension_parameters"].is_array()) {
        for (Json& p : scenario["extension_parameters"]) {
            if (p.is_object() && p.value("name", "") == "path" && p.contains("value") && p["value"].is_string()) {
                p["value"] = fs::absolute(folder / p["value"].get<std::string>()).lexically_normal().string();
            }
        }
    }
}

void set_extension_parameter(Json& scenario, const std::string& name, const Json& value) {
    Json& list = scenario["extension_parameters"];
    if (!list.is_array()) list = Json::array();
    for (Json& p : list) {
        if (p.is_object() && p.value("name", "") == name) {
            p["value"] = value;
            return;
        }
    }
    list.push_back(Json{{"name", name}, {"value", value}});
}

// Returns what is wrong, or an empty text.
std::string apply(Json& scenario, const Variation& v, std::size_t index) {
    switch (v.kind) {
        case VariationKind::scenario_path: return set_at_json_path(scenario, v.path, v.values[index]);
        case VariationKind::extension_parameter: set_extension_parameter(scenario, v.target, v.values[index]); return {};
        case VariationKind::strategy: {
            const StrategyChoice& s = v.strategies[index];
            set_extension_parameter(scenario, "path", s.folder);
            if (!s.start_function.empty()) set_extension_parameter(scenario, "start simulation", s.start_function);
            set_extension_parameter(scenario, "dispatch", s.dispatch_function);
            if (!s.end_function.empty()) set_extension_parameter(scenario, "end simulation", s.end_function);
            return {};
        }
    }
    return {};
}

class ScenarioBuilder {
public:
    explicit ScenarioBuilder(const Study& study) : study_(study) {
        base_ = parse_json_file(study.scenario_file);
        if (!base_.is_object()) throw InputError(study.scenario_file + ": top level: expected an object");
        make_paths_absolute(base_, fs::path(study.scenario_file).parent_path());
        if (study.steps) base_["number_of_timesteps"] = *study.steps;
    }

    // where names the study entry to blame when a value cannot be placed.
    Json build(const CaseChoice& choice, const std::string& where) const {
        Json scenario = base_;
        for (std::size_t v = 0; v < choice.size(); ++v) {
            if (!choice[v]) continue;
            const std::string problem = apply(scenario, study_.variations[v], *choice[v]);
            if (!problem.empty()) {
                throw InputError(study_.file + ": " + study_.variations[v].where + ".path: " + problem + " in " +
                                 study_.scenario_file + (where.empty() ? "" : " (for " + where + ")"));
            }
        }
        return scenario;
    }

private:
    const Study& study_;
    Json base_;
};

// Hands a built scenario to the scenario reader, as the worker will (from its text; a Json
// dumped and parsed again reads the same). The case runs in a folder of its own, so a path
// still relative must not be found beside whoever runs the study: it is read from a folder
// that does not exist.
void check_scenario(const Json& scenario, const std::string& blame) {
    static const std::string file = (fs::temp_directory_path() / "tamlo-study-case" / "scenario.json").string();
    try {
        (void)read_scenario(scenario, file);
    } catch (const InputError& e) {
        std::string why = e.what();
        if (why.rfind(file + ": ", 0) == 0) why = why.substr(file.size() + 2);
        throw InputError(blame + ": the scenario refuses it: " + why);
    }
}

std::string case_id(const Study& study, const CaseChoice& choice) {
    std::string id;
    for (std::size_t v = 0; v < choice.size(); ++v) {
        if (!choice[v]) continue;
        if (!id.empty()) id += '+';
        id += sanitize_id_part(study.variations[v].name) + "=" + sanitize_id_part(study.variations[v].labels[*choice[v]]);
    }
    if (id.empty()) id = "base";
    if (id.size() > max_id_length) {
        char hash[16];
        std::snprintf(hash, sizeof hash, "%08zx", std::hash<std::string>{}(id) & 0xffffffffu);
        id = id.substr(0, max_id_length - 9) + "~" + hash;
    }
    return id;
}

}  // namespace

std::string sanitize_id_part(const std::string& text) {
    std::string out;
    for (char c : text) {
        const bool keep = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
                          c == '_' || c == '-';
        if (keep) {
            out += c;
        } else if (out.empty() || out.back() != '_') {
            out += '_';
        }
    }
    if (out.empty() || out == "." || out == "..") out = "_" + out;
    return out;
}

std::string choice_label(const Study& study, const StudyCase& c, std::size_t v) {
    return c.choice[v] ? study.variations[v].labels[*c.choice[v]] : std::string();
}

std::vector<StudyCase> expand_study(const Study& study) {
    const ScenarioBuilder builder(study);
    check_scenario(builder.build(CaseChoice(study.variations.size()), {}), study.file + ": scenario " + study.scenario_file);

    std::vector<CaseChoice> choices;
    if (study.product) {
        // Each value alone on the base: a bad value is named before the product multiplies it.
        for (std::size_t v = 0; v < study.variations.size(); ++v) {
            const Variation& variation = study.variations[v];
            for (std::size_t i = 0; i < variation.values.size(); ++i) {
                CaseChoice one(study.variations.size());
                one[v] = i;
                const std::string where = variation.where +
                                          (variation.kind == VariationKind::strategy ? ".strategies[" : ".values[") +
                                          std::to_string(i) + "]";
                check_scenario(builder.build(one, where), study.file + ": " + where);
            }
        }
        choices.emplace_back();
        for (const Variation& variation : study.variations) {
            std::vector<CaseChoice> next;
            for (const CaseChoice& partial : choices) {
                for (std::size_t i = 0; i < variation.values.size(); ++i) {
                    CaseChoice c = partial;
                    c.push_back(i);
                    next.push_back(std::move(c));
                }
            }
            choices = std::move(next);
        }
    } else {
        for (std::size_t i = 0; i < study.listed_cases.size(); ++i) {
            const std::string where = "cases[" + std::to_string(i) + "]";
            check_scenario(builder.build(study.listed_cases[i], where), study.file + ": " + where);
        }
        choices = study.listed_cases;
    }

    std::vector<StudyCase> cases;
    std::map<std::string, int> used;
    for (const CaseChoice& choice : choices) {
        StudyCase c;
        c.choice = choice;
        c.id = case_id(study, choice);
        // Two cases that read alike (a listed case twice, labels that sanitize alike) stay apart.
        if (const int n = ++used[c.id]; n > 1) c.id += "-" + std::to_string(n);
        c.scenario_text = builder.build(choice, c.id).dump(2) + "\n";
        cases.push_back(std::move(c));
    }
    return cases;
}

}  // namespace tamlo_host
