// zvtextparser read FILE [--struct JSON] [--format jsonl|csv] [--count]
// [NAME VALUE ...]: applies the options as `options` does, builds the reader that
// parser_type names, and reads FILE ("-": standard input).
#pragma once

#include <cstdint>
#include <ostream>

#include "tools/command_line.hpp"
#include "tools/report.hpp"

namespace zvtool {

enum class read_format { jsonl, csv, tsv, count };

// --count, else --format (jsonl when not given). Throws usage_error for an
// unknown format.
read_format output_format(const parsed_arguments& args);

// Records go to `out` as they are read. An options failure reports as the
// options subcommand does (csv: nothing on `out`, only the message); a reading
// error ends the output after the last good record with an {"error": ...}
// line (jsonl and count) and gives status 4 (5 when the input cannot be
// read) with the message on standard error (in the result). A regular file
// that changed while it was read gives a warning, and status 5 with
// --strict. Throws output_failure when `out` fails.
tool_result run_read(const parsed_arguments& args, std::ostream& out);

// --max-memory as bytes, or the default limit.
std::uint64_t memory_limit(const parsed_arguments& args);

// Limits the process's memory (--max-memory), then run_read on standard
// output.
tool_result run_read_command(const parsed_arguments& args);

}  // namespace zvtool
