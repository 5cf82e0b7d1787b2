// textio::parser::options: every setting a text importer must be told about a
// file. A plain value record: accessors store what they are given, unchecked;
// the option setters behind textio::options::set_parser_options do the checks.
//
// Field (default)                       Written by option
// delimiter ({})                        Delimiter; clears detecting_delimiter
// line_ending ({"\r\n", "\n", "\r"})    LineEnding
// missing_placeholders ({})             TreatAsMissing
// comment_style ({})                    CommentStyle
// whitespace (" \b\t")                  Whitespace
// thousands_separator ("")              ThousandsSeparator
// date_locale ("")                      DateLocale
// exp_chars ("eEdD")                    ExpChars, ExponentCharacter
// file_type (Text)                      FileType
// field_widths ({})                     VariableWidths
// num_header_lines (2^64 - 1)           NumHeaderLines, DataLine
// num_variables (0)                     NumVariables
// variable_names_line (0)               VariableNamesLine
// variable_units_line (0)               VariableUnitsLine
// variable_descriptions_line (0)        VariableDescriptionsLine
// parser_type (Delimited)               ParserType
// output_type (Table)                   OutputBuilderType
// decimal_separator ('.')               DecimalSeparator
// missing_rule (Fill)                   MissingRule
// import_error_rule (Fill)              ImportErrorRule
// consecutive_delim_rule (Split)        ConsecutiveDelimitersRule, MultipleDelimsAsOne
// empty_line_rule (Skip)                EmptyLineRule
// extra_columns_rule (AddVars)          ExtraColumnsRule
// leading_delim_rule (Keep)             LeadingDelimitersRule, MultipleDelimsAsOne
// trailing_delim_rule (Keep)            TrailingDelimitersRule
// partial_field_rule (Keep)             PartialFieldRule
// detecting_delimiter (true)            no delimiter given yet
// detecting_num_header_lines (true)     no header-line count given yet
// detecting_num_variables (true)        no variable count given yet
// trim_non_numeric (false)              TrimNonNumeric
#pragma once

#include <cstdint>
#include <vector>

#include <zvtextparser/errors/export.hpp>
#include <zvtextparser/parser/enums.hpp>
#include "zvcore/ustring.hpp"

namespace textio::parser {

// The one shared list of default line endings: "\r\n", "\n", "\r". Built on
// first use and kept until unload.
const std::vector<ustring>& default_line_endings();

class ZVTEXTPARSER_API options {
 public:
  using text_list = std::vector<ustring>;
  using width_list = std::vector<std::uint64_t>;

  options();
  options(const options& other);
  options(options&& other) noexcept;  // lists and strings are taken; the source's are left empty
  options& operator=(const options& other);
  options& operator=(options&& other) noexcept;
  ~options();

  // Text lists. Both setter forms copy; delimiter also clears detecting_delimiter.
  void delimiter(text_list&& value);
  void delimiter(const text_list& value);
  const text_list& delimiter() const;
  void line_ending(text_list&& value);
  void line_ending(const text_list& value);
  const text_list& line_ending() const;
  void missing_placeholders(text_list&& value);
  void missing_placeholders(const text_list& value);
  const text_list& missing_placeholders() const;
  void comment_style(text_list&& value);
  void comment_style(const text_list& value);
  const text_list& comment_style() const;

  // Strings.
  void whitespace(ustring&& value);
  void whitespace(const ustring& value);
  const ustring& whitespace() const;
  void exp_chars(ustring&& value);
  void exp_chars(const ustring& value);
  const ustring& exp_chars() const;
  void thousands_separator(const ustring& value);
  const ustring& thousands_separator() const;
  void date_locale(ustring value);
  const ustring& date_locale() const;

  void field_widths(width_list value);
  const width_list& field_widths() const;

