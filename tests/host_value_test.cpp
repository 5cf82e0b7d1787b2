// The host value stand-in, where the library depends on a detail of it:
// scalars of every class and the text getters. (Shapes are checked through
// the library's text checks.)
#include "zvarray/value.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "zvarray/hv_array.hpp"
#include "zvarray/matrix.hpp"

namespace {

using hv::Value;

TEST(HostValue, ScalarReadsTheFirstElementOfEveryNumericClass) {
  EXPECT_EQ(hvGetScalar(Value::array<float>({1, 1}, std::vector<float>{3.5F}).get()), 3.5);
  EXPECT_EQ(hvGetScalar(Value::array<std::int8_t>({1, 1}, std::vector<std::int8_t>{-7}).get()), -7.0);
  EXPECT_EQ(hvGetScalar(Value::array<std::uint64_t>({1, 2}, std::vector<std::uint64_t>{UINT64_MAX, 1}).get()),
            18446744073709551615.0);
  EXPECT_EQ(hvGetScalar(Value::text(u"A").get()), 65.0);
  EXPECT_TRUE(std::isnan(hvGetScalar(Value::cell_row({Value::scalar(1)}).get())));
  EXPECT_TRUE(std::isnan(hvGetScalar(nullptr)));
  EXPECT_EQ(hvGetClassID(nullptr), hvUnknownClass);
  EXPECT_TRUE(std::signbit(hvGetScalar(Value::scalar(-0.0).get())));
}

TEST(HostValue, TextGettersConvertBetweenUtf16AndUtf8) {
  const Value v = Value::text(u"a\u00e9\u20ac\U0001F600");
  EXPECT_EQ(matrix::get_string(v.get()), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(matrix::get_ustring(Value::text_utf8("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80").get()),
            u"a\u00e9\u20ac\U0001F600");
  // A lone surrogate has no UTF-8 form and becomes U+FFFD; invalid UTF-8 bytes too.
  EXPECT_EQ(matrix::get_string(Value::text(std::u16string(1, u'\xD800')).get()), "\xEF\xBF\xBD");
  EXPECT_EQ(matrix::get_ustring(Value::text_utf8("\xFF"
                                                 "a")
                                    .get()),
            u"\uFFFD"
            u"a");
  EXPECT_EQ(matrix::get_ustring(Value::chars({2, 2}, u"acbd").get()), u"acbd");  // storage order
  EXPECT_EQ(matrix::get_ustring(Value::scalar(65).get()), u"");
  EXPECT_EQ(matrix::get_string(nullptr), "");
  char16_t* chars = reinterpret_cast<char16_t*>(1);
  EXPECT_EQ(matrix::detail::get_hvchar_ptr_and_len(Value::scalar(65).get(), chars), 0u);
  EXPECT_EQ(chars, nullptr);
}

TEST(HostValue, UstringArrayOfTextAndCells) {
  EXPECT_EQ(matrix::get_ustring_array(Value::chars({0, 0}, u"").get()), (std::vector<ustring>{u""}));
  EXPECT_EQ(matrix::get_ustring_array(Value::cell({2, 1}, {Value::text(u"x"), Value::text(u"")}).get()),
            (std::vector<ustring>{u"x", u""}));
  EXPECT_TRUE(matrix::get_ustring_array(Value::cell({0, 3}, {}).get()).empty());
  EXPECT_TRUE(matrix::get_ustring_array(nullptr).empty());
}

}  // namespace
