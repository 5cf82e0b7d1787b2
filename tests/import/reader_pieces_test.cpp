// The reader's pieces on their own: the delimiter rules over blank and
// filled fields, and the fixed-width cutter.
#include "import/delimiter_rules.hpp"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "import/fixed_width_cutter.hpp"

namespace {

using textio::enums::ConsecutiveDelimitersRule;
using textio::enums::LeadingDelimiterRule;
using textio::enums::TrailingDelimiterRule;
using textio::import::delimiter_fault;

struct rules_case {
  const char* name;
  const char* shape;  // one letter per field: x has text, _ is blank
  textio::import::delimiter_rule_set rules;
  std::vector<std::size_t> kept;
  delimiter_fault fault;
  std::size_t fault_field;
};

void PrintTo(const rules_case& c, std::ostream* os) { *os << c.name; }

class DelimiterRules : public ::testing::TestWithParam<rules_case> {};

TEST_P(DelimiterRules, KeepFieldsOrFindTheFault) {
  const auto& c = GetParam();
  std::vector<textio::import::raw_field> fields;
  for (const char* s = c.shape; *s != 0; ++s) {
    textio::import::raw_field f;
    f.length = *s == 'x' ? 1 : 0;
    f.quoted = *s == 'q';
    fields.push_back(f);
  }
  std::vector<std::size_t> kept;
  const auto outcome = apply_delimiter_rules(fields, c.rules, kept);
  EXPECT_EQ(outcome.fault, c.fault);
  if (c.fault == delimiter_fault::none) {
    EXPECT_EQ(kept, c.kept);
  } else {
    EXPECT_EQ(outcome.field, c.fault_field);
  }
}

constexpr auto keep = LeadingDelimiterRule::Keep;
constexpr auto ignore = LeadingDelimiterRule::Ignore;
constexpr auto lead_error = LeadingDelimiterRule::Error;
constexpr auto tkeep = TrailingDelimiterRule::Keep;
constexpr auto tignore = TrailingDelimiterRule::Ignore;
constexpr auto trail_error = TrailingDelimiterRule::Error;
constexpr auto split = ConsecutiveDelimitersRule::Split;
constexpr auto join = ConsecutiveDelimitersRule::Join;
constexpr auto cons_error = ConsecutiveDelimitersRule::Error;

const rules_case rules_cases[] = {
    {"single_field", "_", {ignore, tignore, join}, {0}, delimiter_fault::none, 0},
    {"all_kept_by_default", "_x__x_", {keep, tkeep, split}, {0, 1, 2, 3, 4, 5}, delimiter_fault::none, 0},
    {"leading_run_ignored", "__x_x", {ignore, tkeep, split}, {2, 3, 4}, delimiter_fault::none, 0},
    {"trailing_run_ignored", "x_x__", {keep, tignore, split}, {0, 1, 2}, delimiter_fault::none, 0},
    {"interior_joined_ends_kept", "_x__x_", {keep, tkeep, join}, {0, 1, 4, 5}, delimiter_fault::none, 0},
    {"quoted_empty_is_not_blank", "xqx", {keep, tkeep, join}, {0, 1, 2}, delimiter_fault::none, 0},
    {"only_delimiters_ignored", "___", {ignore, tkeep, split}, {}, delimiter_fault::none, 0},
    {"leading_error", "_x", {lead_error, tkeep, split}, {}, delimiter_fault::leading, 0},
    {"trailing_error_at_last_text", "x_x__", {keep, trail_error, split}, {}, delimiter_fault::trailing, 2},
    {"consecutive_error_at_blank", "x_x__x", {keep, tkeep, cons_error}, {}, delimiter_fault::consecutive, 1},
    {"ends_are_not_consecutive", "_x_", {keep, tkeep, cons_error}, {0, 1, 2}, delimiter_fault::none, 0},
};
INSTANTIATE_TEST_SUITE_P(Shapes, DelimiterRules, ::testing::ValuesIn(rules_cases));

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

}  // namespace
