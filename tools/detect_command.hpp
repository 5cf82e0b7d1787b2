// zvtextparser detect FILE [--struct JSON] [--encoding NAME] [--quote CHAR]
// [--escape STYLE] [NAME VALUE ...]: applies the options as `options` does,
// detects what they leave open from the start of FILE, and prints the record
// after detection, what was detected, and the arguments that make
// `read --no-detect` read the same.
#pragma once

#include "tools/command_line.hpp"
#include "tools/report.hpp"

namespace zvtool {

tool_result run_detect_command(const parsed_arguments& args);

}  // namespace zvtool
