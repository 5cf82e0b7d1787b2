// What the reader needs to know about a file beyond the options record: the
// encoding of its bytes, the quote character and how a quote is escaped
// inside a quoted field, and where the table ends. The options record fixes
// the delimited reader's quote at '"'; these are the reader's own settings.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace textio::import {

enum class escape_style : std::uint8_t {
  doubled,    // "" inside a quoted field stands for one quote
  backslash,  // \" stands for a quote and \\ for a backslash
};

struct text_format {
  // An iconv encoding name; "UTF-8" reads the bytes as they are.
  std::string encoding = "UTF-8";
  // The quote character; '\0' when fields are never quoted.
  char quote = '"';
  escape_style escape = escape_style::doubled;
  // The quote was guessed, not given: a quoted field that never closes is
  // then read as text from its opening quote on, with a warning, instead of
  // failing the whole file.
  bool quote_detected = false;
  // The physical line (1-based) after the table's last line; reading stops
  // before it. None: read to the end of the input.
  std::optional<std::uint64_t> table_end_line;
  // The end was detected, not given: records from it on that have the
  // table's field count are read too, up to the first that has not
  // (delimited and blank-separated tables).
  bool table_end_detected = false;
  // Names to use instead of those of the options' names line, e.g. a header
  // spread over several lines joined column by column. Empty: none.
  std::vector<std::string> variable_names;
  // Read the records that the structural scan covers through it (plain
  // delimited UTF-8 text, quotes doubled); false reads every record with the
  // exact scanner, which gives the same output more slowly.
  bool structural_scan = true;
  // Threads to read with. With more than one, a regular UTF-8 file of at
  // least two parts of about part_bytes is read in parts at once where the
  // settings allow it and the sink takes part sinks; the records are the
  // same, in the same order.
  unsigned threads = 1;
  std::uint64_t part_bytes = std::uint64_t{4} << 20;  // a part's output stays in the last-level cache
};

}  // namespace textio::import
