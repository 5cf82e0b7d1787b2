// The option vocabulary: every key, in the option table's order, with its
// setter and a one-line description of the value it takes; for the eleven
// rule options also how their flags match, the record's member and
// enumeration they write, and the flags in position order. This one list
// feeds the option table, the setters' declarations, the rule setters and
// their flag lists, and the tool's help and key list.
//
//   OPTION(Key, setter, description)
//   RULE(Key, setter, match, record_member, Enumeration, description, flags...)
//
// The position of a flag in its list is the number of the enumerator that it
// stores, so the order of each list is a contract with the record's
// consumers. The four options that take abbreviations have flags that all
// begin with different letters.
#pragma once

// clang-format off
#define ZVTP_OPTION_VOCABULARY(OPTION, RULE)                                                                        \
  OPTION(Delimiter, delimiter,                                                                                      \
         "text or list of texts, escapes decoded: field delimiters (turns delimiter detection off)")               \
  OPTION(Whitespace, whitespace, "text, escapes decoded: characters that count as whitespace")                      \
  OPTION(DateLocale, date_locale, "text: locale name for dates")                                                    \
  OPTION(LineEnding, line_ending, "text or list of texts, escapes decoded: record terminators")                    \
  OPTION(NumHeaderLines, num_header_lines, "non-negative integer: lines ahead of the data")                         \
  OPTION(ExpChars, exp_chars, "text: characters that introduce an exponent")                                        \
  OPTION(ExponentCharacter, exp_chars, "text: the same as ExpChars")                                                \
  RULE(FileType, file_type, abbreviated, file_type, FileType, "kind of file",                                      \
       "text", "delimitedtext", "fixedwidth")                                                                       \
  OPTION(NumVariables, num_variables, "non-negative integer: number of variables")                                  \
  RULE(ConsecutiveDelimitersRule, consecutive_delimiters_rule, abbreviated, consecutive_delim_rule,                 \
       ConsecutiveDelimitersRule, "two delimiters in a row", "split", "join", "error")                              \
  RULE(LeadingDelimitersRule, leading_delimiters_rule, abbreviated, leading_delim_rule, LeadingDelimiterRule,       \
       "a delimiter at the start of a record", "keep", "ignore", "error")                                          \
  RULE(TrailingDelimitersRule, trailing_delimiters_rule, abbreviated, trailing_delim_rule, TrailingDelimiterRule,   \
       "a delimiter at the end of a record", "keep", "ignore", "error")                                            \
  RULE(EmptyLineRule, empty_line_rule, exact, empty_line_rule, EmptyLineRule, "empty lines",                       \
       "skip", "read", "error")                                                                                     \
  RULE(MissingRule, missing_rule, exact, missing_rule, BadDataRule, "missing values",                              \
       "fill", "omitrow", "omitvar", "error")                                                                       \
  RULE(ImportErrorRule, import_error_rule, exact, import_error_rule, BadDataRule, "values that do not convert",    \
       "fill", "omitrow", "omitvar", "error")                                                                       \
  OPTION(TreatAsMissing, treat_as_missing,                                                                          \
         "text or list of texts, escapes decoded: placeholders of missing values")                                 \
  OPTION(MultipleDelimsAsOne, multiple_delims_as_one,                                                               \
         "true or false: join consecutive delimiters, ignore leading ones")                                        \
  OPTION(CommentStyle, comment_style, "text or list of at most two texts, escapes decoded: comment markers")       \
  OPTION(DataLine, data_line, "positive integer: first line of data, counted from 1")                               \
  OPTION(VariableNamesLine, variable_names_line, "non-negative integer: line of the variable names")                \
  OPTION(VariableUnitsLine, variable_units_line, "non-negative integer: line of the variable units")                \
  OPTION(VariableDescriptionsLine, variable_descriptions_line,                                                      \
         "non-negative integer: line of the variable descriptions")                                                 \
  RULE(ExtraColumnsRule, extra_columns_rule, exact, extra_columns_rule, ExtraColumnsRule,                           \
       "more fields than variables", "addvars", "ignore", "wrap", "error")                                          \
  RULE(PartialFieldRule, partial_field_rule, exact, partial_field_rule, PartialFieldRule,                           \
       "a fixed-width record shorter than the widths", "keep", "omitrow", "omitvar", "fill", "wrap", "error")      \
  OPTION(VariableWidths, variable_widths, "uint64 array, or double array of non-negative integers: field widths")  \
  RULE(ParserType, parser_type, exact, parser_type, ParserType, "the reader to build",                             \
       "delimited", "fixedwidth", "tabular", "line")                                                                \
  RULE(OutputBuilderType, output_builder_type, exact, output_type, OutputBuilderType, "kind of output",             \
       "table", "matrix", "cell")                                                                                   \
  OPTION(EmptyValue, ignored_option, "any value, or none: accepted and ignored")                                    \
  OPTION(ReturnOnError, ignored_option, "any value, or none: accepted and ignored")                                 \
  OPTION(TrimNonNumeric, trim_non_numeric, "true or false: trim non-numeric text")                                  \
  OPTION(DecimalSeparator, decimal_separator, "one character: decimal mark")                                        \
  OPTION(ThousandsSeparator, thousands_separator, "text: digit-group separator")
// clang-format on

#include <array>
#include <span>
#include <string_view>

namespace textio::options {

enum class flag_match { exact, abbreviated };

// The flags of each rule option, in position order, named after its setter.
namespace rule_flags {
#define ZVTP_IGNORE_OPTION(key, setter, description)
#define ZVTP_RULE_FLAGS(key, setter, match, member, enumeration, description, ...) \
  inline constexpr std::array setter{__VA_ARGS__};
ZVTP_OPTION_VOCABULARY(ZVTP_IGNORE_OPTION, ZVTP_RULE_FLAGS)
#undef ZVTP_RULE_FLAGS
}  // namespace rule_flags

// One key as a user sees it: what its value must be and, for a rule option,
// its flags in position order and how they match. For help texts.
struct option_description {
  std::string_view key;
  std::string_view description;
  std::span<const char* const> flags = {};
  flag_match match = flag_match::exact;
};

inline constexpr std::array option_descriptions{
#define ZVTP_DESCRIBE_OPTION(key, setter, description) option_description{#key, description},
#define ZVTP_DESCRIBE_RULE(key, setter, match, member, enumeration, description, ...) \
  option_description{#key, description, rule_flags::setter, flag_match::match},
    ZVTP_OPTION_VOCABULARY(ZVTP_DESCRIBE_OPTION, ZVTP_DESCRIBE_RULE)
#undef ZVTP_DESCRIBE_OPTION
#undef ZVTP_DESCRIBE_RULE
};

// The eleven rule options: key, how the flags match, the flags. For checks of
// the setters.
struct rule_option_flags {
  const char* key;
  flag_match match;
  std::span<const char* const> flags;
};

inline constexpr std::array rule_options{
#define ZVTP_RULE_ROW(key, setter, match, member, enumeration, description, ...) \
  rule_option_flags{#key, flag_match::match, rule_flags::setter},
    ZVTP_OPTION_VOCABULARY(ZVTP_IGNORE_OPTION, ZVTP_RULE_ROW)
#undef ZVTP_RULE_ROW
#undef ZVTP_IGNORE_OPTION
};

}  // namespace textio::options
