// A long run keeps the host's memory flat: nothing is kept per time step.
#include <gtest/gtest.h>

#include <malloc.h>

#include "loaded_extension.h"

namespace tamlo_e2e {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool heap_statistics_available = false;  // the sanitizer's allocator keeps its own books
#else
constexpr bool heap_statistics_available = true;
#endif

std::size_t heap_in_use() {
    return mallinfo2().uordblks;
}

TEST(LongRun, ThousandTimeStepsKeepTheHeapFlat) {
    ExtensionPtr extension = create_extension();
    tamlo_dispatch::SimulationParameters parameters = with_settings(
        tamlo_samples::typical_system(), fixture_settings("start_ok", "dispatch_count_steps", "end_report_steps"));
    ASSERT_EQ(extension->start_simulation(parameters)->severity, tamlo_dispatch::DISPATCH_NO_ERROR);
    const tamlo_dispatch::SimulationState first = tamlo_samples::make_state(parameters);

    auto run_steps = [&](std::uint32_t from, std::uint32_t count) {
        for (std::uint32_t step = from; step < from + count; ++step) {
            tamlo_dispatch::SimulationState state = first;
            state.current_timestep = step;
            extension->dispatch(state);
            ASSERT_EQ(state.generator_list[0].power_setpoint, static_cast<double>(step + 1));
        }
    };
    // The warning list fills up to its limit in the first steps; the cached structs are made.
    run_steps(0, 50);
    const std::size_t before = heap_in_use();
    run_steps(50, 950);
    const std::size_t after = heap_in_use();

    auto messages = extension->end_simulation();
    EXPECT_EQ(messages->simulation_errors, std::vector<std::string>{});
    ASSERT_FALSE(messages->simulation_warnings.empty());
    EXPECT_EQ(messages->simulation_warnings[0], "MATLAB warning: dispatch ran 1000 times");
    if (heap_statistics_available) {
        // A coarse bound: even 64 bytes lost per step would exceed it.
        EXPECT_LT(after, before + 950 * 64) << "heap grew from " << before << " to " << after << " bytes";
    }
}

}  // namespace
}  // namespace tamlo_e2e
