#include "import/detect/type_detection.hpp"

#include <algorithm>
#include <array>

#include "import/detect/blanks.hpp"
#include "zvcore/ustring.hpp"

namespace textio::import {
namespace {

bool is_usual_marker(std::string_view s) {
  static constexpr std::array<std::string_view, 6> markers = {"na", "n/a", "nan", "null", "-", "."};
  if (s.size() > 4) return false;
  std::string l;
  for (const char c : s) l.push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c);
  return std::find(markers.begin(), markers.end(), l) != markers.end();
}

bool converts(std::string_view s, value_type type, const conversion_settings& settings) {
  output_value v;
  std::string canonical;
  return convert_value(s, type, settings, v, canonical);
}

// Whether a number's text starts with a zero before another digit (007,
// -01, 08123): a code or an identifier, whose zeros a number would drop.
bool has_leading_zero(std::string_view s) {
  if (!s.empty() && (s.front() == '-' || s.front() == '+')) s.remove_prefix(1);
  return s.size() > 1 && s[0] == '0' && s[1] >= '0' && s[1] <= '9';
}

// The type of one variable's values (none missing).
detected_type type_of(const std::vector<std::string_view>& values, const type_detection_settings& settings) {
  detected_type result;
  result.typing.unconverted = unconverted_value::text;  // a guess from a sample
  if (values.empty()) return result;
  conversion_settings conv;
  conv.numbers = settings.numbers;
  for (const value_type type : {value_type::logical, value_type::double_, value_type::datetime, value_type::duration}) {
    std::vector<std::string> markers;
    std::size_t converted = 0;
    bool day_first = true;
    bool month_first = true;
    bool orders_differ = false;
    bool fits = true;
    for (const std::string_view v : values) {
      bool ok = false;
      if (type == value_type::datetime) {
        const auto d = parse_datetime(v, date_order::day_first);
        const auto m = parse_datetime(v, date_order::month_first);
        ok = d || m;
        if (ok && (!d || !m || d->iso_text() != m->iso_text())) orders_differ = true;
        if (ok) {
          day_first = day_first && d;
          month_first = month_first && m;
          ok = day_first || month_first;
        }
      } else {
        ok = converts(v, type, conv) && !(type == value_type::double_ && has_leading_zero(v));
      }
      if (ok) {
        ++converted;
      } else if (settings.detect_markers && is_usual_marker(v)) {
        if (std::find(markers.begin(), markers.end(), v) == markers.end()) markers.emplace_back(v);
      } else {
        fits = false;
        break;
      }
    }
    if (!fits || converted == 0) continue;
    result.typing.type = type;
    result.typing.missing_markers = std::move(markers);
    if (type == value_type::datetime) {
      result.typing.dates = day_first ? date_order::day_first : date_order::month_first;
      result.date_order_unsettled = day_first && month_first && orders_differ;
    }
    return result;
  }
  return result;
}

}  // namespace

std::vector<detected_type> detect_types(const std::vector<std::vector<std::string>>& rows, std::size_t variables,
                                        const type_detection_settings& settings) {
  std::vector<detected_type> out;
  out.reserve(variables);
  std::vector<std::string_view> values;
  for (std::size_t i = 0; i < variables; ++i) {
    values.clear();
    for (const auto& row : rows) {
      if (i >= row.size()) continue;
      const std::string_view v = trim_blanks(row[i]);
      if (v.empty()) continue;
      if (std::find(settings.placeholders.begin(), settings.placeholders.end(), v) != settings.placeholders.end())
        continue;
      values.push_back(v);
    }
    out.push_back(type_of(values, settings));
  }
  return out;
}

type_detection_settings type_detection_settings_of(const textio::parser::options& record) {
  type_detection_settings settings;
  settings.numbers = number_format_of(record);
  for (const auto& p : record.missing_placeholders()) {
    settings.placeholders.push_back(foundation::core::unicode::to_utf8(p));
  }
  settings.detect_markers = record.missing_placeholders().empty();
  return settings;
}

}  // namespace textio::import
