// The struct primitives: shapes, conversions, field order and replacement of values.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "mx_expect.h"
#include "struct_primitives.h"

namespace tamlo_marshal {
namespace {

using namespace tamlo_marshal_test;
using namespace std::string_literals;

TEST(StructPrimitives, SingleStructIsOneByOneWithoutFields) {
    MxPtr s(make_single_struct());
    expect_struct_shape(s.get(), 1, 1, 0);
}

TEST(StructPrimitives, EmptyListGivesZeroByOneStructArrayWithoutFields) {
    MxPtr s(make_struct_array(0));
    expect_struct_shape(s.get(), 0, 1, 0);
    EXPECT_TRUE(mxIsEmpty(s.get()));
}

TEST(StructPrimitives, StructArrayHasOneRowPerRecord) {
    MxPtr s(make_struct_array(3));
    expect_struct_shape(s.get(), 3, 1, 0);
}

TEST(StructPrimitives, FieldsAppearInTheOrderFirstWritten) {
    MxPtr s(make_struct_array(2));
    set_number_field(s.get(), 0, "b", 1.0);
    set_logical_field(s.get(), 0, "a", true);
    set_string_field(s.get(), 0, "c", "x");
    set_number_field(s.get(), 1, "b", 2.0);
    expect_struct(s.get(), 0, {{"b", 1.0}, {"a", true}, {"c", "x"s}});
    expect_struct(s.get(), 1, {{"b", 2.0}, {"a", Unwritten{}}, {"c", Unwritten{}}});
}

TEST(StructPrimitives, FieldWrittenTwiceKeepsFirstPositionAndSecondValue) {
    MxPtr s(make_single_struct());
    set_number_field(s.get(), 0, "first", 1.0);
    set_number_field(s.get(), 0, "second", 2.0);
    set_string_field(s.get(), 0, "first", "replaced");
    // The replaced value is released: the sanitizer build checks for the leak.
    expect_struct(s.get(), 0, {{"first", "replaced"s}, {"second", 2.0}});
}

TEST(StructPrimitives, StoredValueIsACopyOwnedByTheStruct) {
    MxPtr s(make_single_struct());
    MxPtr inner(make_single_struct());
    set_number_field(inner.get(), 0, "x", 4.0);
    set_struct_field(s.get(), 0, "inner", inner.release());
    const mxArray* stored = field_of(s.get(), "inner");
    expect_struct(stored, 0, {{"x", 4.0}});
}

TEST(StructPrimitives, AdoptedFieldWrittenTwiceKeepsFirstPositionAndSecondValue) {
    MxPtr s(make_struct_array(1));
    adopt_number_field(s.get(), 0, "first", 1.0);
    adopt_logical_field(s.get(), 0, "second", false);
    adopt_string_field(s.get(), 0, "first", "again");
    adopt_struct_field(s.get(), 0, "third", make_single_struct());
    expect_struct(s.get(), 0, {{"first", "again"s}, {"second", false}, {"third", Struct{1, 1}}});
}

TEST(StructPrimitives, EmptyStringBecomesEmptyCharArray) {
    MxPtr s(make_single_struct());
    set_string_field(s.get(), 0, "name", "");
    expect_struct(s.get(), 0, {{"name", ""s}});
}

TEST(StructPrimitives, NumberListBecomesColumnInListOrder) {
    MxPtr s(make_single_struct());
    set_number_list_field(s.get(), 0, "values", {3.5, -1.0, 2.0});
    set_number_list_field(s.get(), 0, "empty", {});
    expect_struct(s.get(), 0, {{"values", Column{{3.5, -1.0, 2.0}}}, {"empty", Column{{}}}});
}

TEST(StructPrimitives, IndexListConvertsUnsignedValuesToPositiveDoubles) {
    MxPtr s(make_single_struct());
    const std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
    set_index_list_field(s.get(), "index", {0, 0, 1, largest, std::uint64_t{1} << 63});
    expect_struct(s.get(), 0, {{"index", Column{{0.0, 0.0, 1.0, 1.8446744073709552e19, 9.223372036854775808e18}}}});
}

TEST(StructPrimitives, CountsConvertExactlyAndUnsigned) {
    EXPECT_EQ(count_to_double(std::numeric_limits<std::uint64_t>::max()), 1.8446744073709552e19);
    EXPECT_EQ(count_to_double(std::int32_t{-1}), -1.0);
    EXPECT_EQ(count_to_double(std::numeric_limits<std::int32_t>::min()), -2147483648.0);
    EXPECT_EQ(count_to_double(std::uint64_t{60}), 60.0);
}

TEST(StructPrimitives, PointsBecomeOneRowEach) {
    MxPtr s(make_single_struct());
    set_struct_field(s.get(), 0, "curve", make_point_matrix({{1, 10}, {2, 20}, {3, 30}}));
    set_struct_field(s.get(), 0, "none", make_point_matrix({}));
    expect_struct(s.get(), 0, {{"curve", Matrix{3, 2, {1, 2, 3, 10, 20, 30}}}, {"none", Matrix{0, 2, {}}}});
}

}  // namespace
}  // namespace tamlo_marshal
