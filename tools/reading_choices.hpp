// What read and detect share: the tool's own reading options (--encoding,
// --quote, --escape), which settings the user gave, detection from a sample
// of the input, its report in words, and the arguments that reproduce a
// reading without detection.
#pragma once

#include <string>
#include <vector>

#include "import/detect/detection.hpp"
#include "import/read.hpp"
#include "import/text_format.hpp"
#include "parser/options.hpp"
#include "tools/command_line.hpp"

namespace zvtool {

inline constexpr tool_option encoding_option{"--encoding", "NAME",
                                             "the input's encoding, e.g. UTF-8, WINDOWS-1252, UTF-16LE (not detected)"};
inline constexpr tool_option quote_option{"--quote", "CHAR",
                                          "the quote character, e.g. \\\" or ', or none (not detected)"};
inline constexpr tool_option escape_option{"--escape", "STYLE",
                                           "how a quote is written inside quotes: double or backslash (not detected)"};

// The settings the user gave: the option keys named by the NAME VALUE
// arguments or the --struct fields (matched case-insensitively, in the
// option table's spelling), and --encoding, --quote, --escape. Throws
// usage_error for a bad --quote, --escape or --struct.
textio::import::user_choices user_choices_of(const parsed_arguments& args);

// The reading settings of `read` and `detect`: what the user gave
// (user_choices_of), --no-detect, --table-end, --table-may-end,
// --variable-names, --all-lines (which wins), --exact-scan, --threads
// (default: every core) and --strict. Throws usage_error for a bad line
// number, names list or thread count.
textio::import::read_settings read_settings_of(const parsed_arguments& args);

// The input that FILE names ("-": standard input).
textio::import::read_source source_of(const parsed_arguments& args);

// The report for standard error, one item a line.
std::string report_text(const textio::import::detection_report& report);

// "double" or "backslash"; a quote as the tool writes it ("none" for none).
std::string escape_name(textio::import::escape_style escape);
std::string quote_name(char quote);

// NAME VALUE arguments and tool options that make `read --no-detect` read
// with `record` and `format`: a pair for each field that differs from a
// default record, and the tool's options where the format is not the
// default.
std::vector<std::string> reproducing_arguments(const textio::parser::options& record,
                                               const textio::import::text_format& format);

}  // namespace zvtool
