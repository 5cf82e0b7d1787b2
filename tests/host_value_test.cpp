// The host value stand-in: shapes, classes, data and the text getters that
// the library reads values through.
#include "zvarray/value.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>

#include "zvarray/hv_array.hpp"
#include "zvarray/matrix.hpp"

namespace {

using hv::Value;

struct ShapeCase {
  const char* name;
  Value value;
  std::size_t ndims;
  std::uint64_t m, n, numel;
  bool scalar;
};

TEST(HostValue, ShapesAndElementCounts) {
  const std::vector<ShapeCase> cases = {
      {"1x1 double", Value::scalar(2.5), 2, 1, 1, 1, true},
      {"1x3 char", Value::text(u"abc"), 2, 1, 3, 3, false},
      {"1x0 char", Value::text(u""), 2, 1, 0, 0, false},
      {"0x0 char", Value::chars({0, 0}, u""), 2, 0, 0, 0, false},
      {"2x3x4 double", Value::array<double>({2, 3, 4}, std::vector<double>(24, 1.0)), 3, 2, 12, 24, false},
      {"3x0x2 char", Value::chars({3, 0, 2}, u""), 3, 3, 0, 0, false},
      {"trailing singletons dropped", Value::chars({1, 2, 1, 1}, u"ab"), 2, 1, 2, 2, false},
      {"1x1 cell", Value::cell_row({Value::scalar(1)}), 2, 1, 1, 1, true},
      {"1x1 logical", Value::logical(true), 2, 1, 1, 1, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const hvArray_tag* v = c.value.get();
    EXPECT_EQ(hvGetNumberOfDimensions(v), c.ndims);
    EXPECT_EQ(hvGetM(v), c.m);
    EXPECT_EQ(hvGetN(v), c.n);
    EXPECT_EQ(hvGetNumberOfElements(v), c.numel);
    EXPECT_EQ(hvIsScalar(v), c.scalar);
  }
}

TEST(HostValue, NullAnswersAsAnEmptyValueOfNoClass) {
  EXPECT_EQ(hvGetClassID(nullptr), hvUnknownClass);
  EXPECT_EQ(hvGetNumberOfElements(nullptr), 0u);
  EXPECT_FALSE(hvIsScalar(nullptr));
  EXPECT_FALSE(hvIsLogicalScalar(nullptr));
  EXPECT_TRUE(std::isnan(hvGetScalar(nullptr)));
  EXPECT_EQ(matrix::get_string(nullptr), "");
  EXPECT_TRUE(matrix::get_ustring_array(nullptr).empty());
}

TEST(HostValue, ScalarReadsTheFirstElementOfEveryNumericClass) {
  EXPECT_EQ(hvGetScalar(Value::array<float>({1, 1}, std::vector<float>{3.5F}).get()), 3.5);
  EXPECT_EQ(hvGetScalar(Value::array<std::int8_t>({1, 1}, std::vector<std::int8_t>{-7}).get()), -7.0);
  EXPECT_EQ(hvGetScalar(Value::array<std::uint64_t>({1, 2}, std::vector<std::uint64_t>{UINT64_MAX, 1}).get()),
            18446744073709551615.0);
  EXPECT_EQ(hvGetScalar(Value::logical(true).get()), 1.0);
  EXPECT_EQ(hvGetScalar(Value::text(u"A").get()), 65.0);
  EXPECT_TRUE(std::isnan(hvGetScalar(Value::cell_row({Value::scalar(1)}).get())));
  EXPECT_TRUE(std::signbit(hvGetScalar(Value::scalar(-0.0).get())));
}

TEST(HostValue, ClassesAndExtendedClassNumbers) {
  EXPECT_EQ(hvGetClassID(Value::text(u"x").get()), hvCharClass);
  EXPECT_EQ(hvGetClassID(Value::cell_row({}).get()), hvCellClass);
  EXPECT_EQ(hvGetClassID(Value::struct_scalar({}).get()), hvStructClass);
  EXPECT_EQ(hvGetClassID(Value::array<std::int32_t>({1, 1}, std::vector<std::int32_t>{3}).get()), hvInt32Class);
  // A class number above 16 resolves to the class the value stands for.
  const Value extended = Value::scalar(4).with_extended_class(40);
  EXPECT_EQ(hvGetClassID(extended.get()), hvDoubleClass);
  EXPECT_TRUE(hvIsScalar(extended.get()));
  EXPECT_THROW((void)Value::scalar(1).with_extended_class(16), std::invalid_argument);
}

TEST(HostValue, OpaqueDimensionsAreCompletedBeforeTheyAreRead) {
  const Value v = Value::chars({2, 3}, u"abcdef").with_opaque_dimensions();
  EXPECT_EQ(hvGetNumberOfDimensions(v.get()), 2u);
  EXPECT_EQ(hvGetM(v.get()), 2u);
  EXPECT_EQ(hvGetN(v.get()), 3u);
}

TEST(HostValue, CellsAndStructsHoldOwnedElementsAndNullSlots) {
  const Value cell = Value::cell({2, 2}, {Value::text(u"a"), Value::none(), Value::scalar(1), Value::text(u"d")});
  const auto* slots = static_cast<const hvArray_tag* const*>(hvGetData(cell.get()));
  EXPECT_EQ(matrix::get_ustring(slots[0]), u"a");
  EXPECT_EQ(slots[1], nullptr);
  EXPECT_EQ(hvGetScalar(slots[2]), 1.0);

  const Value copy = cell;  // deep: the elements are new objects
  const auto* copy_slots = static_cast<const hvArray_tag* const*>(hvGetData(copy.get()));
  EXPECT_NE(copy_slots[0], slots[0]);
  EXPECT_EQ(copy_slots[1], nullptr);
  EXPECT_EQ(matrix::get_ustring(copy_slots[3]), u"d");

  const Value s =
      Value::structure({1, 2}, {"a", "b"}, {Value::scalar(1), Value::scalar(2), Value::scalar(3), Value::none()});
  ASSERT_EQ(s.get()->get_number_of_struct_fields(), 2);
  EXPECT_STREQ(s.get()->get_struct_field_names()[1], "b");
  const auto* fields = static_cast<const hvArray_tag* const*>(hvGetData(s.get()));
  EXPECT_EQ(hvGetScalar(fields[1]), 2.0);  // field b of the first element
  EXPECT_EQ(fields[3], nullptr);
  EXPECT_EQ(Value::text(u"x").get()->get_struct_field_names(), nullptr);
}

TEST(HostValue, BuildersRefuseInconsistentShapes) {
  EXPECT_THROW((void)Value::chars({2, 2}, u"abc"), std::invalid_argument);
  EXPECT_THROW((void)Value::chars({3}, u"abc"), std::invalid_argument);
  EXPECT_THROW((void)Value::cell({1, 2}, {Value::scalar(1)}), std::invalid_argument);
  EXPECT_THROW((void)Value::structure({1, 1}, {"a", "b"}, {Value::scalar(1)}), std::invalid_argument);
}

TEST(HostValue, TextGettersConvertBetweenUtf16AndUtf8) {
  const Value v = Value::text(u"a\u00e9\u20ac\U0001F600");
  EXPECT_EQ(matrix::get_string(v.get()), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(Value::text_utf8("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80").get() != nullptr, true);
  EXPECT_EQ(matrix::get_ustring(Value::text_utf8("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80").get()),
            u"a\u00e9\u20ac\U0001F600");
  // A lone surrogate has no UTF-8 form and becomes U+FFFD; invalid UTF-8 bytes too.
  EXPECT_EQ(matrix::get_string(Value::text(std::u16string(1, u'\xD800')).get()), "\xEF\xBF\xBD");
  EXPECT_EQ(matrix::get_ustring(Value::text_utf8("\xFF"
                                                 "a")
                                    .get()),
            u"\uFFFD"
            u"a");
  // Column-major order for a 2-by-2 char array.
  EXPECT_EQ(matrix::get_ustring(Value::chars({2, 2}, u"acbd").get()), u"acbd");
  // Non-char values have no characters.
  EXPECT_EQ(matrix::get_ustring(Value::scalar(65).get()), u"");
  char16_t* chars = reinterpret_cast<char16_t*>(1);
  EXPECT_EQ(matrix::detail::get_hvchar_ptr_and_len(Value::scalar(65).get(), chars), 0u);
  EXPECT_EQ(chars, nullptr);
}

TEST(HostValue, UstringArrayOfTextAndCells) {
  EXPECT_EQ(matrix::get_ustring_array(Value::text(u"ab").get()), (std::vector<ustring>{u"ab"}));
  EXPECT_EQ(matrix::get_ustring_array(Value::chars({0, 0}, u"").get()), (std::vector<ustring>{u""}));
  EXPECT_EQ(matrix::get_ustring_array(Value::cell({2, 1}, {Value::text(u"x"), Value::text(u"")}).get()),
            (std::vector<ustring>{u"x", u""}));
  EXPECT_TRUE(matrix::get_ustring_array(Value::cell({0, 3}, {}).get()).empty());
}

}  // namespace