  // Counts and line numbers. num_header_lines also clears its detecting flag;
  // num_variables does not.
  void num_header_lines(std::uint64_t value);
  std::uint64_t num_header_lines() const;
  void num_variables(std::uint64_t value);
  std::uint64_t num_variables() const;
  void variable_names_line(std::uint64_t value);
  std::uint64_t variable_names_line() const;
  void variable_units_line(std::uint64_t value);
  std::uint64_t variable_units_line() const;
  void variable_descriptions_line(std::uint64_t value);
  std::uint64_t variable_descriptions_line() const;

  void decimal_separator(char16_t value);
  char16_t decimal_separator() const;

  // Rules.
  void missing_rule(enums::BadDataRule value);
  enums::BadDataRule missing_rule() const;
  void import_error_rule(enums::BadDataRule value);
  enums::BadDataRule import_error_rule() const;
  void consecutive_delim_rule(enums::ConsecutiveDelimitersRule value);
  enums::ConsecutiveDelimitersRule consecutive_delim_rule() const;
  void empty_line_rule(enums::EmptyLineRule value);
  enums::EmptyLineRule empty_line_rule() const;
  void extra_columns_rule(enums::ExtraColumnsRule value);
  enums::ExtraColumnsRule extra_columns_rule() const;
  void leading_delim_rule(enums::LeadingDelimiterRule value);
  enums::LeadingDelimiterRule leading_delim_rule() const;
  void trailing_delim_rule(enums::TrailingDelimiterRule value);
  enums::TrailingDelimiterRule trailing_delim_rule() const;
  void partial_field_rule(enums::PartialFieldRule value);
  enums::PartialFieldRule partial_field_rule() const;

  // Kinds.
  void file_type(enums::FileType value);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-qualifiers"
  const enums::FileType file_type() const;
#pragma GCC diagnostic pop
  void parser_type(enums::ParserType value);
  enums::ParserType parser_type() const;
  void output_type(enums::OutputBuilderType value);
  enums::OutputBuilderType output_type() const;

  // Booleans.
  void trim_non_numeric(bool value);
  bool trim_non_numeric() const;
  void detecting_num_variables(bool value);
  bool detecting_num_variables() const;

  // Detection flags with no setter of their own, and their resets (which
  // leave the value as it is).
  bool detecting_delimiter() const;
  bool detecting_num_header_lines() const;
  void unset_delimiter();
  void unset_num_header_lines();

 private:
  text_list delimiter_;
  text_list line_ending_;
  text_list missing_placeholders_;
  text_list comment_style_;
  ustring whitespace_;
  ustring thousands_separator_;
  ustring date_locale_;
  ustring exp_chars_;
  enums::FileType file_type_ = enums::FileType::Text;
  width_list field_widths_;
  std::uint64_t num_header_lines_ = UINT64_MAX;
  std::uint64_t num_variables_ = 0;
  std::uint64_t variable_names_line_ = 0;
  std::uint64_t variable_units_line_ = 0;
  std::uint64_t variable_descriptions_line_ = 0;
  enums::ParserType parser_type_ = enums::ParserType::Delimited;
  enums::OutputBuilderType output_type_ = enums::OutputBuilderType::Table;
  char16_t decimal_separator_ = u'.';
  enums::BadDataRule missing_rule_ = enums::BadDataRule::Fill;
  enums::BadDataRule import_error_rule_ = enums::BadDataRule::Fill;
  enums::ConsecutiveDelimitersRule consecutive_delim_rule_ = enums::ConsecutiveDelimitersRule::Split;
  enums::EmptyLineRule empty_line_rule_ = enums::EmptyLineRule::Skip;
  enums::ExtraColumnsRule extra_columns_rule_ = enums::ExtraColumnsRule::AddVars;
  enums::LeadingDelimiterRule leading_delim_rule_ = enums::LeadingDelimiterRule::Keep;
  enums::TrailingDelimiterRule trailing_delim_rule_ = enums::TrailingDelimiterRule::Keep;
  enums::PartialFieldRule partial_field_rule_ = enums::PartialFieldRule::Keep;
  bool detecting_delimiter_ = true;
  bool detecting_num_header_lines_ = true;
  bool detecting_num_variables_ = true;
  bool trim_non_numeric_ = false;
};

}  // namespace textio::parser
