// How a reader reads a part of a file, and why a run of it ended.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

#include "import/read_events.hpp"

namespace textio::import {

// The state that carries from one data record to the next once the header
// is read: reading from a part's start state gives the records that reading
// the whole file gives from there.
struct part_state {
  std::uint64_t offset = 0;  // byte offset in the file of the next record
  std::uint64_t line = 1;    // its physical line
  std::optional<std::size_t> variables;
  bool operator==(const part_state&) const = default;
};

// How to read a part of a file (with an input that starts at start.offset).
struct part_plan {
  part_state start;
  bool header_sent = true;  // false for the part at the file's start
  // Stop before the first record that starts at or after this byte offset.
  std::uint64_t stop = std::numeric_limits<std::uint64_t>::max();
  // Stop there only where the rest could be read in parts; else read on
  // to the end (table_reader::stop_at).
  bool stop_while_in_parts = false;
  // Read on another thread: a part that cannot be read from its start state
  // alone (a quote read as text from some point on, a header line, a record
  // longer than part_window_limit) is abandoned.
  bool worker = false;
};

inline constexpr std::size_t part_window_limit = std::size_t{64} << 20;

// Why a run of the reader ended.
enum class run_end {
  finished,   // at the end of the input or of the table
  stopped,    // before the record at the stop offset (table_reader::stopped_at)
  abandoned,  // a worker's part that cannot be read from its start state alone
};

struct reader_run {
  read_summary summary;
  run_end end = run_end::finished;
};

}  // namespace textio::import
