#include "tools/subcommands.hpp"

#include <array>
#include <stdexcept>

#include "tools/detect_command.hpp"
#include "tools/help_text.hpp"
#include "tools/options_command.hpp"
#include "tools/read_command.hpp"
#include "tools/reader_command.hpp"
#include "tools/reading_choices.hpp"
#include "tools/show_command.hpp"
#include "tools/usage_error.hpp"

namespace zvtool {
namespace {

constexpr tool_option struct_option{"--struct", "JSON",
                                    "a JSON object whose fields are the options (the call's one argument)"};

constexpr std::array options_options{struct_option};
constexpr std::array reader_options{struct_option};
constexpr std::array read_options{
    struct_option,
    tool_option{"--format", "FORMAT", "jsonl (the default), csv or tsv"},
    tool_option{"--output", "FILE", "write to FILE (whole or not at all: renamed into place when complete)", "-o"},
    tool_option{"--objects", "", "with jsonl: one JSON object per record, keyed by the variables' names"},
    tool_option{"--rows", "N", "only the first N records (after --skip-rows); reading stops there"},
    tool_option{"--skip-rows", "N", "leave out the first N records after the header"},
    tool_option{"--select", "NAMES", "only these variables, in this order: names or positions from 1, a,b,3"},
    tool_option{"--count", "", "print only {\"records\": N, \"fields\": M}"},
    tool_option{"--canonical", "", "write typed values in canonical form (1.5, 2018-01-28) instead of as read"},
    tool_option{"--types", "JSON",
                "types by position [\"double\", \"auto\"] or by name {\"when\": \"datetime\"}; auto: detect"},
    tool_option{"--max-memory", "SIZE", "fail with a reading error beyond SIZE (K, M, G; default: half the RAM)"},
    tool_option{"--strict", "",
                "exit 4 when lines were left after the table's end or a value does not convert to its variable's "
                "type, 5 when FILE changed while it was read (a warning is printed in any case)"},
    tool_option{"--no-detect", "", "read with the options as they stand; detect nothing"},
    encoding_option,
    quote_option,
    escape_option,
    tool_option{"--verbose", "", "print what was detected to standard error"},
    tool_option{"--all-lines", "", "read on past the detected end of the table"},
    tool_option{"--table-end", "LINE", "stop before this line (1-based), as detect's arguments give it"},
    tool_option{"--table-may-end", "LINE",
                "from this line on read only records with the table's field count, as detect's arguments give it"},
    tool_option{"--variable-names", "JSON", "a JSON array of the variables' names, as detect's arguments give it"},
    tool_option{"--exact-scan", "", "read every record with the exact scanner (slower, the same output; to compare)"},
    tool_option{"--threads", "N", "read a large file with N threads (default: every core); the same output"},
};
constexpr std::array detect_options{struct_option, encoding_option, quote_option, escape_option};
constexpr std::array show_options{
    struct_option,
    tool_option{"--rows", "N", "show the first N records (default 20)"},
    tool_option{"--types", "JSON", "types by position or by name, as read takes them"},
    tool_option{"--no-detect", "", "read with the options as they stand; detect nothing"},
    encoding_option,
    quote_option,
    escape_option,
};
constexpr std::array<tool_option, 0> help_options{};

constexpr std::string_view options_details = R"(Output: one JSON object, {"options": {...}}, the record's thirty fields
under their own names: texts as strings of their UTF-16 units, counts and
widths as exact integers, enumerations by name. When the library refuses an
option the object also holds "error": {"identifier", "key", "arguments",
"message"}, the record shows what the call had written before the failure,
and the message goes to standard error as well.
)";

constexpr std::string_view reader_details = R"(Output: {"options": {...}, "reader": {...}}, "options" as the options
subcommand prints it and the plain fields of the reader built from it. Stop
characters are arrays of UTF-16 code units (an empty string counts as 0):
  line        {"kind": "line", "stop_chars": [10, 13], "reads_empty_lines": false}
  delimited   {"kind": "delimited", "quote": 34, "stop_chars": [10, 13]}
  fixedwidth  {"kind": "fixedwidth", "field_widths": [3, 5, 2],
               "record_width": 10, "stop_chars": [13, 10, 13]}
line and delimited hold the first unit of each line ending (and of each
delimiter) once, ascending; fixedwidth the first unit of each line ending in
list order, and record_width is the sum of the widths modulo 2^64. When the
library refuses an option, reader prints what options prints: no "reader".
)";

constexpr std::string_view read_details =
    R"(Output (jsonl): {"variables": [...], "units": [...], "descriptions": [...]},
