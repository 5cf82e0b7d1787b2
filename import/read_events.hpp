// What a read tells its caller while it runs and when it ends.
#pragma once

#include <cstdint>
#include <functional>

namespace textio::import {

// Called after each block of input with the bytes read so far and the
// input's size (0 when unknown).
using progress_callback = std::function<void(std::uint64_t bytes_read, std::uint64_t total)>;

// Called once when a quote that was detected, not given, never closes: from
// there on quotes are read as text. Line and column (UTF-16 units) are 1-based.
using stray_quote_callback = std::function<void(std::uint64_t line, std::uint64_t column)>;

struct read_summary {
  // Physical lines after the format's table end, counted but not read.
  std::uint64_t lines_left_unread = 0;
  // The first of them (0: none).
  std::uint64_t first_line_unread = 0;
  // Parts of the file read on other threads (text_format::threads).
  std::uint64_t parts_on_threads = 0;
};

}  // namespace textio::import
