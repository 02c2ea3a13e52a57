// The bundled strategies and the field reference, through the real extension and engine: on
// many generated systems the extension's own validation must find nothing and the books must
// balance; docs/reference/fields.md must list what MATLAB receives.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "extension_loader.h"
#include "numbered_system.h"

namespace tamlo_strategies {
namespace {

using namespace tamlo_dispatch;
using tamlo_test_support::create_extension;
using tamlo_test_support::ExtensionPtr;

// The MATLAB folder, the three function names, and the reference the field dump fixture reads.
std::vector<ExtensionParameter> settings(const std::string& folder, const std::string& prefix) {
    const auto text = [](const char* name, std::string value) {
        return ExtensionParameter{name, ExtensionParameterType::text, 0.0, false, std::move(value), {}};
    };
    return {text("path", folder), text("start simulation", prefix + "_start"), text("dispatch", prefix + "_dispatch"),
            text("end simulation", prefix + "_end"), text("field reference", TAMLO_FIELD_REFERENCE)};
}

constexpr std::uint32_t systems_per_strategy = 40;
constexpr std::uint32_t steps_per_system = 30;

// Random but reproducible systems and time-step states: any count of each component kind on
// either bus, with states a simulator could send. Braced lists draw left to right, so each
// draw is made in the order written.
class SystemGenerator {
public:
    explicit SystemGenerator(std::uint32_t seed) : random_(seed) {}

    // A system of 0..3 components of each kind (at least one primary load).
    SimulationParameters system() {
        SimulationParameters p;
        p.timestep_size_in_seconds = 3600;
        p.number_of_timesteps = 8760;
        p.operating_reserve.timestep_requirement = 10;
        for (int i = count(0, 3); i > 0; --i) {
            GeneratorParameters& g = p.generator_list.emplace_back();
            g.component = head("generator", !chance(0.2));
            g.rated_capacity = uniform(20, 200);
            g.minimum_load = chance(0.7) ? uniform(0, 0.4) * g.rated_capacity : 0.0;
        }
        for (int i = count(0, 2); i > 0; --i) p.pv_list.push_back({head("pv", chance(0.4)), uniform(10, 150), 0.0, {}});
        for (int i = count(0, 2); i > 0; --i) {
            p.wind_turbine_list.push_back(
                {head("wind", chance(0.6)), static_cast<std::uint64_t>(count(1, 3)), uniform(5, 50), {}});
        }
        for (int i = count(0, 2); i > 0; --i) {
            BatteryParameters& battery = p.battery_list.emplace_back();
            battery.component = head("battery", chance(0.4));
            battery.has_dedicated_converter = chance(0.5);
            DedicatedConverterParameters& converter = battery.dedicated_converter;
            converter.rectifier_efficiency = uniform(85, 98);
            converter.inverter_efficiency = uniform(85, 98);
            converter.rectifier_capacity = uniform(10, 100);
            converter.inverter_capacity = uniform(10, 100);
        }
        for (int i = count(0, 2); i > 0; --i) {
            p.converter_list.push_back(
                {head("converter", true), uniform(5, 150), uniform(5, 150), uniform(80, 98), uniform(80, 98)});
        }
        for (int i = count(0, 1); i > 0; --i) {
            p.flywheel_list.push_back({head("flywheel", chance(0.5)), uniform(5, 50), uniform(0.1, 3), 0.0, 1});
        }
        for (int i = count(0, 2); i > 0; --i) p.grid_list.push_back({std::make_shared<RealTime>()});
        for (int i = count(0, 1); i > 0; --i) {
            const ComponentParameters h = head("custom", chance(0.5));
            p.custom_component_list.push_back({h, {}, {}, h.name, 0, uniform(1, 40), h.component_number, h.is_AC});
        }
        for (int i = count(1, 3); i > 0; --i) p.primary_load_list.push_back({"load", chance(0.6), uniform(10, 200)});
        // A flywheel's parasitic load has to be reported as unmet load when nothing covers it,
        // which only works on a bus that has load: give its bus one.
        for (const FlywheelParameters& flywheel : p.flywheel_list) {
            const bool is_ac = flywheel.component.is_AC;
            if (std::none_of(p.primary_load_list.begin(), p.primary_load_list.end(),
                             [&](const PrimaryLoadParameters& load) { return load.is_AC == is_ac; })) {
                p.primary_load_list.push_back({"flywheel bus load", is_ac, uniform(10, 200)});
            }
        }
        return p;
    }

