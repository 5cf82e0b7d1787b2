// Spellings each type accepts and refuses: text, type and the value as the
// outputs show it.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "import/value_conversion.hpp"

namespace {

using textio::import::conversion_settings;
using textio::import::date_order;
using textio::import::output_value;
using textio::import::value_kind;
using textio::import::value_type;

// The value as the outputs show it, or "refused".
template <typename CharT = char>
std::string shown(std::basic_string_view<CharT> text, value_type type, const conversion_settings& settings = {}) {
  output_value v;
  std::string canonical;
  if (!textio::import::convert_value(text, type, settings, v, canonical)) return "refused";
  if (v.kind == value_kind::integer) return std::to_string(v.integer);
  if (v.kind == value_kind::unsigned_integer) return std::to_string(static_cast<std::uint64_t>(v.integer));
  if (v.kind == value_kind::logical) return v.number != 0 ? "true" : "false";
  if (v.kind == value_kind::datetime || v.kind == value_kind::duration) return std::string(v.bytes);
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.17g", v.number);
  return buf;
}

struct spelling {
  std::string_view text;
  value_type type;
  std::string_view expected;
};

TEST(ValueConversion, SpellingsOfEachType) {
  const spelling cases[] = {
      {"+1.5", value_type::double_, "1.5"},
      {"-Inf", value_type::double_, "-inf"},
      {"0.1", value_type::single, "0.10000000149011612"},
      {"127", value_type::int8, "127"},
      {"128", value_type::int8, "refused"},
      {"-1", value_type::uint8, "refused"},
      {"9223372036854775807", value_type::int64, "9223372036854775807"},
      {"9223372036854775808", value_type::int64, "refused"},
      {"18446744073709551615", value_type::uint64, "18446744073709551615"},
      {"1.0", value_type::int32, "refused"},
      {"TrUe", value_type::logical, "true"},
      {"yes", value_type::logical, "refused"},
      {"2018-01-28", value_type::datetime, "2018-01-28"},
      {"2018-01-28T05:06:07.250Z", value_type::datetime, "2018-01-28T05:06:07.250Z"},
      {"2018-01-28 05:06", value_type::datetime, "2018-01-28T05:06:00"},
      {"2018-01-28T05:06:07+0130", value_type::datetime, "2018-01-28T05:06:07+01:30"},
      {"28.01.2018", value_type::datetime, "2018-01-28"},
      {"3/4/20", value_type::datetime, "2020-04-03"},
      {"3-4-99", value_type::datetime, "1999-04-03"},
      {"28-Jan-2018", value_type::datetime, "2018-01-28"},
      {"January 28, 2018", value_type::datetime, "2018-01-28"},
      {"Sept 1 2018", value_type::datetime, "2018-09-01"},
      {"2018-02-30", value_type::datetime, "refused"},
      {"2018-01-28T24:00", value_type::datetime, "refused"},
      {"2018-01-28x", value_type::datetime, "refused"},
      {"3/4-2020", value_type::datetime, "refused"},
      {"12.5", value_type::datetime, "refused"},
      {"Janx 5 2020", value_type::datetime, "refused"},
      {"01:02:03", value_type::duration, "01:02:03"},
      {"1 01:02:03.5", value_type::duration, "25:02:03.5"},
      {"-100:00:00", value_type::duration, "-100:00:00"},
      {"01:60:00", value_type::duration, "refused"},
      {"01:02", value_type::duration, "refused"},
      {"99999 23:59:59", value_type::duration, "2399999:59:59"},
      {"100000 00:00:00", value_type::duration, "refused"},
      {"anything", value_type::string, "refused"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(shown(c.text, c.type), c.expected) << c.text << " as " << textio::import::type_name(c.type);
    // Text read as UTF-16 converts the same.
    const std::u16string wide(c.text.begin(), c.text.end());
    EXPECT_EQ(shown(std::u16string_view(wide), c.type), c.expected) << c.text << " in UTF-16";
  }
  EXPECT_EQ(shown(std::u16string_view(u"1\u0131"), value_type::int32), "refused");
}

TEST(ValueConversion, RecordNumberSettingsApply) {
  conversion_settings s;
  s.numbers.decimal_separator = u',';
  s.numbers.thousands_separator = u".";
  EXPECT_EQ(shown<char>("1.234,5", value_type::double_, s), "1234.5");
  EXPECT_EQ(shown<char>("1.234", value_type::int32, s), "1234");
  s.numbers.trim_non_numeric = true;
  EXPECT_EQ(shown<char>("EUR 3,5", value_type::double_, s), "3.5");
}

TEST(ValueConversion, DateOrderDecidesTwoNumberDates) {
  conversion_settings s;
  s.dates = date_order::month_first;
  EXPECT_EQ(shown<char>("3/4/2020", value_type::datetime, s), "2020-03-04");
  EXPECT_EQ(shown<char>("13/4/2020", value_type::datetime, s), "refused");
  EXPECT_EQ(shown<char>("2020-03-04", value_type::datetime, s), "2020-03-04");
  const auto both = textio::import::accepted_orders("3/4/2020");
  EXPECT_TRUE(both.day_first && both.month_first);
  const auto day = textio::import::accepted_orders("13/4/2020");
  EXPECT_TRUE(day.day_first && !day.month_first);
}

}  // namespace
