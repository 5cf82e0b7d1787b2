#include "import/input/utf8_input.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "import/reader_errors.hpp"
#include "import/input/decompressor.hpp"
#include "import/input/stream_spool.hpp"
#include "import/input/transcoder.hpp"
#include "import/input/utf8_text.hpp"

namespace textio::import {
namespace {

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

// CannotReadFile for `name` with the system's reason for `error` (an errno).
[[noreturn]] void cannot_read(const std::string& name, int error) {
  throw_msg_id_exception(ZORVEK::textio::reader::CannotReadFile(name, std::strerror(error)));
}

}  // namespace

utf8_input::utf8_input(const std::string& path) : name_(path == "-" ? "standard input" : path) {
  if (path == "-") {
    fd_ = STDIN_FILENO;
  } else {
    fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd_ < 0) cannot_read(path, errno);
    owns_fd_ = true;
  }
  note_file_state();
  find_compression();
}

utf8_input::utf8_input(int fd, std::string name) : fd_(fd), name_(std::move(name)) {
  note_file_state();
  find_compression();
}

utf8_input::utf8_input(int fd, std::string name, std::uint64_t offset)
    : fd_(fd), name_(std::move(name)), offset_(offset), positional_(true), position_(offset), started_(true) {
  note_file_state();
}

utf8_input::utf8_input(stream_spool& spool, std::string name, std::uint64_t offset, bool releases)
    : name_(std::move(name)), offset_(offset), started_(true), spool_(&spool), spool_at_(offset), releases_(releases) {}

utf8_input::utf8_input(std::string_view bytes, std::string name)
    : name_(std::move(name)), in_memory_(true), memory_(bytes.data()), memory_size_(bytes.size()) {
  find_compression();
}

void utf8_input::spool_ahead(std::uint64_t ahead_bytes, bool releases) {
  if (!can_spool()) return;
  releases_ = releases;
  spool_at_ = offset_ + pending_.size();
  own_spool_ = std::make_unique<stream_spool>(
      pending_, offset_, [d = decompressor_.get()](char* into, std::size_t size) { return d->read(into, size); },
      std::size_t{1} << 20, ahead_bytes);
  spool_ = own_spool_.get();
}

std::size_t utf8_input::read_some(char* into, std::size_t size) {
  if (spool_) {
    const std::size_t n = spool_->read_at(spool_at_, into, size);
    spool_at_ += n;
    if (releases_) spool_->release_before(spool_at_);
    return n;
  }
  if (decompressor_) return decompressor_->read(into, size);
  return read_after_head(into, size);
}

std::size_t utf8_input::read_after_head(char* into, std::size_t size) {
  if (head_.empty()) return read_raw(into, size);
  const std::size_t n = std::min(size, head_.size());
  std::memcpy(into, head_.data(), n);
  head_.erase(0, n);
  return n;
}

void utf8_input::find_compression() {
  head_.resize(compression_magic_bytes);
  std::size_t got = 0;
  while (got < head_.size()) {
    const std::size_t n = read_raw(head_.data() + got, head_.size() - got);
    if (n == 0) break;
    got += n;
  }
  head_.resize(got);
  const compression kind = compression_of(head_);
  if (kind == compression::none) return;
  decompressor_ = std::make_unique<decompressor>(
      kind, [this](char* into, std::size_t size) { return read_after_head(into, size); }, name_);
  // Its bytes are not the file's: no size to measure progress by, no parts.
  from_file_start_ = false;
}

std::size_t utf8_input::read_raw(char* into, std::size_t size) {
  if (in_memory_) {
    const std::size_t n = static_cast<std::size_t>(std::min<std::uint64_t>(size, memory_size_ - position_));
    if (n != 0) std::memcpy(into, memory_ + position_, n);
    position_ += n;
    return n;
  }
  ssize_t got = 0;
  do {
    got = positional_ ? ::pread(fd_, into, size, static_cast<off_t>(position_)) : ::read(fd_, into, size);
  } while (got < 0 && errno == EINTR);
  if (got < 0) cannot_read(name_, errno);
  position_ += static_cast<std::uint64_t>(got);
  return static_cast<std::size_t>(got);
}

void utf8_input::note_file_state() noexcept {
  struct stat info {};
  if (::fstat(fd_, &info) == 0 && S_ISREG(info.st_mode)) {
    regular_ = true;
    from_file_start_ = ::lseek(fd_, 0, SEEK_CUR) == 0;
    size_ = static_cast<std::uint64_t>(info.st_size);
    mtime_seconds_ = info.st_mtim.tv_sec;
    mtime_nanoseconds_ = info.st_mtim.tv_nsec;
  }
}

bool utf8_input::changed_since_opened() const noexcept {
  struct stat info {};
  if (!regular_ || ::fstat(fd_, &info) != 0) return false;
  return static_cast<std::uint64_t>(info.st_size) != size_ || info.st_mtim.tv_sec != mtime_seconds_ ||
         info.st_mtim.tv_nsec != mtime_nanoseconds_;
}

