#include "tools/record_json.hpp"

#include <cstdint>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

#include "name_value/option_vocabulary.hpp"

namespace zvtool {
namespace {

void text_list_field(json_writer& out, std::string_view name, const std::vector<ustring>& list) {
  out.key(name);
  out.begin_array();
  for (const auto& text : list) out.text_value(text);
  out.end_array();
}

void text_field(json_writer& out, std::string_view name, std::u16string_view text) {
  out.key(name);
  out.text_value(text);
}

void count_field(json_writer& out, std::string_view name, std::uint64_t n) {
  out.key(name);
  out.unsigned_value(n);
}

void bool_field(json_writer& out, std::string_view name, bool b) {
  out.key(name);
  out.bool_value(b);
}

// A field that holds an enumeration, with its enumerator names from the
// option vocabulary; a field that no rule option writes does not build.
struct enumeration_field {
  std::string_view name;
  std::span<const char* const> names;

  consteval enumeration_field(const char* field) : name(field) {
    // (A loop over the rows, not key_of_field: a pointer compared with null
    // is no constant expression in a build with the undefined-behaviour
    // checks.)
    for (const textio::options::field_key& row : textio::options::field_keys) {
      if (row.field == name && !row.names.empty()) {
        names = row.names;
        return;
      }
    }
    throw "not an enumeration of the options record";
  }
};

// The enumerator's name; a number outside the enumeration (which no setter
// stores) is written as that number, so the output still shows the record.
template <class Enum>
void enum_field(json_writer& out, enumeration_field field, Enum value) {
  const auto n = static_cast<std::underlying_type_t<Enum>>(value);
  out.key(field.name);
  if (n < field.names.size()) {
    out.bytes_value(field.names[n]);
  } else {
    out.unsigned_value(n);
  }
}

}  // namespace

void write_options_record(json_writer& out, const textio::parser::options& record) {
  out.begin_object();
  text_list_field(out, "delimiter", record.delimiter());
  text_list_field(out, "line_ending", record.line_ending());
  text_list_field(out, "missing_placeholders", record.missing_placeholders());
  text_list_field(out, "comment_style", record.comment_style());
  text_field(out, "whitespace", record.whitespace());
  text_field(out, "thousands_separator", record.thousands_separator());
  text_field(out, "date_locale", record.date_locale());
  text_field(out, "exp_chars", record.exp_chars());
  enum_field(out, "file_type", record.file_type());
  out.key("field_widths");
  out.begin_array();
  for (const auto width : record.field_widths()) out.unsigned_value(width);
  out.end_array();
  count_field(out, "num_header_lines", record.num_header_lines());
  count_field(out, "num_variables", record.num_variables());
  count_field(out, "variable_names_line", record.variable_names_line());
  count_field(out, "variable_units_line", record.variable_units_line());
  count_field(out, "variable_descriptions_line", record.variable_descriptions_line());
  enum_field(out, "parser_type", record.parser_type());
  enum_field(out, "output_type", record.output_type());
  const char16_t separator = record.decimal_separator();
  text_field(out, "decimal_separator", std::u16string_view(&separator, 1));
  enum_field(out, "missing_rule", record.missing_rule());
  enum_field(out, "import_error_rule", record.import_error_rule());
  enum_field(out, "consecutive_delim_rule", record.consecutive_delim_rule());
  enum_field(out, "empty_line_rule", record.empty_line_rule());
  enum_field(out, "extra_columns_rule", record.extra_columns_rule());
  enum_field(out, "leading_delim_rule", record.leading_delim_rule());
  enum_field(out, "trailing_delim_rule", record.trailing_delim_rule());
  enum_field(out, "partial_field_rule", record.partial_field_rule());
  bool_field(out, "detecting_delimiter", record.detecting_delimiter());
  bool_field(out, "detecting_num_header_lines", record.detecting_num_header_lines());
  bool_field(out, "detecting_num_variables", record.detecting_num_variables());
  bool_field(out, "trim_non_numeric", record.trim_non_numeric());
  out.end_object();
}

}  // namespace zvtool
