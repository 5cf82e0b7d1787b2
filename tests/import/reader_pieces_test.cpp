// The fixed-width cutter on its own: where fields begin, what is trimmed, and
// the partial and extra units it reports.
#include "import/fixed_width_cutter.hpp"

#include <string>
#include <vector>

#include <gtest/gtest.h>

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

}  // namespace
