// Numbers and counts as the warnings write them.
#include "message_format.h"

#include <gtest/gtest.h>

#include "row_name.h"

#include <cstdint>
#include <string>

namespace tamlo_validation {
namespace {

struct NumberRow {
    double value;
    const char* expected;
};

void PrintTo(const NumberRow& row, std::ostream* os) {
    *os << row.expected;
}

class FormatNumber : public ::testing::TestWithParam<NumberRow> {};

TEST_P(FormatNumber, WritesFixedPointWithSixDecimals) {
    EXPECT_EQ(format_number(GetParam().value), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, FormatNumber, ::testing::Values(
    NumberRow{12.5, "12.500000"},
    NumberRow{-0.25, "-0.250000"},
    NumberRow{1234.5, "1234.500000"},
    NumberRow{0.0, "0.000000"},
    NumberRow{0.0000004, "0.000000"},
    NumberRow{28.888888888888889, "28.888889"},
    NumberRow{1e20, "100000000000000000000.000000"},
    NumberRow{-1e20, "-100000000000000000000.000000"},
    NumberRow{1e300,
              "1000000000000000052504760255204420248704468581108159154915854115511802457988908195786371375080447"
              "8640437044438328838781769425232353604305756447921847867069828483872009265758037378302337947880900"
              "5936895323497079994508111903896764088007465274278014249457925878882005684283811566947219638686545"
              "9400540160.000000"}),
    tamlo_test::row_name);

TEST(FormatNumber, AppendsAfterExistingText) {
    std::string message = "served (";
    append_piece(message, Quantity{50.0});
    append_piece(message, " kW)");
    EXPECT_EQ(message, "served (50.000000 kW)");
}

struct CountRow {
    std::uint32_t value;
    const char* expected;
};

void PrintTo(const CountRow& row, std::ostream* os) {
    *os << row.value;
}

class FormatCount : public ::testing::TestWithParam<CountRow> {};

TEST_P(FormatCount, WritesPlainDecimalDigits) {
    EXPECT_EQ(format_count(GetParam().value), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, FormatCount, ::testing::Values(
    CountRow{0, "0"}, CountRow{1, "1"}, CountRow{1000000, "1000000"}, CountRow{4294967295u, "4294967295"}),
    tamlo_test::row_name);

TEST(TimeStepNumber, CountsFromOne) {
    tamlo_dispatch::SimulationState state;
    state.current_timestep = 0;
    EXPECT_EQ(time_step_number(state).value, 1u);
}

TEST(TimeStepNumber, WrapsInThirtyTwoBits) {
    tamlo_dispatch::SimulationState state;
    state.current_timestep = 4294967295u;
    EXPECT_EQ(time_step_number(state).value, 0u);
}

TEST(ComponentNumber, CountsFromOne) {
    EXPECT_EQ(component_number(2).value, 3u);
}

TEST(AddWarning, JoinsPiecesWithoutSeparators) {
    std::vector<std::string> warnings{"earlier"};
    add_warning(warnings, "a (", Quantity{1.5}, " kW) step: ", Count{7});
    ASSERT_EQ(warnings.size(), 2u);
    EXPECT_EQ(warnings[1], "a (1.500000 kW) step: 7");
}

}  // namespace
}  // namespace tamlo_validation
