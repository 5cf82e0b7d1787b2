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

// How the child's standard streams and SIGPIPE are set up, for fault
// injection; by default both outputs are captured and SIGPIPE is default.
struct tool_setup {
  std::string stdout_path;  ///< when set, standard output is this file (e.g. /dev/full)
  int stdout_fd = -1;       ///< when set, standard output is this descriptor
  int stdin_fd = -1;        ///< when set, standard input is this descriptor
  bool close_stdout = false;
  bool close_stdin = false;
  bool ignore_sigpipe = false;
  int timeout_seconds = 60;  ///< the child is killed after it, and the status is -1
};

tool_run run_tool(const std::vector<std::string>& args, const tool_setup& setup);

}  // namespace test_support
