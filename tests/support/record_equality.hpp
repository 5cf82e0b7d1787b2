// Field-by-field comparison of two options records, for tests and fuzzers
// that check that a failed call wrote nothing.
#pragma once

#include <string>

#include "parser/options.hpp"

namespace test_support {

// The name of the first field (in declaration order) in which a and b differ,
// or the empty string when all thirty fields are equal.
inline std::string first_difference(const textio::parser::options& a, const textio::parser::options& b) {
#define ZVTP_COMPARE_FIELD(field) \
  if (!(a.field() == b.field())) return #field
  ZVTP_COMPARE_FIELD(delimiter);
  ZVTP_COMPARE_FIELD(line_ending);
  ZVTP_COMPARE_FIELD(missing_placeholders);
  ZVTP_COMPARE_FIELD(comment_style);
  ZVTP_COMPARE_FIELD(whitespace);
  ZVTP_COMPARE_FIELD(thousands_separator);
  ZVTP_COMPARE_FIELD(date_locale);
  ZVTP_COMPARE_FIELD(exp_chars);
  ZVTP_COMPARE_FIELD(file_type);
  ZVTP_COMPARE_FIELD(field_widths);
  ZVTP_COMPARE_FIELD(num_header_lines);
  ZVTP_COMPARE_FIELD(num_variables);
  ZVTP_COMPARE_FIELD(variable_names_line);
  ZVTP_COMPARE_FIELD(variable_units_line);
  ZVTP_COMPARE_FIELD(variable_descriptions_line);
  ZVTP_COMPARE_FIELD(parser_type);
  ZVTP_COMPARE_FIELD(output_type);
  ZVTP_COMPARE_FIELD(decimal_separator);
  ZVTP_COMPARE_FIELD(missing_rule);
  ZVTP_COMPARE_FIELD(import_error_rule);
  ZVTP_COMPARE_FIELD(consecutive_delim_rule);
  ZVTP_COMPARE_FIELD(empty_line_rule);
  ZVTP_COMPARE_FIELD(extra_columns_rule);
  ZVTP_COMPARE_FIELD(leading_delim_rule);
  ZVTP_COMPARE_FIELD(trailing_delim_rule);
  ZVTP_COMPARE_FIELD(partial_field_rule);
  ZVTP_COMPARE_FIELD(detecting_delimiter);
  ZVTP_COMPARE_FIELD(detecting_num_header_lines);
  ZVTP_COMPARE_FIELD(detecting_num_variables);
  ZVTP_COMPARE_FIELD(trim_non_numeric);
#undef ZVTP_COMPARE_FIELD
  return {};
}

}  // namespace test_support
