// A time step that breaks no rule is validated without a single allocation.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

#include "test_systems.h"

static std::size_t allocations = 0;

// Counts every allocation of this program.
void* operator new(std::size_t size) {
    ++allocations;
    if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace tamlo_test {
namespace {

// Messages are built only for checks that fail; the second step shows that the count counts.
TEST(ValidationAllocations, PassingStepAllocatesNothing) {
    SimulationErrorsAndWarnings messages;
    messages.simulation_warnings.reserve(4);
    const System quiet = quiet_system();
    System failing = quiet_system();
    failing.state.dc_bus.unmet_load = -1.0;
    const std::size_t before = allocations;
    tamlo_validation::validate_dispatch(quiet.parameters, quiet.state, messages);
    EXPECT_EQ(allocations - before, 0u);
    tamlo_validation::validate_dispatch(failing.parameters, failing.state, messages);
    EXPECT_GT(allocations - before, 0u);
    EXPECT_EQ(messages.simulation_warnings.size(), 1u);
}

}  // namespace
}  // namespace tamlo_test
