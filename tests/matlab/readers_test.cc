// The readers of init_error, end_sim_out and new_simulation_state, on arrays built here.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "matlab_connection.h"

namespace {

using tamlo_dispatch::DISPATCH_CRITICAL_ERROR;
using tamlo_dispatch::DISPATCH_NO_ERROR;
using tamlo_dispatch::DISPATCH_SIMULATION_ERROR;
using tamlo_dispatch::DispatchError;
using tamlo_dispatch::DispatchSeverity;
using tamlo_matlab::MatlabConnection;
using Texts = std::vector<std::string>;

struct DestroyArray {
    void operator()(mxArray* a) const { mxDestroyArray(a); }
};
using Array = std::unique_ptr<mxArray, DestroyArray>;

Array single_struct() {
    return Array(mxCreateStructMatrix(1, 1, 0, nullptr));
}

// Sets s(index).name, taking the value over.
void set(mxArray* s, std::size_t index, const char* name, mxArray* value) {
    if (mxGetFieldNumber(s, name) < 0) mxAddField(s, name);
    mxSetField(s, index, name, value);
}

mxArray* cell_of(const std::vector<mxArray*>& values) {
    mxArray* cell = mxCreateCellMatrix(1, values.size());
    for (std::size_t i = 0; i < values.size(); ++i) mxSetCell(cell, i, values[i]);
    return cell;
}

class Buffer {
public:
    // Filled with a stale text, to show that no reader hands it back.
    Buffer() {
        std::memset(bytes_.data(), 0, bytes_.size());
        std::strcpy(bytes_.data(), "stale text of an earlier read");
    }
    char* data() { return bytes_.data(); }

private:
    std::array<char, tamlo_matlab::kMatlabTextBufferSize> bytes_;
};

TEST(RemoveLineFeeds, RemovesOnlyLineFeedsAndKeepsCarriageReturns) {
    std::string text = "one\ntwo\r\nthree\n\n";
    MatlabConnection::remove_line_feeds(text);
    EXPECT_EQ(text, "onetwo\rthree");
    std::string only_feeds = "\n\n";
    MatlabConnection::remove_line_feeds(only_feeds);
    EXPECT_EQ(only_feeds, "");
}

struct SeverityCase {
    const char* severity_code;
    DispatchSeverity severity;
    const char* message;
};

void PrintTo(const SeverityCase& c, std::ostream* os) {
    *os << '"' << c.severity_code << '"';
}

class ApplySeverityCode : public ::testing::TestWithParam<SeverityCase> {};

TEST_P(ApplySeverityCode, MatchesOnlyTheExactTexts) {
    const SeverityCase& c = GetParam();
    DispatchError result;
    result.host_fields[3] = 77;
    MatlabConnection::apply_severity_code("line one\nline two", c.severity_code, result);
    EXPECT_EQ(result.severity, c.severity);
    EXPECT_EQ(result.message, c.message);
    EXPECT_EQ(result.host_fields[3], 77u);
}

INSTANTIATE_TEST_SUITE_P(
    Codes, ApplySeverityCode,
    ::testing::Values(SeverityCase{"DISPATCH_SIMULATION_ERROR", DISPATCH_SIMULATION_ERROR, "MATLAB error: line oneline two"},
                      SeverityCase{"DISPATCH_CRITICAL_ERROR", DISPATCH_CRITICAL_ERROR, "MATLAB error: line oneline two"},
                      SeverityCase{"dispatch_critical_error", DISPATCH_NO_ERROR, ""},
                      SeverityCase{"DISPATCH_CRITICAL_ERROR ", DISPATCH_NO_ERROR, ""},
                      SeverityCase{"DISPATCH_CRITICAL_ERROR\n", DISPATCH_NO_ERROR, ""},
                      SeverityCase{"DISPATCH_NO_ERROR", DISPATCH_NO_ERROR, ""},
                      SeverityCase{"", DISPATCH_NO_ERROR, ""}));

TEST(ReadText, CutsAt1023CharactersAndReadsNonTextAsEmpty) {
    Buffer buffer;
    Array long_text(mxCreateString(std::string(2000, 'x').c_str()));
    EXPECT_EQ(MatlabConnection::read_text(long_text.get(), buffer.data()), std::string(1023, 'x'));
    Array exact(mxCreateString(std::string(1023, 'y').c_str()));
    EXPECT_EQ(MatlabConnection::read_text(exact.get(), buffer.data()), std::string(1023, 'y'));

    Buffer stale;
    Array number(mxCreateDoubleScalar(5));
    EXPECT_EQ(MatlabConnection::read_text(number.get(), stale.data()), "");
    Buffer stale_again;
    Array big_matrix(mxCreateDoubleMatrix(2000, 1, mxREAL));
    EXPECT_EQ(MatlabConnection::read_text(big_matrix.get(), stale_again.data()), "");
    Buffer stale_null;
    EXPECT_EQ(MatlabConnection::read_text(nullptr, stale_null.data()), "");
}

TEST(ReadInitError, MissingFieldNamesBothFields) {
    const std::string message =
        "Field error_description or severity_code of init_error variable is missing! Check that your MATLAB "
        "StartSimulation function returns a struct with this field.";
    Buffer buffer;
    Array only_code = single_struct();
    set(only_code.get(), 0, "severity_code", mxCreateString("DISPATCH_CRITICAL_ERROR"));
    DispatchError result;
    EXPECT_FALSE(MatlabConnection::read_init_error(only_code.get(), buffer.data(), result));
    EXPECT_EQ(result.severity, DISPATCH_CRITICAL_ERROR);
    EXPECT_EQ(result.message, message);

    Array not_a_struct(mxCreateDoubleScalar(1));
    DispatchError second;
    EXPECT_FALSE(MatlabConnection::read_init_error(not_a_struct.get(), buffer.data(), second));
    EXPECT_EQ(second.message, message);
}

TEST(ReadInitError, ReadsElementOneAndNonTextDescriptionIsEmpty) {
    Buffer buffer;
    Array init_error(mxCreateStructMatrix(2, 1, 0, nullptr));
    set(init_error.get(), 0, "error_description", mxCreateDoubleScalar(3));
    set(init_error.get(), 0, "severity_code", mxCreateString("DISPATCH_SIMULATION_ERROR"));
    set(init_error.get(), 1, "error_description", mxCreateString("second element"));
    set(init_error.get(), 1, "severity_code", mxCreateString("DISPATCH_CRITICAL_ERROR"));
    DispatchError result;
    EXPECT_TRUE(MatlabConnection::read_init_error(init_error.get(), buffer.data(), result));
    EXPECT_EQ(result.severity, DISPATCH_SIMULATION_ERROR);
    EXPECT_EQ(result.message, "MATLAB error: ");
}

TEST(ReadEndSimOut, ReadsTextsInCellOrderWithoutChangingThem) {
    Buffer buffer;
    Array out = single_struct();
    set(out.get(), 0, "simulation_errors",
        cell_of({mxCreateString("first\nerror"), mxCreateDoubleScalar(1), mxCreateString("third")}));
    set(out.get(), 0, "simulation_warnings", cell_of({mxCreateString("warning")}));
    tamlo_dispatch::SimulationErrorsAndWarnings lists;
    EXPECT_TRUE(MatlabConnection::read_end_sim_out(out.get(), buffer.data(), lists));
    EXPECT_EQ(lists.simulation_errors, (Texts{"first\nerror", "", "third"}));
    EXPECT_EQ(lists.simulation_warnings, Texts{"warning"});
}

TEST(ReadEndSimOut, NonCellListGivesEmptyTextsAndEmptyArraysGiveNone) {
    Buffer buffer;
    Array out = single_struct();
    set(out.get(), 0, "simulation_errors", mxCreateString("ab"));
    set(out.get(), 0, "simulation_warnings", mxCreateDoubleMatrix(0, 0, mxREAL));
    tamlo_dispatch::SimulationErrorsAndWarnings lists;
    EXPECT_TRUE(MatlabConnection::read_end_sim_out(out.get(), buffer.data(), lists));
    EXPECT_EQ(lists.simulation_errors, (Texts{"", ""}));
    EXPECT_EQ(lists.simulation_warnings, Texts{});
}

TEST(ReadEndSimOut, MissingFieldAppendsOneError) {
    Buffer buffer;
    Array out = single_struct();
    set(out.get(), 0, "simulation_errors", cell_of({mxCreateString("unread")}));
    tamlo_dispatch::SimulationErrorsAndWarnings lists;
    EXPECT_FALSE(MatlabConnection::read_end_sim_out(out.get(), buffer.data(), lists));
    EXPECT_EQ(lists.simulation_errors,
              Texts{"Field simulation_errors or simulation_warnings of init_error variable is missing! Check that your "
                    "MATLAB EndSimulation function returns a struct with this field."});
    EXPECT_EQ(lists.simulation_warnings, Texts{});
}

TEST(FindStateField, NamesTheMissingListOrTheZeroBasedEntry) {
    Array state = single_struct();
    mxArray* generators = mxCreateStructMatrix(2, 1, 0, nullptr);
    set(generators, 0, "power_setpoint", mxCreateDoubleScalar(5));
    set(state.get(), 0, "generators", generators);

    DispatchError outcome;
    double value = 0;
    EXPECT_TRUE(MatlabConnection::read_state_number(state.get(), 0, "generators", 0, "power_setpoint", outcome, value));
    EXPECT_EQ(value, 5.0);
    EXPECT_EQ(outcome.severity, DISPATCH_NO_ERROR);

    // Element 2 exists but its field holds no array.
    EXPECT_FALSE(MatlabConnection::read_state_number(state.get(), 0, "generators", 1, "power_setpoint", outcome, value));
    EXPECT_EQ(outcome.message, "Field power_setpoint of generators(1) in simulation_state could not be read.");
    // Beyond the end of the MATLAB array.
    EXPECT_FALSE(MatlabConnection::read_state_number(state.get(), 0, "generators", 2, "power_setpoint", outcome, value));
    EXPECT_EQ(outcome.message, "Field power_setpoint of generators(2) in simulation_state could not be read.");
    EXPECT_FALSE(MatlabConnection::read_state_number(state.get(), 0, "pvs", 0, "power_setpoint", outcome, value));
    EXPECT_EQ(outcome.severity, DISPATCH_CRITICAL_ERROR);
    EXPECT_EQ(outcome.message,
              "Field pvs of simulation_state variable is missing! Check that your MATLAB dispatch function returns a "
              "struct with this field.");
    EXPECT_EQ(value, 5.0);
}

TEST(ReadStateLogical, OnlyALogicalTrueIsTrue) {
    Array state = single_struct();
    mxArray* flywheels = mxCreateStructMatrix(3, 1, 0, nullptr);
    set(flywheels, 0, "flywheel_state", mxCreateLogicalScalar(true));
    set(flywheels, 1, "flywheel_state", mxCreateLogicalScalar(false));
    set(flywheels, 2, "flywheel_state", mxCreateDoubleScalar(1));
    set(state.get(), 0, "flywheels", flywheels);
    DispatchError outcome;
    const bool expected[] = {true, false, false};
    for (std::size_t i = 0; i < 3; ++i) {
        bool value = !expected[i];
        EXPECT_TRUE(MatlabConnection::read_state_logical(state.get(), 0, "flywheels", i, "flywheel_state", outcome, value));
        EXPECT_EQ(value, expected[i]) << i;
    }
}

TEST(ReadBusState, StopsAtTheFirstMissingField) {
    Array state = single_struct();
    mxArray* bus = mxCreateStructMatrix(1, 1, 0, nullptr);
    set(bus, 0, "load_served", mxCreateDoubleScalar(10));
    set(bus, 0, "excess_electricity", mxCreateDoubleScalar(30));
    set(state.get(), 0, "ac_bus", bus);

    tamlo_dispatch::BusState target;
    target.excess_electricity = -1;
    DispatchError outcome;
    EXPECT_FALSE(MatlabConnection::read_bus_state(state.get(), "ac_bus", target, outcome));
    EXPECT_EQ(outcome.message,
              "Could not find field unmet_load in simulation_state. Check that your MATLAB dispatch function returns a "
              "struct with this field.");
    EXPECT_EQ(target.load_served, 10.0);
    EXPECT_EQ(target.excess_electricity, -1.0);

    DispatchError missing;
    EXPECT_FALSE(MatlabConnection::read_bus_state(state.get(), "dc_bus", target, missing));
    EXPECT_EQ(missing.message,
              "Field dc_bus of simulation_state is missing!  Check that your MATLAB dispatch function returns a struct "
              "with this field.");
}

}  // namespace
