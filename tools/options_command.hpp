// zvtextparser options [--struct JSON] [NAME VALUE ...]: applies the
// arguments to a default record in one call and reports the record.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "parser/options.hpp"
#include "tools/json_writer.hpp"
#include "tools/report.hpp"
#include "tools/command_line.hpp"

namespace zvtool {

// Writes further members of the report's top object from the record that a
// successful call left.
using record_members = void (*)(json_writer& out, const textio::parser::options& record);

// Applies the options of --struct or of the NAME VALUE pairs to a default
// record in one call and reports {"options": {...}}: followed by what `more`
// adds when the call succeeds, or by "error" with status 1 when the library
// refuses an option. Throws usage_error for arguments that the tool cannot
// turn into values.
tool_result report_options_call(const std::optional<std::string>& struct_json, std::span<const std::string> positionals,
                                record_members more = nullptr);

// {"options": {...}} with status 0, or with an added "error" and status 1
// when the library refuses an option. Throws usage_error for arguments that
// the tool cannot turn into values.
tool_result run_options_command(const parsed_arguments& args);

}  // namespace zvtool
