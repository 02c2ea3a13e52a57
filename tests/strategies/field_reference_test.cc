// Holds docs/reference/fields.md against what MATLAB really receives: a fixture dumps every
// field of simulation_parameters and simulation_state (path, class, size) from inside the
// engine, for a system with every component kind and all three grid models.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "loaded_extension.h"

namespace tamlo_strategies {
namespace {

using namespace tamlo_dispatch;

GridStateFlags some_flags() {
    GridStateFlags flags;
    flags.prohibit_any_grid_sales = true;
    flags.maintain_state_of_charge_percent = 40;
    return flags;
}

TariffRate tariff(const std::string& name) {
    TariffRate rate;
    rate.rate_name = name;
    rate.rate_bands = {{0.12, 500.0}, {0.15, 1000.0}};
    rate.tou_periods = {{1, 8, 0, 5, 20, 0}};
    rate.season = {1, 1, 12, 31};
    rate.charge_type = "energy";
    return rate;
}

ComponentParameters head(const std::string& name, std::uint64_t number, bool is_ac) {
    ComponentParameters component;
    component.name = name;
    component.component_number = number;
    component.is_AC = is_ac;
    component.cost = {1000.0, 800.0, 10.0};
    return component;
}

// One of every component kind, every nested list filled, every kind of extension parameter.
SimulationParameters every_kind_of_component(const std::string& dump_folder) {
    SimulationParameters p;
    p.extension_parameters = settings(TAMLO_FIXTURE_DIR, "field_dump");
    p.extension_parameters.push_back(text_parameter("field dump folder", dump_folder));
    ExtensionParameter number;
    number.name = "a number";
    number.type = ExtensionParameterType::number;
    number.number_value = 2.5;
    ExtensionParameter list;
    list.name = "a number list";
    list.type = ExtensionParameterType::number_list;
    list.number_list_value = {1, 2, 3};
    ExtensionParameter flag;
    flag.name = "a flag";
    flag.type = ExtensionParameterType::boolean;
    flag.boolean_value = true;
    p.extension_parameters.insert(p.extension_parameters.end(), {number, list, flag});

    GeneratorParameters generator;
    generator.component = head("diesel", 1, true);
    generator.fuel.name = "diesel fuel";
    generator.rated_capacity = 100;
    p.generator_list.push_back(generator);
    p.primary_load_list.push_back({"village", true, 120});
    PvParameters pv;
    pv.component = head("pv", 2, false);
    pv.rated_capacity = 50;
    pv.solar_forecast = {0, 10, 20};
    p.pv_list.push_back(pv);
    BatteryParameters battery;
    battery.component = head("battery", 3, false);
    battery.has_dedicated_converter = true;
    battery.dedicated_converter.component = head("battery converter", 4, false);
    battery.dedicated_converter.inverter_efficiency_table = {{0.1, 90}, {1.0, 95}};
    battery.dedicated_converter.rectifier_efficiency_table = {{0.1, 88}, {1.0, 93}};
    p.battery_list.push_back(battery);
    ConverterParameters converter;
    converter.component = head("converter", 5, true);
    converter.inverter_efficiency = 95;
    converter.rectifier_efficiency = 90;
    p.converter_list.push_back(converter);
    FlywheelParameters flywheel;
    flywheel.component = head("flywheel", 6, true);
    flywheel.quantity = 1;
    p.flywheel_list.push_back(flywheel);

    auto real_time = std::make_shared<RealTime>();
    real_time->demand_rate = {{"peak", some_flags(), 12.0}};
    real_time->demand_rate_index = {0, 0, 0};
    real_time->realtime_power_price = {0.1, 0.2, 0.3};
    real_time->realtime_sellback_rate = {0.01, 0.02, 0.03};
    auto scheduled = std::make_shared<Scheduled>();
    scheduled->demand_rate = {{"base", GridStateFlags{}, 8.0}};
    scheduled->demand_rate_index = {0, 0, 0};
    scheduled->grid_rate = {{"day", some_flags(), 0.2, 0.05}};
    scheduled->grid_rate_index = {0, 0, 0};
    auto utility = std::make_shared<ComplexUtility>();
    utility->tariff_name = "village tariff";
    utility->tariff_code = "VT-1";
    utility->consumption_rates = {tariff("consumption")};
    utility->demand_rates = {tariff("demand")};
    utility->fixed_rates = {tariff("fixed")};
    utility->minimum_rates = {tariff("minimum")};
    utility->tax_rates = {tariff("tax")};
    utility->purchase_price = {0.2, 0.2, 0.2};
    utility->export_price = {0.05, 0.05, 0.05};
    utility->demand_price = {10, 10, 10};
    for (const std::shared_ptr<IGridModel>& model :
         std::vector<std::shared_ptr<IGridModel>>{real_time, scheduled, utility}) {
        GridParameters grid;
        grid.technical_model = model;
        grid.max_net_grid_purchases = 100;
        p.grid_list.push_back(grid);
    }
    CustomComponentParameters custom;
    custom.component = head("custom", 7, true);
    custom.name = "custom";
    custom.component_number = 7;
    custom.is_AC = true;
    custom.capacity = 10;
    p.custom_component_list.push_back(custom);
    WindTurbineParameters wind;
    wind.component = head("wind", 8, true);
    wind.quantity = 2;
    wind.rated_power = 10;
    wind.power_curve = {{3, 0}, {12, 10}, {25, 10}};
    p.wind_turbine_list.push_back(wind);
    p.timestep_size_in_seconds = 3600;
    p.number_of_timesteps = 3;
    return p;
}

SimulationState state_of(const SimulationParameters& p) {
    SimulationState s;
    s.generator_list.push_back({100, 0, DISPATCH_DECIDES});
    s.pv_list.resize(p.pv_list.size());
    s.battery_list.resize(p.battery_list.size());
    s.primary_load_list.push_back({50, 0});
    s.converter_list.resize(p.converter_list.size());
    s.flywheel_list.resize(p.flywheel_list.size());
    s.grid_list.resize(p.grid_list.size());
    s.custom_component_list.resize(p.custom_component_list.size());
    s.wind_turbine_list.push_back({0, 10, DISPATCH_DECIDES});
    s.ac_bus.load_requested = 50;
    return s;
}

// What the dump says of one path: its classes and sizes, in the order first seen.
struct Seen {
    std::set<std::string> classes;
    std::set<std::string> sizes;
};

struct Dump {
    std::vector<std::string> order;
    std::map<std::string, Seen> fields;
};

void read_dump(const std::filesystem::path& file, Dump& dump) {
    std::ifstream in(file);
    ASSERT_TRUE(in) << "no dump written: " << file;
    std::string line;
    while (std::getline(in, line)) {
        std::istringstream cells(line);
        std::string path, matlab_class, size;
        std::getline(cells, path, '\t');
        std::getline(cells, matlab_class, '\t');
        std::getline(cells, size, '\t');
        if (dump.fields.find(path) == dump.fields.end()) {
            dump.order.push_back(path);
        }
        dump.fields[path].classes.insert(matlab_class);
        dump.fields[path].sizes.insert(size);
    }
}

struct Row {
    std::string path;  // without "(i)"
    std::vector<std::string> classes;
    std::vector<std::string> sizes;  // patterns such as "Nx1", "1xL"
};

std::string trim(const std::string& text) {
    const auto first = text.find_first_not_of(" `");
    const auto last = text.find_last_not_of(" `");
    return first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
}

std::vector<std::string> alternatives(const std::string& cell) {
    std::vector<std::string> result;
    std::string rest = cell;
    for (std::size_t at; (at = rest.find(" or ")) != std::string::npos; rest = rest.substr(at + 4)) {
        result.push_back(trim(rest.substr(0, at)));
    }
    result.push_back(trim(rest));
    return result;
}

std::string replace_all(std::string text, const std::string& from, const std::string& to) {
    for (std::size_t at; (at = text.find(from)) != std::string::npos;) {
        text.replace(at, from.size(), to);
    }
    return text;
}

// Rows of the reference's tables whose first cell names a field of either struct.
std::vector<Row> read_reference(const std::string& file) {
    std::ifstream in(file);
    std::vector<Row> rows;
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("| `simulation_", 0) != 0) {
            continue;
        }
        std::vector<std::string> cells;
        std::istringstream parts(line.substr(1));
        std::string cell;
        while (std::getline(parts, cell, '|')) {
            cells.push_back(cell);
        }
        if (cells.size() < 3) {
            continue;
        }
        Row row;
        row.path = replace_all(trim(cells[0]), "(i)", "");
        row.classes = alternatives(cells[1]);
        for (const std::string& size : alternatives(cells[2])) {
            row.sizes.push_back(replace_all(size, "×", "x"));
        }
        rows.push_back(row);
    }
    return rows;
}

