#include "parser/options.hpp"

#include <utility>

#include "parser/constants.hpp"

namespace textio::parser {

const std::vector<ustring>& default_line_endings() {
  static const std::vector<ustring> endings{u"\r\n", u"\n", u"\r"};
  return endings;
}

options::options()
    : line_ending_(default_line_endings()), whitespace_(default_whitespace), exp_chars_(default_exp_chars) {}

options::options(const options& other) = default;
options& options::operator=(const options& other) = default;

// A move takes the lists and strings and leaves the source's empty, which the
// record promises and the standard does not (a moved-from string, and a
// vector moved-assigned from, are only "valid but unspecified"). Member by
// member in declaration order; the other fields are copied.
options::options(options&& other) noexcept
    : delimiter_(std::exchange(other.delimiter_, {})),
      line_ending_(std::exchange(other.line_ending_, {})),
      missing_placeholders_(std::exchange(other.missing_placeholders_, {})),
      comment_style_(std::exchange(other.comment_style_, {})),
      whitespace_(std::exchange(other.whitespace_, {})),
      thousands_separator_(std::exchange(other.thousands_separator_, {})),
      date_locale_(std::exchange(other.date_locale_, {})),
      exp_chars_(std::exchange(other.exp_chars_, {})),
      file_type_(other.file_type_),
      field_widths_(std::exchange(other.field_widths_, {})),
      num_header_lines_(other.num_header_lines_),
      num_variables_(other.num_variables_),
      variable_names_line_(other.variable_names_line_),
      variable_units_line_(other.variable_units_line_),
      variable_descriptions_line_(other.variable_descriptions_line_),
      parser_type_(other.parser_type_),
      output_type_(other.output_type_),
      decimal_separator_(other.decimal_separator_),
      missing_rule_(other.missing_rule_),
      import_error_rule_(other.import_error_rule_),
      consecutive_delim_rule_(other.consecutive_delim_rule_),
      empty_line_rule_(other.empty_line_rule_),
      extra_columns_rule_(other.extra_columns_rule_),
      leading_delim_rule_(other.leading_delim_rule_),
      trailing_delim_rule_(other.trailing_delim_rule_),
      partial_field_rule_(other.partial_field_rule_),
      detecting_delimiter_(other.detecting_delimiter_),
      detecting_num_header_lines_(other.detecting_num_header_lines_),
      detecting_num_variables_(other.detecting_num_variables_),
      trim_non_numeric_(other.trim_non_numeric_) {}

options& options::operator=(options&& other) noexcept {
  if (this == &other) return *this;  // a self-move would otherwise empty the lists
  delimiter_ = std::exchange(other.delimiter_, {});
  line_ending_ = std::exchange(other.line_ending_, {});
  missing_placeholders_ = std::exchange(other.missing_placeholders_, {});
  comment_style_ = std::exchange(other.comment_style_, {});
  whitespace_ = std::exchange(other.whitespace_, {});
  thousands_separator_ = std::exchange(other.thousands_separator_, {});
  date_locale_ = std::exchange(other.date_locale_, {});
  exp_chars_ = std::exchange(other.exp_chars_, {});
  file_type_ = other.file_type_;
  field_widths_ = std::exchange(other.field_widths_, {});
  num_header_lines_ = other.num_header_lines_;
  num_variables_ = other.num_variables_;
  variable_names_line_ = other.variable_names_line_;
  variable_units_line_ = other.variable_units_line_;
  variable_descriptions_line_ = other.variable_descriptions_line_;
  parser_type_ = other.parser_type_;
  output_type_ = other.output_type_;
  decimal_separator_ = other.decimal_separator_;
  missing_rule_ = other.missing_rule_;
  import_error_rule_ = other.import_error_rule_;
  consecutive_delim_rule_ = other.consecutive_delim_rule_;
  empty_line_rule_ = other.empty_line_rule_;
  extra_columns_rule_ = other.extra_columns_rule_;
  leading_delim_rule_ = other.leading_delim_rule_;
  trailing_delim_rule_ = other.trailing_delim_rule_;
  partial_field_rule_ = other.partial_field_rule_;
  detecting_delimiter_ = other.detecting_delimiter_;
  detecting_num_header_lines_ = other.detecting_num_header_lines_;
  detecting_num_variables_ = other.detecting_num_variables_;
  trim_non_numeric_ = other.trim_non_numeric_;
  return *this;
}

options::~options() = default;

// Text lists. The rvalue forms copy, exactly as the const-reference forms.
void options::delimiter(text_list&& value) { delimiter(static_cast<const text_list&>(value)); }
void options::delimiter(const text_list& value) {
  detecting_delimiter_ = false;
  delimiter_ = value;
}
const options::text_list& options::delimiter() const { return delimiter_; }

void options::line_ending(text_list&& value) { line_ending_ = static_cast<const text_list&>(value); }
void options::line_ending(const text_list& value) { line_ending_ = value; }
const options::text_list& options::line_ending() const { return line_ending_; }

void options::missing_placeholders(text_list&& value) { missing_placeholders_ = static_cast<const text_list&>(value); }
void options::missing_placeholders(const text_list& value) { missing_placeholders_ = value; }
const options::text_list& options::missing_placeholders() const { return missing_placeholders_; }

void options::comment_style(text_list&& value) { comment_style_ = static_cast<const text_list&>(value); }
void options::comment_style(const text_list& value) { comment_style_ = value; }
const options::text_list& options::comment_style() const { return comment_style_; }

void options::whitespace(ustring&& value) { whitespace_ = static_cast<const ustring&>(value); }
void options::whitespace(const ustring& value) { whitespace_ = value; }
const ustring& options::whitespace() const { return whitespace_; }

void options::exp_chars(ustring&& value) { exp_chars_ = static_cast<const ustring&>(value); }
void options::exp_chars(const ustring& value) { exp_chars_ = value; }
const ustring& options::exp_chars() const { return exp_chars_; }

void options::thousands_separator(const ustring& value) { thousands_separator_ = value; }
const ustring& options::thousands_separator() const { return thousands_separator_; }

void options::date_locale(ustring value) { date_locale_ = std::move(value); }
const ustring& options::date_locale() const { return date_locale_; }

void options::field_widths(width_list value) { field_widths_ = std::move(value); }
const options::width_list& options::field_widths() const { return field_widths_; }

void options::num_header_lines(std::uint64_t value) {
  detecting_num_header_lines_ = false;
  num_header_lines_ = value;
}
std::uint64_t options::num_header_lines() const { return num_header_lines_; }
void options::num_variables(std::uint64_t value) { num_variables_ = value; }
std::uint64_t options::num_variables() const { return num_variables_; }
void options::variable_names_line(std::uint64_t value) { variable_names_line_ = value; }
std::uint64_t options::variable_names_line() const { return variable_names_line_; }
void options::variable_units_line(std::uint64_t value) { variable_units_line_ = value; }
std::uint64_t options::variable_units_line() const { return variable_units_line_; }
void options::variable_descriptions_line(std::uint64_t value) { variable_descriptions_line_ = value; }
std::uint64_t options::variable_descriptions_line() const { return variable_descriptions_line_; }

void options::decimal_separator(char16_t value) { decimal_separator_ = value; }
char16_t options::decimal_separator() const { return decimal_separator_; }

void options::missing_rule(enums::BadDataRule value) { missing_rule_ = value; }
enums::BadDataRule options::missing_rule() const { return missing_rule_; }
void options::import_error_rule(enums::BadDataRule value) { import_error_rule_ = value; }
enums::BadDataRule options::import_error_rule() const { return import_error_rule_; }
void options::consecutive_delim_rule(enums::ConsecutiveDelimitersRule value) { consecutive_delim_rule_ = value; }
enums::ConsecutiveDelimitersRule options::consecutive_delim_rule() const { return consecutive_delim_rule_; }
void options::empty_line_rule(enums::EmptyLineRule value) { empty_line_rule_ = value; }
enums::EmptyLineRule options::empty_line_rule() const { return empty_line_rule_; }
void options::extra_columns_rule(enums::ExtraColumnsRule value) { extra_columns_rule_ = value; }
enums::ExtraColumnsRule options::extra_columns_rule() const { return extra_columns_rule_; }
void options::leading_delim_rule(enums::LeadingDelimiterRule value) { leading_delim_rule_ = value; }
enums::LeadingDelimiterRule options::leading_delim_rule() const { return leading_delim_rule_; }
void options::trailing_delim_rule(enums::TrailingDelimiterRule value) { trailing_delim_rule_ = value; }
enums::TrailingDelimiterRule options::trailing_delim_rule() const { return trailing_delim_rule_; }
void options::partial_field_rule(enums::PartialFieldRule value) { partial_field_rule_ = value; }
enums::PartialFieldRule options::partial_field_rule() const { return partial_field_rule_; }

void options::file_type(enums::FileType value) { file_type_ = value; }
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-qualifiers"
const enums::FileType options::file_type() const { return file_type_; }
#pragma GCC diagnostic pop
void options::parser_type(enums::ParserType value) { parser_type_ = value; }
enums::ParserType options::parser_type() const { return parser_type_; }
void options::output_type(enums::OutputBuilderType value) { output_type_ = value; }
enums::OutputBuilderType options::output_type() const { return output_type_; }

void options::trim_non_numeric(bool value) { trim_non_numeric_ = value; }
bool options::trim_non_numeric() const { return trim_non_numeric_; }
void options::detecting_num_variables(bool value) { detecting_num_variables_ = value; }
bool options::detecting_num_variables() const { return detecting_num_variables_; }

bool options::detecting_delimiter() const { return detecting_delimiter_; }
bool options::detecting_num_header_lines() const { return detecting_num_header_lines_; }
void options::unset_delimiter() { detecting_delimiter_ = true; }
void options::unset_num_header_lines() { detecting_num_header_lines_ = true; }

}  // namespace textio::parser
