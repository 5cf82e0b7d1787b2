// What a subcommand gives back, and the common end of its JSON report.
#pragma once

#include <optional>
#include <string>

#include "tools/json_writer.hpp"
#include "tools/message_failure.hpp"

namespace zvtool {

// Exit status 0 (success) or 1 (the library refused an option), with the
// texts for standard output and standard error.
struct tool_result {
  int status = 0;
  std::string out;
  std::string err;
};

// Ends a report whose top object is still open: adds the "error" member when
// the library refused an option, closes the object, and gives status 1 with
// the message on standard error, or status 0.
tool_result finish_report(json_writer& out, const std::optional<message_failure>& failure);

}  // namespace zvtool
