// The option vocabulary: every key, in the option table's order, with its
// setter, the record field it sets to the value given (none for an alias, a
// key that sets fields by a rule of its own, or an ignored key), whether the
// value's escape sequences are decoded, and a one-line description of the
// value it takes; for the eleven rule options also how their flags match,
// the record's member and enumeration they write, and the names of the
// enumerators in number order, which are the flags folded to lower case.
// This one list feeds the option table, the setters' declarations, the rule
// setters and their flag lists, the tool's help and key list, and the tool's
// record as JSON and as the arguments that reproduce it.
//
//   OPTION(Key, setter, field, plain|escaped, description)
//   RULE(Key, setter, match, record_member, Enumeration, description, names...)
//
// The position of a name in its list is the number of the enumerator, so the
// order of each list is a contract with the record's consumers. The four
// options that take abbreviations have flags that all begin with different
// letters.
#pragma once

// clang-format off
#define ZVTP_OPTION_VOCABULARY(OPTION, RULE)                                                                        \
  OPTION(Delimiter, delimiter, delimiter, escaped,                                                                  \
         "text or list of texts, escapes decoded: field delimiters (turns delimiter detection off)")               \
  OPTION(Whitespace, whitespace, whitespace, escaped,                                                               \
         "text, escapes decoded: characters that count as whitespace")                                              \
  OPTION(DateLocale, date_locale, date_locale, plain, "text: locale name for dates")                                \
  OPTION(LineEnding, line_ending, line_ending, escaped,                                                             \
         "text or list of texts, escapes decoded: record terminators")                                              \
  OPTION(NumHeaderLines, num_header_lines, num_header_lines, plain, "non-negative integer: lines ahead of the data") \
  OPTION(ExpChars, exp_chars, exp_chars, plain, "text: characters that introduce an exponent")                      \
  OPTION(ExponentCharacter, exp_chars, none, plain, "text: the same as ExpChars")                                   \
  RULE(FileType, file_type, abbreviated, file_type, FileType, "kind of file",                                      \
       "Text", "DelimitedText", "FixedWidth")                                                                       \
  OPTION(NumVariables, num_variables, num_variables, plain, "non-negative integer: number of variables")            \
  RULE(ConsecutiveDelimitersRule, consecutive_delimiters_rule, abbreviated, consecutive_delim_rule,                 \
       ConsecutiveDelimitersRule, "two delimiters in a row", "Split", "Join", "Error")                              \
  RULE(LeadingDelimitersRule, leading_delimiters_rule, abbreviated, leading_delim_rule, LeadingDelimiterRule,       \
       "a delimiter at the start of a record", "Keep", "Ignore", "Error")                                          \
  RULE(TrailingDelimitersRule, trailing_delimiters_rule, abbreviated, trailing_delim_rule, TrailingDelimiterRule,   \
       "a delimiter at the end of a record", "Keep", "Ignore", "Error")                                            \
  RULE(EmptyLineRule, empty_line_rule, exact, empty_line_rule, EmptyLineRule, "empty lines",                       \
       "Skip", "Read", "Error")                                                                                     \
  RULE(MissingRule, missing_rule, exact, missing_rule, BadDataRule, "missing values",                              \
       "Fill", "OmitRow", "OmitVar", "Error")                                                                       \
  RULE(ImportErrorRule, import_error_rule, exact, import_error_rule, BadDataRule, "values that do not convert",    \
       "Fill", "OmitRow", "OmitVar", "Error")                                                                       \
  OPTION(TreatAsMissing, treat_as_missing, missing_placeholders, escaped,                                           \
         "text or list of texts, escapes decoded: placeholders of missing values")                                 \
  OPTION(MultipleDelimsAsOne, multiple_delims_as_one, none, plain,                                                  \
         "true or false: join consecutive delimiters, ignore leading ones")                                        \
  OPTION(CommentStyle, comment_style, comment_style, escaped,                                                       \
         "text or list of at most two texts, escapes decoded: comment markers")                                    \
  OPTION(DataLine, data_line, none, plain, "positive integer: first line of data, counted from 1")                  \
  OPTION(VariableNamesLine, variable_names_line, variable_names_line, plain,                                        \
         "non-negative integer: line of the variable names")                                                        \
  OPTION(VariableUnitsLine, variable_units_line, variable_units_line, plain,                                        \
         "non-negative integer: line of the variable units")                                                        \
  OPTION(VariableDescriptionsLine, variable_descriptions_line, variable_descriptions_line, plain,                   \
         "non-negative integer: line of the variable descriptions")                                                 \
  RULE(ExtraColumnsRule, extra_columns_rule, exact, extra_columns_rule, ExtraColumnsRule,                           \
       "more fields than variables", "AddVars", "Ignore", "Wrap", "Error")                                          \
  RULE(PartialFieldRule, partial_field_rule, exact, partial_field_rule, PartialFieldRule,                           \
       "a fixed-width record shorter than the widths", "Keep", "OmitRow", "OmitVar", "Fill", "Wrap", "Error")      \
  OPTION(VariableWidths, variable_widths, field_widths, plain,                                                      \
         "uint64 array, or double array of non-negative integers: field widths")                                    \
  RULE(ParserType, parser_type, exact, parser_type, ParserType, "the reader to build",                             \
       "Delimited", "FixedWidth", "Tabular", "Line")                                                                \
  RULE(OutputBuilderType, output_builder_type, exact, output_type, OutputBuilderType, "kind of output",             \
       "Table", "Matrix", "Cell")                                                                                   \
  OPTION(EmptyValue, ignored_option, none, plain, "any value, or none: accepted and ignored")                       \
  OPTION(ReturnOnError, ignored_option, none, plain, "any value, or none: accepted and ignored")                    \
  OPTION(TrimNonNumeric, trim_non_numeric, trim_non_numeric, plain, "true or false: trim non-numeric text")         \
  OPTION(DecimalSeparator, decimal_separator, decimal_separator, plain, "one character: decimal mark")              \
  OPTION(ThousandsSeparator, thousands_separator, thousands_separator, plain, "text: digit-group separator")
