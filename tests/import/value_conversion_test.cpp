// Typed values: the spellings each type accepts and refuses (the value as the
// outputs show it), and type detection over one-column samples.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "import/values/number_text.hpp"
#include "import/detect/type_detection.hpp"
#include "import/values/value_conversion.hpp"

namespace {

using namespace textio::import;

// The value as the outputs show it, or "refused".
template <typename CharT = char>
std::string shown(std::basic_string_view<CharT> text, value_type type, const conversion_settings& settings = {}) {
  output_value v;
  std::string canonical;
  if (!convert_value(text, type, settings, v, canonical)) return "refused";
  if (v.kind == value_kind::integer) return std::to_string(v.integer);
  if (v.kind == value_kind::unsigned_integer) return std::to_string(static_cast<std::uint64_t>(v.integer));
  if (v.kind == value_kind::logical) return v.number != 0 ? "true" : "false";
  if (v.kind == value_kind::datetime || v.kind == value_kind::duration) return std::string(v.bytes);
  // A number's text for the outputs to copy must be the one they would write.
  std::string written;
  append_number_text(written, v.number);
  if (!v.bytes.empty() && v.bytes != written) return "copies " + std::string(v.bytes) + " for " + written;
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.17g", v.number);
  return buf;
}

struct spelling {
  std::string_view text;
  value_type type;
  std::string_view expected;
  conversion_settings settings = {};
};

conversion_settings month_first() {
  conversion_settings s;
  s.dates = date_order::month_first;
  return s;
}
// Decimal comma, ' between thousands, x or X before the exponent.
conversion_settings swiss() {
  conversion_settings s;
  s.numbers.decimal_separator = u',';
  s.numbers.thousands_separator = u"'";
  s.numbers.exp_chars = u"xX";
  return s;
}
conversion_settings german() {
  conversion_settings s;
  s.numbers.decimal_separator = u',';
  s.numbers.thousands_separator = u".";
  return s;
}

TEST(ValueConversion, SpellingsOfEachType) {
  const spelling cases[] = {
      {"+1.5", value_type::double_, "1.5"},
      {"-Inf", value_type::double_, "-inf"},
      {"1e999", value_type::double_, "inf"},  // out of a double's range: infinity or zero
      {"-1e999", value_type::double_, "-inf"},
      {"1e-999", value_type::double_, "0"},
      {"1'234,5", value_type::double_, "1234.5", swiss()},
      {"1.234", value_type::double_, "1234", german()},
      {"2.50", value_type::double_, "2.5"},
      {"-2x3", value_type::double_, "-2000", swiss()},
      {"1e3", value_type::double_, "refused", swiss()},
      {"1.5", value_type::double_, "refused", swiss()},
      {"--7", value_type::double_, "refused", swiss()},
      {"1x", value_type::double_, "refused", swiss()},
      {"", value_type::double_, "refused"},
      {"0.1", value_type::single, "0.10000000149011612"},
      {"127", value_type::int8, "127"},
      {"128", value_type::int8, "refused"},
      {"-1", value_type::uint8, "refused"},
      {"65535", value_type::uint16, "65535"},  // above int16's range
      {"65536", value_type::uint16, "refused"},
      {"-32768", value_type::int16, "-32768"},
      {"32768", value_type::int16, "refused"},
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
      {"3/4/2020", value_type::datetime, "2020-03-04", month_first()},
      {"13/4/2020", value_type::datetime, "refused", month_first()},
      {"2020-03-04", value_type::datetime, "2020-03-04", month_first()},
      {"3-4-99", value_type::datetime, "1999-04-03"},
      {"3-4-68", value_type::datetime, "2068-04-03"},  // two-digit years turn between 68 and 69
      {"3-4-69", value_type::datetime, "1969-04-03"},
      {"28-Jan-2018", value_type::datetime, "2018-01-28"},
      {"January 28, 2018", value_type::datetime, "2018-01-28"},
      {"Sept 1 2018", value_type::datetime, "2018-09-01"},
      {"2018-02-30", value_type::datetime, "refused"},
      {"2018-01-28T24:00", value_type::datetime, "refused"},
      {"2018-01-28x", value_type::datetime, "refused"},
      {"3/4-2020", value_type::datetime, "refused"},
      {"12.5", value_type::datetime, "refused"},
      {"Janx 5 2020", value_type::datetime, "refused"},
      {"4/23/2019 7:11:11 AM", value_type::datetime, "2019-04-23T07:11:11", month_first()},
      {"4/23/2019 7:11:11 PM", value_type::datetime, "2019-04-23T19:11:11", month_first()},
      {"1/2/2020 12:00:00 am", value_type::datetime, "2020-01-02T00:00:00", month_first()},
      {"2020-01-02 12:30pm", value_type::datetime, "2020-01-02T12:30:00"},
      {"12:05 PM", value_type::datetime, "12:05:00"},
      {"12:05:30.5 AM", value_type::datetime, "00:05:30.5"},
      {"13:05 PM", value_type::datetime, "refused"},
      {"0:05 AM", value_type::datetime, "refused"},
      {"12:05 PMx", value_type::datetime, "refused"},
      {"12:05:00", value_type::datetime, "refused"},
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
    EXPECT_EQ(shown(c.text, c.type, c.settings), c.expected) << c.text << " as " << type_name(c.type);
    // Text read as UTF-16 converts the same.
    const std::u16string wide(c.text.begin(), c.text.end());
    EXPECT_EQ(shown(std::u16string_view(wide), c.type, c.settings), c.expected) << c.text << " in UTF-16";
    // A value keeps the text it was read from, in the reader's units.
    output_value narrow;
    output_value utf16;
    std::string canonical;
    if (convert_value(c.text, c.type, c.settings, narrow, canonical)) {
      EXPECT_EQ(narrow.written, c.text);
    }
    if (convert_value(std::u16string_view(wide), c.type, c.settings, utf16, canonical)) {
      EXPECT_TRUE(utf16.utf16 && utf16.units == wide && utf16.written.empty()) << c.text;
    }
  }
  EXPECT_EQ(shown(std::u16string_view(u"1\u0131"), value_type::int32), "refused");
}

// Whether a number's text may stand for it in JSON: JSON number syntax read
// with '.' before the fraction and no thousands separators.
TEST(ValueConversion, JsonNumbersAreTheTextsJsonReadsTheSame) {
  const spelling cases[] = {
      {"4000.00", value_type::double_, "json"},
      {"-0", value_type::double_, "json"},
      {"1e300", value_type::double_, "json"},
      {"2.5E-3", value_type::double_, "json"},
      {"0.1", value_type::single, "json"},
      {"12", value_type::int32, "json"},
      {"+1", value_type::double_, "not"},
      {".5", value_type::double_, "not"},
      {"5.", value_type::double_, "not"},
      {"1e+", value_type::double_, "refused"},
      {"007", value_type::double_, "not"},
      {"007", value_type::int32, "not"},
      {"-01", value_type::int64, "not"},
      {"1D1", value_type::double_, "not"},
      {"NaN", value_type::double_, "not"},
      {"-Inf", value_type::double_, "not"},
      {"1,5", value_type::double_, "not", german()},
      {"1.234", value_type::double_, "not", german()},
      {"1.234", value_type::int32, "not", german()},
      {"1'234", value_type::uint16, "not", swiss()},
  };
  for (const auto& c : cases) {
    for (const bool wide : {false, true}) {
      output_value v;
      std::string canonical;
      const std::u16string units(c.text.begin(), c.text.end());
      const bool converted = wide ? convert_value(std::u16string_view(units), c.type, c.settings, v, canonical)
                                  : convert_value(c.text, c.type, c.settings, v, canonical);
      EXPECT_EQ(!converted                  ? "refused"
                : written_as_json_number(v) ? "json"
                                            : "not",
                c.expected)
          << c.text << (wide ? " UTF-16" : "");
    }
  }
}

struct column_case {
  std::vector<std::string> values;
  std::string type;
  std::vector<std::string> markers = {};
  bool unsettled = false;
  date_order order = date_order::day_first;
};

detected_type detect_one(const std::vector<std::string>& values, bool markers = true) {
  std::vector<std::vector<std::string>> rows;
  for (const auto& v : values) rows.push_back({v});
  type_detection_settings settings;
  settings.detect_markers = markers;
  settings.placeholders = {"n.a."};
  return detect_types(rows, 1, settings).at(0);
}

TEST(TypeDetection, NarrowestTypeOfEveryValue) {
  const column_case cases[] = {
      {{"1", "2.5", "", "-3e2", "NaN"}, "double"},
      {{"TRUE", "false", "n.a."}, "logical"},
      {{"1", "0", "true"}, "string"},
      {{"2020-01-02", "2020-01-03T04:05:06"}, "datetime"},
      {{"01:02:03", "100:00:00"}, "duration"},
      {{"1", "x"}, "string"},
      // A zero before another digit makes a code, not a number.
      {{"1", "007"}, "string"},
      {{"08123", "02134"}, "string"},
      {{"5", "-01"}, "string"},
      {{"+00"}, "string"},
      {{"0930", "1200"}, "string"},
      {{"0", "0.5", "-0.5", "0e5", "-0", "10"}, "double"},
      {{"", "  "}, "string"},
      {{"NA", "-"}, "string"},
      {{"1.5", "NA", "null", "2", "NA"}, "double", {"NA", "null"}},
      {{"true", "N/A"}, "logical", {"N/A"}},
      {{"2020-01-02", "NaN", "."}, "datetime", {"NaN", "."}},
      {{"3/4/2020", "13/4/2020"}, "datetime", {}, false, date_order::day_first},
      {{"3/4/2020", "4/13/2020"}, "datetime", {}, false, date_order::month_first},
      {{"3/4/2020", "5/6/2020"}, "datetime", {}, true},
      {{"3/3/2020", "2020-05-06"}, "datetime", {}, false},
      {{"13/4/2020", "4/13/2020"}, "string"},
  };
  for (const auto& c : cases) {
    const detected_type d = detect_one(c.values);
    const std::string where = c.values.empty() ? "" : c.values.front() + "...";
    EXPECT_EQ(type_name(d.typing.type), c.type) << where;
    EXPECT_EQ(d.typing.missing_markers, c.markers) << where;
    EXPECT_EQ(d.date_order_unsettled, c.unsettled) << where;
    if (c.type == "datetime") {
      EXPECT_EQ(d.typing.dates, c.order) << where;
    }
  }
  // Markers are detected only when the user gave none.
  EXPECT_EQ(detect_one({"1", "NA"}, false).typing.type, value_type::string);
}

}  // namespace
