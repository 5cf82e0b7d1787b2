// zvtextparser detect FILE [--struct JSON] [--encoding NAME] [--quote CHAR]
// [--escape STYLE] [NAME VALUE ...]: applies the options as `options` does,
// detects what they leave open from the start of FILE, and prints the record
// after detection, what was detected, and the arguments that make
// `read --no-detect` read the same.
#pragma once

#include "import/detect/detection.hpp"
#include "tools/command_line.hpp"
#include "tools/json_writer.hpp"
#include "tools/report.hpp"

namespace zvtool {

// The "detected" object: encoding, quote, escape, variable names and types,
// missing markers, unsettled date orders, table end, confidence and reasons.
void write_detected(json_writer& out, const textio::import::detection_result& result);

tool_result run_detect_command(const parsed_arguments& args);

}  // namespace zvtool
