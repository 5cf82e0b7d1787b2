// Field-by-field comparison of two options records, for tests and fuzzers
// that check that a failed call wrote nothing.
#pragma once

#include <string>

#include "parser/options.hpp"

namespace test_support {

// The name of the first field (in declaration order) in which a and b differ,
// or the empty string when all thirty fields are equal.
inline std::string first_difference(const textio::parser::options& a, const textio::parser::options& b) {
#define ZVTP_COMPARE(field) \
  if (!(a.field() == b.field())) return #field;
  // clang-format off
  ZVTP_COMPARE(delimiter) ZVTP_COMPARE(line_ending) ZVTP_COMPARE(missing_placeholders) ZVTP_COMPARE(comment_style)
  ZVTP_COMPARE(whitespace) ZVTP_COMPARE(thousands_separator) ZVTP_COMPARE(date_locale) ZVTP_COMPARE(exp_chars)
  ZVTP_COMPARE(file_type) ZVTP_COMPARE(field_widths) ZVTP_COMPARE(num_header_lines) ZVTP_COMPARE(num_variables)
  ZVTP_COMPARE(variable_names_line) ZVTP_COMPARE(variable_units_line) ZVTP_COMPARE(variable_descriptions_line)
  ZVTP_COMPARE(parser_type) ZVTP_COMPARE(output_type) ZVTP_COMPARE(decimal_separator) ZVTP_COMPARE(missing_rule)
  ZVTP_COMPARE(import_error_rule) ZVTP_COMPARE(consecutive_delim_rule) ZVTP_COMPARE(empty_line_rule)
  ZVTP_COMPARE(extra_columns_rule) ZVTP_COMPARE(leading_delim_rule) ZVTP_COMPARE(trailing_delim_rule)
  ZVTP_COMPARE(partial_field_rule) ZVTP_COMPARE(detecting_delimiter) ZVTP_COMPARE(detecting_num_header_lines)
  ZVTP_COMPARE(detecting_num_variables) ZVTP_COMPARE(trim_non_numeric)
  // clang-format on
#undef ZVTP_COMPARE
                                              return {};
}

}  // namespace test_support