// A size pattern: each dimension a number (exact) or a letter (any count); "1xL" also takes the
// 0x0 of an empty text.
bool size_matches(const std::string& pattern, const std::string& size) {
    const auto split = [](const std::string& s) {
        const auto x = s.find('x');
        return std::pair{s.substr(0, x), x == std::string::npos ? std::string() : s.substr(x + 1)};
    };
    const auto [pattern_rows, pattern_columns] = split(pattern);
    const auto [rows, columns] = split(size);
    const auto dimension = [](const std::string& p, const std::string& d) {
        return (!p.empty() && std::isalpha(static_cast<unsigned char>(p[0]))) || p == d;
    };
    if (pattern == "1xL" && size == "0x0") {
        return true;
    }
    return dimension(pattern_rows, rows) && dimension(pattern_columns, columns);
}

class FieldReference : public testing::Test {
protected:
    static void SetUpTestSuite() {
        char folder_template[] = "/tmp/tamlo_field_dump_XXXXXX";
        ASSERT_NE(mkdtemp(folder_template), nullptr);
        const std::filesystem::path folder(folder_template);
        ExtensionPtr extension = create_extension();
        const SimulationParameters parameters = every_kind_of_component(folder.string());
        const auto started = extension->start_simulation(parameters);
        ASSERT_EQ(started->severity, DISPATCH_NO_ERROR) << started->message;
        SimulationState state = state_of(parameters);
        extension->dispatch(state);
        const auto messages = extension->end_simulation();
        ASSERT_TRUE(messages->simulation_errors.empty()) << messages->simulation_errors.front();
        dump_ = new Dump;
        read_dump(folder / "simulation_parameters.txt", *dump_);
        read_dump(folder / "simulation_state.txt", *dump_);
        std::filesystem::remove_all(folder);
        rows_ = new std::vector<Row>(read_reference(TAMLO_FIELD_REFERENCE));
    }
    static void TearDownTestSuite() {
        delete dump_;
        delete rows_;
        dump_ = nullptr;
        rows_ = nullptr;
    }
    static Dump* dump_;
    static std::vector<Row>* rows_;
};

