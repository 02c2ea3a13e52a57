// The tolerant comparisons at and around their tolerance and with NaN operands, and the way
// warnings write numbers and counts. What a rule shows in its warnings is checked there, in
// rules_test.cc: the boundaries of definitely_less against zero, a relative 5e-7 that matches, a
// negligible value beside one that is not (B2), six decimals rounded as "%f" rounds them.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "comparison.h"
#include "message_format.h"

namespace tamlo_validation {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(Comparisons, HoldOnlyBeyondRelativeTolerance) {
    const struct {
        const char* name;
        bool (*compare)(double, double, double);
        double a;
        double b;
        bool expected;
    } rows[] = {
        {"both negligible", approximately_equal, 0.0000005, -0.0000009, true},
        {"opposite signs with signed maximum zero", approximately_equal, -0.5, 0.0, false},
        {"relative 2e-6 differs", approximately_equal, 100.0002, 100.0, false},
        {"NaN beside a negligible value", approximately_equal, 0.0, nan, false},
        {"relative 5e-7 is not greater", definitely_greater, 100.00005, 100.0, false},
        {"relative 2e-6 is greater", definitely_greater, 100.0002, 100.0, true},
        {"tolerance against zero is greater", definitely_greater, 0.000001, 0.0, true},
        {"just under tolerance against zero is not", definitely_greater, 0.0000009, 0.0, false},
        {"NaN first is greater", definitely_greater, nan, 1.0, true},
        {"NaN second beside zero is greater", definitely_greater, 0.0, nan, true},
        {"relative 2e-6 is less", definitely_less, 100.0, 100.0002, true},
        {"NaN first is less", definitely_less, nan, 0.0, true},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        EXPECT_EQ(r.compare(r.a, r.b, validation_tolerance), r.expected);
        if (r.compare == definitely_greater) {
            EXPECT_EQ(not_definitely_greater(r.a, r.b, validation_tolerance), !r.expected);
        }
    }
}

TEST(Format, WritesNumbersInFullAndCountsAsWarningsDo) {
    EXPECT_EQ(format_number(1e70), "10000000000000000725314363815292351261583744096465219555182101554790400.000000");
    EXPECT_EQ(format_count(std::numeric_limits<std::uint32_t>::max()), "4294967295");
}

}  // namespace
}  // namespace tamlo_validation
