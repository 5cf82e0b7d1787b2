// Pieces of the reader on their own: the fixed-width cutter (where fields
// begin, what is trimmed, the partial and extra units it reports) and the
// record scanner's limit on a record's length.
#include "import/fixed_width_cutter.hpp"

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "import/reader_errors.hpp"
#include "import/record_scanner.hpp"
#include "support/expect_message.hpp"
#include "zvdelim/get_or_create_delim.hpp"

namespace {

TEST(FixedWidthCutter, ReportsPartialAndExtraUnits) {
  const std::vector<std::uint64_t> widths{2, 3, 18446744073709551615u};
  const auto cut = textio::import::cut_fixed_width(u" ab c ", widths, u" ");
  ASSERT_EQ(cut.fields.size(), 3u);
  EXPECT_EQ(cut.fields[0].begin, 1u);
  EXPECT_EQ(cut.fields[0].length, 1u);  // "a"
  EXPECT_EQ(cut.fields[1].begin, 2u);
  EXPECT_EQ(cut.fields[1].length, 3u);  // "b c"
  EXPECT_EQ(cut.fields[2].length, 0u);  // the one trailing space, trimmed
  EXPECT_TRUE(cut.short_record);
  EXPECT_EQ(cut.incomplete, 2u);
  EXPECT_FALSE(cut.has_extra);

  const auto extra = textio::import::cut_fixed_width(u"abcdefg", std::vector<std::uint64_t>{2, 3}, u" ");
  EXPECT_FALSE(extra.short_record);
  EXPECT_TRUE(extra.has_extra);
  EXPECT_EQ(extra.extra_begin, 5u);
}

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
  const struct {
    std::string_view text;
    bool at_end;
  } too_long[] = {
      {"abcd,efgh,ij\n", false},
      {"abcd,efgh,ij", true},       // the input ends after the limit
      {"\"abc,\n,defgh\"\n", true},  // a quoted field, not an open quote
  };
  for (const auto& c : too_long) {
    EXPECT_TRUE(test_support::throws_message<ZORVEK::textio::reader::RecordTooLong>(
        [&] { scanner.scan(c.text, c.at_end, 5, rec); }, {std::uint64_t{5}, std::uint64_t{8}}))
        << c.text;
  }
}

}  // namespace