    // The state of time step `step` of `p`, with every decision field zero.
    SimulationState state(const SimulationParameters& p, std::uint32_t step) {
        SimulationState s;
        s.current_timestep = step;
        for (const GeneratorParameters& g : p.generator_list) {
            const double draw = uniform(0, 1);
            if (draw < 0.12) {
                s.generator_list.push_back({0.0, 0.0, static_cast<GeneratorCurrentState>(count(-3, -1))});
            } else {
                const auto code = draw < 0.3 ? static_cast<GeneratorCurrentState>(count(1, 2)) : DISPATCH_DECIDES;
                s.generator_list.push_back({g.rated_capacity, 0.0, code});
            }
        }
        for (const PvParameters& pv : p.pv_list) {
            s.pv_list.push_back({chance(0.3) ? 0.0 : pv.rated_capacity * uniform(0, 1)});
        }
        for (const WindTurbineParameters& wind : p.wind_turbine_list) {
            s.wind_turbine_list.push_back({0.0, static_cast<double>(wind.quantity) * wind.rated_power * uniform(0, 1)});
        }
        for (const BatteryParameters& battery : p.battery_list) {
            BatteryState& state = s.battery_list.emplace_back();
            state.state_of_charge_percent = uniform(0, 100);
            state.state_of_charge_kwh = state.state_of_charge_percent;
            state.max_charge_power = state.state_of_charge_percent > 98 ? 0.0 : uniform(0, 60);
            state.max_discharge_power = state.state_of_charge_percent < 2 ? 0.0 : uniform(0, 60);
            if (battery.has_dedicated_converter) {
                const DedicatedConverterParameters& converter = battery.dedicated_converter;
                state.max_charge_power = std::min(state.max_charge_power, converter.rectifier_capacity);
                state.max_discharge_power = std::min(state.max_discharge_power, converter.inverter_capacity);
            }
        }
        s.converter_list.resize(p.converter_list.size());
        s.flywheel_list.resize(p.flywheel_list.size());
        for (std::size_t i = 0; i < p.grid_list.size(); ++i) {
            GridState& grid = s.grid_list.emplace_back();
            grid.grid_state.grid_is_down = chance(0.2);
            grid.grid_state.prohibit_any_grid_sales = chance(0.1);
            grid.grid_state.prohibit_any_battery_charging = chance(0.1);
            grid.grid_state.prohibit_battery_from_discharging = chance(0.1);
            grid.grid_state.maintain_state_of_charge = chance(0.1);
            grid.grid_state.maintain_state_of_charge_percent = uniform(0, 100);
            if (!grid.grid_state.grid_is_down) {
                grid.max_grid_purchases = chance(0.2) ? 0.0 : uniform(0, 150);
                grid.max_grid_sales = grid.grid_state.prohibit_any_grid_sales ? 0.0 : uniform(0, 80);
            }
            grid.power_price = uniform(0.05, 0.4);
            grid.sellback_rate = uniform(0, 0.1);
        }
        for (const CustomComponentParameters& custom : p.custom_component_list) {
            s.custom_component_list.push_back({custom.capacity, custom.capacity * uniform(0, 1)});
        }
        for (const PrimaryLoadParameters& load : p.primary_load_list) {
            const double requested = chance(0.1) ? 0.0 : load.peak_load * uniform(0.05, 1);
            s.primary_load_list.push_back({requested});
            (load.is_AC ? s.ac_bus : s.dc_bus).load_requested += requested;
        }
        for (const FlywheelParameters& flywheel : p.flywheel_list) {
            BusState& bus = flywheel.component.is_AC ? s.ac_bus : s.dc_bus;
            bus.load_requested = std::max(bus.load_requested, 1.0);
        }
        for (BusState* bus : {&s.ac_bus, &s.dc_bus}) {
            bus->operating_capacity_requested = bus->load_requested * uniform(1.0, 1.5);
        }
        return s;
    }

private:
    double uniform(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random_); }
    int count(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
    bool chance(double p) { return uniform(0.0, 1.0) < p; }
    ComponentParameters head(const std::string& name, bool is_ac) { return {{}, name, next_number_++, is_ac}; }

    std::mt19937 random_;
    std::uint64_t next_number_ = 1;
};

class BundledStrategy : public testing::TestWithParam<const char*> {};

TEST_P(BundledStrategy, GivesNoWarningOrErrorOnGeneratedSystems) {
    ExtensionPtr extension = create_extension();
    for (std::uint32_t system_number = 0; system_number < systems_per_strategy; ++system_number) {
        SCOPED_TRACE("system " + std::to_string(system_number));
        SystemGenerator generator(1000 + system_number);
        SimulationParameters system = generator.system();
        system.extension_parameters = settings(TAMLO_STRATEGY_DIR, GetParam());

        const auto started = extension->start_simulation(system);
        ASSERT_EQ(started->severity, DISPATCH_NO_ERROR) << started->message;

        for (std::uint32_t step = 0; step < steps_per_system; ++step) {
            SimulationState state = generator.state(system, step);
            extension->dispatch(state);
            SCOPED_TRACE("step " + std::to_string(step));
            for (const auto& [name, bus] : {std::pair{"AC bus", &state.ac_bus}, {"DC bus", &state.dc_bus}}) {
                EXPECT_NEAR(bus->load_served + bus->unmet_load, bus->load_requested, 1e-9 * (1 + bus->load_requested))
                    << name;
                EXPECT_GE(bus->load_served, 0.0) << name;
                EXPECT_LE(bus->load_served, bus->load_requested + 1e-9) << name;
            }
            for (const BatteryState& battery : state.battery_list) {
                EXPECT_LE(battery.power_setpoint, battery.max_charge_power);
                EXPECT_GE(battery.power_setpoint, -battery.max_discharge_power);
            }
        }

        const auto messages = extension->end_simulation();
        ASSERT_TRUE(messages->simulation_errors.empty()) << messages->simulation_errors.front();
        ASSERT_TRUE(messages->simulation_warnings.empty())
            << messages->simulation_warnings.size() << " warning(s); first: " << messages->simulation_warnings.front();
    }
}

INSTANTIATE_TEST_SUITE_P(Strategies, BundledStrategy, testing::Values("load_following", "cycle_charging"),
                         [](const auto& info) { return std::string(info.param); });

// The field dump fixture returns each state untouched: the same generated states with the decision
// fields left at zero must draw warnings, or the test above proves nothing.
TEST(BundledStrategyCheck, UntouchedStatesDrawWarnings) {
    ExtensionPtr extension = create_extension();
    SystemGenerator generator(1000);
    SimulationParameters system = generator.system();
    system.extension_parameters = settings(TAMLO_FIXTURE_DIR, "field_dump");
    ASSERT_EQ(extension->start_simulation(system)->severity, DISPATCH_NO_ERROR);
    for (std::uint32_t step = 0; step < 5; ++step) {
        SimulationState state = generator.state(system, step);
        extension->dispatch(state);
    }
    EXPECT_FALSE(extension->end_simulation()->simulation_warnings.empty());
}

// The field dump fixture lists every field MATLAB receives for the numbered system (every component
// kind, all three grid models) and reports each difference from the reference as an error.
TEST(FieldReference, ListsEveryFieldMatlabReceivesInOrderWithItsClassAndSize) {
    tamlo_numbered::Numbering numbering;
    SimulationParameters parameters = tamlo_numbered::numbered_system(numbering);
    SimulationState state = tamlo_numbered::numbered_state(numbering);
    const auto dump_settings = settings(TAMLO_FIXTURE_DIR, "field_dump");
    parameters.extension_parameters.insert(parameters.extension_parameters.end(), dump_settings.begin(),
                                           dump_settings.end());
    ExtensionPtr extension = create_extension();
    const auto started = extension->start_simulation(parameters);
    ASSERT_EQ(started->severity, DISPATCH_NO_ERROR) << started->message;
    extension->dispatch(state);
    const auto messages = extension->end_simulation();
    EXPECT_TRUE(messages->simulation_errors.empty()) << testing::PrintToString(messages->simulation_errors);
}

}  // namespace
}  // namespace tamlo_strategies
