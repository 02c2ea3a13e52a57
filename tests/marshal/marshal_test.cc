// The marshal tables: which record member lands in which field of the structs MATLAB receives,
// how codes, counts, empty lists and odd grid models are shown, and who owns the arrays. Field
// names, order, classes and sizes are the field reference's (tests/strategies).
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "numbered_system.h"
#include "simulation_parameters_struct.h"
#include "simulation_state_struct.h"
#include "struct_primitives.h"

namespace tamlo_marshal {
namespace {

using namespace tamlo_dispatch;
using tamlo_numbered::Numbering;

using MxPtr = std::unique_ptr<mxArray, decltype(&mxDestroyArray)>;

MxPtr new_struct() { return {make_single_struct(), &mxDestroyArray}; }

std::string text_of(const mxArray* a) {
    char* chars = a == nullptr ? nullptr : mxArrayToString(a);
    if (chars == nullptr) return "<no text>";
    std::string text(chars);
    mxFree(chars);
    return text;
}

// The array at a path such as "grids(2).technical_model.model_type" below s (an element
// without "(k)" is the first), or null.
const mxArray* at(const mxArray* s, const std::string& path) {
    static const std::regex segment(R"(([a-z_]+)(?:\(([0-9]+)\))?)");
    std::size_t element = 0;
    for (std::sregex_iterator it(path.begin(), path.end(), segment), end; s != nullptr && it != end; ++it) {
        s = element < mxGetNumberOfElements(s) ? mxGetField(s, element, (*it)[1].str().c_str()) : nullptr;
        element = (*it)[2].matched ? std::stoul((*it)[2]) - 1 : 0;
    }
    return s;
}

// Every value below a struct: numbers and texts with the paths they occur at, flags in the
// order met.
struct Leaves {
    std::map<std::string, std::vector<std::string>> values;
    std::vector<std::pair<std::string, bool>> flags;
};

std::string number_key(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", v);
    return text;
}

void collect(const mxArray* a, const std::string& path, Leaves& leaves) {
    const std::size_t count = mxGetNumberOfElements(a);
    if (mxIsStruct(a)) {
        for (std::size_t e = 0; e < count; ++e) {
            for (int f = 0; f < mxGetNumberOfFields(a); ++f) {
                const std::string field = path + "(" + std::to_string(e + 1) + ")." + mxGetFieldNameByNumber(a, f);
                if (const mxArray* value = mxGetFieldByNumber(a, e, f)) collect(value, field, leaves);
            }
        }
    } else if (mxIsChar(a)) {
        leaves.values["'" + text_of(a) + "'"].push_back(path);
    } else if (mxIsLogical(a)) {
        for (std::size_t e = 0; e < count; ++e) leaves.flags.emplace_back(path, mxGetLogicals(a)[e]);
    } else {
        ASSERT_TRUE(mxIsDouble(a)) << path;
        for (std::size_t e = 0; e < count; ++e) leaves.values[number_key(mxGetPr(a)[e])].push_back(path);
    }
}

// Fills s from the numbered records, or from empty ones without a numbering.
void fill_parameters(mxArray* s, Numbering* n) {
    fill_simulation_parameters_struct(s, n ? tamlo_numbered::numbered_system(*n) : SimulationParameters{});
}
void fill_state(mxArray* s, Numbering* n) {
    fill_simulation_state_struct(s, n ? tamlo_numbered::numbered_state(*n) : SimulationState{});
}

struct NumberedCase {
    const char* name;
    void (*fill)(mxArray*, Numbering*);
    std::vector<std::string> derived_texts;  // texts made from codes, not handed out
};

const NumberedCase numbered_cases[] = {
    {"simulation_parameters", fill_parameters, {"'RealTime'", "'Scheduled'", "'ComplexUtility'"}},
    {"simulation_state", fill_state, {"'FORCED_OFF_OUT_OF_FUEL'", "'FORCED_OFF_FOR_MAINTENANCE_EVENT'"}},
};

// The extension fills one kept struct again and again: this fills it three times, full, empty
// and from n. Each fill releases the arrays it replaces, which the sanitizer build checks.
Leaves numbered_leaves(const NumberedCase& c, Numbering& n) {
    const MxPtr kept = new_struct();
    Numbering first;
    c.fill(kept.get(), &first);
    c.fill(kept.get(), nullptr);
    c.fill(kept.get(), &n);
    Leaves leaves;
    collect(kept.get(), "s", leaves);
    return leaves;
}

TEST(NumberedStructs, EveryMemberLandsInExactlyOneField) {
    // A member read into the wrong field shows as one value twice and another not at all. Over
    // eight passes flag k spells k in bits; flags made from counts or codes stay the same in
    // every pass (0 or 255) and have edge rows of their own.
    constexpr int passes = 8;
    for (const NumberedCase& c : numbered_cases) {
        SCOPED_TRACE(c.name);
        Numbering n;
        Leaves leaves = numbered_leaves(c, n);
        ASSERT_LT(n.flags, 1 << (passes - 1)) << "a flag's complement would spell another's number";
        std::vector<int> codes(leaves.flags.size());
        for (int pass = 0; pass < passes; ++pass) {
            Numbering flag_pass(pass);
            const Leaves again = numbered_leaves(c, flag_pass);
            for (std::size_t i = 0; i < codes.size(); ++i) codes[i] |= again.flags[i].second << pass;
        }
        for (std::size_t i = 0; i < codes.size(); ++i) {
            if (codes[i] == 0 || codes[i] == (1 << passes) - 1) continue;
            leaves.values["flag " + std::to_string(codes[i])].push_back(leaves.flags[i].first);
        }
        std::vector<std::string> expected = c.derived_texts;
        for (double v : n.numbers) expected.push_back(number_key(v));
        for (const std::string& t : n.texts) expected.push_back("'" + t + "'");
        for (int k = 1; k <= n.flags; ++k) expected.push_back("flag " + std::to_string(k));
        for (const std::string& value : expected) {
            const std::vector<std::string>& paths = leaves.values[value];
            EXPECT_EQ(paths.size(), 1u) << value << " at " << testing::PrintToString(paths);
            leaves.values.erase(value);
        }
        for (const auto& [value, paths] : leaves.values) {
            ADD_FAILURE() << value << " was never handed out; at " << paths[0];
        }
    }
}

// How a field shows in MATLAB: "class MxN", then the value of a scalar; a text as 'text'; a
// struct with its number of fields; "none" where the element holds no array.
std::string shows(const mxArray* a) {
    if (a == nullptr) return "none";
    if (mxIsChar(a)) return "'" + text_of(a) + "'";
    const std::string shape =
        std::string(mxGetClassName(a)) + " " + std::to_string(mxGetM(a)) + "x" + std::to_string(mxGetN(a));
    if (mxIsStruct(a)) return shape + ", " + std::to_string(mxGetNumberOfFields(a)) + " fields";
    if (mxGetNumberOfElements(a) != 1) return shape;
    if (mxIsLogical(a)) return shape + (mxIsLogicalScalarTrue(a) ? " true" : " false");
    return shape + " " + number_key(mxGetScalar(a));
}

// A model of a kind the builder does not know. One that claims a kind it is not, and a grid
// without a model, reach MATLAB in tests/e2e (GridModels.HostMadeModelsAppearInMatlab).
class OtherModel : public IGridModel {
public:
    explicit OtherModel(std::int32_t type) : type_(type) {}
    GridModelType get_model_type() const override { return static_cast<GridModelType>(type_); }

private:
    std::int32_t type_;
};

class TunedRealTime : public RealTime {};

// Empty lists and texts, counts at the ends of their range, extension parameters of kinds the
// simulator may add later (the numbered system has the others) and grid models of other kinds.
SimulationParameters edge_system() {
    SimulationParameters p;
    for (std::int32_t type : {7, -1}) {
        p.extension_parameters.push_back(
            {"item", static_cast<ExtensionParameterType>(type), 2.5, true, "text", {1.0, 2.0, 3.0}});
    }
    p.generator_list.resize(1);
    p.generator_list[0].component.component_number = UINT64_MAX;
    p.flywheel_list = {{{}, 0.0, 0.0, 0.0, -1}};
    p.wind_turbine_list.resize(1);
    p.grid_list = {{std::make_shared<ComplexUtility>()},
                   {std::make_shared<OtherModel>(7)},
                   {std::make_shared<OtherModel>(-4)},
                   {std::make_shared<TunedRealTime>()}};
    return p;
}

// Every current state code and one out of range on each side, both flywheel codes, the last step.
SimulationState edge_state() {
    SimulationState s;
    for (std::int32_t code = -4; code <= 3; ++code) {
        s.generator_list.push_back({0.0, 0.0, static_cast<GeneratorCurrentState>(code)});
        s.wind_turbine_list.push_back({0.0, 0.0, static_cast<GeneratorCurrentState>(code)});
    }
    s.flywheel_list = {{0, 0.0}, {1, 0.0}};
    s.current_timestep = UINT32_MAX;
    return s;
}

struct EdgeRow {
    const char* path;
    const char* shows;
};

const EdgeRow parameter_edge_rows[] = {
    {"primary_loads", "struct 0x1, 0 fields"},
    {"generators.name", "''"},
    {"generators.component_number", "double 1x1 1.8446744073709552e+19"},
    {"flywheels.quantity", "double 1x1 -1"},
    {"wind_turbines.power_curve", "double 0x2"},
    {"grids(1).technical_model.demand_price", "double 0x1"},
    {"grids(2).technical_model.model_type", "'unknown 7'"},
    {"grids(3).technical_model.model_type", "'unknown -4'"},
    {"grids(4).technical_model.model_type", "'RealTime'"},
    {"extension_parameters(1).value", "'text'"},
    {"extension_parameters(2).value", "'text'"},
};

// The numbered state shows FORCED_OFF_OUT_OF_FUEL on its generator and
// FORCED_OFF_FOR_MAINTENANCE_EVENT on its wind turbine; these rows give the other names and
// both ends of each kind's range.
const EdgeRow state_edge_rows[] = {
    {"pvs", "struct 0x1, 0 fields"},
    {"generators(1).current_state", "none"},
    {"generators(4).current_state", "'FORCED_OFF_FOR_SCHEDULE'"},
    {"generators(5).current_state", "'DISPATCH_DECIDES'"},
    {"generators(6).current_state", "'FORCED_ON_FOR_SCHEDULE'"},
    {"generators(7).current_state", "'FORCED_ON_FOR_MINIMUM_RUNTIME'"},
    {"generators(8).current_state", "none"},
    {"wind_turbines(2).current_state", "none"},
    {"wind_turbines(6).current_state", "'FORCED_ON_FOR_SCHEDULE'"},
    {"wind_turbines(7).current_state", "none"},
    {"flywheels(1).flywheel_state", "logical 1x1 true"},
    {"flywheels(2).flywheel_state", "logical 1x1 false"},
    {"current_timestep", "double 1x1 4294967295"},
};

TEST(MarshalTables, EdgeCasesShowAsTheirRowsSay) {
    const SimulationParameters p = edge_system();
    const MxPtr parameters = new_struct();
    fill_simulation_parameters_struct(parameters.get(), p);
    for (const EdgeRow& row : parameter_edge_rows) {
        EXPECT_EQ(shows(at(parameters.get(), row.path)), row.shows) << row.path;
    }
    const MxPtr state = new_struct();
    fill_simulation_state_struct(state.get(), edge_state());
    for (const EdgeRow& row : state_edge_rows) EXPECT_EQ(shows(at(state.get(), row.path)), row.shows) << row.path;
    for (const GridParameters& grid : p.grid_list) {
        EXPECT_LE(grid.technical_model.use_count(), 1) << "the struct keeps a grid model";
    }
}

struct HasFlagRow {
    const char* flag;
    void (*add)(SimulationParameters&);
};

const HasFlagRow has_flag_rows[] = {
    {"has_generator", [](SimulationParameters& p) { p.generator_list.resize(1); }},
    {"has_battery", [](SimulationParameters& p) { p.battery_list.resize(1); }},
    {"has_pv", [](SimulationParameters& p) { p.pv_list.resize(1); }},
    {"has_converter", [](SimulationParameters& p) { p.converter_list.resize(1); }},
    {"has_flywheel", [](SimulationParameters& p) { p.flywheel_list.resize(1); }},
    {"has_wind_turbine", [](SimulationParameters& p) { p.wind_turbine_list.resize(1); }},
};

TEST(SimulationParametersStruct, EachHasFlagIsTrueExactlyWhenItsListHasEntries) {
    for (const HasFlagRow& row : has_flag_rows) {
        SimulationParameters p;
        row.add(p);
        const MxPtr s = new_struct();
        fill_simulation_parameters_struct(s.get(), p);
        for (const HasFlagRow& flag : has_flag_rows) {
            EXPECT_EQ(shows(at(s.get(), flag.flag)), &flag == &row ? "logical 1x1 true" : "logical 1x1 false")
                << row.flag << " added, " << flag.flag;
        }
    }
}

}  // namespace
}  // namespace tamlo_marshal
