// The text flags of the eleven rule options. The position of a flag in its
// list is the number of the enumerator that it stores, so the order of each
// list is a contract with the record's consumers. The four options that take
// abbreviations have flags that all begin with different letters.
#pragma once

#include <array>
#include <span>

namespace textio::options {

enum class flag_match { exact, abbreviated };

namespace rule_flags {

inline constexpr std::array consecutive_delimiters_rule{"split", "join", "error"};
inline constexpr std::array file_type{"text", "delimitedtext", "fixedwidth"};
inline constexpr std::array leading_delimiters_rule{"keep", "ignore", "error"};
inline constexpr std::array trailing_delimiters_rule{"keep", "ignore", "error"};
inline constexpr std::array empty_line_rule{"skip", "read", "error"};
inline constexpr std::array output_builder_type{"table", "matrix", "cell"};
inline constexpr std::array extra_columns_rule{"addvars", "ignore", "wrap", "error"};
inline constexpr std::array bad_data_rule{"fill", "omitrow", "omitvar", "error"};  // MissingRule, ImportErrorRule
inline constexpr std::array parser_type{"delimited", "fixedwidth", "tabular", "line"};
inline constexpr std::array partial_field_rule{"keep", "omitrow", "omitvar", "fill", "wrap", "error"};

}  // namespace rule_flags

// One rule option as a user sees it: its key, how its flags match, and its
// flags in position order. For help texts and for checks of the setters.
struct rule_option_flags {
  const char* key;
  flag_match match;
  std::span<const char* const> flags;
};

inline constexpr std::array<rule_option_flags, 11> rule_options{{
    {"ConsecutiveDelimitersRule", flag_match::abbreviated, rule_flags::consecutive_delimiters_rule},
    {"FileType", flag_match::abbreviated, rule_flags::file_type},
    {"LeadingDelimitersRule", flag_match::abbreviated, rule_flags::leading_delimiters_rule},
    {"TrailingDelimitersRule", flag_match::abbreviated, rule_flags::trailing_delimiters_rule},
    {"EmptyLineRule", flag_match::exact, rule_flags::empty_line_rule},
    {"OutputBuilderType", flag_match::exact, rule_flags::output_builder_type},
    {"ExtraColumnsRule", flag_match::exact, rule_flags::extra_columns_rule},
    {"ImportErrorRule", flag_match::exact, rule_flags::bad_data_rule},
    {"MissingRule", flag_match::exact, rule_flags::bad_data_rule},
    {"ParserType", flag_match::exact, rule_flags::parser_type},
    {"PartialFieldRule", flag_match::exact, rule_flags::partial_field_rule},
}};

}  // namespace textio::options
