#include "tools/help_text.hpp"

#include <algorithm>

#include "name_value/option_vocabulary.hpp"

namespace zvtool {
namespace {

constexpr const char* values_text = R"(Arguments:
  The NAME VALUE arguments go to the library in one call, names and values
  alike: an odd number of them reaches the library (which refuses it), and
  none at all is a call with no arguments. With --struct JSON the one
  argument is the struct built from the object; no NAME VALUE may follow.

Values:
  A NAME is text. A VALUE is read as JSON when it parses as JSON, and
  otherwise as text (so abc and "abc" are the same 1-by-3 char array).
    "text"               1-by-N char array of the UTF-16 units ("" is 0-by-0)
    3, -1, 2.5, -0.0     1-by-1 double; the sign of zero is kept
    true, false          1-by-1 logical
    null                 no value (a null pointer)
    [1, 2, 3]            1-by-N double; [] is a 0-by-0 double
    ["a", 1, null]       1-by-N cell of the elements, each mapped as here
    {"a": 1, "b": "x"}   1-by-1 struct, fields in the order written
  Typed values may stand wherever a value can, inside cells and structs too:
    {"$class": CLASS, "$size": [d1, d2, ...], "$data": [...]}
  CLASS is one of cell, struct, logical, char, double, single, int8, uint8,
  int16, uint16, int32, uint32, int64, uint64. $size has at least two entries;
  $data holds exactly as many elements as their product, in column-major
  order, and may be left out when that is 0.
    char                 $data a string, or a list of code units (0 to 65535)
    logical              $data true and false
    double, single       numbers, or the strings "NaN", "Inf" and "-Inf"
    int8 ... uint64      integers within the class's range
    cell                 any values, mapped as above (null: an empty slot)
    struct               $data a list of objects, one per element; the
                         optional "$fields": ["a", "b"] names the fields
                         (else the first element's keys, in order), and a
                         field that an element leaves out holds no value
  A malformed typed value is an error of the tool, never text.

Examples:
  zvtextparser options DataLine 3 NumVariables 0 MultipleDelimsAsOne true
  zvtextparser options NumHeaderLines -0.0
  zvtextparser options --struct '{"NumHeaderLines": 2, "TrimNonNumeric": true}'
  zvtextparser options VariableWidths \
      '{"$class": "uint64", "$size": [1, 2], "$data": [4, 18446744073709551615]}'
  zvtextparser options NumVariables '{"$class": "int32", "$size": [1, 1], "$data": [3]}'
  zvtextparser reader line EmptyLineRule read
  zvtextparser reader delimited Delimiter '[",", "\t"]'
  zvtextparser reader fixedwidth --struct '{"VariableWidths": [3, 5, 2]}'
)";

}  // namespace

std::string option_value_help(const textio::options::option_description& option) {
  if (option.flags.empty()) return std::string(option.description);
  std::string text = "text, ";
  for (std::size_t i = 0; i < option.flags.size(); ++i) {
    if (i > 0) text += i + 1 == option.flags.size() ? " or " : ", ";
    text += "'" + std::string(option.flags[i]) + "'";
  }
  if (option.match == textio::options::flag_match::abbreviated) text += " (abbreviations accepted)";
  return text + ": " + std::string(option.description);
}

std::string option_keys_help() {
  std::size_t width = 0;
  for (const auto& option : textio::options::option_descriptions) width = std::max(width, option.key.size());
  std::string text = "Option keys (case does not matter):\n";
  for (const auto& option : textio::options::option_descriptions) {
    text += "  " + std::string(option.key) + std::string(width + 2 - option.key.size(), ' ') +
            option_value_help(option) + "\n";
  }
  return text;
}

std::string values_help() { return values_text; }

}  // namespace zvtool
