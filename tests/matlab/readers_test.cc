// The readers of init_error, end_sim_out and new_simulation_state, on arrays built here.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "matlab_connection.h"
#include "simulation_state_struct.h"
#include "struct_primitives.h"

namespace {

using tamlo_dispatch::DISPATCH_CRITICAL_ERROR;
using tamlo_dispatch::DISPATCH_NO_ERROR;
using tamlo_dispatch::DispatchError;
using tamlo_dispatch::SimulationState;
using tamlo_matlab::MatlabConnection;
using Texts = std::vector<std::string>;

using Array = std::unique_ptr<mxArray, decltype(&mxDestroyArray)>;

// A struct with the given fields, each taken over.
Array struct_of(const std::vector<std::pair<const char*, mxArray*>>& fields) {
    Array s(tamlo_marshal::make_single_struct(), &mxDestroyArray);
    for (const auto& [name, value] : fields) tamlo_marshal::set_struct_field(s.get(), 0, name, value);
    return s;
}

mxArray* cell_of(const std::vector<mxArray*>& values) {
    mxArray* cell = mxCreateCellMatrix(1, values.size());
    for (std::size_t i = 0; i < values.size(); ++i) mxSetCell(cell, i, values[i]);
    return cell;
}

// Filled with a stale text, to show that no reader hands it back.
struct Buffer {
    Buffer() { std::strcpy(bytes, "stale text of an earlier read"); }
    char bytes[tamlo_matlab::kMatlabTextBufferSize] = {};
};

// DISPATCH_SIMULATION_ERROR is read through the engine in tests/e2e (GridModels).
TEST(ReadInitError, SeverityCodeDecidesAndOnlyTheExactTextsCount) {
    const std::string missing =
        "Field error_description or severity_code of init_error variable is missing! Check that your MATLAB "
        "StartSimulation function returns a struct with this field.";
    const struct {
        const char* severity_code;  // null: no such field
        tamlo_dispatch::DispatchSeverity severity;
        std::string message;
    } rows[] = {
        {"DISPATCH_CRITICAL_ERROR", DISPATCH_CRITICAL_ERROR, "MATLAB error: line oneline two"},
        {"dispatch_critical_error", DISPATCH_NO_ERROR, ""},
        {"DISPATCH_CRITICAL_ERROR ", DISPATCH_NO_ERROR, ""},
        {nullptr, DISPATCH_CRITICAL_ERROR, missing},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.severity_code ? row.severity_code : "(none)");
        Array init_error = struct_of({{"error_description", mxCreateString("line one\nline two")}});
        if (row.severity_code) {
            tamlo_marshal::set_struct_field(init_error.get(), 0, "severity_code", mxCreateString(row.severity_code));
        }
        Buffer buffer;
        DispatchError result;
        result.host_fields[3] = 77;
        EXPECT_EQ(MatlabConnection::read_init_error(init_error.get(), buffer.bytes, result), row.severity_code != nullptr);
        EXPECT_EQ(result.severity, row.severity);
        EXPECT_EQ(result.message, row.message);
        EXPECT_EQ(result.host_fields[3], 77u);
    }
}

// Texts in cell order, cut to 1023 characters; a number, or any element of an array that is no
// cell array, reads as empty. Line feeds and the order of warnings are kept in tests/e2e
// (EndFunction).
TEST(ReadEndSimOut, ReadsTextsInCellOrderCutAndNonTextAsEmptyAndNamesAMissingField) {
    Buffer buffer;
    tamlo_dispatch::SimulationErrorsAndWarnings lists;
    Array out = struct_of(
        {{"simulation_errors", cell_of({mxCreateString(std::string(1024, 'w').c_str()),
                                        mxCreateString(std::string(1023, 'y').c_str()), mxCreateDoubleScalar(1)})},
         {"simulation_warnings", mxCreateDoubleMatrix(1, 2, mxREAL)}});
    EXPECT_TRUE(MatlabConnection::read_end_sim_out(out.get(), buffer.bytes, lists));
    EXPECT_EQ(lists.simulation_errors, (Texts{std::string(1023, 'w'), std::string(1023, 'y'), ""}));
    EXPECT_EQ(lists.simulation_warnings, (Texts{"", ""}));

    lists = {};
    out = struct_of({{"simulation_errors", cell_of({mxCreateString("unread")})}});
    EXPECT_FALSE(MatlabConnection::read_end_sim_out(out.get(), buffer.bytes, lists));
    EXPECT_EQ(lists.simulation_errors,
              Texts{"Field simulation_errors or simulation_warnings of init_error variable is missing! Check that your "
                    "MATLAB EndSimulation function returns a struct with this field."});
}

// The numbers read back from new_simulation_state, in the order they are read. Batteries
// have a dedicated converter only where `dedicated` says so.
std::vector<double*> decisions_of(SimulationState& s, const std::vector<bool>& dedicated) {
    std::vector<double*> v;
    auto converter = [&v](tamlo_dispatch::ConverterState& c) {
        v.insert(v.end(), {&c.inverter_power_input, &c.inverter_power_output, &c.rectifier_power_input,
                           &c.rectifier_power_output});
    };
    for (auto& g : s.generator_list) v.push_back(&g.power_setpoint);
    for (auto& w : s.wind_turbine_list) v.push_back(&w.power_setpoint);
    for (auto& p : s.pv_list) v.push_back(&p.power_setpoint);
    for (auto& c : s.converter_list) converter(c);
    for (auto& f : s.flywheel_list) v.push_back(&f.load_served);
    for (std::size_t i = 0; i < s.battery_list.size(); ++i) {
        v.push_back(&s.battery_list[i].power_setpoint);
        if (dedicated[i]) converter(s.battery_list[i].dedicated_converter);
    }
    for (auto* bus : {&s.ac_bus, &s.dc_bus}) {
        v.insert(v.end(), {&bus->load_served, &bus->unmet_load, &bus->excess_electricity,
                           &bus->operating_capacity_served, &bus->capacity_shortage});
    }
    for (auto& l : s.primary_load_list) v.push_back(&l.load_served);
    for (auto& g : s.grid_list) v.insert(v.end(), {&g.grid_purchases, &g.grid_sales});
    return v;
}

