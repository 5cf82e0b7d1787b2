// Runs the built command-line tool as a child process and captures its exit
// status, standard output and standard error. The path comes from the build
// (ZVTP_TOOL_PATH).
#pragma once

#include <string>
#include <vector>

namespace test_support {

struct tool_run {
  int status = -1;  ///< exit status; 128 + signal number when killed
  std::string out;
  std::string err;
};

tool_run run_tool(const std::vector<std::string>& args);

}  // namespace test_support