utf8_input::~utf8_input() {
  own_spool_.reset();  // its thread may be reading the descriptor
  if (owns_fd_) ::close(fd_);
}

void utf8_input::decode_from(const std::string& encoding) {
  if (is_utf8_name(encoding)) {
    transcoder_.reset();
  } else {
    transcoder_ = std::make_unique<transcoder>(encoding);
  }
}

std::string_view utf8_input::sample(std::size_t bytes) {
  while (pending_.size() < bytes && fill(bytes - pending_.size())) {
  }
  // On to the end of the line, within as many bytes again (at least 64 KiB),
  // so that one huge line cannot pull in the whole input; in UTF-16 and
  // UTF-32 the zero bytes that complete the line ending come along.
  const std::size_t limit = bytes + std::max(bytes, std::size_t{1} << 16);
  std::size_t end = bytes;
  for (;;) {
    while (end < pending_.size() && end < limit && pending_[end] != '\n' && pending_[end] != '\r') ++end;
    if (end < pending_.size() || end == limit || !fill(std::min(block_size_, limit - end))) break;
  }
  if (end == limit) return std::string_view(pending_).substr(0, end);
  if (end < pending_.size()) {
    ++end;
    for (std::size_t extra = 0; extra < 7; ++extra) {
      if (end == pending_.size() && !fill(block_size_)) break;
      const char c = pending_[end];
      if (c != '\0' && c != '\n') break;
      ++end;
    }
  }
  if (end > pending_.size()) end = pending_.size();
  return std::string_view(pending_).substr(0, end);
}

bool utf8_input::fill(std::size_t want) {
  if (at_end_) return false;
  if (want > read_limit_) want = read_limit_;
  const std::size_t old = pending_.size();
  pending_.resize(old + want);
  std::size_t got = 0;
  try {
    got = read_some(pending_.data() + old, want);
  } catch (...) {
    pending_.resize(old);
    throw;
  }
  pending_.resize(old + got);
  if (got == 0) at_end_ = true;
  return got > 0;
}

bool utf8_input::read_converted(std::string& out, std::size_t want) {
  for (;;) {
    if (pending_.empty() && !fill(want)) return false;
    const std::size_t start = out.size();
    const transcoder::result r = transcoder_->convert(pending_, out);
    pending_.erase(0, r.consumed);
    offset_ += r.consumed;
    if (!started_ && out.size() > start) {
      started_ = true;
      if (std::string_view(out).substr(start).starts_with(byte_order_mark)) out.erase(start, byte_order_mark.size());
    }
    // The good text ahead of a bad sequence is handed out first; the next
    // call then fails at the sequence.
    if (out.size() > start) return true;
    if (r.invalid) throw_msg_id_exception(ZORVEK::textio::reader::InvalidEncoding(transcoder_->name(), offset_));
    // A character cut off so far: it needs more bytes, or the input ends in it.
    if (r.consumed == 0 && !fill(want)) {
      if (pending_.empty()) return false;
      throw_msg_id_exception(ZORVEK::textio::reader::InvalidEncoding(transcoder_->name(), offset_));
    }
  }
}

bool utf8_input::read(std::string& out, std::size_t want) {
  if (want == 0) want = 1;
  if (transcoder_) return read_converted(out, want);
  if (!started_) {
    while (pending_.size() < byte_order_mark.size() && fill(want)) {
    }
    if (std::string_view(pending_).starts_with(byte_order_mark)) {
      pending_.erase(0, byte_order_mark.size());
      offset_ += byte_order_mark.size();
    }
    started_ = true;
  }
  if (pending_.empty() && !at_end_) {
    // Straight into the caller's buffer; a sequence cut off at the end (or
    // a bad one) waits in pending_.
    const std::size_t start = out.size();
    const std::size_t size = want < read_limit_ ? want : read_limit_;
    out.resize(start + size);
    std::size_t bytes = 0;
    try {
      bytes = read_some(out.data() + start, size);
    } catch (...) {
      out.resize(start);
      throw;
    }
    if (bytes == 0) at_end_ = true;
    const utf8_check check = check_utf8(std::string_view(out).substr(start, bytes));
    pending_.assign(out, start + check.valid, bytes - check.valid);
    out.resize(start + check.valid);
    offset_ += check.valid;
    if (check.valid > 0) return true;
  }
  for (;;) {
    if (pending_.empty() && !fill(want)) return false;
    // The good text ahead of a bad sequence is handed out first; the next
    // call then fails at the sequence.
    const utf8_check check = check_utf8(pending_);
    if (check.valid == 0 && check.invalid) throw_msg_id_exception(ZORVEK::textio::reader::InvalidUtf8(offset_));
    if (check.valid > 0) {
      out.append(pending_, 0, check.valid);
      pending_.erase(0, check.valid);
      offset_ += check.valid;
      return true;
    }
    // Only the start of a sequence so far: it needs more bytes, or it is cut
    // off by the end of the input.
    if (!fill(want)) throw_msg_id_exception(ZORVEK::textio::reader::InvalidUtf8(offset_));
  }
}

}  // namespace textio::import
