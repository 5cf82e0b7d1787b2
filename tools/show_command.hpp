// zvtextparser show FILE [--rows N] [read's options]: what a person looks at
// first. A line of what was detected, then the first rows as an aligned
// text table under each variable's name and type: numbers to the right,
// text to the left, a long value cut with "…" so that the table fits the
// terminal (COLUMNS); uncut when the output is no terminal and COLUMNS is
// not set.
#pragma once

#include "tools/command_line.hpp"
#include "tools/report.hpp"

namespace zvtool {

tool_result run_show_command(const parsed_arguments& args);

}  // namespace zvtool
