// The UTF-8 check under the reader's input, and numbers read from text.
#include "import/utf8_text.hpp"

#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "import/number_conversion.hpp"

namespace {

using textio::import::check_utf8;

TEST(CheckUtf8, FindsTheFirstBadOrUnfinishedSequence) {
  const struct {
    const char* name;
    std::string bytes;
    std::size_t valid;
    bool invalid;
  } cases[] = {
      {"ascii_longer_than_a_word", "abcdefghijklmnopq", 17, false},
      {"two_three_four_bytes", "\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E", 9, false},
      {"unfinished_at_end", "abc\xF0\x9D\x84", 3, false},
      {"stray_continuation", "ab\x80", 2, true},
      {"overlong_two_bytes", "\xC1\x81", 0, true},
      {"overlong_three_bytes", "x\xE0\x80\x80", 1, true},
      {"surrogate", "\xED\xA0\x80", 0, true},
      {"above_u10ffff", "\xF4\x90\x80\x80", 0, true},
      {"lead_f5", "\xF5\x80\x80\x80", 0, true},
      {"continuation_missing_mid_sequence", "\xE2\x28\xA1", 0, true},
      {"bad_byte_after_eight_ascii", "12345678\xFF", 8, true},
  };
  for (const auto& c : cases) {
    const auto check = check_utf8(c.bytes);
    EXPECT_EQ(check.valid, c.valid) << c.name;
    EXPECT_EQ(check.invalid, c.invalid) << c.name;
  }
}

TEST(ToNumber, ReadsNumbersTheWayTheOptionsSay) {
  textio::import::number_format format;
  format.decimal_separator = u',';
  format.thousands_separator = u"'";
  format.exp_chars = u"xX";
  const std::pair<const char*, double> cases[] = {
      {"1'234,5", 1234.5},   {"-2x3", -2000},       {"+7", 7},  // NaN: no number
      {"1e3", std::nan("")}, {"1.5", std::nan("")}, {"", std::nan("")}, {"--7", std::nan("")}, {"1x", std::nan("")},
  };
  for (const auto& [text, expected] : cases) {
    const auto n = textio::import::to_number(std::string_view(text), format);
    EXPECT_EQ(n.has_value(), !std::isnan(expected)) << text;
    if (n) {
      EXPECT_EQ(*n, expected) << text;
    }
  }
  // Out of a double's range: infinity or zero.
  const textio::import::number_format plain;
  EXPECT_EQ(textio::import::to_number(std::u16string_view(u"1e999"), plain), HUGE_VAL);
  EXPECT_EQ(textio::import::to_number(std::u16string_view(u"-1e999"), plain), -HUGE_VAL);
  EXPECT_EQ(textio::import::to_number(std::u16string_view(u"1e-999"), plain), 0.0);
}

}  // namespace
