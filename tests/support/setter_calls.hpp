// Calling one option through the entry point, and comparing whole records so
// that a test can show a failed setter wrote nothing.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "name_value/set_parser_options.hpp"
#include "parser/options.hpp"
#include "zvarray/value.hpp"

namespace test_support {

// set_parser_options with the one pair (key, value).
inline void apply_option(textio::parser::options& opts, const std::string& key, const hv::Value& value) {
  const hv::Value name = hv::Value::text_utf8(key);
  const hvArray_tag* const args[] = {name.get(), value.get()};
  textio::options::set_parser_options(args, 2, opts);
}

// Passes when every field and flag of the two records is equal; names the
// fields that differ otherwise.
inline ::testing::AssertionResult same_record(const textio::parser::options& a, const textio::parser::options& b) {
  std::string differ;
#define ZVTP_COMPARE_FIELD(field) \
  if (!(a.field() == b.field())) differ += " " #field;
  ZVTP_COMPARE_FIELD(delimiter)
  ZVTP_COMPARE_FIELD(line_ending)
  ZVTP_COMPARE_FIELD(missing_placeholders)
  ZVTP_COMPARE_FIELD(comment_style)
  ZVTP_COMPARE_FIELD(whitespace)
  ZVTP_COMPARE_FIELD(exp_chars)
  ZVTP_COMPARE_FIELD(thousands_separator)
  ZVTP_COMPARE_FIELD(date_locale)
  ZVTP_COMPARE_FIELD(field_widths)
  ZVTP_COMPARE_FIELD(num_header_lines)
  ZVTP_COMPARE_FIELD(num_variables)
  ZVTP_COMPARE_FIELD(variable_names_line)
  ZVTP_COMPARE_FIELD(variable_units_line)
  ZVTP_COMPARE_FIELD(variable_descriptions_line)
  ZVTP_COMPARE_FIELD(decimal_separator)
  ZVTP_COMPARE_FIELD(missing_rule)
  ZVTP_COMPARE_FIELD(import_error_rule)
  ZVTP_COMPARE_FIELD(consecutive_delim_rule)
  ZVTP_COMPARE_FIELD(empty_line_rule)
  ZVTP_COMPARE_FIELD(extra_columns_rule)
  ZVTP_COMPARE_FIELD(leading_delim_rule)
  ZVTP_COMPARE_FIELD(trailing_delim_rule)
  ZVTP_COMPARE_FIELD(partial_field_rule)
  ZVTP_COMPARE_FIELD(file_type)
  ZVTP_COMPARE_FIELD(parser_type)
  ZVTP_COMPARE_FIELD(output_type)
  ZVTP_COMPARE_FIELD(trim_non_numeric)
  ZVTP_COMPARE_FIELD(detecting_delimiter)
  ZVTP_COMPARE_FIELD(detecting_num_header_lines)
  ZVTP_COMPARE_FIELD(detecting_num_variables)
#undef ZVTP_COMPARE_FIELD
  if (differ.empty()) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "records differ in:" << differ;
}

}  // namespace test_support
