// The unread part of the input as code units: UTF-8 bytes (char) or UTF-16
// units (char16_t). A record is scanned inside the window; when the window
// ends before the record does, more input is appended and the scan starts
// over, so the window grows only as far as the longest record.
#pragma once

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include "import/input/utf8_input.hpp"
#include "import/input/utf8_text.hpp"

namespace textio::import {

template <class CharT>
class unit_window {
 public:
  explicit unit_window(utf8_input& input) : input_(input) {}

  // The unread units; valid until the next call of more().
  std::basic_string_view<CharT> view() const noexcept { return {units_.data() + begin_, units_.size() - begin_}; }
  bool at_end() const noexcept { return at_end_; }

  void consume(std::size_t n) noexcept { begin_ += n; }

  // Appends more input: at least a block, and at least as much as the window
  // holds (reading on where the input gives less at a time), so that
  // rescanning a long record costs linear time. False at the end of the
  // input.
  bool more() {
    if (at_end_) return false;
    if (deferred_) std::rethrow_exception(std::exchange(deferred_, nullptr));
    units_.erase(0, begin_);
    begin_ = 0;
    const std::size_t block = input_.block_size();
    const std::size_t want = units_.size() > block ? units_.size() : block;
    const std::size_t before = units_.size();
    bool got = false;
    while (units_.size() - before < want) {
      bool read = false;
      try {
        if constexpr (sizeof(CharT) == 1) {
          read = input_.read(units_, want - (units_.size() - before));
        } else {
          bytes_.clear();
          read = input_.read(bytes_, want - (units_.size() - before));
          append_utf16(units_, bytes_);
        }
      } catch (...) {
        // The text read before the failure is read first.
        if (!got) throw;
        deferred_ = std::current_exception();
        break;
      }
      if (!read) {
        at_end_ = !got;
        break;
      }
      got = true;
    }
    return got;
  }

 private:
  utf8_input& input_;
  std::basic_string<CharT> units_;
  std::size_t begin_ = 0;
  std::string bytes_;  // staging for the conversion to UTF-16
  bool at_end_ = false;
  std::exception_ptr deferred_;  // a read failure kept until the text before it is used
};

}  // namespace textio::import
