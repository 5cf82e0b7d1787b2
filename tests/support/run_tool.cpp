#include "support/run_tool.hpp"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>

extern char** environ;

namespace test_support {
namespace {

// A temporary file that is removed again when the run is over.
class temp_file {
 public:
  temp_file() : path_(::testing::TempDir() + "zvtextparser_tool_XXXXXX") {
    fd_ = ::mkstemp(path_.data());
    if (fd_ < 0) throw std::runtime_error("cannot create a temporary file in " + ::testing::TempDir());
  }
  temp_file(const temp_file&) = delete;
  temp_file& operator=(const temp_file&) = delete;
  ~temp_file() {
    ::close(fd_);
    ::unlink(path_.c_str());
  }
  int fd() const { return fd_; }
  std::string contents() const {
    std::ifstream in(path_, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
  }

 private:
  std::string path_;
  int fd_ = -1;
};

}  // namespace

tool_run run_tool(const std::vector<std::string>& args) {
  const std::string tool = ZVTP_TOOL_PATH;
  std::vector<char*> argv{const_cast<char*>(tool.c_str())};
  for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);

  temp_file out;
  temp_file err;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, out.fd(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err.fd(), STDERR_FILENO);
  pid_t pid = 0;
  const int spawned = posix_spawn(&pid, tool.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) throw std::runtime_error("cannot start " + tool);

  int wait_status = 0;
  while (waitpid(pid, &wait_status, 0) < 0) {
    if (errno != EINTR) throw std::runtime_error("waitpid failed");
  }
  tool_run run;
  if (WIFEXITED(wait_status))
    run.status = WEXITSTATUS(wait_status);
  else if (WIFSIGNALED(wait_status))
    run.status = 128 + WTERMSIG(wait_status);
  run.out = out.contents();
  run.err = err.contents();
  return run;
}

}  // namespace test_support
