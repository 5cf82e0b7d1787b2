#include "tools/option_keys.hpp"

#include <array>

namespace zvtool {
namespace {

constexpr std::array keys{
    option_key{"NumHeaderLines", "non-negative integer: lines ahead of the data"},
    option_key{"NumVariables", "non-negative integer: number of variables"},
    option_key{"MultipleDelimsAsOne", "true or false: join consecutive delimiters, ignore leading ones"},
    option_key{"DataLine", "positive integer: first line of data, counted from 1"},
    option_key{"VariableNamesLine", "non-negative integer: line of the variable names"},
    option_key{"VariableUnitsLine", "non-negative integer: line of the variable units"},
    option_key{"VariableDescriptionsLine", "non-negative integer: line of the variable descriptions"},
    option_key{"VariableWidths", "uint64 array, or double array of non-negative integers: field widths"},
    option_key{"EmptyValue", "any value, or none: accepted and ignored"},
    option_key{"ReturnOnError", "any value, or none: accepted and ignored"},
    option_key{"TrimNonNumeric", "true or false: trim non-numeric text"},
};

}  // namespace

std::span<const option_key> option_keys() { return keys; }

}  // namespace zvtool
