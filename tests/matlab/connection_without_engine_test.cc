// A connection whose engine is not open never reaches for an engine.
#include <gtest/gtest.h>

#include "matlab_connection.h"

namespace {

using tamlo_matlab::MatlabConnection;

TEST(ConnectionWithoutEngine, EveryCallReportsInsteadOfUsingAnEngine) {
    MatlabConnection connection;
    EXPECT_FALSE(connection.is_open());
    tamlo_dispatch::SimulationParameters parameters;
    tamlo_dispatch::SimulationState state;
    state.generator_list.push_back({50.0, 12.0, tamlo_dispatch::DISPATCH_DECIDES});
    connection.put_simulation_parameters(parameters);
    connection.put_simulation_state(state);

    auto dispatch = connection.call_dispatch("my_dispatch", state, parameters);
    EXPECT_EQ(dispatch->severity, tamlo_dispatch::DISPATCH_CRITICAL_ERROR);
    EXPECT_EQ(dispatch->message,
              "The dispatch function was not called: no MATLAB engine is open. start_simulation has to succeed in "
              "opening one first.");
    EXPECT_EQ(state.generator_list[0].power_setpoint, 12.0);

    auto start = connection.call_start_simulation("my_start");
    EXPECT_EQ(start->severity, tamlo_dispatch::DISPATCH_CRITICAL_ERROR);
    EXPECT_EQ(start->message, "The start simulation function was not called: no MATLAB engine is open.");

    auto end = connection.call_end_simulation("my_end");
    EXPECT_EQ(end.simulation_errors,
              std::vector<std::string>{"The end simulation function was not called: no MATLAB engine is open. "
                                       "start_simulation has to succeed in opening one first."});
    EXPECT_TRUE(end.simulation_warnings.empty());

    connection.close_engine();
    connection.close_engine();
    EXPECT_FALSE(connection.is_open());
}

}  // namespace
