#include "import/detect/sample_types.hpp"

#include "import/detect/type_detection.hpp"
#include "import/values/value_conversion.hpp"
#include "zvcore/ustring.hpp"

namespace textio::import {

void add_variable_types(detection_report& report, const std::vector<std::vector<std::string>>& rows,
                        std::size_t variables, const textio::parser::options& opts) {
  const type_detection_settings settings = type_detection_settings_of(opts);
  for (const detected_type& d : detect_types(rows, variables, settings)) {
    report.variable_types.emplace_back(type_name(d.typing.type));
    report.missing_markers.push_back(d.typing.missing_markers);
    report.month_first.push_back(d.typing.dates == date_order::month_first);
    report.date_order_unsettled.push_back(d.date_order_unsettled);
  }
}

std::vector<variable_typing> variable_typings(const detection_report& report) {
  std::vector<variable_typing> out(report.variable_types.size());
  for (std::size_t i = 0; i < out.size(); ++i) {
    out[i].type = type_from_name(report.variable_types[i]).value_or(value_type::string);
    out[i].dates = report.month_first[i] ? date_order::month_first : date_order::day_first;
    out[i].missing_markers = report.missing_markers[i];
    out[i].unconverted = unconverted_value::text;  // (a guess)
  }
  return out;
}

}  // namespace textio::import
