// zvtextparser read FILE [--struct JSON] [--format jsonl|csv] [--count]
// [NAME VALUE ...]: applies the options as `options` does, builds the reader that
// parser_type names, and reads FILE ("-": standard input).
#pragma once

#include <ostream>

#include "tools/command_line.hpp"
#include "tools/report.hpp"

namespace zvtool {

enum class read_format { jsonl, csv, count };

// --count, else --format (jsonl when not given). Throws usage_error for an
// unknown format.
read_format output_format(const parsed_arguments& args);

// Records go to `out` as they are read. An options failure reports as the
// options subcommand does (csv: nothing on `out`, only the message); a reading
// error ends the output after the last good record with an {"error": ...}
// line (jsonl and count) and gives status 1 with the message on standard
// error (in the result).
tool_result run_read(const parsed_arguments& args, std::ostream& out);

// run_read on standard output.
tool_result run_read_command(const parsed_arguments& args);

}  // namespace zvtool
