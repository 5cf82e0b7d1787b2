// The record scanner's limit on a record's length, which reading a file does
// not reach in a test; which bytes make a sample no text.
#include <optional>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "import/detect/encoding.hpp"
#include "import/reader_errors.hpp"
#include "import/scan/record_scanner.hpp"
#include "support/expect_message.hpp"
#include "zvdelim/get_or_create_delim.hpp"

namespace {

// Field offsets are 32-bit, so the scanner refuses a record that does not end
// within its limit (here 8 units), whether the window or the input ends first.
TEST(RecordScanner, RefusesARecordLongerThanItsLimit) {
  using namespace textio::import;
  scan_rules<char> rules;
  rules.field_delimiters = string_matcher<char>(textio::get_or_create_delim({u","}));
  rules.line_endings = string_matcher<char>(textio::get_or_create_delim({u"\n"}));
  rules.quotes = true;
  rules.finish();
  rules.mark(u',', starts_field_delimiter);
  rules.mark(u'\n', starts_line_ending);
  rules.max_record_units = 8;
  record_scanner<char> scanner(rules);
  scanned_record<char> rec;

  ASSERT_EQ(scanner.scan("abc,def\nrest of the input", false, 5, rec), scan_result::record);
  EXPECT_EQ(rec.fields.size(), 2u);
  EXPECT_EQ(rec.consumed, 8u);
  const std::pair<std::string_view, bool> too_long[] = {
      // text, whether the input ends there
      {"abcd,efgh,ij\n", false},
      {"abcd,efgh,ij", true},        // the input ends after the limit
      {"\"abc,\n,defgh\"\n", true},  // a quoted field, not an open quote
  };
  for (const auto& c : too_long) {
    EXPECT_TRUE(test_support::throws_message<ZORVEK::textio::reader::RecordTooLong>(
        [&] { scanner.scan(c.first, c.second, 5, rec); }, {std::uint64_t{5}, std::uint64_t{8}}))
        << c.first;
  }
}

// A sample is no text when more than one byte in a hundred (and at least two)
// is a control byte: below 0x20 other than tab, LF, VT, FF and CR, or DEL.
TEST(FirstBinaryByte, ControlBytesAreThoseOfNoText) {
  using textio::import::first_binary_byte;
  for (const unsigned char b : {0x00, 0x01, 0x08, 0x0E, 0x1B, 0x1F, 0x7F}) {
    const std::string sample = std::string("ab") + std::string(2, static_cast<char>(b)) + std::string(100, 'x');
    EXPECT_EQ(first_binary_byte(sample, "UTF-8"), std::optional<std::size_t>(2)) << int{b};
  }
  for (const unsigned char b : {0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x20, 0x7E, 0x80, 0xFF}) {
    const std::string sample = std::string("ab") + std::string(50, static_cast<char>(b));
    EXPECT_EQ(first_binary_byte(sample, "UTF-8"), std::nullopt) << int{b};
  }
  // One in a hundred is not enough.
  EXPECT_EQ(first_binary_byte(std::string(2, '\0') + std::string(198, 'x'), "UTF-8"), std::nullopt);
  EXPECT_EQ(first_binary_byte(std::string(2, '\0') + std::string(197, 'x'), "UTF-8"), std::optional<std::size_t>(0));
}

}  // namespace