Dump* FieldReference::dump_ = nullptr;
std::vector<Row>* FieldReference::rows_ = nullptr;

TEST_F(FieldReference, DocumentsEveryFieldMatlabReceives) {
    ASSERT_NE(dump_, nullptr);
    std::set<std::string> documented;
    for (const Row& row : *rows_) {
        documented.insert(row.path);
    }
    std::string missing;
    for (const std::string& path : dump_->order) {
        if (documented.count(path) == 0) {
            const Seen& seen = dump_->fields.at(path);
            missing += "| `" + path + "` | " + *seen.classes.begin() + " | " + *seen.sizes.begin() + " |\n";
        }
    }
    EXPECT_EQ(missing, "") << "fields MATLAB receives that docs/reference/fields.md does not list";
}

TEST_F(FieldReference, ListsNoFieldMatlabDoesNotReceive) {
    ASSERT_NE(dump_, nullptr);
    std::string extra;
    for (const Row& row : *rows_) {
        if (dump_->fields.count(row.path) == 0) {
            extra += row.path + "\n";
        }
    }
    EXPECT_EQ(extra, "");
}

TEST_F(FieldReference, GivesTheClassAndSizeMatlabSees) {
    ASSERT_NE(dump_, nullptr);
    for (const Row& row : *rows_) {
        const auto found = dump_->fields.find(row.path);
        if (found == dump_->fields.end()) {
            continue;
        }
        for (const std::string& seen_class : found->second.classes) {
            EXPECT_NE(std::find(row.classes.begin(), row.classes.end(), seen_class), row.classes.end())
                << row.path << " is " << seen_class << " in MATLAB";
        }
        for (const std::string& seen_size : found->second.sizes) {
            bool matched = false;
            for (const std::string& pattern : row.sizes) {
                matched = matched || size_matches(pattern, seen_size);
            }
            EXPECT_TRUE(matched) << row.path << " is " << seen_size << " in MATLAB";
        }
    }
}

// The fields of each struct, in the order they are first met; a struct's children are the
// paths one level below it.
std::map<std::string, std::vector<std::string>> children_in_order(const std::vector<std::string>& paths) {
    std::map<std::string, std::vector<std::string>> children;
    for (const std::string& path : paths) {
        const auto dot = path.rfind('.');
        if (dot == std::string::npos) {
            continue;
        }
        std::vector<std::string>& siblings = children[path.substr(0, dot)];
        if (std::find(siblings.begin(), siblings.end(), path) == siblings.end()) {
            siblings.push_back(path);
        }
    }
    return children;
}

TEST_F(FieldReference, ListsTheFieldsOfEachStructInMatlabsOrder) {
    ASSERT_NE(dump_, nullptr);
    std::vector<std::string> documented;
    for (const Row& row : *rows_) {
        documented.push_back(row.path);
    }
    EXPECT_EQ(children_in_order(documented), children_in_order(dump_->order));
}

}  // namespace
}  // namespace tamlo_strategies
