// The tolerant comparisons at and around their tolerance and with NaN operands, and the way
// warnings write numbers and counts.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "comparison.h"
#include "message_format.h"
#include "row_name.h"

namespace tamlo_validation {
namespace {

using tamlo_test::PrintTo;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

struct ComparisonRow {
    const char* name;
    bool (*compare)(double, double, double);
    double a;
    double b;
    bool expected;
};

class Comparisons : public ::testing::TestWithParam<ComparisonRow> {};

TEST_P(Comparisons, HoldOnlyBeyondRelativeTolerance) {
    const ComparisonRow& r = GetParam();
    EXPECT_EQ(r.compare(r.a, r.b, validation_tolerance), r.expected);
    if (r.compare == definitely_greater) {
        EXPECT_EQ(not_definitely_greater(r.a, r.b, validation_tolerance), !r.expected);
    }
}

INSTANTIATE_TEST_SUITE_P(ApproximatelyEqual, Comparisons, ::testing::Values(
    ComparisonRow{"both negligible", approximately_equal, 0.0000005, -0.0000009, true},
    ComparisonRow{"opposite signs with signed maximum zero", approximately_equal, -0.5, 0.0, false},
    ComparisonRow{"relative 5e-7 matches", approximately_equal, 100.00005, 100.0, true},
    ComparisonRow{"relative 2e-6 differs", approximately_equal, 100.0002, 100.0, false},
    ComparisonRow{"one negligible one not", approximately_equal, 0.0000005, 0.5, false},
    ComparisonRow{"NaN beside a negligible value", approximately_equal, 0.0, nan, false}),
    tamlo_test::row_name);

INSTANTIATE_TEST_SUITE_P(DefinitelyGreater, Comparisons, ::testing::Values(
    ComparisonRow{"relative 5e-7 is not greater", definitely_greater, 100.00005, 100.0, false},
    ComparisonRow{"relative 2e-6 is greater", definitely_greater, 100.0002, 100.0, true},
    ComparisonRow{"tolerance against zero is greater", definitely_greater, 0.000001, 0.0, true},
    ComparisonRow{"just under tolerance against zero is not", definitely_greater, 0.0000009, 0.0, false},
    ComparisonRow{"NaN first", definitely_greater, nan, 1.0, true},
    ComparisonRow{"NaN second beside zero", definitely_greater, 0.0, nan, true}),
    tamlo_test::row_name);

INSTANTIATE_TEST_SUITE_P(DefinitelyLess, Comparisons, ::testing::Values(
    ComparisonRow{"minus tolerance is less than zero", definitely_less, -0.000001, 0.0, true},
    ComparisonRow{"just under tolerance is not less than zero", definitely_less, -0.0000009, 0.0, false},
    ComparisonRow{"relative 2e-6 is less", definitely_less, 100.0, 100.0002, true},
    ComparisonRow{"NaN first", definitely_less, nan, 0.0, true}),
    tamlo_test::row_name);

TEST(Format, WritesNumbersInFullAndCountsAsWarningsDo) {
    EXPECT_EQ(format_number(28.888888888888889), "28.888889");
    EXPECT_EQ(format_number(1e70), "10000000000000000725314363815292351261583744096465219555182101554790400.000000");
    EXPECT_EQ(format_count(std::numeric_limits<std::uint32_t>::max()), "4294967295");
}

}  // namespace
}  // namespace tamlo_validation
