#include "parser/constants.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/constants_elsewhere.hpp"

namespace {

namespace p = textio::parser;

struct constant_case {
  const char* name;
  const ustring* value;  // a pointer: g++ 12 miscompiles a reference member beside an empty braced vector
  std::vector<char16_t> units;
};

// Written as code units, not as literals, so a wrong escape in the header
// cannot be copied into the expectation.
const constant_case constant_cases[] = {
    {"default_whitespace", &p::default_whitespace, {0x20, 0x08, 0x09}},
    {"default_exp_chars", &p::default_exp_chars, {0x65, 0x45, 0x64, 0x44}},
    {"digit_chars", &p::digit_chars, {0x30, 0x31, 0x32, 0x33, 0x34, 0x35, 0x36, 0x37, 0x38, 0x39}},
    {"space_char", &p::space_char, {0x20}},
    {"line_feed", &p::line_feed, {0x0A}},
    {"carriage_return", &p::carriage_return, {0x0D}},
    {"carriage_return_line_feed", &p::carriage_return_line_feed, {0x0D, 0x0A}},
    {"nan_text_mixed", &p::nan_text_mixed, {0x4E, 0x61, 0x4E}},
    {"inf_text_mixed", &p::inf_text_mixed, {0x49, 0x6E, 0x66}},
    {"empty_text", &p::empty_text, {}},
    {"inf_text", &p::inf_text, {0x69, 0x6E, 0x66}},
    {"negative_inf_text", &p::negative_inf_text, {0x2D, 0x69, 0x6E, 0x66}},
    {"nan_text", &p::nan_text, {0x6E, 0x61, 0x6E}},
    {"negative_nan_text", &p::negative_nan_text, {0x2D, 0x6E, 0x61, 0x6E}},
};

TEST(TextConstants, HoldExactlyTheirCodeUnits) {
  for (const constant_case& c : constant_cases) {
    EXPECT_EQ(std::vector<char16_t>(c.value->begin(), c.value->end()), c.units) << c.name;
  }
  EXPECT_TRUE(p::empty_text_list.empty());
}

TEST(TextConstants, TypeNamesArePlainAscii) {
  const struct {
    const ustring& value;
    const char* ascii;
  } names[] = {
      {p::type_name_double, "double"},     {p::type_name_single, "single"},
      {p::type_name_uint8, "uint8"},       {p::type_name_int8, "int8"},
      {p::type_name_uint16, "uint16"},     {p::type_name_int16, "int16"},
      {p::type_name_uint32, "uint32"},     {p::type_name_int32, "int32"},
      {p::type_name_uint64, "uint64"},     {p::type_name_int64, "int64"},
      {p::type_name_auto, "auto"},         {p::type_name_datetime, "datetime"},
      {p::type_name_duration, "duration"}, {p::type_name_categorical, "categorical"},
      {p::type_name_logical, "logical"},   {p::type_name_string, "string"},
      {p::type_name_char, "char"},
  };
  for (const auto& n : names) {
    const std::string ascii = n.ascii;
    EXPECT_EQ(n.value, ustring(ascii.begin(), ascii.end())) << ascii;
  }
}

TEST(TextConstants, EachUnitHoldsItsOwnEqualCopies) {
  const auto elsewhere = test_support::constants_elsewhere();
  EXPECT_NE(elsewhere.digit_chars, &p::digit_chars);
  EXPECT_EQ(*elsewhere.digit_chars, p::digit_chars);
  EXPECT_NE(elsewhere.empty_text_list, &p::empty_text_list);
  EXPECT_NE(elsewhere.type_name_char, &p::type_name_char);
  EXPECT_EQ(*elsewhere.type_name_char, p::type_name_char);
}

}  // namespace
