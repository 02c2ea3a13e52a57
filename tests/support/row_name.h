// Names parameterized test rows after their description, so a failure names the case.
#ifndef TAMLO_TESTS_SUPPORT_ROW_NAME_H
#define TAMLO_TESTS_SUPPORT_ROW_NAME_H

#include <gtest/gtest.h>

#include <cctype>
#include <ostream>
#include <string>

namespace tamlo_test {

// Rows are named after their `name` member, with what a test name cannot hold made '_'.
struct RowName {
    template <typename Row>
    std::string operator()(const ::testing::TestParamInfo<Row>& info) const {
        std::string text = info.param.name;
        for (char& c : text) {
            if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
        }
        return std::to_string(info.index) + "_" + text;
    }
};

inline constexpr RowName row_name{};

// Prints a row by its description: GoogleTest would otherwise dump the row's bytes, padding
// included. Brought into each test's namespace with `using tamlo_test::PrintTo;`.
template <typename Row>
requires requires(const Row& row) { row.name; }
void PrintTo(const Row& row, std::ostream* os) { *os << row.name; }

}  // namespace tamlo_test

#endif
