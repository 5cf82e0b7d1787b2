#include "tools/checked_output.hpp"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <utility>

#include "tools/exit_status.hpp"

namespace zvtool {
namespace {

constexpr std::size_t piece = std::size_t{1} << 16;

}  // namespace

output_failure::output_failure(std::string output, int reason)
    : std::runtime_error("cannot write to " + output + ": " + std::strerror(reason)),
      output_(std::move(output)),
      reason_(reason) {}

bool output_failure::closed_pipe() const noexcept { return reason_ == EPIPE; }

fd_output_buffer::fd_output_buffer(int fd, std::string name) : fd_(fd), name_(std::move(name)) {
  buffer_.reserve(piece);
}

fd_output_buffer::~fd_output_buffer() { drain(); }

bool fd_output_buffer::write_all(const char* data, std::size_t size) {
  if (error_ != 0) return false;
  while (size > 0) {
    const ssize_t wrote = ::write(fd_, data, size);
    if (wrote < 0) {
      if (errno == EINTR) continue;
      error_ = errno;
      return false;
    }
    data += wrote;
    size -= static_cast<std::size_t>(wrote);
  }
  return true;
}

bool fd_output_buffer::drain() {
  const bool ok = write_all(buffer_.data(), buffer_.size());
  buffer_.clear();
  return ok;
}

fd_output_buffer::int_type fd_output_buffer::overflow(int_type c) {
  if (traits_type::eq_int_type(c, traits_type::eof())) return sync() == 0 ? traits_type::not_eof(c) : c;
  buffer_.push_back(traits_type::to_char_type(c));
  if (buffer_.size() >= piece && !drain()) return traits_type::eof();
  return c;
}

std::streamsize fd_output_buffer::xsputn(const char* s, std::streamsize n) {
  const auto size = static_cast<std::size_t>(n);
  if (buffer_.size() + size < piece) {
    buffer_.append(s, size);
    return n;
  }
  if (!drain() || !write_all(s, size)) return 0;
  return n;
}

int fd_output_buffer::sync() { return drain() ? 0 : -1; }

void check_output(const std::ostream& out) {
  if (!out.fail()) return;
  if (const auto* fd_buffer = dynamic_cast<const fd_output_buffer*>(out.rdbuf());
      fd_buffer != nullptr && fd_buffer->error() != 0) {
    throw output_failure(fd_buffer->name(), fd_buffer->error());
  }
  throw output_failure("the output", EIO);
}

void flush_output(std::ostream& out) {
  out.flush();
  check_output(out);
}

checked_standard_output::checked_standard_output()
    : buffer_(STDOUT_FILENO, "standard output"), previous_(std::cout.rdbuf(&buffer_)) {}

checked_standard_output::~checked_standard_output() { std::cout.rdbuf(previous_); }

int report_output_failure(const output_failure& failure) {
  if (failure.closed_pipe()) return exit_closed_pipe;
  std::cerr << "zvtextparser: " << failure.what() << '\n' << std::flush;
  return exit_io_failure;
}

}  // namespace zvtool
