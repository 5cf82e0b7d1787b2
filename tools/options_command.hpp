// zvtextparser options [--struct JSON] [NAME VALUE ...]: applies the
// arguments to a default record in one call and reports the record.
#pragma once

#include "tools/report.hpp"
#include "tools/subcommand_arguments.hpp"

namespace zvtool {

// {"options": {...}} with status 0, or with an added "error" and status 1
// when the library refuses an option. Throws usage_error for arguments that
// the tool cannot turn into values.
tool_result run_options_command(const subcommand_arguments& args);

}  // namespace zvtool
