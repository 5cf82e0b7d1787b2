// The record scanner's limit on a record's length, which reading a file does
// not reach in a test.
#include <string_view>

#include <gtest/gtest.h>

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

}  // namespace
