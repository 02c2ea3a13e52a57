// A time step that breaks no rule is validated without a single allocation: messages are
// built only for checks that fail.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>

#include "test_systems.h"

namespace {
std::size_t allocations = 0;
}  // namespace

// Counts every allocation of this test program.
void* operator new(std::size_t size) {
    ++allocations;
    if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace tamlo_test {
namespace {

TEST(ValidationAllocations, PassingStepAllocatesNothing) {
    const System s = quiet_system();
    SimulationErrorsAndWarnings messages;
    messages.simulation_warnings.reserve(4);
    const std::size_t before = allocations;
    tamlo_validation::validate_dispatch(s.parameters, s.state, messages);
    EXPECT_EQ(allocations - before, 0u);
    EXPECT_TRUE(messages.simulation_warnings.empty());
}

TEST(ValidationAllocations, FailingCheckBuildsItsMessage) {
    System s = quiet_system();
    s.state.dc_bus.unmet_load = -1.0;
    SimulationErrorsAndWarnings messages;
    messages.simulation_warnings.reserve(4);
    const std::size_t before = allocations;
    tamlo_validation::validate_dispatch(s.parameters, s.state, messages);
    EXPECT_GT(allocations - before, 0u);
    EXPECT_EQ(messages.simulation_warnings.size(), 1u);
}

}  // namespace
}  // namespace tamlo_test
