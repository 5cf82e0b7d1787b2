// What a read tells its caller while it runs and when it ends.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace textio::import {

// Called after each block of input with the bytes read so far and the
// input's size (0 when unknown).
using progress_callback = std::function<void(std::uint64_t bytes_read, std::uint64_t total)>;

// Called once when a quote that was detected, not given, never closes: from
// there on quotes are read as text. Line and column (UTF-16 units) are 1-based.
using stray_quote_callback = std::function<void(std::uint64_t line, std::uint64_t column)>;

// The values of one variable that did not convert to its type (and were
// kept as text or given to ImportErrorRule), and the physical line of the
// first.
struct unconverted_values {
  std::uint64_t count = 0;
  std::uint64_t first_line = 0;
  bool operator==(const unconverted_values&) const = default;
};

struct read_summary {
  // Physical lines after the format's table end, counted but not read.
  std::uint64_t lines_left_unread = 0;
  // The first of them (0: none).
  std::uint64_t first_line_unread = 0;
  // Parts of the file read on other threads (text_format::threads).
  std::uint64_t parts_on_threads = 0;
  // By variable position as read (before OmitVar drops any): its values
  // that did not convert. Empty when no variable has a type.
  std::vector<unconverted_values> unconverted;
};

// Adds the tallies of a later stretch of the input, whose lines were
// numbered `line_shift` too low, to those before it.
inline void add_unconverted(std::vector<unconverted_values>& into, std::span<const unconverted_values> later,
                            std::uint64_t line_shift) {
  if (into.size() < later.size()) into.resize(later.size());
  for (std::size_t i = 0; i < later.size(); ++i) {
    if (later[i].count == 0) continue;
    if (into[i].count == 0) into[i].first_line = later[i].first_line + line_shift;
    into[i].count += later[i].count;
  }
}

}  // namespace textio::import
