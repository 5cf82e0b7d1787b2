#include "tools/option_keys.hpp"

#include <array>

namespace zvtool {
namespace {

constexpr std::array keys{
    option_key{"Delimiter", "text or list of texts, escapes decoded: field delimiters (turns delimiter detection off)"},
    option_key{"Whitespace", "text, escapes decoded: characters that count as whitespace"},
    option_key{"DateLocale", "text: locale name for dates"},
    option_key{"LineEnding", "text or list of texts, escapes decoded: record terminators"},
    option_key{"NumHeaderLines", "non-negative integer: lines ahead of the data"},
    option_key{"ExpChars", "text: characters that introduce an exponent"},
    option_key{"ExponentCharacter", "text: the same as ExpChars"},
    option_key{"FileType", "text, 'text', 'delimitedtext' or 'fixedwidth' (abbreviations accepted): kind of file"},
    option_key{"NumVariables", "non-negative integer: number of variables"},
    option_key{"ConsecutiveDelimitersRule", "text, 'split', 'join' or 'error' (abbreviations accepted)"},
    option_key{"LeadingDelimitersRule", "text, 'keep', 'ignore' or 'error' (abbreviations accepted)"},
    option_key{"TrailingDelimitersRule", "text, 'keep', 'ignore' or 'error' (abbreviations accepted)"},
    option_key{"EmptyLineRule", "text, 'skip', 'read' or 'error'"},
    option_key{"MissingRule", "text, 'fill', 'omitrow', 'omitvar' or 'error'"},
    option_key{"ImportErrorRule", "text, 'fill', 'omitrow', 'omitvar' or 'error'"},
    option_key{"TreatAsMissing", "text or list of texts, escapes decoded: placeholders of missing values"},
    option_key{"MultipleDelimsAsOne", "true or false: join consecutive delimiters, ignore leading ones"},
    option_key{"CommentStyle", "text or list of at most two texts, escapes decoded: comment markers"},
    option_key{"DataLine", "positive integer: first line of data, counted from 1"},
    option_key{"VariableNamesLine", "non-negative integer: line of the variable names"},
    option_key{"VariableUnitsLine", "non-negative integer: line of the variable units"},
    option_key{"VariableDescriptionsLine", "non-negative integer: line of the variable descriptions"},
    option_key{"ExtraColumnsRule", "text, 'addvars', 'ignore', 'wrap' or 'error'"},
    option_key{"PartialFieldRule", "text, 'keep', 'omitrow', 'omitvar', 'fill', 'wrap' or 'error'"},
    option_key{"VariableWidths", "uint64 array, or double array of non-negative integers: field widths"},
    option_key{"ParserType", "text, 'delimited', 'fixedwidth', 'tabular' or 'line'"},
    option_key{"OutputBuilderType", "text, 'table', 'matrix' or 'cell'"},
    option_key{"EmptyValue", "any value, or none: accepted and ignored"},
    option_key{"ReturnOnError", "any value, or none: accepted and ignored"},
    option_key{"TrimNonNumeric", "true or false: trim non-numeric text"},
    option_key{"DecimalSeparator", "one character: decimal mark"},
    option_key{"ThousandsSeparator", "text: digit-group separator"},
};

}  // namespace

std::span<const option_key> option_keys() { return keys; }

}  // namespace zvtool