// clang-format on

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace textio::options {

enum class flag_match { exact, abbreviated };

namespace detail {

// Names folded to lower case, each ending in a NUL, one after another.
template <std::size_t Size, std::size_t Count>
struct folded_names {
  char text[Size]{};
  std::size_t start[Count]{};
};

template <std::size_t... N>
consteval folded_names<(N + ...), sizeof...(N)> fold_names(const char (&... names)[N]) {
  folded_names<(N + ...), sizeof...(N)> folded;
  std::size_t at = 0;
  std::size_t next = 0;
  const auto add = [&](const char* name, std::size_t size) {
    folded.start[next++] = at;
    for (std::size_t i = 0; i < size; ++i) {
      const char c = name[i];
      folded.text[at++] = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
  };
  (add(names, N), ...);
  return folded;
}

template <std::size_t Size, std::size_t Count>
constexpr std::array<const char*, Count> each_name(const folded_names<Size, Count>& folded) {
  std::array<const char*, Count> names{};
  for (std::size_t i = 0; i < Count; ++i) names[i] = folded.text + folded.start[i];
  return names;
}

}  // namespace detail

// The enumerator names of each rule option, in number order, named after its
// setter.
namespace enumerator_names {
#define ZVTP_IGNORE_OPTION(key, setter, field, text, description)
#define ZVTP_RULE_NAMES(key, setter, match, member, enumeration, description, ...) \
  inline constexpr std::array setter{__VA_ARGS__};
ZVTP_OPTION_VOCABULARY(ZVTP_IGNORE_OPTION, ZVTP_RULE_NAMES)
#undef ZVTP_RULE_NAMES
}  // namespace enumerator_names

// The flags of each rule option: its enumerator names in lower case.
namespace rule_flags {
namespace folded {
#define ZVTP_RULE_FOLDED(key, setter, match, member, enumeration, description, ...) \
  inline constexpr auto setter = detail::fold_names(__VA_ARGS__);
ZVTP_OPTION_VOCABULARY(ZVTP_IGNORE_OPTION, ZVTP_RULE_FOLDED)
#undef ZVTP_RULE_FOLDED
}  // namespace folded
#define ZVTP_RULE_FLAGS(key, setter, match, member, enumeration, description, ...) \
  inline constexpr std::array setter = detail::each_name(folded::setter);
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
#define ZVTP_DESCRIBE_OPTION(key, setter, field, text, description) option_description{#key, description},
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
};

// How a field's value is given back to its key: as it stands, with its
// backslashes escaped (the key decodes escape sequences), or by the name of
// its enumerator.
enum class field_text { plain, escaped, enumerator };

// A field of the options record and the key that sets it to the value given;
// for an enumeration also the enumerator names in number order.
struct field_key {
  std::string_view field;
  std::string_view key;
  field_text text = field_text::plain;
  std::span<const char* const> names = {};
};

namespace detail {

inline constexpr field_key every_key[] = {
#define ZVTP_FIELD_OPTION(key, setter, field, text, description) field_key{#field, #key, field_text::text},
#define ZVTP_FIELD_RULE(key, setter, match, member, enumeration, description, ...) \
  field_key{#member, #key, field_text::enumerator, enumerator_names::setter},
    ZVTP_OPTION_VOCABULARY(ZVTP_FIELD_OPTION, ZVTP_FIELD_RULE)
#undef ZVTP_FIELD_OPTION
#undef ZVTP_FIELD_RULE
};

constexpr bool owns_field(const field_key& row) { return row.field != "none"; }

}  // namespace detail

#undef ZVTP_IGNORE_OPTION

// Every field that a key sets to the value given, in the vocabulary's order,
// with that key.
inline constexpr auto field_keys = [] {
  std::array<field_key, std::ranges::count_if(detail::every_key, detail::owns_field)> rows{};
  std::ranges::copy_if(detail::every_key, rows.begin(), detail::owns_field);
  return rows;
}();

// The row of a record field, or nullptr when no key sets it.
constexpr const field_key* key_of_field(std::string_view field) {
  const auto* row = std::ranges::find(field_keys, field, &field_key::field);
  return row == field_keys.end() ? nullptr : row;
}

}  // namespace textio::options