// Two of each kind and three batteries, every number distinct, counting from `first`.
SimulationState numbered_state(double first) {
    SimulationState s;
    s.generator_list.resize(2);
    s.wind_turbine_list.resize(2);
    s.pv_list.resize(2);
    s.converter_list.resize(2);
    s.flywheel_list = {{0, 0}, {1, 0}};
    s.battery_list.resize(3);
    s.primary_load_list.resize(2);
    s.grid_list.resize(2);
    for (double* x : decisions_of(s, {true, true, true})) *x = first++;
    return s;
}

// Removes the field and frees its values, which mxRemoveField leaves to the caller.
void remove_field(mxArray* s, const char* name) {
    for (std::size_t i = 0; i < mxGetNumberOfElements(s); ++i) mxDestroyArray(mxGetField(s, i, name));
    mxRemoveField(s, mxGetFieldNumber(s, name));
}

class ReadNewSimulationState : public ::testing::Test {
protected:
    ReadNewSimulationState() {
        // The first battery has a dedicated converter, the second none. The third battery's
        // parameters are dropped from the list: the memory behind its end still says
        // "dedicated converter", which only a read past the end would see.
        parameters.battery_list.resize(3);
        parameters.battery_list[0].has_dedicated_converter = true;
        parameters.battery_list[2].has_dedicated_converter = true;
        parameters.battery_list.pop_back();
        tamlo_marshal::fill_simulation_state_struct(answer.get(), decisions);
    }
    // What the dispatch function answered, read into a state holding other numbers.
    bool read(mxArray* answer, DispatchError& outcome) {
        return MatlabConnection::read_new_simulation_state(answer, state, parameters, outcome);
    }

    tamlo_dispatch::SimulationParameters parameters;
    SimulationState decisions = numbered_state(1000);
    SimulationState state = numbered_state(1);
    Array answer{tamlo_marshal::make_single_struct(), &mxDestroyArray};
};

TEST_F(ReadNewSimulationState, ReadsEveryDecisionIntoItsOwnField) {
    // Only a logical true is the simulator's flywheel code 0.
    mxArray* flywheels = mxGetField(answer.get(), 0, "flywheels");
    tamlo_marshal::set_struct_field(flywheels, 0, "flywheel_state", mxCreateDoubleScalar(1));
    tamlo_marshal::set_struct_field(flywheels, 1, "flywheel_state", mxCreateLogicalScalar(true));
    const SimulationState before = state;
    DispatchError outcome;
    EXPECT_TRUE(read(answer.get(), outcome));
    const std::vector<double*> read = decisions_of(state, {true, false, false});
    const std::vector<double*> sent = decisions_of(decisions, {true, false, false});
    ASSERT_EQ(read.size(), sent.size());
    for (std::size_t i = 0; i < read.size(); ++i) EXPECT_EQ(*read[i], *sent[i]) << "decision " << i;
    for (std::size_t i : {1, 2}) {
        EXPECT_EQ(state.battery_list[i].dedicated_converter.inverter_power_input,
                  before.battery_list[i].dedicated_converter.inverter_power_input);
    }
    EXPECT_EQ(state.flywheel_list[0].flywheel_state, 1u);
    EXPECT_EQ(state.flywheel_list[1].flywheel_state, 0u);
    EXPECT_EQ(outcome.severity, DISPATCH_NO_ERROR);
}

TEST_F(ReadNewSimulationState, StopsAtTheFirstMissingFieldAndNamesIt) {
    const std::string check = "Check that your MATLAB dispatch function returns a struct with this field.";
    const struct {
        const char* name;
        std::function<void(mxArray*)> edit;
        std::string message;  // empty: the read succeeds
    } rows[] = {
        {"no batteries: skipped", [](mxArray* s) { remove_field(s, "batteries"); }, ""},
        {"no generators", [](mxArray* s) { remove_field(s, "generators"); },
         "Field generators of simulation_state variable is missing! " + check},
        {"generators without set points", [](mxArray* s) { remove_field(mxGetField(s, 0, "generators"), "power_setpoint"); },
         "Field power_setpoint of generators(0) in simulation_state could not be read."},
        {"no ac_bus", [](mxArray* s) { remove_field(s, "ac_bus"); },
         "Field ac_bus of simulation_state is missing!  " + check},
        {"no unmet_load", [](mxArray* s) { remove_field(mxGetField(s, 0, "dc_bus"), "unmet_load"); },
         "Could not find field unmet_load in simulation_state. " + check},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Array edited(mxDuplicateArray(answer.get()), &mxDestroyArray);
        row.edit(edited.get());
        const double battery_set_point = state.battery_list[0].power_setpoint;
        DispatchError outcome;
        EXPECT_EQ(read(edited.get(), outcome), row.message.empty());
        EXPECT_EQ(outcome.message, row.message);
        if (row.message.empty()) {
            EXPECT_EQ(state.battery_list[0].power_setpoint, battery_set_point);
        }
    }
}

}  // namespace
