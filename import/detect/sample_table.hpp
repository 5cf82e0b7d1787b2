// The detector's view of a sample: its physical lines, and the records and
// fields one candidate dialect cuts it into. Bounded: at most a given number
// of records, and fields beyond a cap are counted but not kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "import/text_format.hpp"

namespace textio::import {

// How a candidate splits records into fields.
struct dialect {
  char delimiter = ',';  // ignored when `blanks`
  bool blanks = false;   // runs of blanks and tabs separate fields; at the ends they are indentation
  char quote = '"';      // '\0': no quoting
  escape_style escape = escape_style::doubled;

  friend bool operator==(const dialect&, const dialect&) = default;
};

// A physical line of the sample, without its line ending.
struct sample_line {
  std::string_view text;
  std::size_t offset = 0;  // of its first byte in the sample
};

// The sample's physical lines (ends: CRLF, LF, CR), at most `max_lines`.
std::vector<sample_line> split_lines(std::string_view text, std::size_t max_lines);

struct sample_record {
  std::uint64_t first_line = 0;  // 1-based physical lines
  std::uint64_t last_line = 0;
  std::vector<std::string> fields;  // unquoted and unescaped; at most the field cap
  std::vector<bool> quoted;         // per kept field
  std::size_t field_count = 0;      // all fields, also those beyond the cap
  bool blank = false;               // only blanks
  bool comment = false;             // starts with the comment marker
};

struct sample_table {
  std::vector<sample_record> records;
  bool unclosed_quote = false;  // a quoted field was still open at the end of the sample
  // The records stop before the input does (the sample's byte or line bound,
  // or the record bound): the last record may be cut.
  bool cut = false;
  std::size_t quoted_fields = 0;
  std::size_t text_after_quote = 0;  // quoted fields with more text after the closing quote
};

inline constexpr std::size_t max_kept_fields = 512;
inline constexpr std::size_t max_kept_bytes = 1024;

// Cuts the lines into records under `d`. Lines whose first
// non-blank text is `comment_marker` (when not empty) are comment records.
sample_table split_records(const std::vector<sample_line>& lines, const dialect& d, std::string_view comment_marker,
                           std::size_t max_records);

}  // namespace textio::import
