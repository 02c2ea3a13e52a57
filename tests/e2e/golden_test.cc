// One short run's end-of-run messages, compared with a checked-in golden file, to catch
// unintended changes to what users read. TAMLO_UPDATE_GOLDEN=1 rewrites the file.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "loaded_extension.h"

namespace tamlo_e2e {
namespace {

TEST(Golden, ShortRunMessagesMatchTheGoldenFile) {
    ExtensionPtr extension = create_extension();
    tamlo_dispatch::SimulationParameters parameters =
        run_of("start_ok", "dispatch_golden", "end_golden", tamlo_samples::make_system(1));
    parameters.number_of_timesteps = 3;
    ASSERT_EQ(extension->start_simulation(parameters)->severity, tamlo_dispatch::DISPATCH_NO_ERROR);
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
    std::ostringstream actual;
    actual << "errors:\n";
    for (const std::string& error : messages->simulation_errors) actual << error << '\n';
    actual << "warnings:\n";
    for (const std::string& warning : messages->simulation_warnings) actual << warning << '\n';

    const std::string path = std::string(TAMLO_E2E_GOLDEN_DIR) + "/short_run_messages.txt";
    if (const char* update = std::getenv("TAMLO_UPDATE_GOLDEN"); update != nullptr && std::string(update) == "1") {
        std::ofstream(path) << actual.str();
    }
    std::ifstream file(path);
    ASSERT_TRUE(file) << "missing golden file " << path;
    std::stringstream expected;
    expected << file.rdbuf();
    EXPECT_EQ(actual.str(), expected.str());
}

}  // namespace
}  // namespace tamlo_e2e
