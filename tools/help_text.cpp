#include "tools/help_text.hpp"

#include <algorithm>

#include "tools/option_keys.hpp"

namespace zvtool {
namespace {

constexpr const char* arguments_help = R"(Arguments:
  Everything after the subcommand is positional except the tool's own
  options --struct JSON, --struct=JSON and --help (-h); "--" ends the tool's
  options. So negative numbers such as -1 and -0.0 are values as they stand.
  The positional arguments go to the library in one call, names and values
  alike: an odd number of them reaches the library (which refuses it), and
  none at all is a call with no arguments. With --struct the one argument is
  the struct built from the JSON object; no positional argument may follow.
  For reader, the first positional argument is the reader's kind (line,
  delimited or fixedwidth) and the others are the options. For read, the
  first positional argument is FILE (- for standard input), and --format
  jsonl|csv and --count choose the output; they may stand anywhere after it.

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

constexpr const char* output_help = R"(
Output:
  One JSON object on standard output: {"options": {...}} with the record's
  thirty fields under their own names. Texts are strings of their UTF-16
  units (a lone surrogate as \uXXXX), counts and widths exact integers,
  enumerations by name. When the library refuses an option the object also
  holds "error": {"identifier", "key", "arguments", "message"}, the record
  shows what the call had written before the failure, and the message goes
  to standard error as well.

  reader prints {"options": {...}, "reader": {...}}: "options" exactly as
  the options subcommand prints it for the same options, and the plain
  fields of the reader built from that record. Stop characters are arrays
  of UTF-16 code units as integers (an empty string counts as unit 0):
    line        {"kind": "line", "stop_chars": [10, 13],
                 "reads_empty_lines": false}
    delimited   {"kind": "delimited", "quote": 34, "stop_chars": [10, 13]}
    fixedwidth  {"kind": "fixedwidth", "field_widths": [3, 5, 2],
                 "record_width": 10, "stop_chars": [13, 10, 13]}
  line and delimited hold the first unit of each line ending (delimited:
  and of each delimiter) once, in ascending order; fixedwidth holds the
  first unit of each line ending in list order, repeats kept, and
  record_width is the sum of the widths modulo 2^64. When the library
  refuses an option, reader prints what options prints: no "reader".

Exit status:
  0  success
  1  the library refused an option (message exception)
  2  usage error of the tool (bad JSON after --struct, a malformed typed
     value, an unknown subcommand, a missing or unknown reader kind)
  3  any other failure, with its description on standard error
)";

}  // namespace

std::string option_keys_help() {
  std::size_t width = 0;
  for (const auto& k : option_keys()) width = std::max(width, k.key.size());
  std::string text = "Option keys (case does not matter):\n";
  for (const auto& k : option_keys()) {
    text += "  ";
    text += k.key;
    text.append(width + 2 - k.key.size(), ' ');
    text += k.value_help;
    text += '\n';
  }
  return text;
}

std::string help_footer() { return arguments_help + option_keys_help() + output_help; }

}  // namespace zvtool
