// The option setters, one per key of the option table (ExpChars and
// ExponentCharacter share one, as do EmptyValue and ReturnOnError). They are
// reached only through the table.
#pragma once

#include "parser/options.hpp"
#include "zvarray/hv_array.hpp"

namespace textio::options::setters {

// Counts, line numbers, logicals, widths and the ignored keys.
void num_header_lines(const hvArray_tag* value, textio::parser::options& opts);
void num_variables(const hvArray_tag* value, textio::parser::options& opts);
void data_line(const hvArray_tag* value, textio::parser::options& opts);
void variable_names_line(const hvArray_tag* value, textio::parser::options& opts);
void variable_units_line(const hvArray_tag* value, textio::parser::options& opts);
void variable_descriptions_line(const hvArray_tag* value, textio::parser::options& opts);
void multiple_delims_as_one(const hvArray_tag* value, textio::parser::options& opts);
void trim_non_numeric(const hvArray_tag* value, textio::parser::options& opts);
void variable_widths(const hvArray_tag* value, textio::parser::options& opts);
void ignored_option(const hvArray_tag* value, textio::parser::options& opts);

// Rule options: one text flag out of a fixed list, stored as its position.
void consecutive_delimiters_rule(const hvArray_tag* value, textio::parser::options& opts);
void file_type(const hvArray_tag* value, textio::parser::options& opts);
void leading_delimiters_rule(const hvArray_tag* value, textio::parser::options& opts);
void trailing_delimiters_rule(const hvArray_tag* value, textio::parser::options& opts);
void empty_line_rule(const hvArray_tag* value, textio::parser::options& opts);
void output_builder_type(const hvArray_tag* value, textio::parser::options& opts);
void extra_columns_rule(const hvArray_tag* value, textio::parser::options& opts);
void import_error_rule(const hvArray_tag* value, textio::parser::options& opts);
void missing_rule(const hvArray_tag* value, textio::parser::options& opts);
void parser_type(const hvArray_tag* value, textio::parser::options& opts);
void partial_field_rule(const hvArray_tag* value, textio::parser::options& opts);
// Single texts stored as given (ExpChars also serves ExponentCharacter).
void date_locale(const hvArray_tag* value, textio::parser::options& opts);
void decimal_separator(const hvArray_tag* value, textio::parser::options& opts);
void exp_chars(const hvArray_tag* value, textio::parser::options& opts);
void thousands_separator(const hvArray_tag* value, textio::parser::options& opts);

// Escape-decoded texts: one text for Whitespace, a text or a list for the rest.
void whitespace(const hvArray_tag* value, textio::parser::options& opts);
void delimiter(const hvArray_tag* value, textio::parser::options& opts);
void line_ending(const hvArray_tag* value, textio::parser::options& opts);
void treat_as_missing(const hvArray_tag* value, textio::parser::options& opts);
void comment_style(const hvArray_tag* value, textio::parser::options& opts);

}  // namespace textio::options::setters
