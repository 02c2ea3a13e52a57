// The dispatch call: the user's decisions read back into the simulator's state, and the
// critical errors of a time step.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "loaded_extension.h"
#include "state_values.h"

namespace tamlo_e2e {
namespace {

using tamlo_dispatch::DISPATCH_NO_ERROR;
using tamlo_dispatch::SimulationParameters;
using tamlo_dispatch::SimulationState;

// The typical system plus a third generator, three batteries (the first two with dedicated
// converters), three flywheels and a custom component.
SimulationParameters rich_system() {
    SimulationParameters p = tamlo_samples::typical_system();
    p.generator_list.push_back(p.generator_list[0]);
    p.generator_list.back().component.component_number = 40;
    p.battery_list[0].has_dedicated_converter = true;
    p.battery_list.push_back(p.battery_list[0]);
    p.battery_list.push_back(p.battery_list[0]);
    p.battery_list.back().has_dedicated_converter = false;
    for (int i = 0; i < 3; ++i) {
        tamlo_dispatch::FlywheelParameters flywheel;
        flywheel.component.name = "Flywheel";
        flywheel.component.component_number = 50 + i;
        flywheel.component.is_AC = true;
        flywheel.charge_discharge_capacity = 10;
        flywheel.parasitic_load = 0.5;
        flywheel.quantity = 1;
        p.flywheel_list.push_back(flywheel);
    }
    tamlo_dispatch::CustomComponentParameters custom;
    custom.component.name = "Custom";
    custom.name = "Custom";
    custom.capacity = 20;
    custom.is_AC = true;
    p.custom_component_list.push_back(custom);
    return p;
}

// A state with a distinct value in every number, so a value that comes back is recognisable.
SimulationState rich_state(const SimulationParameters& p) {
    SimulationState s = tamlo_samples::make_state(p);
    double next = 0.25;
    auto n = [&next] { return next += 1.0; };
    for (auto& g : s.generator_list) { g.power_available = n(); g.power_setpoint = n(); }
    for (auto& x : s.pv_list) { x.power_available = n(); x.power_setpoint = n(); }
    for (auto& b : s.battery_list) {
        b.dedicated_converter = {n(), n(), n(), n()};
        b.max_charge_power = n(); b.max_discharge_power = n(); b.state_of_charge_kwh = n();
        b.state_of_charge_percent = n(); b.power_setpoint = n(); b.energy_cost = n();
    }
    for (auto& l : s.primary_load_list) { l.load_requested = n(); l.load_served = n(); }
    for (auto& c : s.converter_list) { c = {n(), n(), n(), n()}; }
    for (auto& f : s.flywheel_list) { f.load_served = n(); }
    s.flywheel_list[0].flywheel_state = 7;
    s.flywheel_list[1].flywheel_state = 0;
    s.flywheel_list[2].flywheel_state = 1;
    for (auto& g : s.grid_list) {
        g.max_grid_purchases = n(); g.max_grid_sales = n(); g.grid_purchases = n(); g.grid_sales = n();
        g.power_price = n(); g.sellback_rate = n();
    }
    for (auto& c : s.custom_component_list) { c.power_available = n(); c.power_setpoint = n(); }
    for (auto& w : s.wind_turbine_list) { w.power_setpoint = n(); w.power_available = n(); }
    for (auto* bus : {&s.ac_bus, &s.dc_bus}) {
        *bus = {n(), n(), n(), n(), n(), n(), n()};
    }
    s.current_timestep = 5;
    return s;
}

// What dispatch_set_decisions writes, up to (not including) the read of the given number.
// Reads are numbered as the extension makes them: generators 1, wind 2, pvs 3, converters 4,
// flywheels 5, batteries 6, ac_bus 7, dc_bus 8, primary loads 9, grids 10.
void apply_decisions(SimulationState& s, const SimulationParameters& p, int reads_done) {
    if (reads_done >= 1) for (std::size_t i = 0; i < s.generator_list.size(); ++i) s.generator_list[i].power_setpoint = 101.0 + i;
    if (reads_done >= 2) for (std::size_t i = 0; i < s.wind_turbine_list.size(); ++i) s.wind_turbine_list[i].power_setpoint = 201.0 + i;
    if (reads_done >= 3) for (std::size_t i = 0; i < s.pv_list.size(); ++i) s.pv_list[i].power_setpoint = 301.0 + i;
    if (reads_done >= 4) for (std::size_t i = 0; i < s.converter_list.size(); ++i) s.converter_list[i] = {401.0 + i, 411.0 + i, 421.0 + i, 431.0 + i};
    if (reads_done >= 5) {
        for (std::size_t i = 0; i < s.flywheel_list.size(); ++i) {
            s.flywheel_list[i].load_served = 501.0 + i;
            // The state went to MATLAB as "code 0 is true" and comes back unchanged.
            s.flywheel_list[i].flywheel_state = s.flywheel_list[i].flywheel_state == 0 ? 0 : 1;
        }
    }
    if (reads_done >= 6) {
        for (std::size_t i = 0; i < s.battery_list.size(); ++i) {
            s.battery_list[i].power_setpoint = 601.0 + i;
            if (p.battery_list[i].has_dedicated_converter) {
                s.battery_list[i].dedicated_converter = {611.0 + i, 621.0 + i, 631.0 + i, 641.0 + i};
            }
        }
    }
    if (reads_done >= 7) {
        s.ac_bus.load_served = 701; s.ac_bus.unmet_load = 702; s.ac_bus.excess_electricity = 703;
        s.ac_bus.operating_capacity_served = 704; s.ac_bus.capacity_shortage = 705;
    }
    if (reads_done >= 8) {
        s.dc_bus.load_served = 711; s.dc_bus.unmet_load = 712; s.dc_bus.excess_electricity = 713;
        s.dc_bus.operating_capacity_served = 714; s.dc_bus.capacity_shortage = 715;
    }
    if (reads_done >= 9) for (std::size_t i = 0; i < s.primary_load_list.size(); ++i) s.primary_load_list[i].load_served = 801.0 + i;
    if (reads_done >= 10) for (std::size_t i = 0; i < s.grid_list.size(); ++i) { s.grid_list[i].grid_purchases = 901.0 + i; s.grid_list[i].grid_sales = 951.0 + i; }
}

class DispatchReadBack : public ::testing::Test {
protected:
    void start(const char* dispatch_function) {
        auto result = extension_->start_simulation(
            with_settings(parameters_, fixture_settings("start_ok", dispatch_function, "end_empty_lists")));
        ASSERT_EQ(result->severity, DISPATCH_NO_ERROR) << result->message;
    }
    // The run's errors (validation warnings are not looked at here).
    std::vector<std::string> errors() { return extension_->end_simulation()->simulation_errors; }

