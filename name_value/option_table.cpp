#include "name_value/option_table.hpp"

#include <locale>

#include "name_value/setters.hpp"
// The text constants are built ahead of the table in this unit.
#include "parser/constants.hpp"

namespace textio::options {

bool option_name_less::operator()(const std::string& a, const std::string& b) const {
  const auto& ctype = std::use_facet<std::ctype<char>>(std::locale());
  const std::size_t common = a.size() < b.size() ? a.size() : b.size();
  for (std::size_t i = 0; i < common; ++i) {
    const auto x = static_cast<signed char>(ctype.toupper(a[i]));
    const auto y = static_cast<signed char>(ctype.toupper(b[i]));
    if (x != y) return x < y;
  }
  return a.size() < b.size();
}

// Rows in their order of insertion.
const option_map option_table{
    {"Delimiter", &setters::delimiter},
    {"Whitespace", &setters::whitespace},
    {"DateLocale", &setters::date_locale},
    {"LineEnding", &setters::line_ending},
    {"NumHeaderLines", &setters::num_header_lines},
    {"ExpChars", &setters::exp_chars},
    {"ExponentCharacter", &setters::exp_chars},
    {"FileType", &setters::file_type},
    {"NumVariables", &setters::num_variables},
    {"ConsecutiveDelimitersRule", &setters::consecutive_delimiters_rule},
    {"LeadingDelimitersRule", &setters::leading_delimiters_rule},
    {"TrailingDelimitersRule", &setters::trailing_delimiters_rule},
    {"EmptyLineRule", &setters::empty_line_rule},
    {"MissingRule", &setters::missing_rule},
    {"ImportErrorRule", &setters::import_error_rule},
    {"TreatAsMissing", &setters::treat_as_missing},
    {"MultipleDelimsAsOne", &setters::multiple_delims_as_one},
    {"CommentStyle", &setters::comment_style},
    {"DataLine", &setters::data_line},
    {"VariableNamesLine", &setters::variable_names_line},
    {"VariableUnitsLine", &setters::variable_units_line},
    {"VariableDescriptionsLine", &setters::variable_descriptions_line},
    {"ExtraColumnsRule", &setters::extra_columns_rule},
    {"PartialFieldRule", &setters::partial_field_rule},
    {"VariableWidths", &setters::variable_widths},
    {"ParserType", &setters::parser_type},
    {"OutputBuilderType", &setters::output_builder_type},
    {"EmptyValue", &setters::ignored_option},
    {"ReturnOnError", &setters::ignored_option},
    {"TrimNonNumeric", &setters::trim_non_numeric},
    {"DecimalSeparator", &setters::decimal_separator},
    {"ThousandsSeparator", &setters::thousands_separator},
};

}  // namespace textio::options
