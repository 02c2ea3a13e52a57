// One short run's end-of-run messages, compared with a checked-in golden file, to catch
// unintended changes to what users read. TAMLO_UPDATE_GOLDEN=1 rewrites the file.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "loaded_extension.h"

namespace tamlo_e2e {
namespace {

std::string short_run_messages() {
    ExtensionPtr extension = create_extension();
    tamlo_dispatch::SimulationParameters parameters = with_settings(
        tamlo_samples::typical_system(), fixture_settings("start_ok", "dispatch_golden", "end_golden"));
    parameters.number_of_timesteps = 3;
    EXPECT_EQ(extension->start_simulation(parameters)->severity, tamlo_dispatch::DISPATCH_NO_ERROR);
    const double ac_loads[] = {60.0, 80.0, 150.0};
    for (std::uint32_t step = 0; step < 3; ++step) {
        tamlo_dispatch::SimulationState state = tamlo_samples::make_state(parameters);
        state.current_timestep = step;
        state.ac_bus.load_requested = ac_loads[step];
        state.ac_bus.operating_capacity_requested = ac_loads[step] * 1.1;
        state.pv_list[0].power_available = 10.0 * step;
        extension->dispatch(state);
    }
    auto messages = extension->end_simulation();
    std::ostringstream text;
    text << "errors:\n";
    for (const std::string& error : messages->simulation_errors) text << error << '\n';
    text << "warnings:\n";
    for (const std::string& warning : messages->simulation_warnings) text << warning << '\n';
    return text.str();
}

TEST(Golden, ShortRunMessagesMatchTheGoldenFile) {
    const std::string path = std::string(TAMLO_E2E_GOLDEN_DIR) + "/short_run_messages.txt";
    const std::string actual = short_run_messages();
    if (const char* update = std::getenv("TAMLO_UPDATE_GOLDEN"); update != nullptr && std::string(update) == "1") {
        std::ofstream(path) << actual;
    }
    std::ifstream file(path);
    ASSERT_TRUE(file) << "missing golden file " << path;
    std::stringstream expected;
    expected << file.rdbuf();
    EXPECT_EQ(actual, expected.str());
}

}  // namespace
}  // namespace tamlo_e2e
