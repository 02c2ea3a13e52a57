// The tolerant comparison primitives, at and around their tolerance, and with NaN operands.
#include "comparison.h"

#include <gtest/gtest.h>

#include "row_name.h"

#include <cmath>
#include <limits>

namespace tamlo_validation {
namespace {

using tamlo_test::PrintTo;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();

struct Row {
    const char* name;
    double a;
    double b;
    bool expected;
};

class ApproximatelyEqual : public ::testing::TestWithParam<Row> {};

TEST_P(ApproximatelyEqual, MatchesWithinRelativeTolerance) {
    const Row& r = GetParam();
    EXPECT_EQ(approximately_equal(r.a, r.b, validation_tolerance), r.expected) << r.name;
}

INSTANTIATE_TEST_SUITE_P(Rows, ApproximatelyEqual, ::testing::Values(
    Row{"both negligible", 0.0000005, -0.0000009, true},
    Row{"both zero", 0.0, 0.0, true},
    Row{"opposite signs with signed maximum zero", -0.5, 0.0, false},
    Row{"zero against negative", 0.0, -0.5, false},
    Row{"relative 5e-7 matches", 100.00005, 100.0, true},
    Row{"relative 2e-6 differs", 100.0002, 100.0, false},
    Row{"order of operands does not matter", 100.0, 100.00005, true},
    Row{"negative values use the signed maximum", -100.0, -100.00005, true},
    Row{"equal large values", 1e300, 1e300, true},
    Row{"one negligible one not", 0.0000005, 0.5, false},
    Row{"NaN first is a mismatch", nan, 1.0, false},
    Row{"NaN second is a mismatch", 1.0, nan, false},
    Row{"NaN beside a negligible value is a mismatch", 0.0, nan, false},
    Row{"NaN against NaN is a mismatch", nan, nan, false}),
    tamlo_test::row_name);

class DefinitelyGreater : public ::testing::TestWithParam<Row> {};

TEST_P(DefinitelyGreater, IsTrueOnlyBeyondTolerance) {
    const Row& r = GetParam();
    EXPECT_EQ(definitely_greater(r.a, r.b, validation_tolerance), r.expected) << r.name;
}

TEST_P(DefinitelyGreater, NotDefinitelyGreaterIsItsExactNegation) {
    const Row& r = GetParam();
    EXPECT_EQ(not_definitely_greater(r.a, r.b, validation_tolerance), !r.expected) << r.name;
}

INSTANTIATE_TEST_SUITE_P(Rows, DefinitelyGreater, ::testing::Values(
    Row{"relative 5e-7 is not greater", 100.00005, 100.0, false},
    Row{"relative 2e-6 is greater", 100.0002, 100.0, true},
    Row{"smaller is not greater", 100.0, 100.0002, false},
    Row{"both negligible never greater", 0.0000009, -0.0000009, false},
    Row{"tolerance against zero is greater", 0.000001, 0.0, true},
    Row{"just under tolerance against zero is not", 0.0000009, 0.0, false},
    Row{"negative values", -10.0, -20.0, true},
    Row{"NaN first is a violation", nan, 1.0, true},
    Row{"NaN second is a violation", 1.0, nan, true},
    Row{"NaN beside zero is a violation", nan, 0.0, true},
    Row{"infinity above a value", inf, 100.0, true}),
    tamlo_test::row_name);

class DefinitelyLess : public ::testing::TestWithParam<Row> {};

TEST_P(DefinitelyLess, IsTrueOnlyBeyondTolerance) {
    const Row& r = GetParam();
    EXPECT_EQ(definitely_less(r.a, r.b, validation_tolerance), r.expected) << r.name;
}

INSTANTIATE_TEST_SUITE_P(Rows, DefinitelyLess, ::testing::Values(
    Row{"minus tolerance is less than zero", -0.000001, 0.0, true},
    Row{"just under tolerance is not less than zero", -0.0000009, 0.0, false},
    Row{"relative 5e-7 is not less", 100.0, 100.00005, false},
    Row{"relative 2e-6 is less", 100.0, 100.0002, true},
    Row{"greater is not less", 5.0, 1.0, false},
    Row{"NaN first is a violation", nan, 0.0, true},
    Row{"NaN second is a violation", 0.0, nan, true}),
    tamlo_test::row_name);

}  // namespace
}  // namespace tamlo_validation