with OutputBuilderType table also "types": [...] (detected from the first
records, or as --types gives them), then one JSON array per record. csv: RFC 4180 with a header row when there
are names. --count: {"records": N, "fields": M} (it overrides --format).
A reading error ends the output after the last good record, with an
{"error": {...}} line in jsonl and count. A refused option prints the
options subcommand's report in jsonl and count, nothing in csv; the message
goes to standard error in every case. In csv a record of one missing value
is an empty line, which reads back only under EmptyLineRule read; a note on
standard error says so when such a record was written. A regular FILE that
changed while it was read gives a warning on standard error (and status 5
with --strict). A failed write ends the tool with status 5, a closed pipe
quietly with status 141. Unless --no-detect is given, what the options
leave open is first detected as the detect subcommand does. Standard error
also says when a detected quote never closed (it is then read as text) and
how many lines were left after the table's end.

Typed values are written as read: in csv each field's text, in jsonl a
number's text when it is a JSON number (else its shortest form) and ISO 8601
datetimes; --canonical writes the canonical forms in both. A value that does
not convert to a detected type is kept as text; to a --types type
ImportErrorRule applies. A note on standard error counts such values per
variable, and --strict makes them a reading error (status 4).
)";

constexpr std::string_view show_details =
    R"(Output: one line of what was detected (encoding, delimiter, header lines,
variables, an estimate of the rows of a regular file, detection's
confidence), then the names, the types and the first rows, aligned: numbers
to the right, text to the left. A long value is cut with "..." so that the
table fits COLUMNS, or 80 columns on a terminal; otherwise values are whole.
Values are shown as read; a missing value is blank.
)";

constexpr std::string_view detect_details =
    R"(Detection looks at the first MiB of FILE and the rest of the line it ends in,
and fills in only what the options leave open. Output: {"options": {...},
"detected": {...}, "arguments": [...]}: "options" as the options subcommand
prints it, after detection; "detected" the encoding, quote (null: none),
escape, variable_names, table_end_line (null: the whole file), confidence
(0 to 1) and a reason per setting it filled; "arguments" what to give
read --no-detect to read FILE the same way. A refused option or a reading
error reports as the options subcommand does.
)";

tool_result run_help(const parsed_arguments& args);

constexpr std::array all_subcommands{
    subcommand{{"options", "Apply options to a default record in one call and print the record as JSON.", "", "",
                options_options, options_details},
               &run_options_command},
    subcommand{{"reader", "Apply options as options does, build the reader of the given kind and print both as JSON.",
                "KIND", "the reader to build: line, delimited or fixedwidth", reader_options, reader_details},
               &run_reader_command},
    subcommand{{"read", "Read FILE with the reader that the options name and print its records.", "FILE",
                "the file to read, or - for standard input", read_options, read_details},
               &run_read_command},
    subcommand{{"show",
                "Print what was detected in FILE and its first rows as an aligned table, with each variable's name "
                "and type.",
                "FILE", "the file to look at, or - for standard input", show_options, show_details},
               &run_show_command},
    subcommand{{"detect", "Apply options as options does, detect what they leave open in FILE and print it as JSON.",
                "FILE", "the file to look at, or - for standard input", detect_options, detect_details},
               &run_detect_command},
    subcommand{{"help",
                "Show the help of a subcommand, the value syntax (values) or the option keys (keys).",
                "TOPIC",
                "a subcommand, values or keys",
                help_options,
                {},
                false,
                false},
               &run_help},
};

tool_result run_help(const parsed_arguments& args) {
  tool_result result;
  if (!args.operand) {
    result.out = tool_help();
  } else if (*args.operand == "values") {
    result.out = values_help();
  } else if (*args.operand == "keys") {
    result.out = option_keys_help();
  } else if (const subcommand* command = find_subcommand(*args.operand)) {
    result.out = subcommand_help(command->grammar);
  } else {
    throw usage_error("unknown help topic '" + *args.operand + "'; the topics are the subcommands, values and keys");
  }
  return result;
}

}  // namespace

std::span<const subcommand> subcommands() { return all_subcommands; }

const subcommand* find_subcommand(std::string_view name) {
  for (const auto& s : all_subcommands) {
    if (s.grammar.name == name) return &s;
  }
  return nullptr;
}

parsed_arguments parse_subcommand_arguments(std::string_view name, std::span<const std::string> args) {
  const subcommand* command = find_subcommand(name);
  if (command == nullptr) throw std::logic_error("no subcommand " + std::string(name));
  return parse_arguments(command->grammar, args);
}

std::string tool_help() {
  std::string text =
      "Usage: zvtextparser SUBCOMMAND [ARGUMENTS]\n\n"
      "Turns option names and values into the text parser's settings record, the\n"
      "record into a reader configuration, and reads files with it.\n\nSubcommands:\n";
  for (const auto& s : all_subcommands) {
    text += "  " + std::string(s.grammar.name) + std::string(10 - s.grammar.name.size(), ' ') +
            std::string(s.grammar.summary) + "\n";
  }
  text +=
      "\nzvtextparser SUBCOMMAND --help shows a subcommand's arguments and options;\n"
      "zvtextparser help values the value syntax; zvtextparser help keys the option keys.\n\n" +
      exit_status_help();
  return text;
}

}  // namespace zvtool
