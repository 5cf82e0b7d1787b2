// zvtextparser read FILE [--struct JSON] [NAME VALUE ...] [--format jsonl|csv]
// [--count]: applies the options as `options` does, builds the reader that
// parser_type names, and reads FILE ("-": standard input).
#pragma once

#include <ostream>
#include <span>
#include <string>

#include "tools/report.hpp"
#include "tools/subcommand_arguments.hpp"

namespace zvtool {

enum class read_format { jsonl, csv, count };

struct read_arguments {
  std::string file;
  read_format format = read_format::jsonl;
  std::vector<std::string> option_arguments;  // NAME VALUE ...
};

// Takes FILE (the first positional argument), --format and --count out of the
// subcommand's positional arguments. Throws usage_error for a missing FILE or
// an unknown format.
read_arguments scan_read_arguments(std::span<const std::string> positionals);

// Records go to `out` as they are read. An options failure reports as the
// options subcommand does; a reading error ends the output after the last
// good record with an {"error": ...} line (jsonl and count) and gives status 1
// with the message on standard error (in the result).
tool_result run_read(const subcommand_arguments& args, std::ostream& out);

// run_read on standard output.
tool_result run_read_command(const subcommand_arguments& args);

}  // namespace zvtool
