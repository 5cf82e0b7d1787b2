#include "tools/reader_json.hpp"

#include <cstdint>
#include <string_view>
#include <vector>

namespace zvtool {
namespace {

void kind_field(json_writer& out, std::string_view kind) {
  out.key("kind");
  out.bytes_value(kind);
}

void code_units_field(json_writer& out, std::string_view name, std::u16string_view units) {
  out.key(name);
  out.begin_array();
  for (const char16_t unit : units) out.unsigned_value(unit);
  out.end_array();
}

}  // namespace

void write_line_reader(json_writer& out, const textio::parser::LineRecordReader& reader) {
  out.begin_object();
  kind_field(out, "line");
  code_units_field(out, "stop_chars", reader.delimiters.stop_chars);
  out.key("reads_empty_lines");
  out.bool_value(reader.reads_empty_lines);
  out.end_object();
}

void write_delimited_reader(json_writer& out, const textio::parser::DelimitedRecordReader& reader) {
  out.begin_object();
  kind_field(out, "delimited");
  out.key("quote");
  out.unsigned_value(reader.quoted_delimiters.quote);
  code_units_field(out, "stop_chars", reader.quoted_delimiters.delimiters.stop_chars);
  out.end_object();
}

void write_fixed_width_reader(json_writer& out, const textio::parser::FixedWidthRecordReader& reader) {
  out.begin_object();
  kind_field(out, "fixedwidth");
  out.key("field_widths");
  out.begin_array();
  for (const std::uint64_t width : reader.field_widths) out.unsigned_value(width);
  out.end_array();
  out.key("record_width");
  out.unsigned_value(reader.record_width);
  code_units_field(out, "stop_chars", reader.stop_chars);
  out.end_object();
}

}  // namespace zvtool
