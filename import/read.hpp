// The reader in one call: what `zvtextparser read` does with no options.
// Detection fills in what the options leave open (encoding, dialect, header,
// variable count, table end, types) from a sample of the input's start, then
// the input is read with the result on every core where it can be, into a
// typed table in Arrow's layout (read_table) or into any record sink
// (read_into).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <zvtextparser/import/detect/detection.hpp>
#include <zvtextparser/import/export.hpp>
#include <zvtextparser/import/output.hpp>
#include <zvtextparser/import/read_events.hpp>
#include <zvtextparser/import/reader_errors.hpp>
#include <zvtextparser/import/table/arrow_c_abi.h>
#include <zvtextparser/import/table/arrow_table.hpp>
#include <zvtextparser/import/text_format.hpp>
#include <zvtextparser/import/value_types.hpp>
#include <zvtextparser/parser/options.hpp>

namespace textio::import {

// Where the bytes come from: a file (path "-" is standard input), an open
// descriptor (left open), or bytes in memory, which must outlive the read.
struct read_source {
  enum class origin : std::uint8_t { path, descriptor, memory };
  origin from = origin::path;
  std::string name;  // the path, or what messages call the input
  int fd = -1;
  std::string_view bytes;

  static read_source file(std::string path) { return {origin::path, std::move(path), -1, {}}; }
  static read_source standard_input() { return file("-"); }
  static read_source descriptor(int fd, std::string name = "descriptor") {
    return {origin::descriptor, std::move(name), fd, {}};
  }
  static read_source memory(std::string_view bytes, std::string name = "memory") {
    return {origin::memory, std::move(name), -1, bytes};
  }
  static read_source memory(std::span<const std::byte> bytes, std::string name = "memory") {
    return memory(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()), std::move(name));
  }
};

// Types the caller asks for, by position and by variable name (the later
// wins); every other variable gets the type detection finds.
struct type_request {
  std::vector<std::optional<value_type>> by_position;
  std::vector<std::pair<std::string, value_type>> by_name;
};

struct read_outcome;

struct read_settings {
  // Detect what the options and `given` leave open; false reads with the
  // options as they stand (types are still found from the first records).
  bool detect = true;
  // What the caller set and detection must not change: option keys set in
  // the options record, and the encoding, quote and escape.
  user_choices given;
  type_request types;
  // Threads to read with; 0: every core.
  unsigned threads = 0;
  // Read past a detected or given table end, to the end of the input.
  bool all_lines = false;
  // Stop before this physical line (1-based).
  std::optional<std::uint64_t> table_end_line;
  // The table may end before this line: past it records that keep the
  // table's field count are still read (what detection gives for an end it
  // found).
  std::optional<std::uint64_t> table_may_end_line;
  // Names instead of those of the names line.
  std::vector<std::string> variable_names;
  // Read every record with the exact scanner (the same records, slower).
  bool exact_scan = false;
  // A value that does not convert to its variable's type is the reading
  // error NotConverted (else: kept as text under a detected type,
  // ImportErrorRule under a type asked for).
  bool strict = false;
  progress_callback progress;
  stray_quote_callback stray_quote;
  // Called once detection and the types are settled, before the first
  // record is read (so that what was found can be told even when reading
  // then fails).
  std::function<void(const read_outcome&)> before_reading;
};

// What a read found and did.
struct read_outcome {
  // The options and format read with, after detection.
  textio::parser::options options;
  text_format format;
  // Detection's report, when it ran.
  std::optional<detection_report> report;
  // The type each variable was read as, and the variables' names as far as
  // they were known before reading (UTF-8).
  std::vector<variable_typing> types;
  std::vector<std::string> names;
  // Datetime variables (0-based) whose dates read both day-first and
  // month-first; they are read day-first.
  std::vector<std::size_t> date_order_unsettled;
  read_summary summary;
  // The input held nothing but blanks and line endings.
  bool empty_input = false;
  // A regular file whose size or modification time changed while it was
  // read: the records may mix old and new contents.
  bool input_changed = false;
};

// Reads `source` into `sink`. Throws the reader's messages (reader_errors.hpp):
// NotText when detection finds the input is no text and no encoding was
// given, UnknownVariable and TooManyTypes for a type request the table
// cannot take, and the reading errors; records handed to the sink before a
// failure stay handed.
ZVTEXTIMPORT_API read_outcome read_into(const read_source& source, const textio::parser::options& options,
                                        const read_settings& settings, record_sink& sink);

// What read_into reads `source` with, found as it finds it (detection and
// the types from the input's start) without reading a record: for callers
// that read the input in parts of their own.
ZVTEXTIMPORT_API read_outcome plan_read(const read_source& source, const textio::parser::options& options,
                                        const read_settings& settings);

struct table_read {
  arrow_table table;
  read_outcome outcome;
};

// Reads `source` into a typed table.
ZVTEXTIMPORT_API table_read read_table(const read_source& source, const textio::parser::options& options = {},
                                       const read_settings& settings = {});

// Reads `source` as read_table does, batch by batch: each batch goes to
// `on_batch` as it closes, in file order, and only the batches in flight are
// held. A batch's types are those detected, except a column that received a
// value its type cannot hold, which is text in that batch.
ZVTEXTIMPORT_API read_outcome read_batches(const read_source& source, const textio::parser::options& options,
                                           const read_settings& settings, batch_limits limits,
                                           const batch_callback& on_batch);

// Reads `source` as read_batches does, on a thread of its own, for a
// consumer that pulls: the schema is the first batch's (or, for an empty
// table, the fields as text), then each batch in file order; a few batches
// are read ahead. A failure of the read, or a later batch whose column no
// longer has the schema's type (a value that its detected type cannot hold:
// give the types to read such a file as a stream), ends the stream with an
// error code (EIO, or EINVAL for a type) and get_last_error's message.
// Releasing the stream early stops the read.
ZVTEXTIMPORT_API void stream_to_arrow(const read_source& source, const textio::parser::options& options,
                                      const read_settings& settings, batch_limits limits, ArrowArrayStream* out);

// Detects from the start of `source` what the options and `settings.given`
// leave open, as read_into does before reading. Throws NotText as read_into.
ZVTEXTIMPORT_API detection_result detect(const read_source& source, const textio::parser::options& options = {},
                                         const read_settings& settings = {});

}  // namespace textio::import
