// Reading an options record in tests: the whole record as text (so that two
// records compare field by field with a readable difference), the rule fields
// by option key, and one name-value pair applied through the entry point.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "name_value/set_parser_options.hpp"
#include "parser/options.hpp"
#include "zvarray/value.hpp"
#include "zvcore/ustring.hpp"

namespace test_support {

inline std::string describe_text(const ::ustring& text) {
  std::string out = "\"";
  for (const char16_t c : text) {
    if (c >= 0x20 && c < 0x7F) {
      out += static_cast<char>(c);
    } else {
      out += "\\u" + std::to_string(static_cast<unsigned>(c));
    }
  }
  return out + "\"";
}

inline std::string describe_list(const textio::parser::options::text_list& list) {
  std::string out = "{";
  for (const auto& text : list) out += describe_text(text) + " ";
  return out + "}";
}

// Every field of the record, one per line.
inline std::string describe_record(const textio::parser::options& o) {
  auto n = [](auto e) { return std::to_string(static_cast<std::uint64_t>(e)); };
  std::string widths;
  for (const auto w : o.field_widths()) widths += std::to_string(w) + " ";
  return "delimiter=" + describe_list(o.delimiter()) + "\nline_ending=" + describe_list(o.line_ending()) +
         "\nmissing_placeholders=" + describe_list(o.missing_placeholders()) +
         "\ncomment_style=" + describe_list(o.comment_style()) + "\nwhitespace=" + describe_text(o.whitespace()) +
         "\nexp_chars=" + describe_text(o.exp_chars()) +
         "\nthousands_separator=" + describe_text(o.thousands_separator()) +
         "\ndate_locale=" + describe_text(o.date_locale()) + "\nfield_widths=" + widths +
         "\nnum_header_lines=" + n(o.num_header_lines()) + "\nnum_variables=" + n(o.num_variables()) +
         "\nvariable_names_line=" + n(o.variable_names_line()) +
         "\nvariable_units_line=" + n(o.variable_units_line()) +
         "\nvariable_descriptions_line=" + n(o.variable_descriptions_line()) +
         "\ndecimal_separator=" + n(o.decimal_separator()) + "\nmissing_rule=" + n(o.missing_rule()) +
         "\nimport_error_rule=" + n(o.import_error_rule()) +
         "\nconsecutive_delim_rule=" + n(o.consecutive_delim_rule()) +
         "\nempty_line_rule=" + n(o.empty_line_rule()) + "\nextra_columns_rule=" + n(o.extra_columns_rule()) +
         "\nleading_delim_rule=" + n(o.leading_delim_rule()) +
         "\ntrailing_delim_rule=" + n(o.trailing_delim_rule()) +
         "\npartial_field_rule=" + n(o.partial_field_rule()) + "\nfile_type=" + n(o.file_type()) +
         "\nparser_type=" + n(o.parser_type()) + "\noutput_type=" + n(o.output_type()) +
         "\ndetecting_delimiter=" + n(o.detecting_delimiter()) +
         "\ndetecting_num_header_lines=" + n(o.detecting_num_header_lines()) +
         "\ndetecting_num_variables=" + n(o.detecting_num_variables()) +
         "\ntrim_non_numeric=" + n(o.trim_non_numeric()) + "\n";
}

// The field that a rule option writes, as a number.
inline int rule_field(const textio::parser::options& o, std::string_view key) {
  if (key == "ConsecutiveDelimitersRule") return static_cast<int>(o.consecutive_delim_rule());
  if (key == "FileType") return static_cast<int>(o.file_type());
  if (key == "LeadingDelimitersRule") return static_cast<int>(o.leading_delim_rule());
  if (key == "TrailingDelimitersRule") return static_cast<int>(o.trailing_delim_rule());
  if (key == "EmptyLineRule") return static_cast<int>(o.empty_line_rule());
  if (key == "OutputBuilderType") return static_cast<int>(o.output_type());
  if (key == "ExtraColumnsRule") return static_cast<int>(o.extra_columns_rule());
  if (key == "ImportErrorRule") return static_cast<int>(o.import_error_rule());
  if (key == "MissingRule") return static_cast<int>(o.missing_rule());
  if (key == "ParserType") return static_cast<int>(o.parser_type());
  if (key == "PartialFieldRule") return static_cast<int>(o.partial_field_rule());
  throw std::invalid_argument("no rule option " + std::string(key));
}

// Writes a rule field directly through the record's accessor.
inline void set_rule_field(textio::parser::options& o, std::string_view key, int position) {
  namespace enums = textio::enums;
  const auto p = static_cast<std::uint8_t>(position);
  if (key == "ConsecutiveDelimitersRule") o.consecutive_delim_rule(enums::ConsecutiveDelimitersRule{p});
  else if (key == "FileType") o.file_type(enums::FileType{p});
  else if (key == "LeadingDelimitersRule") o.leading_delim_rule(enums::LeadingDelimiterRule{p});
  else if (key == "TrailingDelimitersRule") o.trailing_delim_rule(enums::TrailingDelimiterRule{p});
  else if (key == "EmptyLineRule") o.empty_line_rule(enums::EmptyLineRule{p});
  else if (key == "OutputBuilderType") o.output_type(enums::OutputBuilderType{p});
  else if (key == "ExtraColumnsRule") o.extra_columns_rule(enums::ExtraColumnsRule{p});
  else if (key == "ImportErrorRule") o.import_error_rule(enums::BadDataRule{p});
  else if (key == "MissingRule") o.missing_rule(enums::BadDataRule{p});
  else if (key == "ParserType") o.parser_type(enums::ParserType{p});
  else if (key == "PartialFieldRule") o.partial_field_rule(enums::PartialFieldRule{p});
  else throw std::invalid_argument("no rule option " + std::string(key));
}

// set_parser_options with the one pair key, value.
inline void apply_option(textio::parser::options& o, std::string_view key, const hv::Value& value) {
  const auto name = hv::Value::text_utf8(key);
  const hvArray_tag* args[] = {name.get(), value.get()};
  textio::options::set_parser_options(args, 2, o);
}

}  // namespace test_support
