#include "tools/output_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

namespace zvtool {

output_file::output_file(std::string path) : path_(std::move(path)) {
  struct stat info {};
  if (::stat(path_.c_str(), &info) == 0 && !S_ISREG(info.st_mode)) {
    fd_ = ::open(path_.c_str(), O_WRONLY | O_CLOEXEC);
  } else {
    const std::filesystem::path target(path_);
    const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : ".";
    temporary_ = (folder / ("." + target.filename().string() + ".XXXXXX")).string();
    fd_ = ::mkstemp(temporary_.data());
    if (fd_ < 0) temporary_.clear();
    if (fd_ >= 0) {
      // As an ordinary new file would be: rw for all, less the umask.
      const mode_t mask = ::umask(0);
      ::umask(mask);
      ::fchmod(fd_, 0666 & ~mask);
    }
  }
  if (fd_ < 0) throw output_failure(path_, errno);
  buffer_ = std::make_unique<fd_output_buffer>(fd_, path_);
}

output_file::~output_file() { discard(); }

void output_file::discard() noexcept {
  buffer_.reset();
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
  temporary_.clear();
}

void output_file::commit() {
  if (buffer_->pubsync() != 0) throw output_failure(path_, buffer_->error());
  if (!temporary_.empty() && ::fsync(fd_) != 0) throw output_failure(path_, errno);
  const int closed = ::close(fd_);
  fd_ = -1;
  if (closed != 0) throw output_failure(path_, errno);
  if (!temporary_.empty() && std::rename(temporary_.c_str(), path_.c_str()) != 0) {
    throw output_failure(path_, errno);
  }
  temporary_.clear();
}

}  // namespace zvtool
