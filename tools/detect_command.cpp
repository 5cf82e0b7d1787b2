#include "tools/detect_command.hpp"

#include <optional>

#include "import/reader_errors.hpp"
#include "tools/apply_options.hpp"
#include "tools/reading_choices.hpp"
#include "tools/record_json.hpp"

namespace zvtool {

void write_detected(json_writer& out, const textio::import::detection_result& result) {
  const textio::import::detection_report& report = result.report;
  out.begin_object();
  out.key("encoding");
  out.bytes_value(report.encoding);
  out.key("quote");
  if (report.quote == '\0') {
    out.null_value();
  } else {
    out.bytes_value(std::string(1, report.quote));
  }
  out.key("escape");
  out.bytes_value(escape_name(report.escape));
  out.key("variable_names");
  out.begin_array();
  for (const auto& name : report.variable_names) out.bytes_value(name);
  out.end_array();
  out.key("variable_types");
  out.begin_array();
  for (const auto& type : report.variable_types) out.bytes_value(type);
  out.end_array();
  // Per variable: the missing markers found in it, and whether its dates
  // read both day-first and month-first.
  out.key("missing_markers");
  out.begin_array();
  for (const auto& markers : report.missing_markers) {
    out.begin_array();
    for (const auto& m : markers) out.bytes_value(m);
    out.end_array();
  }
  out.end_array();
  out.key("date_order_unsettled");
  out.begin_array();
  for (std::size_t i = 0; i < report.date_order_unsettled.size(); ++i) {
    if (report.date_order_unsettled[i]) out.unsigned_value(i + 1);
  }
  out.end_array();
  out.key("names_generated");
  out.bool_value(report.names_generated);
  out.key("table_end_line");
  if (report.table_end_line) {
    out.unsigned_value(*report.table_end_line);
  } else {
    out.null_value();
  }
  out.key("confidence");
  out.double_value(report.confidence);
  out.key("doubts");
  out.begin_array();
  for (const std::string& doubt : report.doubts) out.bytes_value(doubt);
  out.end_array();
  out.key("reasons");
  out.begin_object();
  for (const auto& filled : report.filled) {
    out.key(filled.setting);
    out.bytes_value(filled.reason);
  }
  out.end_object();
  out.end_object();
}

tool_result run_detect_command(const parsed_arguments& args) {
  textio::parser::options record;
  json_writer out;
  out.begin_object();
  if (const auto failure = apply_option_arguments(args.value("--struct"), args.option_arguments, record)) {
    out.key("options");
    write_options_record(out, record);
    return finish_report(out, failure);
  }
  const textio::import::read_settings settings = read_settings_of(args);
  std::optional<textio::import::detection_result> detected;
  std::optional<message_failure> failure;
  try {
    detected = textio::import::detect(source_of(args), record, settings);
  } catch (const foundation::core::except::IMsgIDException& error) {
    failure = capture_message(error);
  }
  out.key("options");
  write_options_record(out, detected ? detected->options : record);
  if (detected) {
    out.key("detected");
    write_detected(out, *detected);
    out.key("arguments");
    out.begin_array();
    for (const auto& a : reproducing_arguments(detected->options, detected->format)) out.bytes_value(a);
    out.end_array();
  }
  tool_result result = finish_report(out, failure);
  if (failure) result.status = reading_failure_status(*failure);
  return result;
}

}  // namespace zvtool
