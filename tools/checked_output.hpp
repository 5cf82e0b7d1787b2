// Standard output whose every write is checked. The tool's output goes to a
// file descriptor through fd_output_buffer, which keeps the system's reason
// for the first write that fails; check_output turns a failed stream into an
// output_failure, which ends the tool (see main.cpp).
#pragma once

#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <string>

namespace zvtool {

// A write or flush of the output failed: `reason` is the errno value.
class output_failure : public std::runtime_error {
 public:
  output_failure(std::string output, int reason);
  const std::string& output() const noexcept { return output_; }
  int reason() const noexcept { return reason_; }
  // The reader of a pipe went away (EPIPE): the tool ends without a word.
  bool closed_pipe() const noexcept;

 private:
  std::string output_;
  int reason_;
};

// A stream buffer that writes to a file descriptor in 64 KiB pieces, retrying
// short and interrupted writes. After the first failure it writes nothing
// more and reports failure to its stream.
class fd_output_buffer : public std::streambuf {
 public:
  fd_output_buffer(int fd, std::string name);
  fd_output_buffer(const fd_output_buffer&) = delete;
  fd_output_buffer& operator=(const fd_output_buffer&) = delete;
  ~fd_output_buffer() override;

  const std::string& name() const noexcept { return name_; }
  // The errno value of the first failed write; 0 while none failed.
  int error() const noexcept { return error_; }

 protected:
  int_type overflow(int_type c) override;
  std::streamsize xsputn(const char* s, std::streamsize n) override;
  int sync() override;

 private:
  bool write_all(const char* data, std::size_t size);
  bool drain();

  int fd_;
  std::string name_;
  std::string buffer_;
  int error_ = 0;
};

// Throws output_failure when `out` has failed: the output's name and reason
// come from its fd_output_buffer, or are "the output" and EIO for any other
// stream.
void check_output(const std::ostream& out);

// Flushes `out`, then check_output.
void flush_output(std::ostream& out);

// While it lives, std::cout writes to descriptor 1 through a checked buffer
// named "standard output".
class checked_standard_output {
 public:
  checked_standard_output();
  checked_standard_output(const checked_standard_output&) = delete;
  checked_standard_output& operator=(const checked_standard_output&) = delete;
  ~checked_standard_output();

 private:
  fd_output_buffer buffer_;
  std::streambuf* previous_;
};

// Prints the failure on standard error (nothing for a closed pipe) and gives
// the exit status.
int report_output_failure(const output_failure& failure);

}  // namespace zvtool
