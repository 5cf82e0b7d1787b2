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
    {"NumVariables", &setters::num_variables},
    {"TreatAsMissing", &setters::treat_as_missing},
    {"MultipleDelimsAsOne", &setters::multiple_delims_as_one},
    {"CommentStyle", &setters::comment_style},
    {"DataLine", &setters::data_line},
    {"VariableNamesLine", &setters::variable_names_line},
    {"VariableUnitsLine", &setters::variable_units_line},
    {"VariableDescriptionsLine", &setters::variable_descriptions_line},
    {"VariableWidths", &setters::variable_widths},
    {"EmptyValue", &setters::ignored_option},
    {"ReturnOnError", &setters::ignored_option},
    {"TrimNonNumeric", &setters::trim_non_numeric},
    {"DecimalSeparator", &setters::decimal_separator},
    {"ThousandsSeparator", &setters::thousands_separator},
};

}  // namespace textio::options
