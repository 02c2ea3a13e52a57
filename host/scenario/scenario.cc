// Reads a scenario file: the system in simulation_parameters' own field names, the
// extension parameters, the time grid and the plant inputs.
#include "scenario.h"

#include <algorithm>

#include "input_error.h"
#include "message_text.h"
#include "scenario_readers.h"

namespace tamlo_host {

using namespace tamlo_dispatch;

std::vector<double> read_series(ObjectReader& parent, const char* key, ScenarioContext& context,
                                const ValueRule& rule) {
    SeriesRef ref;
    parent.require(key);
    parent.object(key, [&](ObjectReader& r) {
        r.require("file");
        r.require("column");
        r.read("file", ref.file);
        r.read("column", ref.column);
    });
    ref.file = (context.folder / ref.file).lexically_normal().string();
    ref.named_at = parent.child_path(key) + " in " + context.file;
    return context.series.read(ref, context.steps, rule);
}

bool read_number_list(ObjectReader& parent, const char* key, ScenarioContext& context, const ValueRule& rule,
                      bool per_step, std::vector<double>& target) {
    if (!parent.has(key)) return false;
    const std::string path = parent.child_path(key);
    const Json& value = *parent.take(key);
    if (value.is_object()) {
        target = read_series(parent, key, context, rule);
        return true;
    }
    if (!value.is_array()) {
        parent.fail(path, "expected a list of numbers or a series {\"file\": ..., \"column\": ...}, found " +
                              ObjectReader::describe(value));
    }
    target.clear();
    for (std::size_t i = 0; i < value.size(); ++i) {
        const std::string element = path + "[" + std::to_string(i) + "]";
        if (!value[i].is_number()) parent.fail(element, "expected a number, found " + ObjectReader::describe(value[i]));
        const double v = value[i].get<double>();
        if (!rule.accepts(v)) parent.fail(element, value[i].dump() + " is not allowed here; it needs " + rule.needs);
        target.push_back(v);
    }
    if (per_step && target.size() < context.steps) {
        parent.fail(path, "has " + std::to_string(target.size()) + " values but the run has " +
                              std::to_string(context.steps) + " time steps");
    }
    return true;
}

bool is_matlab_function_name(const std::string& name) {
    static const char* const keywords[] = {"break",  "case",     "catch",    "classdef",   "continue", "else",
                                           "elseif", "end",      "for",      "function",   "global",   "if",
                                           "otherwise", "parfor", "persistent", "return", "spmd",     "switch",
                                           "try",    "while"};
    const auto is_letter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
    if (name.empty() || name.size() > 63 || !is_letter(name[0])) return false;
    for (const char c : name) {
        if (!is_letter(c) && !is_digit(c) && c != '_') return false;
    }
    return std::none_of(std::begin(keywords), std::end(keywords), [&](const char* k) { return name == k; });
}

namespace {

// The extension puts the folder and the function names into MATLAB commands as they are, so
// whatever would change the meaning of those commands is refused here.
void check_strategy_setting(ObjectReader& r, const ExtensionParameter& p) {
    if (p.type != ExtensionParameterType::text) return;
    if (p.name == "path") {
        const bool has_control = std::any_of(p.text_value.begin(), p.text_value.end(),
                                             [](char c) { return static_cast<unsigned char>(c) < 0x20; });
        if (p.text_value.find('\'') != std::string::npos || has_control) {
            r.fail(r.child_path("value"),
                   "the folder " + display_text(p.text_value) + " has a " +
                       (has_control ? "control character" : "single quote") +
                       " in its name; MATLAB's cd receives the folder as it is, so that character would break the "
                       "command or run what follows it as code; rename the folder");
        }
    } else if ((p.name == "start simulation" || p.name == "dispatch" || p.name == "end simulation") &&
               !p.text_value.empty() && !is_matlab_function_name(p.text_value)) {
        r.fail(r.child_path("value"), "\"" + display_text(p.text_value) +
                                          "\" is not a MATLAB function name; it needs a letter, then letters, digits "
                                          "or underscores, at most 63 characters, and no keyword");
    }
}

void read_extension_parameters(ObjectReader& top, ScenarioContext& context,
                               std::vector<ExtensionParameter>& parameters) {
    top.list("extension_parameters", [&](ObjectReader& r, std::size_t) {
        ExtensionParameter p;
        r.require("name");
        r.read("name", p.name);
        r.require("value");
        const Json& value = *r.take("value");
        if (value.is_string()) {
            p.type = ExtensionParameterType::text;
            p.text_value = value.get<std::string>();
        } else if (value.is_boolean()) {
            p.type = ExtensionParameterType::boolean;
            p.boolean_value = value.get<bool>();
        } else if (value.is_number()) {
            p.type = ExtensionParameterType::number;
            p.number_value = value.get<double>();
        } else if (value.is_array() && std::all_of(value.begin(), value.end(), [](const Json& v) { return v.is_number(); })) {
            p.type = ExtensionParameterType::number_list;
            for (const Json& v : value) p.number_list_value.push_back(v.get<double>());
        } else {
            r.fail(r.child_path("value"), "expected a text, a number, true or false, or a list of numbers, found " +
                                              ObjectReader::describe(value));
        }
        if (p.name == "path" && p.type == ExtensionParameterType::text) {
            // MATLAB changes into this folder, so it must not depend on where the bench runs.
            const std::filesystem::path folder =
                std::filesystem::absolute(context.folder / p.text_value).lexically_normal();
            if (!std::filesystem::is_directory(folder)) {
                r.fail(r.child_path("value"), "the folder " + display_text(folder.string()) + " does not exist");
            }
            p.text_value = folder.string();
            if (p.text_value.size() > 1 && p.text_value.back() == '/') p.text_value.pop_back();
        }
        check_strategy_setting(r, p);
        parameters.push_back(p);
    });
}

template <class Record, class Reader>
void read_component_list(ObjectReader& top, const char* key, std::vector<Record>& list, Reader reader) {
    top.list(key, [&](ObjectReader& r, std::size_t) {
        Record record;
        reader(r, record);
        list.push_back(std::move(record));
    });
}

// A plant list gives one entry per component of the same name; entries that differ in
// number from the components are an error rather than a guess.
template <class F>
void read_plant_list(ObjectReader& plant, const char* key, std::size_t components, bool required, F&& f) {
    if (!plant.has(key)) {
        if (required && components > 0) {
            plant.fail(plant.child_path(key), "missing; each of the " + std::to_string(components) + " " + key +
                                                  " needs an entry here");
        }
        return;
    }
    const std::size_t entries = plant.list(key, f);
    if (entries != components) {
        plant.fail(plant.child_path(key), "has " + std::to_string(entries) + " entries but " + key + " has " +
                                              std::to_string(components) + "; the two lists must agree");
    }
}

void read_plant(ObjectReader& top, ScenarioContext& context, SimulationParameters& parameters, PlantInputs& plant) {
    const auto read_section = [&](ObjectReader& p) {
        read_plant_list(p, "primary_loads", parameters.primary_load_list.size(), true,
                        [&](ObjectReader& e, std::size_t) {
                            plant.loads.push_back(read_series(e, "load", context, power_kw));
                        });
        read_plant_list(p, "pvs", parameters.pv_list.size(), true, [&](ObjectReader& e, std::size_t) {
            plant.solar.push_back(read_series(e, "solar", context, solar_per_kw));
        });
        read_plant_list(p, "wind_turbines", parameters.wind_turbine_list.size(), true,
                        [&](ObjectReader& e, std::size_t) {
                            plant.wind_speed.push_back(read_series(e, "wind_speed", context, wind_speed_m_s));
                        });
        read_plant_list(p, "generators", parameters.generator_list.size(), false, [&](ObjectReader& e, std::size_t) {
            plant.generator_schedules.push_back(
                e.has("schedule") ? read_series(e, "schedule", context, schedule_code) : std::vector<double>{});
        });
        read_plant_list(p, "batteries", parameters.battery_list.size(), false, [&](ObjectReader& e, std::size_t) {
            PlantBattery battery;
            e.read("initial_state_of_charge_percent", battery.initial_state_of_charge_percent);
            if (!(battery.initial_state_of_charge_percent >= 0 && battery.initial_state_of_charge_percent <= 100)) {
                e.fail(e.child_path("initial_state_of_charge_percent"), "must be from 0 to 100");
            }
            e.read("energy_cost", battery.energy_cost);
            plant.batteries.push_back(battery);
        });
        read_plant_list(p, "grids", parameters.grid_list.size(), true, [&](ObjectReader& e, std::size_t i) {
            PlantGrid grid;
            if (e.has("outages")) grid.outages = read_series(e, "outages", context, zero_or_one);
            if (!parameters.grid_list[i].limit_net_grid_purchases) e.require("max_grid_purchases");
            e.read("max_grid_purchases", grid.max_grid_purchases, power_kw);
            e.require("max_grid_sales");
            e.read("max_grid_sales", grid.max_grid_sales, power_kw);
            plant.grids.push_back(grid);
        });
    };
    if (!top.has("plant")) {
        const bool needs_plant = !parameters.primary_load_list.empty() || !parameters.pv_list.empty() ||
                                 !parameters.wind_turbine_list.empty() || !parameters.grid_list.empty();
        if (needs_plant) top.require("plant");
    }
    top.object("plant", read_section);
    // Components without a plant entry of their own get the defaults.
    plant.generator_schedules.resize(parameters.generator_list.size());
    plant.batteries.resize(parameters.battery_list.size());
}

// Values the bench derives when the scenario leaves them out.
void complete_parameters(SimulationParameters& parameters, const PlantInputs& plant) {
    for (std::size_t i = 0; i < parameters.primary_load_list.size(); ++i) {
        auto& load = parameters.primary_load_list[i];
        if (load.peak_load == 0 && !plant.loads[i].empty()) {
            load.peak_load = *std::max_element(plant.loads[i].begin(), plant.loads[i].end());
        }
    }
    for (std::size_t i = 0; i < parameters.pv_list.size(); ++i) {
        auto& pv = parameters.pv_list[i];
        if (pv.solar_forecast.empty()) {
            for (double solar : plant.solar[i]) pv.solar_forecast.push_back(pv.rated_capacity * solar);
        }
    }
}

}  // namespace

Scenario read_scenario(const std::string& file, std::optional<std::uint64_t> steps) {
    return read_scenario(parse_json_file(file), file, steps);
}

Scenario read_scenario(const Json& document, const std::string& file, std::optional<std::uint64_t> steps) {
    Scenario scenario;
    scenario.file = file;
    SimulationParameters& parameters = scenario.parameters;
    scenario.input_files.push_back({file, "the scenario"});
    ScenarioContext context;
    context.file = file;
    context.folder = std::filesystem::path(file).parent_path();

    ObjectReader top(document, "", file);
    top.require("timestep_size_in_seconds");
    top.read("timestep_size_in_seconds", parameters.timestep_size_in_seconds);
    if (parameters.timestep_size_in_seconds == 0) top.fail("timestep_size_in_seconds", "must be above 0");
    top.require("number_of_timesteps");
    top.read("number_of_timesteps", parameters.number_of_timesteps);
    if (steps) {
        if (*steps == 0) throw InputError("--steps: the run needs at least 1 time step");
        if (*steps > largest_exact_count) {
            throw InputError("--steps: at most " + std::to_string(largest_exact_count) + " time steps");
        }
        parameters.number_of_timesteps = *steps;
    }
    if (parameters.number_of_timesteps == 0) top.fail("number_of_timesteps", "must be above 0");
    context.steps = parameters.number_of_timesteps;
    scenario.steps = context.steps;

    read_extension_parameters(top, context, parameters.extension_parameters);
    read_component_list(top, "generators", parameters.generator_list, read_generator);
    read_component_list(top, "primary_loads", parameters.primary_load_list, read_primary_load);
    read_component_list(top, "pvs", parameters.pv_list,
                        [&](ObjectReader& r, PvParameters& pv) { read_pv(r, pv, context); });
    read_component_list(top, "batteries", parameters.battery_list, read_battery);
    read_component_list(top, "converters", parameters.converter_list, read_converter);
    read_component_list(top, "flywheels", parameters.flywheel_list, read_flywheel);
    read_component_list(top, "grids", parameters.grid_list,
                        [&](ObjectReader& r, GridParameters& grid) { read_grid(r, grid, context); });
    read_component_list(top, "custom_components", parameters.custom_component_list, read_custom_component);
    read_component_list(top, "wind_turbines", parameters.wind_turbine_list, read_wind_turbine);
    top.object("emissions", [&](ObjectReader& r) { read_emissions(r, parameters.emissions); });
    top.object("operating_reserve", [&](ObjectReader& r) { read_operating_reserve(r, parameters.operating_reserve); });
    top.read("maximum_annual_capacity_shortage", parameters.maximum_annual_capacity_shortage);
    top.read("minimum_renewable_fraction", parameters.minimum_renewable_fraction);
    read_plant(top, context, parameters, scenario.plant);
    top.finish();

    complete_parameters(parameters, scenario.plant);
    for (const std::string& series : context.series.files()) scenario.input_files.push_back({series, "a series file"});
    return scenario;
}

}  // namespace tamlo_host
