// zvtextparser reader KIND [--struct JSON] [NAME VALUE ...]: applies the
// options as the options subcommand does, builds the reader of that kind from
// the record and reports both.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "tools/options_command.hpp"
#include "tools/report.hpp"
#include "tools/command_line.hpp"

namespace zvtool {

// A reader the tool can build, by the name that selects it.
struct reader_kind {
  std::string_view name;
  record_members write_reader;  ///< builds the reader from the record and writes it as the "reader" member
};

extern const std::array<reader_kind, 3> reader_kinds;

// "line, delimited, fixedwidth"
std::string reader_kind_names();

// The kind is the operand; the NAME VALUE arguments are the options.
// {"options": {...}, "reader": {...}} with status 0, or exactly what the
// options subcommand reports for a refused option (no "reader", status 1).
// Throws usage_error for an unknown kind, before any option is
// applied, and for arguments that the tool cannot turn into values.
tool_result run_reader_command(const parsed_arguments& args);

}  // namespace zvtool