    SimulationParameters parameters_ = rich_system();
    ExtensionPtr extension_ = create_extension();
};

// One engine for all successful read-backs: each is a run of its own.
TEST_F(DispatchReadBack, SuccessfulTimeStepsWriteExactlyTheDecisions) {
    const SimulationState original = rich_state(parameters_);

    // Returning the input reads every value back equal; flywheel code 7 comes back as 1.
    start("dispatch_identity");
    SimulationState state = original;
    extension_->dispatch(state);
    SimulationState expected = original;
    expected.flywheel_list[0].flywheel_state = 1;
    EXPECT_EQ(state_values(state), state_values(expected));
    EXPECT_EQ(errors(), std::vector<std::string>{});

    // Every decision is read; custom components and everything else keep the simulator's values;
    // the battery without a dedicated converter keeps its converter values.
    start("dispatch_set_decisions");
    state = original;
    extension_->dispatch(state);
    expected = original;
    apply_decisions(expected, parameters_, 10);
    EXPECT_EQ(state_values(state), state_values(expected));
    EXPECT_EQ(state.battery_list[0].dedicated_converter.inverter_power_input, 611.0);
    EXPECT_EQ(state.battery_list[1].dedicated_converter.inverter_power_input, 612.0);
    EXPECT_EQ(state.battery_list[2].dedicated_converter.inverter_power_input,
              original.battery_list[2].dedicated_converter.inverter_power_input);
    EXPECT_EQ(state.custom_component_list[0].power_setpoint, original.custom_component_list[0].power_setpoint);
    EXPECT_EQ(errors(), std::vector<std::string>{});

    // Without "batteries" the battery reads are skipped silently and the rest is read.
    start("dispatch_without_batteries");
    state = original;
    extension_->dispatch(state);
    expected = original;
    apply_decisions(expected, parameters_, 10);
    expected.battery_list = original.battery_list;
    EXPECT_EQ(state_values(state), state_values(expected));
    EXPECT_EQ(errors(), std::vector<std::string>{});

    // Logical true stores 0; logical false and the double 1 store 1.
    start("dispatch_flywheel_states");
    state = original;
    state.flywheel_list[0].flywheel_state = 1;
    state.flywheel_list[1].flywheel_state = 0;
    state.flywheel_list[2].flywheel_state = 0;
    extension_->dispatch(state);
    EXPECT_EQ(state.flywheel_list[0].flywheel_state, 0u);
    EXPECT_EQ(state.flywheel_list[1].flywheel_state, 1u);
    EXPECT_EQ(state.flywheel_list[2].flywheel_state, 1u);
    EXPECT_EQ(errors(), std::vector<std::string>{});
}

struct FailingDispatch {
    const char* function;
    std::string message;
    int reads_done;  // how many reads of the table wrote their values before the failure
    std::function<void(SimulationState&)> partial;  // a partly written read, if any
};

void PrintTo(const FailingDispatch& c, std::ostream* os) {
    *os << c.function;
}

std::string command_of(const std::string& function) {
    return "[new_simulation_state, custom_variables] = " + function +
           "(simulation_parameters, simulation_state, custom_variables);";
}

class FailingDispatchCall : public DispatchReadBack, public ::testing::WithParamInterface<FailingDispatch> {};

TEST_P(FailingDispatchCall, IsCriticalWithItsMessageAndWritesOnlyEarlierReads) {
    const FailingDispatch& c = GetParam();
    start(c.function);
    const SimulationState original = rich_state(parameters_);
    SimulationState state = original;
    extension_->dispatch(state);
    SimulationState expected = original;
    apply_decisions(expected, parameters_, c.reads_done);
    if (c.partial) {
        c.partial(expected);
    }
    EXPECT_EQ(state_values(state), state_values(expected));
    EXPECT_EQ(errors(), std::vector<std::string>{c.message});
}

const FailingDispatch failing_dispatches[] = {
    {"dispatch_disp", "MATLAB error while executing '" + command_of("dispatch_disp") + "': hello from dispatch", 0, {}},
    {"dispatch_number",
     "Output variable simulation_state was not of type struct. Check that your MATLAB dispatch function returns a "
     "struct simulation_state.",
     0, {}},
    {"dispatch_without_generators",
     "Field generators of simulation_state variable is missing! Check that your MATLAB dispatch function returns a "
     "struct with this field.",
     0, {}},
    {"dispatch_two_generators", "Field power_setpoint of generators(2) in simulation_state could not be read.", 0,
     [](SimulationState& s) {
         s.generator_list[0].power_setpoint = 101;
         s.generator_list[1].power_setpoint = 102;
     }},
    {"dispatch_without_ac_bus",
     "Field ac_bus of simulation_state is missing!  Check that your MATLAB dispatch function returns a struct with "
     "this field.",
     6, {}},
    {"dispatch_without_unmet_load",
     "Could not find field unmet_load in simulation_state. Check that your MATLAB dispatch function returns a struct "
     "with this field.",
     6, [](SimulationState& s) { s.ac_bus.load_served = 701; }},
    {"no_such_dispatch_function",
     "MATLAB error while executing '" + command_of("no_such_dispatch_function") +
         "': error: 'no_such_dispatch_function' undefined near line 1, column 44",
     0, {}},
};

INSTANTIATE_TEST_SUITE_P(Dispatch, FailingDispatchCall, ::testing::ValuesIn(failing_dispatches),
                         [](const auto& info) { return std::string(info.param.function); });

}  // namespace
}  // namespace tamlo_e2e
