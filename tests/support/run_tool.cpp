#include "support/run_tool.hpp"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>

extern char** environ;

namespace test_support {
namespace {

using file_ptr = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// An unnamed temporary file, for one of the child's outputs.
file_ptr temp_file() {
  file_ptr file(std::tmpfile(), &std::fclose);
  if (!file) throw std::runtime_error("cannot create a temporary file");
  return file;
}

std::string contents(std::FILE* file) {
  std::string text;
  std::rewind(file);
  char buffer[4096];
  for (std::size_t n = 0; (n = std::fread(buffer, 1, sizeof buffer, file)) > 0;) text.append(buffer, n);
  return text;
}

}  // namespace

tool_run run_tool(const std::vector<std::string>& args) { return run_tool(args, tool_setup{}); }

tool_run run_tool(const std::vector<std::string>& args, const tool_setup& setup) {
  const std::string tool = ZVTP_TOOL_PATH;
  std::vector<char*> argv{const_cast<char*>(tool.c_str())};
  for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);

  const file_ptr out = temp_file();
  const file_ptr err = temp_file();
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (setup.close_stdout) {
    posix_spawn_file_actions_addclose(&actions, STDOUT_FILENO);
  } else if (!setup.stdout_path.empty()) {
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, setup.stdout_path.c_str(), O_WRONLY, 0);
  } else {
    posix_spawn_file_actions_adddup2(&actions, setup.stdout_fd >= 0 ? setup.stdout_fd : fileno(out.get()),
                                     STDOUT_FILENO);
  }
  if (setup.close_stdin) posix_spawn_file_actions_addclose(&actions, STDIN_FILENO);
  if (setup.stdin_fd >= 0) posix_spawn_file_actions_adddup2(&actions, setup.stdin_fd, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, fileno(err.get()), STDERR_FILENO);
  // An ignored signal stays ignored in the child; a default one is set so.
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t defaults;
  sigemptyset(&defaults);
  if (!setup.ignore_sigpipe) sigaddset(&defaults, SIGPIPE);
  posix_spawnattr_setsigdefault(&attributes, &defaults);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
  struct sigaction ignore {
  }, previous{};
  ignore.sa_handler = SIG_IGN;
  if (setup.ignore_sigpipe) sigaction(SIGPIPE, &ignore, &previous);
  pid_t pid = 0;
  const int spawned = posix_spawn(&pid, tool.c_str(), &actions, &attributes, argv.data(), environ);
  if (setup.ignore_sigpipe) sigaction(SIGPIPE, &previous, nullptr);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) throw std::runtime_error("cannot start " + tool);

  tool_run run;
  int wait_status = 0;
  for (int waited_ms = 0;; waited_ms += 10) {
    const pid_t done = waitpid(pid, &wait_status, WNOHANG);
    if (done == pid) break;
    if (done < 0 && errno != EINTR) throw std::runtime_error("waitpid failed");
    if (waited_ms >= setup.timeout_seconds * 1000) {
      ::kill(pid, SIGKILL);
      waitpid(pid, &wait_status, 0);
      run.err = "killed after " + std::to_string(setup.timeout_seconds) + " s";
      return run;
    }
    ::usleep(10000);
  }
  if (WIFEXITED(wait_status))
    run.status = WEXITSTATUS(wait_status);
  else if (WIFSIGNALED(wait_status))
    run.status = 128 + WTERMSIG(wait_status);
  run.out = contents(out.get());
  run.err = contents(err.get());
  return run;
}

}  // namespace test_support
